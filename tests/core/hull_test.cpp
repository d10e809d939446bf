#include "Kivo_2D.h"

#include "tests/support/expectSound.h"

#include <gtest/gtest.h>

using namespace TESK_KIVO2D;

// A line of points with one beside it is a fan around that one; the hull must be followed past it from both
// sides, and stay right when points join it in the middle of hull edges, beyond the fan, and in front of many
// edges at once.
TEST(hull, isFollowedPastLargeFans) {
    for (const int direction : {1, -1, 0}) {
        Kivo_2D kivo;
        std::vector<Point2> vAll;
        const auto insert = [&](double x, double y) {
            vAll.emplace_back(x, y);
            EXPECT_EQ(vAll.back(), *kivo.insert(vAll.back()));
        };
        insert(0.5, 1);
        for (int i = 0; i < 500; ++i)
            insert(direction != 0 ? direction * i : (i % 2 == 0 ? i : -i), 0);
        for (int i = 0; i < 500; ++i)
            insert(i - 250 + 0.25, 0);
        expectSound(kivo, vAll);
        insert(3000, 1);
        insert(-3000, 1);
        for (int i = 0; i < 300; ++i)
            insert(0.5, 2 + i);
        insert(0, -1e6);
        insert(1e9, 5);
        expectSound(kivo, vAll);
    }
}
