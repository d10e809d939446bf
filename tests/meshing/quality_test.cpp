#include "tests/oracle/bruteForce.h"
#include "tests/support/meshed.h"
#include "tests/support/realData.h"

#include <array>

// What meshes are like: every rule holds, with few triangles, and nothing is lost, on domains of all kinds.

using namespace meshed;
using doubles::Rng;

namespace {

const std::array angles = {20.0, 25.0, 30.0};

double angleOf(unsigned int seed) { return angles[seed % angles.size()]; }

// Moves and scales a domain; no double is lost where the offset is 0 and the factor a power of two.
Segments placed(const Segments& v, double factor, double dx = 0, double dy = 0) {
    const auto place = [&](const Point2& p) { return Point2(p.x() * factor + dx, p.y() * factor + dy); };
    Segments vPlaced;
    for (const Segment2& s : v)
        vPlaced.emplace_back(place(s.getSrc()), place(s.getTrg()));
    return vPlaced;
}

// Of the lower end of what a domain asks for.
double smallestHeight(const Triangles& vTriangles) {
    long double height = INFINITY;
    for (const Triangle2* pT : vTriangles) {
        const oracle::Measures m = oracle::measuresOf(pT);
        height = std::min(height, 2 * m.area / m.longest);
    }
    return double(height);
}
double shortestEdge(const Triangles& vTriangles) {
    long double length = INFINITY;
    for (const Triangle2* pT : vTriangles)
        length = std::min(length, oracle::measuresOf(pT).shortest);
    return double(length);
}

// What the other mesher made of it, from the facts beside the file.
std::uint64_t rivalTriangles(const realData::Path& path, int angle) {
    const nlohmann::json facts = realData::factsBeside(path);
    for (const auto& entry : facts.items()) {
        if (!entry.key().starts_with("measured")) continue;
        for (const auto& [what, counts] : entry.value().items()) {
            if (!what.starts_with("triangles, angle " + std::to_string(angle))) continue;
            for (const auto& [who, num] : counts.items())
                if (who.starts_with("CGAL")) return num;
        }
    }
    ADD_FAILURE() << "no count beside " << path;
    return 0;
}

// Longer and larger limits to the right.
struct Graded : MeshGenParams {
    using MeshGenParams::MeshGenParams;
    double getMaxTriangleArea(Triangle2* pT) const override {
        return 0.002 + 0.01 * std::max(0.0, pT->getBarycenter().x());
    }
    double getMaxEdgeLength(Triangle2* pT) const override {
        return 0.1 + 0.2 * std::abs(pT->getBarycenter().x());
    }
};

// Random rings whose corners have any angle, and a fan of segments in the middle.
Segments sharpDomain(Rng& rng, int numCorners) {
    Segments v = star(rng, numCorners, {0, 0}, 10);
    for (int i = 0; i < 3 + numCorners % 4; ++i) {
        const double angle = doubles::uniform(rng, 0, 1);
        v.emplace_back(Point2(0, 0), Point2(5 * std::cos(angle), 5 * std::sin(angle)));
    }
    return joined(v, reversed(scaledAbout({-4, -1}, 0.2, star(rng, 5, {-4, -1}, 10))));
}

} // namespace

TEST(Mesh, ofTheFilesMeetsAllAnglesWithFewTriangles) {
    std::uint64_t total = 0;
    for (const char* name : {"noisy_lake", "square_with_round_hole"}) {
        const realData::Path path = realData::Path(KIVO2D_TEST_DATA) / (std::string(name) + ".seg");
        for (const double angle : angles) {
            SCOPED_TRACE(name + std::to_string(angle));
            Kivo_2D kivo;
            ConstraintGraph2* const pGraph = add(kivo, realData::readSegments(path), false);
            MeshGenParams params = onlyAngles(kivo.createParityZone({pGraph}), angle);
            expectMeshed(kivo, params, {pGraph});
            const std::uint64_t num = kivo.getRefinementReport().numTriangles;
            EXPECT_LE(double(num), 1.05 * double(rivalTriangles(path, int(angle))));
            total += num;
        }
    }
    EXPECT_LE(total, 22000u);
    RecordProperty("triangles", int(total));
}

TEST(Mesh, ofRandomDomainsWithHolesAndIslandsMeetsAllAngles) {
    for (unsigned int seed = 1; seed <= 36 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Rng rng(seed);
        Kivo_2D kivo;
        Segments v = nestedStars(rng, 5 + int(seed) % 30, {0, 0}, 10, int(seed) % 4);
        if (seed % 5 == 0) v = joined(v, nestedStars(rng, 9, {25, 3}, 10, int(seed) % 3)); // components
        ConstraintGraph2* const pGraph =
            add(kivo, v, false, seed % 2 == 0 ? CIS_CONSTRAINED_DELAUNAY : CIS_CONFORMING_DELAUNAY);
        if (seed % 3 == 0) kivo.insert(randomPoints(rng, int(seed), -12, 12)); // inside and outside
        settle(kivo);
        Zone2* const pZone =
            seed % 4 == 3 ? kivo.createEnclosedZone({pGraph}, {{0, 0}}) : kivo.createParityZone({pGraph});
        ASSERT_NE(nullptr, pZone);
        const double height = smallestHeight(trianglesOf(pZone));
        MeshGenParams params = onlyAngles(pZone, angleOf(seed / 3));
        EXPECT_EQ("", expectMeshed(kivo, params, {pGraph}));
        EXPECT_EQ(RefinementEnd::COMPLETE, kivo.getRefinementReport().end);
        EXPECT_GT(shortestEdge(trianglesOf(pZone)), 0.05 * height) << "clots";
        const auto vBefore = oracle::triangleList(kivo);
        EXPECT_EQ("", expectMeshed(kivo, params, {pGraph})) << "again";
        EXPECT_EQ(vBefore, oracle::triangleList(kivo)) << "nothing was left to do";
        EXPECT_EQ(0, kivo.getRefinementReport().numPasses);
    }
}

TEST(Mesh, isTheSameInEveryRunAndUnderPowersOfTwo) {
    Rng rng(3);
    const Segments v = nestedStars(rng, 14, {1, 2}, 10, 2);
    std::vector<oracle::Corners> vFirst;
    for (const int exponent : {0, 0, 1, -40, 300, -300, 480, -480}) {
        SCOPED_TRACE(exponent);
        Kivo_2D kivo;
        ConstraintGraph2* const pGraph = add(kivo, placed(v, std::ldexp(1, exponent)), false);
        MeshGenParams params = onlyAngles(kivo.createParityZone({pGraph}), 30);
        EXPECT_EQ("", expectMeshed(kivo, params, {pGraph}));
        auto vTriangles = oracle::triangleList(kivo);
        for (oracle::Corners& corners : vTriangles)
            for (auto& [x, y] : corners)
                x = std::ldexp(x, -exponent), y = std::ldexp(y, -exponent);
        if (vFirst.empty()) vFirst = vTriangles;
        EXPECT_TRUE(vFirst == vTriangles);
    }
}

TEST(Mesh, ofFarAndTinyAndHugeDomainsIsAsGood) {
    const struct {
        double factor, dx, dy;
    } aPlaces[] = {{1e-150, 0, 0}, {1, 5e5, 5e6},   {1e3, 5e5, 5e6}, {1e-6, 5e5, 5e6},
                   {1e150, 0, 0},  {1e-5, -1e4, 1}, {1e15, 1e15, 0}, {1e-300, 0, 0}};
    for (unsigned int seed = 1; seed <= 16 && !HasFailure(); ++seed) {
        const auto& place = aPlaces[seed % 8];
        SCOPED_TRACE(testing::Message() << seed << ": " << place.factor << ' ' << place.dx);
        Rng rng(seed);
        Kivo_2D kivo;
        for (const double far : {1e10, 1e100, 1e200, 1e300}) // what lies elsewhere makes no difference
            if (seed % 3 == 0) kivo.insert({{-far, far}, {far, 2 * far}});
        ConstraintGraph2* const pGraph =
            add(kivo, placed(nestedStars(rng, 12, {0, 0}, 1, 1), place.factor, place.dx, place.dy), false,
                ConstraintInsertionStrategy(seed / 8 % 2));
        MeshGenParams params = onlyAngles(kivo.createParityZone({pGraph}), angleOf(seed));
        EXPECT_EQ("", expectMeshed(kivo, params, {pGraph}));
    }
}

TEST(Mesh, keepsLimitsOfSizeAndGrowth) {
    for (unsigned int seed = 1; seed <= 18 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Rng rng(seed);
        Kivo_2D kivo;
        ConstraintGraph2* const pGraph = add(kivo, nestedStars(rng, 8, {0, 0}, 2, int(seed) % 3), false);
        Zone2* const pZone = kivo.createParityZone({pGraph});
        MeshGenParams plain = onlyAngles(pZone, angleOf(seed / 2));
        Graded graded(pZone);
        graded.minAngleDegree = angleOf(seed);
        graded.minEdgeLength = 0;
        if (seed % 2 == 0) plain.maxTriangleArea = 0.01;
        if (seed % 3 == 0) plain.maxEdgeLength = 0.2;
        plain.growFactorMinArea = seed % 4 == 0 ? 0 : 1e-4;
        plain.growFactor = seed % 3 == 1 ? 2.5 + seed : DBL_MAX;
        if (seed % 5 == 2) plain.minAngleDegree = 1e-3; // limits of size alone
        MeshGenParams& params = seed % 6 == 5 ? graded : plain;
        EXPECT_EQ("", expectMeshed(kivo, params, {pGraph}));
    }
}

TEST(Mesh, refinesAGoodTriangleBesideAMuchSmallerOneOnlyWhereTheNeighbourCounts) {
    for (const double minArea : {0.0, 1.0}) {
        Kivo_2D kivo; // equilateral but for the neighbour: no angle is bad at 10 degrees
        ConstraintGraph2* const pGraph = add(kivo, ringOf({{0, 0}, {10, 0}, {5, 8.7}, {-1, 3}}), false);
        MeshGenParams params = onlyAngles(kivo.createZone(pGraph, ZL_INSIDE), 1);
        params.growFactor = 1.5;
        params.growFactorMinArea = minArea * 1e3;
        params.maxInsertedPoints = 1000;
        said(kivo, params);
        EXPECT_EQ(minArea > 0, kivo.getRefinementReport().numPasses == 0);
    }
}

TEST(Mesh, ofAZoneLeavesItsNeighboursAlone) {
    for (unsigned int seed = 1; seed <= 6 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Rng rng(seed);
        const Cells cells(rng, 3, 0.1);
        Kivo_2D kivo;
        if (seed % 2 == 0) kivo.insert(randomPoints(rng, 40, -1, 4));
        oracle::Graphs vGraphs;
        std::vector<Zone2*> vZones;
        for (int i = 0; i < 9; ++i) {
            vGraphs.push_back(add(kivo, cells.ring(i / 3, i % 3), seed % 3 == 0,
                                  ConstraintInsertionStrategy(seed / 3 % 2)));
            vZones.push_back(kivo.createZone(vGraphs.back(), i % 2 == 0 ? ZL_INSIDE : ZL_BOUNDED));
        }
        settle(kivo);
        for (const std::size_t i : {4u, 0u, 5u, 1u, 8u}) {
            MeshGenParams params = onlyAngles(vZones[i], angleOf(seed));
            params.maxTriangleArea = 0.02;
            const MeshWitness witness(kivo, vZones[i], vGraphs);
            const std::size_t numOutside = kivo.numberOfTriangles() - vZones[i]->getNumberOfTriangles();
            EXPECT_EQ("", expectMeshed(kivo, params, vGraphs)) << i;
            EXPECT_EQ("", witness.findFault(params));
            EXPECT_LT(0u, kivo.getRefinementReport().numInnerPoints);
            EXPECT_LT(witness.numUntouched(), numOutside + 1);
        }
        Zone2* const pUnion = zoneUnion(vZones[4], vZones[3])->convertToBoundedZone();
        MeshGenParams params = onlyAngles(pUnion, 30);
        EXPECT_EQ("", expectMeshed(kivo, params, vGraphs));
    }
}

TEST(Mesh, ofAZoneOfAnyKindIsMadeByWayOfABoundedOne) {
    for (unsigned int seed = 1; seed <= 12 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Rng rng(seed);
        Kivo_2D kivo;
        kivo.insert({{-12, -12}, {12, -12}, {12, 12}, {-12, 12}});
        kivo.insert(randomPoints(rng, 12, -11, 11));
        ConstraintGraph2* const pGraph = add(kivo, bluntStar(rng, 8, {0, 0}, 8), true);
        Zone2* const pOutside = kivo.createZone(pGraph, ZL_OUTSIDE);
        Zone2* const pGrown = kivo.createZone(pGraph, ZL_GROW, Point2(0.1, 0.2));
        Zone2* const aZones[] = {kivo.createZone(static_cast<ConstraintGraph2*>(nullptr), ZL_GLOBAL),
                                 pOutside, pGrown, zoneSymmetricDifference(pGrown, pOutside)};
        Zone2* const pBounded = aZones[seed % 4]->convertToBoundedZone();
        MeshGenParams params = onlyAngles(pBounded, angleOf(seed));
        if (seed % 2 == 0) params.maxEdgeLength = 2;
        EXPECT_EQ("", expectMeshed(kivo, params, {pGraph}));
        EXPECT_EQ(trianglesOf(pBounded), trianglesOf(aZones[seed % 4]));
    }
}

TEST(Mesh, withSmallInputAnglesIsBadOnlyBesideThem) {
    for (unsigned int seed = 1; seed <= 30 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Rng rng(seed);
        Kivo_2D kivo;
        ConstraintGraph2* const pGraph =
            add(kivo, sharpDomain(rng, 3 + int(seed) % 8), false, ConstraintInsertionStrategy(seed % 2));
        settle(kivo);
        MeshGenParams params = onlyAngles(kivo.createParityZone({pGraph}), angleOf(seed));
        if (seed % 4 == 0) params.maxTriangleArea = 0.5;
        if (seed % 5 == 0) params.maxEdgeLength = 1.5;
        EXPECT_EQ("", expectMeshed(kivo, params, {pGraph}));
        const RefinementReport report = kivo.getRefinementReport();
        EXPECT_EQ(RefinementEnd::COMPLETE, report.end);
        EXPECT_EQ(report.numBad(MeshRule::MIN_ANGLE),
                  report.numBad(MeshRule::MIN_ANGLE, MeshObstacle::SMALL_INPUT_ANGLE));
        EXPECT_LT(report.numTriangles, 20000u);
    }
}

TEST(Mesh, splitsNoConstraintThatItMustNotSplit) {
    for (unsigned int seed = 1; seed <= 16 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Rng rng(seed);
        Kivo_2D kivo;
        Segments v = nestedStars(rng, 20, {0, 0}, 10, 1);
        if (seed % 2 == 0) v = joined(v, {{{-7.5, 0.25}, {-5.5, 0.25}}, {{-7, 0}, {-6, 0.2}}});
        ConstraintGraph2* const pGraph = add(kivo, v, false);
        const auto vBefore = oracle::leafEdges({{pGraph, {}}});
        MeshGenParams params = onlyAngles(kivo.createParityZone({pGraph}), angleOf(seed));
        if (seed % 3 == 0) params.maxEdgeLength = 0.7;
        if (seed % 4 < 2)
            params.bAllowConstraintSplitting = false;
        else
            params.minEdgeLength = 0.5;
        EXPECT_EQ("", expectMeshed(kivo, params, {pGraph}));
        const RefinementReport report = kivo.getRefinementReport();
        EXPECT_LT(0u, report.numInnerPoints);
        if (!params.bAllowConstraintSplitting) {
            EXPECT_EQ(vBefore, oracle::leafEdges({{pGraph, {}}}));
            EXPECT_EQ(0u, report.numSegmentPoints);
        }
        for (const Segment2& s : oracle::leavesOf({pGraph})) {
            const Point2 p = s.getSrc(), q = s.getTrg();
            if (!std::binary_search(vBefore.begin(), vBefore.end(), oracle::edgeOf(p, q))) {
                EXPECT_GE(std::hypot(p.x() - q.x(), p.y() - q.y()), params.minEdgeLength);
            }
        }
    }
}

TEST(Mesh, ofConformingSegmentsLeavesThemDelaunay) {
    for (unsigned int seed = 1; seed <= 30; ++seed) {
        SCOPED_TRACE(seed);
        Rng rng(seed);
        Kivo_2D kivo;
        ConstraintGraph2* const pRing = add(kivo, square(0, 0, 1), true, CIS_CONFORMING_DELAUNAY);
        Segments vInner;
        for (int i = 0; i < 8; ++i) {
            const double x = doubles::uniform(rng, 0.2, 0.8), y = doubles::uniform(rng, 0.2, 0.8);
            vInner.emplace_back(Point2(x, y), Point2(x + doubles::uniform(rng, -0.2, 0.2),
                                                     y + doubles::uniform(rng, -0.2, 0.2)));
        }
        add(kivo, vInner, false, CIS_CONFORMING_DELAUNAY);
        MeshGenParams params = onlyAngles(kivo.createZone(pRing, ZL_INSIDE), 5 + seed % 3 * 5);
        said(kivo, params);
        const std::size_t numPoints = kivo.numberOfPoints();
        kivo.applyConstraintsAndZones(); // divides what is not Delaunay
        EXPECT_EQ(numPoints, kivo.numberOfPoints());
    }
}

TEST(Mesh, hasNoPointHardlyBesideASegmentThatMustStay) {
    for (const double offset : {0.0, 4e6}) { // the centre rounds to this or that side of the longest edge
        SCOPED_TRACE(offset);
        Kivo_2D kivo;
        const Segments v = ringOf({{offset, offset}, {offset + 0.1, offset}, {offset, offset + 1.5}});
        ConstraintGraph2* const pGraph = add(kivo, v);
        MeshGenParams params = onlyAngles(kivo.createZone(pGraph, ZL_INSIDE), 1);
        params.maxTriangleArea = 0.0075;
        params.bAllowConstraintSplitting = false;
        expectMeshed(kivo, params, {pGraph});
        for (const Triangle2* pT : trianglesOf(params.pZone))
            EXPECT_LT(1, oracle::measuresOf(pT).minAngle);
    }
}

TEST(Mesh, hasNoClotsWhereGrowthIsLimitedAtCorners) {
    for (const double factor : {10.0, 5.0, 3.0, 2.5}) {
        SCOPED_TRACE(factor);
        Kivo_2D kivo;
        Segments vSpokes;
        for (const double degrees : {0, 50, 58})
            vSpokes.emplace_back(Point2(0.5, 0.5), Point2(0.5 + 0.3 * std::cos(degrees * pi / 180),
                                                          0.5 + 0.3 * std::sin(degrees * pi / 180)));
        const oracle::Graphs vGraphs = {add(kivo, square(0, 0, 1)), add(kivo, vSpokes, false)};
        MeshGenParams params = onlyAngles(kivo.createZone(vGraphs[0], ZL_INSIDE), 20);
        params.growFactor = factor;
        params.growFactorMinArea = 0;
        EXPECT_EQ("", expectMeshed(kivo, params, vGraphs));
        EXPECT_LT(1e-4, shortestEdge(trianglesOf(params.pZone)));
    }
}

TEST(Mesh, ofAMillionTrianglesFromFewEdgesIsFinished) {
    Kivo_2D kivo;
    Points vCorners;
    for (int i = 0; i < 64; ++i)
        vCorners.emplace_back(std::cos(i * pi / 32), std::sin(i * pi / 32));
    ConstraintGraph2* const pGraph = add(kivo, ringOf(vCorners), false);
    Zone2* const pZone = kivo.createZone(pGraph, ZL_INSIDE);
    MeshGenParams params = onlyAngles(pZone, 30);
    params.maxTriangleArea = pZone->getArea2D() / 600000;
    EXPECT_EQ("", said(kivo, params));
    const RefinementReport report = kivo.getRefinementReport();
    EXPECT_EQ(RefinementEnd::COMPLETE, report.end);
    EXPECT_EQ(0u, report.numBadTriangles);
    EXPECT_GE(report.numTriangles, 600000u);
    EXPECT_LE(report.numTriangles, 1100000u) << "far more than the limit asks for";
}
