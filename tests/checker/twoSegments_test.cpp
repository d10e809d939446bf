#include "SegmentChecker.h"
#include "tests/support/capture.h"
#include "tests/support/sanitized.h"
#include "tests/support/segmentOracle.h"
#include "tests/support/segmentPairs.h"

#include <gtest/gtest.h>

using namespace segmentOracle;
using namespace segmentPairs;

namespace {

Points mixed(Rng& rng) {
    const int kind = below(rng, 6);
    return kind == 0   ? uniform(rng, 0, 1)
           : kind == 1 ? integers(rng, 9)
           : kind == 2 ? touching(rng, below(rng, 2))
           : kind == 3 ? collinear(rng)
           : kind == 4 ? nearParallel(rng, std::pow(10, -doubles::uniform(rng, 4, 17)))
                       : axisParallel(rng);
}

// The message that a call is to give, or the end of it; the neutral result is false and no change.
void expectMessage(const std::string& text, SegmentIntersectionType type, const Segment2* pA,
                   const Segment2* pB) {
    const SegmentChecker checker;
    const std::string location = "      [Kivo2D-Message] SegmentChecker::getIntersectionPoint(), ";
    for (const auto& [p, q] : {std::pair(pA, pB), {pB, pA}}) {
        const CapturedMessages messages;
        Point2 point(17, -0.0);
        Segment2 segment(point, {3, 4});
        EXPECT_FALSE(type == SIT_SEGMENT ? checker.getIntersectionSegment(p, q, segment)
                                         : checker.getIntersectionPoint(type, p, q, point));
        EXPECT_TRUE(isSame(point, {17, -0.0}) && isSame(segment.getSrc(), point) &&
                    segment.getTrg() == Point2(3, 4));
        EXPECT_TRUE(text.empty() ? !messages.output().empty() : messages.output() == location + text + "\n");
    }
}

} // namespace

TEST(TwoSegments, shareWhatRationalsSayInAnyOrderAndDirectionAtAnyScale) {
    Rng rng(21);
    const SegmentChecker grown; // by all pairs so far
    for (int i = 0; i < (isSanitized ? 1000 : 7000) && !HasFailure(); ++i) {
        const SegmentChecker fresh;
        const SegmentChecker& checker = i % 2 == 0 ? fresh : grown;
        for (const int exponent : {0, 498, -498, 990, -1050, -1074})
            EXPECT_EQ(findFault(checker, doubles::scaled(mixed(rng), exponent)), "");
        for (const auto make : {extremes, anyBits})
            EXPECT_EQ(findFault(checker, make(rng)), "");
        EXPECT_EQ(findFault(checker, utm(rng, below(rng, 2) * 0.001)), "");
    }
}

TEST(TwoSegments, betweenSixteenPointsShareWhatRationalsSay) {
    constexpr double tiny = 0x1p-1074, third = DBL_MAX / 3;
    constexpr double aLattices[][2][4] = {
        {{-1, -0.0, 1, 2}, {-2, -1, 0.0, 1}},
        {{0, 0.1, 0.2, 0.3}, {1, 1.1, 1.2, 1.3}},
        {{0, 1, 2, 3}, {0, 1 + DBL_EPSILON / 2, 2, 3}},
        {{0, 1e150, 2e150, 3e150}, {0, 1e-150, 2e-150, 3e-150}},
        {{0, tiny, 2 * tiny, 3 * tiny}, {-tiny, 0, tiny, 2 * tiny}},
        {{-DBL_MAX, -third, third, DBL_MAX}, {-DBL_MAX, -tiny, 1, DBL_MAX}},
    };
    for (const auto& [aX, aY] : aLattices) {
        Points vEnds; // two by two, of all segments, points among them
        for (unsigned i = 0; i < 16; ++i)
            for (unsigned j = i; j < 16; ++j)
                vEnds.insert(vEnds.end(), {{aX[i % 4], aY[i / 4]}, {aX[j % 4], aY[j / 4]}});
        const SegmentChecker checker;
        for (std::size_t i = 0; i < vEnds.size() && !HasFailure(); i += 2)
            for (std::size_t j = i; j < vEnds.size(); j += 2)
                EXPECT_EQ(findFault(checker, {vEnds[i], vEnds[i + 1], vEnds[j], vEnds[j + 1]}), "");
    }
}

TEST(TwoSegments, areToldFromOneObjectWhichSharesAllOfItself) {
    const SegmentChecker checker;
    const Segment2 a({0, 0}, {2, 1}), point({3, 3}, {3, 3}), equal = point;
    EXPECT_EQ(checker.getIntersectionType(&point, &equal), SIT_ENDPOINT);
    for (const Segment2* pSelf : {&a, &point}) {
        Segment2 shared;
        EXPECT_EQ(checker.getIntersectionType(pSelf, pSelf), SIT_SEGMENT);
        EXPECT_TRUE(checker.getIntersectionSegment(pSelf, pSelf, shared));
        EXPECT_TRUE(isSame(shared.getSrc(), pSelf->getSrc()) && isSame(shared.getTrg(), pSelf->getTrg()));
    }
}

TEST(TwoSegments, areRefusedWhereTheyShareSomethingElseOrAreNone) {
    const Segment2 a({0, 0}, {4, 4}), crossing({0, 4}, {4, 0}), joined({4, 4}, {5, 0}), along({1, 1}, {9, 9}),
        apart({5, 0}, {6, 0}), parallel({1, 0}, {5, 4}), touching({4, 4}, {6, 6}), inside({1, 1}, {1, 1});
    expectMessage("ERROR: SIT_ENDPOINT is a wrong SegmentIntersectionType for the preset segments",
                  SIT_ENDPOINT, &a, &joined);
    for (const auto type : {SIT_UNINITIALIZED, SIT_NONE, static_cast<SegmentIntersectionType>(7)})
        expectMessage("ERROR: wrong SegmentIntersectionType provided", type, &a, &crossing);
    for (const Segment2* pOther : {&along, &apart, &a})
        expectMessage("", SIT_POINT, &a, pOther);
    for (const Segment2* pOther : {&crossing, &joined, &apart, &parallel})
        expectMessage("WARNING: segments seem to be non-collinear", SIT_SEGMENT, &a, pOther);
    for (const Segment2* pOther : {&touching, &inside})
        expectMessage("", SIT_SEGMENT, &a, pOther);
    for (int i = -1; i < 12; ++i) {
        double aCoords[] = {0, 0, 1, 1};
        if (i >= 0) aCoords[i % 4] = i < 4 ? HUGE_VAL : i < 8 ? -HUGE_VAL : std::nan("");
        const Segment2 bad({aCoords[0], aCoords[1]}, {aCoords[2], aCoords[3]}), *const pBad =
                                                                                    i < 0 ? nullptr : &bad;
        for (const auto& [p, q] : {std::pair(&a, pBad), {pBad, &a}, {pBad, pBad}}) {
            const CapturedMessages messages;
            EXPECT_EQ(SegmentChecker().getIntersectionType(p, q), SIT_UNINITIALIZED);
            EXPECT_TRUE(messages.output().find(", ERROR: ") != std::string::npos);
        }
        expectMessage("", SIT_POINT, &a, pBad);
        expectMessage("", SIT_SEGMENT, pBad, pBad);
    }
}

TEST(SegmentIntersectionType, hasAName) {
    const char* const aNames[] = {"SIT_UNINITIALIZED", "SIT_NONE",     "SIT_SEGMENT",
                                  "SIT_POINT",         "SIT_ENDPOINT", "UNKNOWN SIT"};
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(SegmentChecker::getIntersectionTypeString(static_cast<SegmentIntersectionType>(i)),
                  aNames[i]);
}
