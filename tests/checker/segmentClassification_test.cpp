#include "SegmentChecker.h"

#include "Segment2.h"

#include <gtest/gtest.h>

using namespace TESK_KIVO2D;

TEST(SegmentChecker, tellsACrossingFromATouchAndAnOverlap) {
    const SegmentChecker checker;
    const Segment2 a({0, 0}, {2, 2}), b({0, 2}, {2, 0}), c({2, 2}, {3, 0}), d({1, 1}, {4, 4});
    EXPECT_EQ(checker.getIntersectionType(&a, &b), SIT_POINT);
    EXPECT_EQ(checker.getIntersectionType(&a, &c), SIT_ENDPOINT);
    EXPECT_EQ(checker.getIntersectionType(&a, &d), SIT_SEGMENT);
}
