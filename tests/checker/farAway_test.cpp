#include "checker/SegmentIndex.h"
#include "checker/SegmentQueries.h"
#include "tests/support/segmentSets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

using namespace TESK_KIVO2D;
using doubles::Rng;
using segmentSets::Segments;

namespace {

std::vector<Segment2*> pointersTo(Segments& v) {
    std::vector<Segment2*> vPointers;
    for (Segment2& segment : v)
        vPointers.push_back(&segment);
    return vPointers;
}

std::vector<std::uint32_t> placesOf(const Segments& v) {
    std::vector<std::uint32_t> vPlaces(v.size());
    std::iota(vPlaces.begin(), vPlaces.end(), 0U);
    return vPlaces;
}

std::size_t numCandidates(Segments& v) {
    const SegmentArray segments(pointersTo(v), placesOf(v));
    const SegmentIndex index(segments);
    std::size_t num = 0;
    for (const Segment2& segment : v)
        index.visitCandidates(Ends(segment), [&](std::size_t) {
            ++num;
            return true;
        });
    return num;
}

// One reaches from the middle of the others to the far end, one crosses it there, and one is a point.
void addFarAway(Segments& v, double far) {
    v.emplace_back(Point2(0.5, 0.5), Point2(far, 0.5 * far));
    v.emplace_back(Point2(far, 0), Point2(0.5 * far, far));
    v.emplace_back(Point2(-far, far), Point2(-far, far));
}

} // namespace

// All others shared a few cells of the grid: every box met every other one.
TEST(SegmentIndex, tellsBoxesApartWhereAFewSegmentsAreFarAway) {
    Rng rng(91);
    const Segments vNear = segmentSets::many(2000, [&](int) {
        const Point2 p = segmentSets::uniformPoint(rng);
        return Segment2(p, segmentSets::onCircle(rng, p, 0.02));
    });
    for (const double far : {1e5, 1e12, 1e30, 1e300}) {
        Segments v = vNear;
        const std::size_t numBefore = numCandidates(v);
        addFarAway(v, far);
        EXPECT_LT(numCandidates(v), 2 * numBefore) << far;

        TeskTest tests;
        tests.setStaticBound(far);
        SegmentQueries queries(pointersTo(v), placesOf(v));
        for (std::size_t i = v.size() - 100; i < v.size(); ++i) {
            std::vector<std::uint32_t> vMet, vExpected;
            queries.visitIntersectors(
                Ends(v[i]), [&](std::uint32_t place, SegmentIntersectionType) { vMet.push_back(place); });
            for (const std::uint32_t j : placesOf(v))
                if (classify(tests, Ends(v[i]), Ends(v[j])) != SIT_NONE) vExpected.push_back(j);
            std::sort(vMet.begin(), vMet.end());
            EXPECT_EQ(vMet, vExpected) << i;
        }
    }
}
