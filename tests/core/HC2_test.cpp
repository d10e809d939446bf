#include "core/HC2.h"

#include "tests/support/boxOf.h"
#include "tests/support/capture.h"
#include "tests/support/doubles.h"

#include <gtest/gtest.h>

using namespace TESK_KIVO2D;

namespace {

// Level by level from the tables of the curve.
unsigned int slowKey(unsigned int ix, unsigned int iy, int numLevels = 15) {
    static const unsigned int digit[4][4] = {{0, 1, 3, 2}, {0, 3, 1, 2}, {2, 1, 3, 0}, {2, 3, 1, 0}};
    static const unsigned int next[4][4] = {{1, 0, 2, 0}, {0, 3, 1, 1}, {2, 2, 0, 3}, {3, 1, 3, 2}};
    unsigned int key = 0, state = 0;
    for (int bit = numLevels - 1; bit >= 0; --bit) {
        const unsigned int q = 2 * ((ix >> bit) & 1) + ((iy >> bit) & 1);
        key = 4 * key + digit[state][q];
        state = next[state][q];
    }
    return key;
}

} // namespace

TEST(HC2, followsTheCurveCellByCell) {
    const HC2 hc(boxOf(0, 0, 32768, 32768));
    doubles::Rng rng(3);
    for (int i = 0; i < 20000; ++i) {
        const auto ix = static_cast<unsigned int>(rng() % 32768),
                   iy = static_cast<unsigned int>(rng() % 32768);
        ASSERT_EQ(slowKey(ix, iy), hc.key(ix + 0.5, iy + 0.5));
    }
    for (int numLevels = 1; numLevels <= 16; ++numLevels) {
        const int num = 1 << numLevels;
        const HC2 other(boxOf(0, 0, num, num), 2 * numLevels);
        for (int i = 0; i < 2000; ++i) {
            const auto ix = doubles::below(rng, num), iy = doubles::below(rng, num);
            ASSERT_EQ(slowKey(static_cast<unsigned int>(ix), static_cast<unsigned int>(iy), numLevels),
                      other.key(ix + 0.5, iy + 0.5));
        }
    }
    EXPECT_EQ(0u, hc.key(0, 0));
    EXPECT_EQ(slowKey(0, 5), hc.key(32768, 5)); // the maximum has the digits of the minimum
}

TEST(HC2, visitsTheQuartersOfTheUnitSquareInOrder) {
    const HC2 hc(boxOf(0, 0, 1, 1));
    const unsigned int quarter = 1u << 28;
    EXPECT_EQ(0u, hc.key(0.25, 0.25) / quarter);
    EXPECT_EQ(1u, hc.key(0.25, 0.75) / quarter);
    EXPECT_EQ(2u, hc.key(0.75, 0.75) / quarter);
    EXPECT_EQ(3u, hc.key(0.75, 0.25) / quarter);
}

TEST(HC2, givesAKeyInRangeForEveryPointAndEveryBox) {
    const double inf = HUGE_VAL, tiny = 5e-324;
    const Bbox2 boxes[] = {boxOf(0, 0, 0, 0),
                           boxOf(5, 0, 5, 9),
                           boxOf(0, 0, tiny, tiny),
                           boxOf(-1e308, 0, 1e308, 1),
                           boxOf(-DBL_MAX, -DBL_MAX, DBL_MAX, DBL_MAX),
                           Bbox2(),
                           boxOf(1e300, 1e300, 1e300, 1e300)};
    const double coords[] = {0, tiny, -1, 5, 1e308, -1e308, DBL_MAX, -DBL_MAX, inf, -inf, std::nan("")};
    for (const Bbox2& box : boxes) {
        const HC2 hc(box);
        for (const double x : coords) {
            for (const double y : coords)
                EXPECT_LT(hc.key(x, y), 1u << 30);
        }
    }
    // Boxes at the ends of the range still tell points apart.
    EXPECT_NE(HC2(boxes[4]).key(-1e308, 1e307), HC2(boxes[4]).key(1e308, 1e307));
    EXPECT_NE(HC2(boxOf(0, 0, 1e-310, 1e-310)).key(1e-311, 0),
              HC2(boxOf(0, 0, 1e-310, 1e-310)).key(9e-311, 0));
}

TEST(HC2, refusesImpossibleLengths) {
    for (const int numBits : {33, 34, 7}) {
        const CapturedMessages messages;
        const HC2 hc(numBits);
        EXPECT_EQ("      [Kivo2D-Message] HC2::HC2(..), ERROR: invalid bitlength\n", messages.output());
    }
}
