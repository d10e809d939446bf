#include "checker/SegmentIndex.h"
#include "checker/SegmentQueries.h"
#include "tests/support/segmentSets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

using namespace TESK_KIVO2D;
using doubles::Rng;
using segmentSets::pointersTo;
using segmentSets::Segments;

namespace {

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

// Of those from the first on; coordinates lie within the bound.
void expectIntersectors(Segments& v, std::size_t first, double bound) {
    TeskTest tests;
    tests.setStaticBound(bound);
    SegmentQueries queries(pointersTo(v), placesOf(v));
    for (std::size_t i = first; i < v.size(); ++i) {
        std::vector<std::uint32_t> vMet, vExpected;
        queries.visitIntersectors(
            Ends(v[i]), [&](std::uint32_t place, SegmentIntersectionType) { vMet.push_back(place); });
        for (const std::uint32_t j : placesOf(v))
            if (classify(tests, Ends(v[i]), Ends(v[j])) != SIT_NONE) vExpected.push_back(j);
        std::sort(vMet.begin(), vMet.end());
        EXPECT_EQ(vMet, vExpected) << i;
    }
}

} // namespace

// All others shared a few cells of the grid: every box met every other one.
TEST(SegmentIndex, tellsBoxesApartWhereAFewSegmentsAreFarAway) {
    Rng rng(91);
    const Segments vNear = segmentSets::longAndShort(rng, 2000, 0.02);
    for (const double far : {1e5, 1e12, 1e30, 1e300}) {
        Segments v = vNear;
        const std::size_t numBefore = numCandidates(v);
        addFarAway(v, far);
        EXPECT_LT(numCandidates(v), 2 * numBefore) << far;

        expectIntersectors(v, vNear.size() - 100, far);
    }
}

// Boxes overlap that do not meet: after some queries lines answer instead.
TEST(SegmentQueries, answersByLinesAsPairsShow) {
    Segments vHatching = segmentSets::many(
        300, [](int i) { return Segment2(Point2(i, 0), Point2(i + (i % 7 == 0 ? 1001 : 1000), 1000)); });
    vHatching.emplace_back(Point2(0, 1000), Point2(500, 1000)); // an end of each touches it
    expectIntersectors(vHatching, 0, 1e4);
    Segments vStar = segmentSets::many(300, [](int i) {
        const double angle = 0.021 * i;
        return Segment2(Point2(0.1, 0.2), Point2(std::cos(angle), std::sin(angle)));
    });
    vStar.emplace_back(Point2(0.1, 0.2), Point2(0.1, 0.2));
    vStar.emplace_back(Point2(1e9, 1), Point2(-1e9, -1));
    expectIntersectors(vStar, 0, 1e9);
    Segments vChevrons = segmentSets::many(
        600, [](int i) { return Segment2(Point2(0, i / 2), Point2(i % 2 == 0 ? -999 : 999, 999 + i / 2)); });
    vChevrons.emplace_back(Point2(-3, 0), Point2(700, 1200));
    expectIntersectors(vChevrons, 0, 1e4);
}
