#include "tests/support/zoned.h"

// Zones inside and outside of rings, and global ones: as sets, by area, and by winding numbers.

using namespace zoned;
using doubles::Rng;

namespace {

bool isPositive(int winding) { return winding > 0; }
bool isOne(int winding) { return winding == 1; }

// Inside and outside are what lies left and right of the graphs.
void expectSides(const Kivo_2D& kivo, const std::vector<ConstraintGraph2*>& vGraphs, const Zone2* pInside,
                 const Zone2* pOutside) {
    expectZone(kivo, pInside, oracle::reachedFrom(oracle::LEFT, kivo, vGraphs));
    expectZone(kivo, pOutside, oracle::reachedFrom(oracle::RIGHT, kivo, vGraphs));
}

// The two have no triangle in common, and make up the whole.
void expectPartition(const Kivo_2D& kivo, const Zone2* pInside, const Zone2* pOutside) {
    const Triangles v0 = trianglesOf(pInside), v1 = trianglesOf(pOutside);
    EXPECT_EQ(oracle::allTriangles(kivo), unionOf(v0, v1));
    EXPECT_EQ(kivo.numberOfTriangles(), v0.size() + v1.size());
    expectNearArea(oracle::areaOf(oracle::allTriangles(kivo)), pInside->getArea2D() + pOutside->getArea2D());
}

struct Pair {
    Zone2 *pInside, *pOutside;
};
Pair sidesOf(Kivo_2D& kivo, ConstraintGraph2* pGraph) {
    return {kivo.createZone(pGraph, ZL_INSIDE), kivo.createZone(pGraph, ZL_OUTSIDE)};
}

} // namespace

TEST(Zone, ofARandomPolygonIsWhatItWindsRoundWhateverIsInsertedLater) {
    for (unsigned int seed = 1; seed <= 24 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Rng rng(seed);
        Kivo_2D kivo;
        Segments vRing;
        generateRandomPolygon(3 + seed % 4 * 9, -10, 10, vRing, seed);
        if (seed % 2 == 0) kivo.insert(randomPoints(rng, 30, -12, 12));
        const auto cis = ConstraintInsertionStrategy(seed / 2 % 2);
        const double area = oracle::areaOf(vRing);
        if (seed % 3 == 0) vRing = reversed(vRing);
        if (seed % 5 == 0) std::shuffle(vRing.begin(), vRing.end(), rng);
        ConstraintGraph2* const pGraph = add(kivo, vRing, seed % 4 != 0, cis);
        const auto [pInside, pOutside] = sidesOf(kivo, pGraph);
        Zone2* const pBounded = kivo.createZone(pGraph, ZL_BOUNDED);
        Zone2* const pGlobal = kivo.createZone(static_cast<ConstraintGraph2*>(nullptr), ZL_GLOBAL);
        for (int round = 0; round < 3 && !HasFailure(); ++round) {
            const Triangles vInside =
                oracle::withWindingNumber(oracle::allTriangles(kivo), oracle::leavesOf({pGraph}), isOne);
            expectZone(kivo, pInside, vInside);
            expectZone(kivo, pBounded, vInside);
            expectZone(kivo, pOutside, differenceOf(oracle::allTriangles(kivo), vInside));
            expectZone(kivo, pGlobal, oracle::allTriangles(kivo));
            expectNearArea(area, pInside->getArea2D());
            expectPartition(kivo, pInside, pOutside);
            disturb(kivo, rng, {pGraph}, 16);
        }
    }
}

TEST(Zone, ofASquareIsTheSameInEitherDirectionAndOrder) {
    for (int way = 0; way < 8; ++way) {
        Kivo_2D kivo;
        kivo.insert({{-5, -5}, {9, -4}, {8, 8}, {-6, 7}, {1, 1.5}});
        Segments vRing = square(0, 0, 2);
        if (way % 2 != 0) vRing = reversed(vRing);
        if (way / 2 % 2 != 0) std::swap(vRing[0], vRing[2]);
        if (way >= 4) // each in a direction of its own
            vRing[1].swapSrcTrg(), vRing[2].swapSrcTrg();
        const auto [pInside, pOutside] = sidesOf(kivo, add(kivo, vRing, way % 3 == 0));
        expectNearArea(4, pInside->getArea2D());
        EXPECT_EQ(4u, pInside->getNumberOfTriangles());
        expectPartition(kivo, pInside, pOutside);
        std::vector<Segment2> vBoundary;
        pInside->getBoundarySegments(vBoundary);
        EXPECT_EQ(4, oracle::areaOf(vBoundary));
    }
}

TEST(Zone, ofARingThatIsTheHullHasNothingOutside) {
    Kivo_2D kivo;
    const auto [pInside, pOutside] = sidesOf(kivo, add(kivo, square(0, 0, 2)));
    expectZone(kivo, pInside, oracle::allTriangles(kivo));
    const CapturedMessages captured;
    EXPECT_EQ(0u, pOutside->getNumberOfTriangles());
    EXPECT_EQ("", captured.output() + captured.error());
    expectZone(kivo, pOutside, {});
}

TEST(Zone, ofOneGraphWithHolesLiesLeftOfAllItsRings) {
    for (unsigned int seed = 1; seed <= 12 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Rng rng(seed);
        Kivo_2D kivo;
        kivo.insert(randomPoints(rng, 20, -12, 12));
        const Point2 center(doubles::uniform(rng, -1, 1), 0.3);
        const Segments vOuter = star(rng, 12, center, 9);
        Segments vRings = vOuter;
        for (int depth = 1; depth <= int(seed % 4); ++depth) { // holes, islands in holes, ...
            const Segments vCopy = scaledAbout(center, std::pow(0.6, depth), vOuter);
            vRings = joined(vRings, depth % 2 != 0 ? reversed(vCopy) : vCopy);
        }
        ConstraintGraph2* const pGraph = add(kivo, vRings, true, ConstraintInsertionStrategy(seed % 2));
        const auto [pInside, pOutside] = sidesOf(kivo, pGraph);
        for (int round = 0; round < 2; ++round) {
            expectSides(kivo, {pGraph}, pInside, pOutside);
            EXPECT_EQ(
                oracle::withWindingNumber(oracle::allTriangles(kivo), oracle::leavesOf({pGraph}), isOne),
                trianglesOf(pInside));
            expectNearArea(oracle::areaOf(vRings), pInside->getArea2D());
            expectPartition(kivo, pInside, pOutside);
            disturb(kivo, rng, {pGraph}, 24);
        }
    }
}

TEST(Zone, ofSeveralRingsLiesLeftOfEachHoweverTheyTouchNestOrCross) {
    const Segments vFirst = square(0, 0, 4);
    const struct {
        const char* name;
        Segments vSecond;
        double area;
        bool bOutsideIsRest;
    } aCases[] = {{"apart", square(6, 1, 2), 20, true},
                  {"vertex shared", square(4, 4, 2), 20, true},
                  {"edge shared", square(4, 0, 4), 32, false},
                  {"part of an edge shared", square(4, 1, 2), 20, false},
                  {"vertex on an edge", ringOf({{4, 2}, {6, 1}, {6, 3}}), 18, true},
                  {"crossing", square(2, 2, 4), 28, false},
                  {"nested", square(1, 1, 2), 16, false},
                  {"nested at a vertex", square(0, 0, 2), 16, false},
                  {"nested at an edge", square(1, 0, 2), 16, false},
                  {"the same", vFirst, 16, true}};
    for (const auto& test : aCases) {
        for (int way = 0; way < 4; ++way) {
            SCOPED_TRACE(test.name);
            Rng rng(7);
            Kivo_2D kivo;
            kivo.insert({{-5, -5}, {9, -6}, {11, 11}, {-7, 9}});
            std::vector<ConstraintGraph2*> vGraphs = {
                add(kivo, way % 2 != 0 ? reversed(vFirst) : vFirst),
                add(kivo, way / 2 != 0 ? reversed(test.vSecond) : test.vSecond, false)};
            if (way == 3) std::swap(vGraphs[0], vGraphs[1]);
            Zone2* const pInside = kivo.createZone(vGraphs, ZL_INSIDE);
            Zone2* const pOutside = kivo.createZone(vGraphs, ZL_OUTSIDE);
            for (int round = 0; round < 2; ++round) {
                expectSides(kivo, vGraphs, pInside, pOutside);
                EXPECT_EQ(oracle::withWindingNumber(oracle::allTriangles(kivo), oracle::leavesOf(vGraphs),
                                                    isPositive),
                          trianglesOf(pInside));
                expectNearArea(test.area, pInside->getArea2D());
                if (test.bOutsideIsRest) expectPartition(kivo, pInside, pOutside);
                disturb(kivo, rng, vGraphs, 16);
            }
        }
    }
}

TEST(Zone, ofARingThatCrossesItselfIsWhatItEnclosesByParity) {
    const Segments vBowTie = ringOf({{0, 0}, {4, 4}, {4, 0}, {0, 4}});
    const Segments vTwiceRound = ringOf({{0, 0}, {9, 0}, {9, 9}, {1, 9}, {1, -1}, {8, -1}, {8, 8}, {0, 8}});
    for (const Segments& vRing : {vBowTie, reversed(vBowTie), vTwiceRound, reversed(vTwiceRound)}) {
        Rng rng(3);
        Kivo_2D kivo;
        kivo.insert({{-9, -9}, {19, -8}, {5, 20}});
        ConstraintGraph2* const pGraph = add(kivo, vRing);
        const auto [pInside, pOutside] = sidesOf(kivo, pGraph);
        for (int round = 0; round < 2; ++round) {
            const Triangles vOdd =
                oracle::withOddCrossings(oracle::allTriangles(kivo), oracle::leavesOf({pGraph}));
            expectZone(kivo, pInside, vOdd);
            expectPartition(kivo, pInside, pOutside);
            EXPECT_EQ(vOdd, trianglesOf(kivo.createParityZone({pGraph})));
            disturb(kivo, rng, {pGraph}, 16);
        }
    }
}

TEST(Zone, isNotDividedByOtherConstraintsNorByLeavesThatItsGraphHasTwice) {
    Kivo_2D kivo;
    kivo.insert({{-9, -9}, {9, -9}, {0, 12}});
    const Point2 a(0, 0), b(4, 0), c(4, 4), d(0, 4);
    // There and back along a spike inwards, and along one outwards.
    const Segments vSpiked = joined(square(0, 0, 4), {{a, {1, 1}}, {{1, 1}, a}, {c, {6, 6}}, {{6, 6}, c}});
    ConstraintGraph2* const pSpiked = add(kivo, vSpiked);
    const auto [pInside, pOutside] = sidesOf(kivo, pSpiked);
    add(kivo, {{{-3, 1}, {7, 3}}, {{2, -3}, {2, 7}}}, false);
    expectSides(kivo, {pSpiked}, pInside, pOutside);
    expectNearArea(16, pInside->getArea2D());
    ConstraintGraph2* const pTwice = add(kivo, {{a, b}, {b, a}});
    Zone2* const pOfNothing = kivo.createZone(pTwice, ZL_INSIDE);
    const CapturedMessages captured;
    EXPECT_THROW(pOfNothing->getNumberOfTriangles(), KivoException);
}

TEST(Zone, ofARingThatALaterCutTurnsRoundStaysWithin) {
    // Thinner than a unit in the last place: the crossing is rounded across the ring.
    const double o = 4503599627370496; // 2^52
    const auto at = [o](double x, double y) { return Point2(o + x, o + y); };
    Kivo_2D kivo;
    kivo.insert({at(-3, -3), at(15, -3), at(-3, 15), at(15, 15)});
    const auto addRing = [&](const Points& v) {
        Segments vRing;
        for (std::size_t i = 0; i < v.size(); ++i)
            vRing.emplace_back(v[i], v[(i + 1) % v.size()]);
        return add(kivo, vRing);
    };
    ConstraintGraph2* const pSliver = addRing({at(8, 9), at(6, 6), at(2, 1)});
    ConstraintGraph2* const pSquare = addRing({at(11, 2), at(12, 2), at(12, 3), at(11, 3)});
    const std::vector<Zone2*> vZones = {
        kivo.createZone(pSliver, ZL_INSIDE), kivo.createZone({pSliver, pSquare}, ZL_INSIDE),
        kivo.createParityZone({pSliver, pSquare}), kivo.createZone(pSliver, ZL_BOUNDED)};
    add(kivo, {{at(6, 10), at(6, 5)}});
    for (const Zone2* pZone : vZones)
        EXPECT_GT(5, pZone->getArea2D());
    EXPECT_LT(300, kivo.createZone(pSliver, ZL_OUTSIDE)->getArea2D());
}

TEST(Zone, ofAHubWithManySpokesIsFoundInNoTime) {
    const int num = 60000;
    Points vRim;
    generateCircle(num, 0, 0, 10, 10, vRim);
    Segments vSpokes; // of every second triangle round the middle
    for (std::size_t i = 0; i + 1 < vRim.size(); i += 2) {
        vSpokes.emplace_back(Point2(0, 0), vRim[i]);
        vSpokes.emplace_back(vRim[i], vRim[i + 1]);
        vSpokes.emplace_back(vRim[i + 1], Point2(0, 0));
    }
    Kivo_2D kivo;
    ConstraintGraph2* const pGraph = add(kivo, vSpokes);
    const auto [pInside, pOutside] = sidesOf(kivo, pGraph);
    EXPECT_EQ(unsigned(num / 2), pInside->getNumberOfTriangles());
    expectNearArea(oracle::areaOf(vSpokes), pInside->getArea2D());
    expectPartition(kivo, pInside, pOutside);
    std::vector<Edge2> vEdges;
    pInside->getBoundaryEdges(vEdges);
    EXPECT_EQ(vSpokes.size(), vEdges.size());
}

TEST(MeshArrays, ofTheWholeAreThoseOfTheGlobalZone) {
    Rng rng(3);
    Kivo_2D kivo;
    kivo.insert(randomPoints(rng, 300, 0, 1));
    MeshArrays whole, zone;
    kivo.getMeshArrays(whole);
    kivo.getMeshArrays(zone, kivo.createZone(static_cast<ConstraintGraph2*>(nullptr), ZL_GLOBAL));
    EXPECT_EQ(3 * kivo.numberOfTriangles(), whole.vCorners.size());
    EXPECT_EQ(kivo.numberOfPoints(), whole.vVertices.size());
    EXPECT_EQ(whole.vCoordinates, zone.vCoordinates);
    EXPECT_EQ(whole.vCorners, zone.vCorners);
    EXPECT_EQ(whole.vNeighbours, zone.vNeighbours);
    EXPECT_EQ(whole.vVertices, zone.vVertices);
}
