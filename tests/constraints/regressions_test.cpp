#include "Kivo_2D.h"
#include "tests/support/constrained.h"

#include <cmath>

// What once went wrong, by the smallest input that is known.

using namespace TESK_KIVO2D;
using doubles::below;
using doubles::Rng;

namespace {

// Segments that lie on each other but for a few units in the last place.
Segments makeBundle(std::uint64_t seed, int num, double scale) {
    Rng rng(seed);
    const auto jittered = [&](double v) { return (v + (below(rng, 39) - 19) * 0x1p-53) * scale; };
    Segments vSegments;
    for (int i = 0; i < num; ++i) {
        const double x0 = jittered(0), y0 = jittered(0), x1 = jittered(1);
        vSegments.emplace_back(Point2(x0, y0), Point2(x1, jittered(0.3)));
    }
    return vSegments;
}

} // namespace

TEST(Bundles, makeNoMoreVerticesWhereCoordinatesAreExtreme) {
    for (const double scale : {0x1p-1000, 0x1p-600, 1.0, 0x1p600, 0x1p1020}) {
        Constrained c;
        for (int i = 0; i < 6 && c.kivo.numberOfPoints() < 2000; ++i)
            c.add(makeBundle(1, 30, scale), CIS_CONSTRAINED_DELAUNAY);
        EXPECT_GT(2000, c.kivo.numberOfPoints()) << scale;
        expectConstrained(c);
    }
}

TEST(Bundles, doNotMultiplyWithEachConformingCall) {
    Constrained c;
    for (int i = 0; i < 12 && c.kivo.numberOfPoints() < 20000; ++i)
        c.add(makeBundle(2, 6, 1), CIS_CONFORMING_DELAUNAY);
    EXPECT_GT(20000, c.kivo.numberOfPoints());
    EXPECT_TRUE(c.kivo.checkValidity(false, "bundle"));
}

TEST(ConformingSegments, ofTheLargestCoordinatesAreSplit) {
    const double m = 1.7976931348623157e308;
    Constrained c;
    c.add({{{-m, -m}, {m, m}}, {{-m, m}, {m, -m}}, {{-m, m / 2}, {m, m}}}, CIS_CONFORMING_DELAUNAY);
    expectConstrained(c);
}

TEST(AnUnknownStrategy, doesNotKeepOthersFromTheirEdges) {
    const auto unknown = ConstraintInsertionStrategy(7);
    Segments vDiagonal = {{{0, 0}, {4, 4}}}, vOther = {{{0, 4}, {4, 0}}};
    for (const bool b2D : {false, true}) {
        const CapturedMessages messages;
        Kivo_2D kivo;
        if (b2D) kivo.insert({{0, 4}, {4, 0}, {0, 0}});
        if (b2D) {
            EXPECT_THROW(kivo.createConstraint(vDiagonal, unknown), KivoException);
        } else {
            kivo.createConstraint(vDiagonal, unknown);
            kivo.insert({{0, 4}, {4, 0}});
            EXPECT_THROW(kivo.applyConstraintsAndZones(), KivoException);
        }
        kivo.applyConstraintsAndZones();
        EXPECT_NE(nullptr, kivo.createConstraint(vOther));
        ConstraintGraph2* const pGraph = kivo.createConstraint(vDiagonal);
        ASSERT_NE(nullptr, pGraph);
        std::vector<ConstraintSegment2*> vLeaves;
        pGraph->getChildConstraintSegments(vLeaves);
        EXPECT_EQ(2u, vLeaves.size());
        EXPECT_TRUE(kivo.checkValidity(true, "unknown"));
    }
}

TEST(ConformingSegments, thatRoundingLaidBesideEachOtherAreDoneAfterOneMoreCall) {
    Constrained c;
    c.add({{{0, 0}, {0, 6}}, {{0, 6}, {1, 0}}, {{1, 0}, {0, 0}}}, CIS_CONSTRAINED_DELAUNAY);
    c.add({{{9, 1}, {3, 0}}, {{15, 10}, {0, 0}}, {{9, 6}, {0, 0}}}, CIS_CONFORMING_DELAUNAY);
    c.kivo.applyConstraintsAndZones();
    const std::size_t numPoints = c.kivo.numberOfPoints();
    EXPECT_GT(20000u, numPoints);
    for (int i = 0; i < 3; ++i)
        c.kivo.applyConstraintsAndZones();
    EXPECT_EQ(numPoints, c.kivo.numberOfPoints());
}

TEST(ASegmentSplitBesideItsLine, leavesADelaunayTriangulation) {
    for (std::uint64_t seed = 1; seed <= 200 && !testing::Test::HasFailure(); ++seed) {
        Rng rng(seed);
        const auto gridPoint = [&] { return Point2(below(rng, 16), below(rng, 16) * 0.7); };
        Constrained c;
        for (int i = 0; i < 12; ++i)
            c.kivo.insert(gridPoint());
        for (int i = 0; i < 6; ++i) {
            const Point2 p = gridPoint(), q = gridPoint();
            if (p != q) c.add({{p, q}}, CIS_CONSTRAINED_DELAUNAY);
        }
        for (int i = 0; i < 12 && c.kivo.is2D(); ++i) {
            std::vector<ConstraintSegment2*> vLeaves;
            const auto& graph = c.vGraphs[rng() % c.vGraphs.size()];
            graph.pGraph->getChildConstraintSegments(vLeaves);
            const CapturedMessages messages;
            vLeaves[rng() % vLeaves.size()]->insertAndSplit(gridPoint());
            EXPECT_TRUE(c.kivo.checkValidity(true, "beside")) << seed << messages.output();
        }
    }
}
