#include "Segment2.h"
#include "SegmentChecker.h"
#include "tests/support/capture.h"
#include "tests/support/sanitized.h"
#include "tests/support/segmentPairs.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>

using namespace TESK_KIVO2D;
using doubles::Points;
using doubles::Rng;
using segmentPairs::isAt;

namespace {

constexpr int samples = isSanitized ? 600 : 5000;
const std::string location = "      [Kivo2D-Message] SegmentChecker::getIntersectionPoint(), ";

class SharedParts : public testing::TestWithParam<segmentPairs::Family> {};
INSTANTIATE_TEST_SUITE_P(All, SharedParts, testing::ValuesIn(segmentPairs::all()),
                         [](const auto& info) { return info.param.name; });

bool isSame(const Point2& p, const Point2& q) {
    const auto bits = [](double v) { return std::bit_cast<std::uint64_t>(v); };
    return bits(p.x()) == bits(q.x()) && bits(p.y()) == bits(q.y());
}
bool isAmong(const Point2& p, const Points& v) {
    return std::any_of(v.begin(), v.end(), [&](const Point2& q) { return isSame(p, q); });
}

// Within a unit in the last place: no double lies between them.
bool isNextTo(double value, const mpq_class& exact) {
    const double below = std::nextafter(value, -HUGE_VAL), above = std::nextafter(value, HUGE_VAL);
    return (std::isinf(below) || below < exact) && (std::isinf(above) || exact < above);
}

void expectPoint(const Points& p, const oracle::RationalPoint& exact) {
    const SegmentChecker checker;
    Points ends = p;
    for (Point2& end : ends)
        end.setCustomIndex(3);
    const Segment2 a(ends[0], ends[1]), b(ends[2], ends[3]);
    Point2 point;
    EXPECT_TRUE(checker.getIntersectionPoint(SIT_POINT, &a, &b, point)) << doubles::hex(p);
    EXPECT_TRUE(isNextTo(point.x(), exact.x) && isNextTo(point.y(), exact.y))
        << doubles::hex(p) << " gives " << doubles::hex({point});
    EXPECT_EQ(point.getCustomIndex(), -1);
    const bool bAtEnd = std::any_of(p.begin(), p.end(), [&](const Point2& q) { return isAt(exact, q); });
    EXPECT_TRUE(!bAtEnd || isAmong(point, p)) << doubles::hex(p) << " gives " << doubles::hex({point});
}

void expectSegment(const Points& p) {
    const auto exact = oracle::commonPoints(p[0], p[1], p[2], p[3]);
    const SegmentChecker checker;
    const Segment2 a(p[0], p[1]), b(p[2], p[3]);
    Segment2 shared;
    EXPECT_TRUE(checker.getIntersectionSegment(&a, &b, shared)) << doubles::hex(p);
    const Point2 first = shared.getSrc(), last = shared.getTrg();
    EXPECT_TRUE(isAt(exact->first, first) && isAt(exact->last, last) && isAmong(first, p) && isAmong(last, p))
        << doubles::hex(p) << " gives " << doubles::hex({first, last});
}

// That a message is given, and the whole of it where it is known; the neutral result is false and no change.
void expectNoPoint(SegmentIntersectionType type, const Segment2* pA, const Segment2* pB,
                   const std::string& text = "") {
    const CapturedMessages messages;
    Point2 point(17, -0.0);
    point.setCustomIndex(5);
    EXPECT_FALSE(SegmentChecker().getIntersectionPoint(type, pA, pB, point));
    EXPECT_TRUE(isSame(point, {17, -0.0}) && point.getCustomIndex() == 5);
    EXPECT_FALSE(messages.output().empty());
    EXPECT_TRUE(text.empty() || messages.output() == location + text + "\n") << messages.output();
}
void expectNoSegment(const Segment2* pA, const Segment2* pB, const std::string& text = "") {
    const CapturedMessages messages;
    Segment2 segment({17, -0.0}, {3, 4});
    EXPECT_FALSE(SegmentChecker().getIntersectionSegment(pA, pB, segment));
    EXPECT_TRUE(isSame(segment.getSrc(), {17, -0.0}) && isSame(segment.getTrg(), {3, 4}));
    EXPECT_FALSE(messages.output().empty());
    EXPECT_TRUE(text.empty() || messages.output() == location + text + "\n") << messages.output();
}

const std::string wrongType = "ERROR: wrong SegmentIntersectionType provided";
const std::string wrongEndPoint =
    "ERROR: SIT_ENDPOINT is a wrong SegmentIntersectionType for the preset segments";
const std::string notCollinear = "WARNING: segments seem to be non-collinear";

} // namespace

TEST_P(SharedParts, arePointsNextToTheRationalOnesOrEndsBitForBit) {
    Rng rng(31);
    int numPoints = 0, numSegments = 0;
    for (int i = 0; i < samples && !HasFailure(); ++i) {
        const Points p = GetParam().make(rng);
        const SegmentIntersectionType type = segmentPairs::exactType(p);
        if (type == SIT_POINT || type == SIT_ENDPOINT) {
            ++numPoints;
            const auto exact = oracle::commonPoints(p[0], p[1], p[2], p[3])->first;
            segmentPairs::forEachOrder(p, [&](const Points& q) { expectPoint(q, exact); });
        } else if (type == SIT_SEGMENT) {
            ++numSegments;
            segmentPairs::forEachOrder(p, expectSegment);
        }
    }
    EXPECT_GE(numPoints + numSegments, samples / 20);
}

TEST(IntersectionPoint, ofATouchIsTheEndAsItIs) {
    const SegmentChecker checker;
    const Segment2 base({-1, 0.0}, {1, 0.0}), foot({-0.0, -0.0}, {0.3, 7}), point({0.0, -0.0}, {0.0, -0.0});
    for (const Segment2* pOther : {&foot, &point}) {
        Point2 p;
        EXPECT_TRUE(checker.getIntersectionPoint(SIT_POINT, &base, pOther, p));
        EXPECT_TRUE(isSame(p, pOther->getSrc()));
        EXPECT_TRUE(checker.getIntersectionPoint(SIT_POINT, pOther, &base, p));
        EXPECT_TRUE(isSame(p, pOther->getSrc()));
    }
}

TEST(IntersectionPoint, isRefusedForOtherTypesAndForWhatIsNoCrossing) {
    const Segment2 a({0, 0}, {4, 4}), crossing({0, 4}, {4, 0}), joined({4, 4}, {5, 0}), along({1, 1}, {9, 9}),
        apart({5, 0}, {6, 0}), bad({0, 4}, {4, std::nan("")});
    expectNoPoint(SIT_ENDPOINT, &a, &crossing, wrongEndPoint);
    expectNoPoint(SIT_ENDPOINT, &a, &joined, wrongEndPoint);
    for (const auto type :
         {SIT_UNINITIALIZED, SIT_NONE, SIT_SEGMENT, static_cast<SegmentIntersectionType>(7)})
        expectNoPoint(type, &a, &crossing, wrongType);
    for (const Segment2* pOther : {&along, &apart, &bad, &a, static_cast<const Segment2*>(nullptr)}) {
        expectNoPoint(SIT_POINT, &a, pOther);
        expectNoPoint(SIT_POINT, pOther, &a);
        expectNoPoint(SIT_SEGMENT, pOther, &a);
    }
    expectNoPoint(SIT_POINT, nullptr, nullptr);
}

TEST(IntersectionSegment, keepsTheSignsOfZerosAndTheDirectionOfTheFirst) {
    const SegmentChecker checker;
    const Segment2 a({2, -0.0}, {-0.0, 0.0}), b({-5, 0.0}, {1, 0.0}), point({3, -0.0}, {3, -0.0});
    Segment2 shared;
    EXPECT_TRUE(checker.getIntersectionSegment(&a, &b, shared));
    EXPECT_TRUE(isSame(shared.getSrc(), {1, 0.0}) && isSame(shared.getTrg(), {-0.0, 0.0}));
    EXPECT_TRUE(checker.getIntersectionSegment(&b, &a, shared));
    EXPECT_TRUE(isSame(shared.getSrc(), {-0.0, 0.0}) && isSame(shared.getTrg(), {1, 0.0}));
    for (const Segment2* pSelf : {&a, &point}) { // one object shares all of itself
        EXPECT_TRUE(checker.getIntersectionSegment(pSelf, pSelf, shared));
        EXPECT_TRUE(isSame(shared.getSrc(), pSelf->getSrc()) && isSame(shared.getTrg(), pSelf->getTrg()));
    }
}

TEST(IntersectionSegment, isRefusedForWhatSharesLess) {
    const Segment2 a({0, 0}, {4, 4}), crossing({0, 4}, {4, 0}), joined({4, 4}, {5, 0}), apart({5, 0}, {6, 0}),
        parallel({1, 0}, {5, 4}), behind({5, 5}, {6, 6}), touching({4, 4}, {6, 6}), inside({1, 1}, {1, 1}),
        infinite({1, 1}, {HUGE_VAL, HUGE_VAL});
    for (const Segment2* pOther : {&crossing, &joined, &apart, &parallel}) {
        expectNoSegment(&a, pOther, notCollinear);
        expectNoSegment(pOther, &a, notCollinear);
    }
    for (const Segment2* pOther :
         {&behind, &touching, &inside, &infinite, static_cast<const Segment2*>(nullptr)}) {
        expectNoSegment(&a, pOther);
        expectNoSegment(pOther, &a);
    }
    expectNoSegment(nullptr, nullptr);
}
