#include "core/extent.h"

#include "core/WorkerPool.h"
#include "tests/support/doubles.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace TESK_KIVO2D;

TEST(Extent, isThatOfTheFinitePointsForEveryNumberOfThreads) {
    doubles::Rng rng(8);
    for (const std::size_t num : {0u, 1u, 1000u, 65536u, 65537u, 400000u}) {
        for (const int oneInBad : {1, 3, 1000000}) {
            doubles::Points v;
            Bbox2 expected;
            std::size_t numFinite = 0;
            for (std::size_t i = 0; i < num; ++i) {
                v.emplace_back(doubles::anyFinite(rng), doubles::anyFinite(rng));
                if (doubles::below(rng, oneInBad) > 0 || oneInBad > 3) {
                    expected.add(v.back());
                    ++numFinite;
                } else {
                    const double bad[] = {HUGE_VAL, -HUGE_VAL, std::nan("")};
                    v.back() =
                        i % 2 == 0 ? Point2(bad[i % 3], v.back().y()) : Point2(v.back().x(), bad[i % 3]);
                }
            }
            for (const int numThreads : {1, 2, 8}) {
                WorkerPool pool(numThreads);
                const Extent extent = scanExtent(v.data(), num, pool);
                EXPECT_EQ(numFinite, extent.numFinite);
                EXPECT_EQ(expected.getMinPoint(), extent.box.getMinPoint());
                EXPECT_EQ(expected.getMaxPoint(), extent.box.getMaxPoint());
            }
        }
    }
}
