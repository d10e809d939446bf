#include "Segment2.h"
#include "SegmentChecker.h"
#include "tests/support/capture.h"
#include "tests/support/sanitized.h"
#include "tests/support/segmentPairs.h"

#include <gtest/gtest.h>

#include <array>
#include <map>

using namespace TESK_KIVO2D;
using doubles::Points;
using doubles::Rng;

namespace {

class PairsOfSegments : public testing::TestWithParam<segmentPairs::Family> {};
INSTANTIATE_TEST_SUITE_P(All, PairsOfSegments, testing::ValuesIn(segmentPairs::all()),
                         [](const auto& info) { return info.param.name; });

// Columns and rows of a lattice of 16 points; all its pairs of segments are looked at.
struct Lattice {
    const char* name;
    std::array<double, 4> aX, aY;
};
void PrintTo(const Lattice& lattice, std::ostream* pStream) { *pStream << lattice.name; }

constexpr double tiny = 0x1p-1074, third = DBL_MAX / 3;
const Lattice lattices[] = {
    {"unit", {0, 1, 2, 3}, {0, 1, 2, 3}},
    {"utm", {500000, 500001, 500002, 500003}, {4e6, 4e6 + 1, 4e6 + 2, 4e6 + 3}},
    {"aboutZero", {-1, -0.0, 1, 2}, {-2, -1, 0.0, 1}},
    {"tenths", {0, 0.1, 0.2, 0.3}, {1, 1.1, 1.2, 1.3}},
    {"times1e150", {0, 1e150, 2e150, 3e150}, {0, 1e150, 2e150, 3e150}},
    {"times1e_150", {0, 1e-150, 2e-150, 3e-150}, {0, 1e-150, 2e-150, 3e-150}},
    {"oneUlpOff", {0, 1, 2, 3}, {0, 1 + DBL_EPSILON / 2, 2, 3}},
    {"smallest", {0, tiny, 2 * tiny, 3 * tiny}, {-tiny, 0, tiny, 2 * tiny}},
    {"largest", {-DBL_MAX, -third, third, DBL_MAX}, {-DBL_MAX, -third, third, DBL_MAX}},
    {"smallAndLarge", {-DBL_MAX, 0, tiny, DBL_MAX}, {-DBL_MAX, -tiny, 1, DBL_MAX}},
};
class LatticePairs : public testing::TestWithParam<Lattice> {};
INSTANTIATE_TEST_SUITE_P(All, LatticePairs, testing::ValuesIn(lattices),
                         [](const auto& info) { return info.param.name; });

void expectType(const SegmentChecker& checker, const Points& p, SegmentIntersectionType expected) {
    const Segment2 a(p[0], p[1]), b(p[2], p[3]);
    EXPECT_EQ(checker.getIntersectionType(&a, &b), expected) << doubles::hex(p);
}

} // namespace

TEST_P(LatticePairs, areClassifiedAsByRationalsInAnyOrderAndDirection) {
    std::vector<std::pair<Point2, Point2>> vSegments; // points among them
    for (unsigned i = 0; i < 16; ++i) {
        for (unsigned j = i; j < 16; ++j) {
            const auto at = [](unsigned k) { return Point2(GetParam().aX[k % 4], GetParam().aY[k / 4]); };
            vSegments.emplace_back(at(i), at(j));
        }
    }
    const SegmentChecker checker;
    std::map<SegmentIntersectionType, int> mCounts;
    for (std::size_t i = 0; i < vSegments.size() && !HasFailure(); ++i) {
        for (std::size_t j = i; j < vSegments.size() && !HasFailure(); ++j) {
            const Points p = {vSegments[i].first, vSegments[i].second, vSegments[j].first,
                              vSegments[j].second};
            const SegmentIntersectionType expected = segmentPairs::exactType(p);
            ++mCounts[expected];
            segmentPairs::forEachOrder(p, [&](const Points& q) { expectType(checker, q, expected); });
        }
    }
    EXPECT_EQ(mCounts.size(), 4u);
}

TEST_P(PairsOfSegments, areClassifiedAsByRationalsInAnyOrderAndDirection) {
    Rng rng(21);
    const SegmentChecker grown; // by all pairs so far
    for (int i = 0; i < (isSanitized ? 800 : 6000) && !HasFailure(); ++i) {
        const Points p = GetParam().make(rng);
        const SegmentIntersectionType expected = segmentPairs::exactType(p);
        const SegmentChecker fresh;
        segmentPairs::forEachOrder(p, [&](const Points& q) { expectType(fresh, q, expected); });
        expectType(grown, p, expected);
    }
}

TEST(SegmentChecker, tellsOneObjectFromTwoThatAreEqual) {
    const SegmentChecker checker;
    const Segment2 a({0, 0}, {2, 1}), same = a, turned({2, 1}, {-0.0, 0.0}), point({3, 3}, {3, 3}),
                                      equal = point;
    EXPECT_EQ(checker.getIntersectionType(&a, &a), SIT_SEGMENT);
    EXPECT_EQ(checker.getIntersectionType(&a, &same), SIT_SEGMENT);
    EXPECT_EQ(checker.getIntersectionType(&a, &turned), SIT_SEGMENT);
    EXPECT_EQ(checker.getIntersectionType(&point, &point), SIT_SEGMENT);
    EXPECT_EQ(checker.getIntersectionType(&point, &equal), SIT_ENDPOINT);
}

TEST(SegmentChecker, namesTheTypes) {
    const std::array<const char*, 6> aNames = {"SIT_UNINITIALIZED", "SIT_NONE",     "SIT_SEGMENT",
                                               "SIT_POINT",         "SIT_ENDPOINT", "UNKNOWN SIT"};
    for (std::size_t i = 0; i < aNames.size(); ++i)
        EXPECT_EQ(SegmentChecker::getIntersectionTypeString(static_cast<SegmentIntersectionType>(i)),
                  aNames[i]);
}

TEST(SegmentChecker, doesNotClassifyWhatIsNoSegment) {
    const SegmentChecker checker;
    const Segment2 good({0, 0}, {1, 1});
    std::vector<Segment2> vBad;
    for (const double value : {HUGE_VAL, -HUGE_VAL, std::nan("")}) {
        vBad.insert(vBad.end(), {Segment2({value, 0}, {1, 1}), Segment2({0, value}, {1, 1})});
        vBad.insert(vBad.end(), {Segment2({0, 0}, {value, 1}), Segment2({0, 0}, {1, value})});
    }
    const auto expectError = [&](const Segment2* pA, const Segment2* pB) {
        const CapturedMessages messages;
        EXPECT_EQ(checker.getIntersectionType(pA, pB), SIT_UNINITIALIZED);
        EXPECT_TRUE(messages.output().find(", ERROR: ") != std::string::npos);
    };
    for (const Segment2& bad : vBad) {
        expectError(&good, &bad);
        expectError(&bad, &good);
        expectError(&bad, &bad);
    }
    expectError(nullptr, &good);
    expectError(&good, nullptr);
    expectError(nullptr, nullptr);
}
