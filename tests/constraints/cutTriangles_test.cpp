#include "tests/oracle/bruteForce.h"
#include "tests/oracle/cuts.h"
#include "tests/support/constrained.h"
#include "tests/support/meshed.h"
#include "tests/support/nastySets.h"
#include "tests/support/realData.h"
#include "tests/support/sanitized.h"

#include <functional>
#include <limits>
#include <stdexcept>

// Knives through triangulations, against a second opinion by rationals (see oracle::CutWitness).

using namespace TESK_KIVO2D;
using doubles::below;
using doubles::Points;
using doubles::Rng;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr int few = isSanitized ? 10 : 1; // what many is divided by

// How near to each other things may be: apart, or nearer than a few units in the last place.
enum Nearness { APART, NEAR };

struct Scene : Constrained {
    std::vector<Zone2*> vZones;

    std::vector<Point2*> vertices() const {
        std::vector<Point2*> v;
        kivo.getVertexPointers(v);
        return v;
    }
    // With the graph of its border, where that is one of its own.
    void addZone(Zone2* pZone, bool bOwnBorder = false) {
        ASSERT_NE(nullptr, pZone);
        vZones.push_back(pZone);
        std::vector<ConstraintGraph2*> vBorder;
        pZone->getConstraintGraphs(vBorder);
        for (std::size_t i = 0; bOwnBorder && i < vBorder.size(); ++i)
            vGraphs.push_back({vBorder[i], oracle::originalsOf(vBorder[i])});
    }

    // Where some of them are conforming a cut may ask for more Steiner points on them.
    Nearness addConstraints(const Segments& vSegments, bool bSomeConforming) {
        if (bSomeConforming) addOneByOne(vSegments);
        for (std::size_t i = 0; i < vSegments.size() && !bSomeConforming; ++i)
            add({vSegments[i]}, CIS_CONSTRAINED_DELAUNAY, i % 3 == 0);
        return bSomeConforming ? NEAR : APART;
    }

    // Zones of most kinds, two of them inside and outside of a ring. Grown ones only where no border can be
    // rounded across their start points.
    void addZones(const Segments& vRing, Nearness nearness) {
        const Point2 p = vRing[0].getSrc(), q = vRing[1].getSrc(), r = vRing[2].getSrc();
        const long double ax = (long double)q.x() - p.x(), ay = (long double)q.y() - p.y();
        const long double bx = (long double)r.x() - p.x(), by = (long double)r.y() - p.y();
        const long double largest = std::max({p.getMaxAbs(), q.getMaxAbs(), r.getMaxAbs()});
        // What rounding makes of slivers may have no area at all.
        if (!kivo.is2D() || std::abs(ax * by - ay * bx) <= std::max(0x1p-40L * largest, 0x1p-1060L) * largest)
            return;
        ConstraintGraph2* const pRing = add(vRing, CIS_CONSTRAINED_DELAUNAY);
        const CapturedMessages captured;
        addZone(kivo.createZone(static_cast<ConstraintGraph2*>(nullptr), ZL_GLOBAL));
        if (!pRing->isPolygon()) return;
        addZone(kivo.createZone(pRing, ZL_INSIDE));
        addZone(kivo.createZone(pRing, ZL_OUTSIDE));
        if (nearness == NEAR) return;
        oracle::Triangles vSome = oracle::allTriangles(kivo);
        std::sort(vSome.begin(), vSome.end(), [](const Triangle2* pT, const Triangle2* pOther) {
            return pT->getBarycenter() < pOther->getBarycenter();
        });
        vSome.resize((vSome.size() + 2) / 3);
        Zone2* const pSome = kivo.createZone(vSome);
        addZone(pSome, true);
        Zone2* const pDifference = zoneSymmetricDifference(vZones[1], pSome);
        if (pDifference != nullptr) vZones.push_back(pDifference);
    }

    // Cuts, and demands what must hold.
    ConstraintGraph2* cut(const Segments& vKnives, Nearness nearness) {
        const oracle::CutWitness witness(kivo, vKnives, vGraphs, vZones);
        std::vector<double> vAreas;
        for (const Zone2* pZone : vZones)
            vAreas.push_back(pZone->getArea2D());
        ConstraintGraph2* pGraph = nullptr;
        const std::string said = cutQuietly(vKnives, pGraph);
        doubles::Points vEnds;
        for (const Segment2& s : vKnives)
            vEnds.insert(vEnds.end(), {s.getSrc(), s.getTrg()});
        const std::string text = "cut " + doubles::hex(vEnds) + "\n" + given();
        EXPECT_EQ("", nearness == APART ? witness.findFault(pGraph) : witness.findLoss(pGraph)) << text;
        if (nearness == APART) {
            EXPECT_EQ(witness.warnings(), said) << text;
            for (std::size_t i = 0; i < vZones.size(); ++i)
                EXPECT_NEAR(vAreas[i], vZones[i]->getArea2D(), 1e-8 * vAreas[0]) << text;
        }
        if (pGraph != nullptr) vGraphs.push_back({pGraph, oracle::originalsOf(pGraph)});
        expectConstrained(*this);
        return pGraph;
    }
    std::string cutQuietly(const Segments& vKnives, ConstraintGraph2*& pGraph) {
        const CapturedMessages captured;
        pGraph = vKnives.size() == 1 ? kivo.cutTriangles(vKnives[0]) : kivo.cutTriangles(vKnives);
        return captured.output() + captured.error();
    }
};

Segments scaled(const Segments& v, int exponent) {
    Segments vScaled;
    for (const Segment2& s : v) {
        const Points p = doubles::scaled({s.getSrc(), s.getTrg()}, exponent);
        vScaled.emplace_back(p[0], p[1]);
    }
    return vScaled;
}

template<class Value>
const Value& anyOf(Rng& rng, const std::vector<Value>& v) {
    return v[rng() % v.size()];
}

Segments segmentsOf(int num, const std::function<Point2()>& makePoint, bool bDistinct = true) {
    Segments v;
    while (num > 0) {
        const Point2 p = makePoint();
        v.emplace_back(p, makePoint());
        if (bDistinct && v.back().getTrg() == p) v.pop_back();
        --num;
    }
    return v;
}

// A lattice, halves of whose steps are exact: knives meet vertices, edges and each other in all ways.
struct Lattice {
    int size;

    Point2 at(Rng& rng, int numParts) const { // sometimes beyond
        const auto coordinate = [&] { return double(below(rng, (size + 3) * numParts)) / numParts - 1; };
        const double x = coordinate();
        return {x, coordinate()};
    }
    Points points(Rng& rng) const {
        Points v;
        for (int x = 0; x <= size; ++x)
            for (int y = 0; y <= size; ++y)
                if (rng() % 4 != 0) v.emplace_back(x, y);
        return v;
    }
    // Along the axes and diagonals: they cross in halves.
    Segment2 constraint(Rng& rng) const {
        const double x = below(rng, size), y = below(rng, size), length = 1 + below(rng, size);
        const int way = 1 + below(rng, 3);
        return {{x, y}, {x + (way & 1) * length, y + (way & 2) / 2 * length}};
    }
    Segments ring(Rng& rng) const {
        const double x = below(rng, size), y = below(rng, size), s = 1 + below(rng, size);
        return rng() % 2 == 0 ? zoned::ringOf({{x, y}, {x + s, y}, {x + s, y + s}, {x, y + s}})
                              : zoned::ringOf({{x, y}, {x + s, y}, {x, y + s}});
    }
    Segment2 knife(Rng& rng) const {
        if (rng() % 40 == 0) return {at(rng, 2), {infinity, 0}};
        const int numParts = 1 + below(rng, 2);
        const Point2 p = at(rng, numParts);
        switch (below(rng, 4)) {
        case 0:
            return {p, {p.x() + below(rng, 5) - 2, p.y()}};
        case 1:
            return {p, {p.x(), p.y() + below(rng, 5) - 2}};
        case 2: {
            const double d = below(rng, 2 * size) - size;
            return {p, {p.x() + d, rng() % 2 == 0 ? p.y() + d : p.y() - d}};
        }
        default:
            return {p, at(rng, numParts)};
        }
    }
};

} // namespace

TEST(CutTriangles, onALatticeMeetsTheSecondOpinion) {
    for (unsigned round = 0; round < 600 / few && !testing::Test::HasFailure(); ++round) {
        SCOPED_TRACE(round);
        const auto run = [&] {
            Rng rng(round);
            const int aExponents[] = {0, 498, -498}, exponent = aExponents[round % 3];
            const Lattice lattice{2 + below(rng, 5)};
            Scene scene;
            scene.kivo.insert(doubles::scaled(lattice.points(rng), exponent));
            Segments vConstraints, vKnives;
            for (int i = below(rng, 4); i > 0; --i)
                vConstraints.push_back(lattice.constraint(rng));
            const Nearness nearness = scene.addConstraints(scaled(vConstraints, exponent), round % 4 == 3);
            scene.addZones(scaled(lattice.ring(rng), exponent), nearness);
            for (int i = 1 + below(rng, 2) * below(rng, 8); i > 0; --i) {
                vKnives.push_back(lattice.knife(rng));
                if (rng() % 4 == 0) vKnives.push_back(vKnives[rng() % vKnives.size()]);
                if (rng() % 8 == 0) vKnives.back().swapSrcTrg();
            }
            scene.cut(scaled(vKnives, exponent), nearness);
            return oracle::triangleList(scene.kivo);
        };
        EXPECT_EQ(run(), run()) << "not twice the same";
    }
}

TEST(CutTriangles, amongRandomPointsMeetsTheSecondOpinion) {
    const Point2 aOrigins[] = {{0, 0}, {448262, 5411932}, {-1e3, 0}};
    for (unsigned round = 0; round < 150 / few && !testing::Test::HasFailure(); ++round) {
        SCOPED_TRACE(round);
        Rng rng(round);
        const Point2 origin = aOrigins[round % 3];
        const int exponent = round % 7 != 0 ? 0 : round % 2 == 0 ? 490 : -490;
        const auto points = [&](int num, double margin) {
            Points v;
            for (; num > 0; --num) {
                const double x = doubles::uniform(rng, -margin, 10 + margin);
                v.emplace_back(origin.x() + x, origin.y() + doubles::uniform(rng, -margin, 10 + margin));
            }
            return doubles::scaled(v, exponent);
        };
        const auto segments = [&](int num) { return segmentsOf(num, [&] { return points(1, 3)[0]; }); };
        Scene scene;
        const Points vPoints = points(5 + below(rng, 60), 0);
        scene.kivo.insert(vPoints);
        const Nearness nearness = scene.addConstraints(segments(below(rng, 4)), round % 5 == 4);
        scene.addZones(zoned::ringOf(points(3, -2)), nearness);
        for (int i = 0; i <= int(round) % 4; ++i) {
            Segments vKnives = segments(1 + below(rng, 2) * below(rng, 12));
            // Along edges, through vertices and from them.
            const Point2 p = anyOf(rng, vPoints);
            if (rng() % 2 == 0) vKnives.emplace_back(p, points(1, 3)[0]);
            if (i == 0 && rng() % 2 == 0) vKnives.emplace_back(p, anyOf(rng, vPoints)); // again: not apart
            const Triangle2* const pT = oracle::allTriangles(scene.kivo).front();
            if (i == 0 && rng() % 2 == 0) vKnives.emplace_back(*pT->getCorner(0), *pT->getCorner(1));
            scene.cut(vKnives, nearness);
        }
    }
}

// Nothing may rest on where a crossing is rounded to.
TEST(CutTriangles, ofNastySetsKeepsAllLaws) {
    for (const nastySets::Kind& kind : nastySets::all()) {
        for (unsigned round = 0; round < 30 / few && !testing::Test::HasFailure(); ++round) {
            SCOPED_TRACE(kind.name + std::string(" ") + std::to_string(round));
            Rng rng(round);
            Points vPoints = kind.make(rng), vEnds = kind.make(rng);
            Scene scene;
            scene.kivo.insert(vPoints);
            if (!scene.kivo.is2D()) continue;
            vEnds.insert(vEnds.end(), vPoints.begin(), vPoints.end());
            const auto anyEnd = [&] { return doubles::jittered(rng, anyOf(rng, vEnds), below(rng, 2)); };
            scene.addOneByOne(segmentsOf(3, anyEnd));
            scene.addZones(zoned::ringOf({vPoints[0], anyOf(rng, vPoints), vPoints.back()}), NEAR);
            for (int i = 0; i < 3; ++i)
                scene.cut(segmentsOf(1 + below(rng, 4), anyEnd, false), NEAR);
        }
    }
}

// Coordinates that are integers from 2^52 on, and map coordinates: crossings are rounded to the far side of
// what lies beside them.
TEST(CutTriangles, onACoarseGridKeepsAllLaws) {
    for (unsigned round = 0; round < 300 / few && !testing::Test::HasFailure(); ++round) {
        SCOPED_TRACE(round);
        Rng rng(round);
        const double dx = round % 3 == 0 ? 0 : 0x1p52, dy = round % 2 == 0 ? 0x1p52 : -0x1p52;
        const int width = round % 4 == 0 ? 100 : 9, height = 2 + below(rng, 8);
        const auto at = [&] {
            const double x = below(rng, width) + dx;
            return Point2(x, below(rng, height) + dy);
        };
        Scene scene;
        scene.kivo.insert({at(), at(), at(), at(), {dx, dy}, {dx + width, dy}, {dx, dy + height}});
        scene.addOneByOne(segmentsOf(3, at));
        scene.addZones(zoned::ringOf({{dx, dy}, {dx + width, dy}, {dx, dy + height}}), NEAR);
        for (int i = 0; i < 3; ++i)
            scene.cut(segmentsOf(1 + below(rng, 4), at), NEAR);
    }
}

TEST(CutTriangles, byBundlesOfKnivesOneStepApartKeepsAllLaws) {
    for (unsigned round = 0; round < 60 / few && !testing::Test::HasFailure(); ++round) {
        SCOPED_TRACE(round);
        Rng rng(round);
        const double offset = round % 2 == 0 ? 0 : 5e6;
        const Points vEnds = zoned::randomPoints(rng, 2, offset, offset + 10);
        Scene scene;
        scene.kivo.insert(zoned::randomPoints(rng, 30, offset, offset + 10));
        scene.addZones(zoned::ringOf(zoned::randomPoints(rng, 3, offset, offset + 10)), NEAR);
        Segments vKnives;
        for (int i = 0; i < 10; ++i)
            vKnives.emplace_back(doubles::jittered(rng, vEnds[0], 1), doubles::jittered(rng, vEnds[1], 2));
        scene.cut({vKnives.begin(), vKnives.begin() + 5}, NEAR);
        for (std::size_t i = 5; i < vKnives.size(); ++i)
            scene.cut({vKnives[i]}, NEAR);
    }
}

// The square from 0 to 4 with its diagonal from (0, 0) to (4, 4): how many vertices and pieces there are.
TEST(CutTriangles, makesTheVerticesAndPiecesThatOneExpects) {
    struct Case {
        const char* name;
        Segments vKnives;
        std::size_t numNew, numPieces;
    };
    const Case aCases[] = {
        {"across", {{{-1, 1}, {5, 1}}}, 3, 2},
        {"from outside to inside", {{{-1, 1}, {3, 1}}}, 3, 2},
        {"inside a triangle", {{{1, 2}, {1, 3}}}, 2, 1},
        {"from an edge to an edge", {{{1, 1}, {4, 1}}}, 2, 1},
        {"along an edge", {{{-1, -1}, {2, 2}}}, 1, 1},
        {"an edge", {{{4, 4}, {0, 0}}}, 0, 1},
        {"along a part of the hull", {{{-1, 0}, {2, 0}}}, 1, 1},
        {"along a part inside a hull edge", {{{1, 0}, {2, 0}}}, 2, 1},
        {"along the whole hull edge and on", {{{-1, 0}, {5, 0}}}, 0, 1},
        {"through two corners of the hull", {{{-1, 5}, {5, -1}}}, 1, 2},
        {"the same twice", {{{-1, 1}, {5, 1}}, {{-1, 1}, {5, 1}}}, 3, 4},
        {"there and back", {{{-1, 1}, {5, 1}}, {{5, 1}, {-1, 1}}}, 3, 4},
        {"one a part of the other", {{{-1, 1}, {5, 1}}, {{3, 1}, {2, 1}}}, 5, 5},
        {"overlapping", {{{-1, 1}, {3, 1}}, {{2, 1}, {5, 1}}}, 5, 5},
        {"a cross", {{{2, 3}, {4, 3}}, {{3.5, 2}, {3.5, 4}}}, 7, 6},
        {"a cross on an edge", {{{-1, 1}, {5, 1}}, {{1, -1}, {1, 5}}}, 5, 4},
        {"a T", {{{1, 2}, {1, 4}}, {{0, 3}, {1, 3}}}, 4, 3},
        {"a cross outside", {{{-1, 1}, {5, 3}}, {{5, 1}, {4, 4.5}}}, 3, 2},
    };
    for (const Case& some : aCases) {
        SCOPED_TRACE(some.name);
        Scene scene;
        scene.kivo.insert({{0, 0}, {4, 0}, {4, 4}, {0, 4}});
        scene.add({{{0, 0}, {4, 4}}}, CIS_CONSTRAINED_DELAUNAY);
        ConstraintGraph2* const pGraph = scene.cut(some.vKnives, APART);
        ASSERT_NE(nullptr, pGraph);
        EXPECT_EQ(4 + some.numNew, scene.kivo.numberOfPoints());
        EXPECT_EQ(some.numPieces, oracle::originalsOf(pGraph).size());
    }
}

// The crossing is rounded, so that the end of the other knife is beside the piece that it was inside of.
TEST(CutTriangles, splitsAConstraintWhereAKnifeEndsInItAndWhereAnotherOneCrosses) {
    for (int i = 0; i < 8; ++i) {
        SCOPED_TRACE(i);
        Scene scene;
        scene.kivo.insert({{0, 4}, {1, 6}, {4, 4}, {2, 0}});
        if ((i & 4) != 0) scene.kivo.insert({{-3, 5}, {-2, 7}});
        scene.add({{{0, 4}, {1, 6}}}, CIS_CONSTRAINED_DELAUNAY);
        Segments vKnives = {{{1.5, 3.5}, {-1.5, 6.5}}, {{6.5, -1}, {0.5, 5}}};
        if ((i & 1) != 0) std::swap(vKnives[0], vKnives[1]);
        for (Segment2& s : vKnives)
            if ((i & 2) != 0) s.swapSrcTrg();
        scene.cut(vKnives, APART);
        EXPECT_EQ(3u, oracle::leafEdges({scene.vGraphs[0]}).size());
    }
}

TEST(CutTriangles, throughOnePointMakesOneVertexThere) {
    Rng rng(7);
    for (const int third : {1, 2}) { // through (1/3, 1/3), or (2/3, 2/3), exactly
        Scene scene;
        scene.kivo.insert(zoned::randomPoints(rng, 40, -20, 20));
        Segments vKnives;
        for (int i = 0; i < 30; ++i) {
            const int dx = 3 * (below(rng, 15) - 7) - third, dy = 3 * (below(rng, 15) - 7) - third;
            vKnives.emplace_back(Point2((third + dx) / 3, (third + dy) / 3),
                                 Point2((third - 2 * dx) / 3, (third - 2 * dy) / 3));
        }
        scene.cut(vKnives, APART);
        const std::vector<Point2*> v = scene.vertices();
        EXPECT_EQ(1, std::count_if(v.begin(), v.end(),
                                   [&](const Point2* p) { return *p == Point2(third / 3.0, third / 3.0); }));
    }
}

TEST(CutTriangles, byARingMakesAPolygonThatAZoneFills) {
    for (unsigned round = 0; round < 40 / few; ++round) {
        SCOPED_TRACE(round);
        Rng rng(round);
        Scene scene;
        scene.kivo.insert(zoned::randomPoints(rng, 50, -10, 10));
        scene.kivo.insert({{-10, -10}, {10, -10}, {10, 10}, {-10, 10}});
        Segments vRing = zoned::star(rng, 3 + below(rng, 20), {0, 0}, 9);
        if (round % 2 == 0) vRing = zoned::reversed(vRing);
        ConstraintGraph2* const pGraph = scene.cut(vRing, APART);
        ASSERT_NE(nullptr, pGraph);
        EXPECT_TRUE(pGraph->isPolygon());
        zoned::expectNearArea(std::abs(oracle::areaOf(vRing)),
                              scene.kivo.createZone(pGraph, ZL_INSIDE)->getArea2D());
    }
}

TEST(CutTriangles, againWhereAllIsExactChangesNothing) {
    for (unsigned round = 0; round < 40 / few; ++round) {
        SCOPED_TRACE(round);
        Rng rng(round);
        Scene scene;
        for (int i = 0; i <= 16; ++i)
            scene.kivo.insert({{0, double(i)}, {16, double(i)}, {double(i), 0}, {double(i), 16}});
        Segments vKnives;
        for (int i = 0; i < 6; ++i) {
            const double x = below(rng, 16), y = below(rng, 16);
            vKnives.emplace_back(Point2(x, y), rng() % 2 == 0 ? Point2(x + 20, y) : Point2(x, y + 20));
        }
        scene.cut(vKnives, APART);
        const auto before = oracle::triangleList(scene.kivo);
        scene.cut(vKnives, APART);
        std::reverse(vKnives.begin(), vKnives.end());
        for (Segment2 s : vKnives) {
            s.swapSrcTrg();
            scene.cut({s}, APART);
        }
        EXPECT_EQ(before, oracle::triangleList(scene.kivo));
    }
}

TEST(CutTriangles, byHundredsOfKnivesIsSoundAtOnceAndOneByOne) {
    Rng rng(5);
    const Points vPoints = zoned::randomPoints(rng, 300, 0, 10);
    Segments vKnives;
    for (int i = 0; i < 300 / few; ++i) {
        const Points p = zoned::randomPoints(rng, 2, -1, 11);
        vKnives.emplace_back(
            p[0], i % 3 == 0 ? anyOf(rng, vPoints)
                             : Point2(0.8 * p[0].x() + 0.2 * p[1].x(), 0.8 * p[0].y() + 0.2 * p[1].y()));
    }
    std::size_t numAtOnce = 0;
    for (const bool bAtOnce : {true, false}) {
        Scene scene;
        scene.kivo.insert(vPoints);
        scene.addZones(zoned::square(2, 2, 5), APART);
        if (bAtOnce) {
            scene.cut(vKnives, APART);
            numAtOnce = scene.kivo.numberOfPoints();
            continue;
        }
        for (const Segment2& knife : vKnives) {
            ConstraintGraph2* pGraph = nullptr;
            scene.cutQuietly({knife}, pGraph);
            if (pGraph != nullptr) scene.vGraphs.push_back({pGraph, oracle::originalsOf(pGraph)});
        }
        expectConstrained(scene);
        EXPECT_NEAR(25, scene.vZones[1]->getArea2D(), 1e-9);
        // Knives meet edges that others have made.
        EXPECT_LT(numAtOnce, scene.kivo.numberOfPoints());
    }
}

TEST(CutTriangles, saysWhatCanNotCutAndThenChangesNothing) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    const Segment2 beyond({5, 0}, {5, 9}), notFinite({0, nan}, {1, 1}), noLength({1, 1}, {1, 1});
    const Segment2 atCorner({-1, 1}, {1, -1}), atEdge({2, 0}, {2, -3}), infinite({0, 0}, {infinity, 1});
    const std::string one = "1 knife ", none = "No knife is left, returning NULL";
    const std::string apart = "meets the triangulation in no more than a point ignored";
    const std::pair<Segments, std::vector<std::string>> aCases[] = {
        {{}, {"vKnives is empty, returning NULL"}},
        {{notFinite}, {one + "with a coordinate that is not finite ignored", none}},
        {{noLength}, {one + "of no length ignored", none}},
        {{beyond}, {one + "that " + apart, none}},
        {{atCorner}, {one + "that " + apart, none}},
        {{atEdge}, {one + "that " + apart, none}},
        {{beyond, atEdge, noLength, atCorner, infinite, noLength, notFinite},
         {"2 knives with a coordinate that is not finite ignored", "2 knives of no length ignored",
          "3 knives that meet the triangulation in no more than a point ignored", none}},
    };
    const auto said = [](const std::vector<std::string>& vLines) {
        std::string text;
        for (const std::string& line : vLines)
            text += "      [Kivo2D-Message] Dt2::cutTriangles(..), WARNING: " + line + "\n";
        return text;
    };
    for (const auto& [vKnives, vLines] : aCases) {
        for (const bool b2D : {true, false}) {
            Scene scene;
            scene.kivo.insert(b2D ? Points{{0, 0}, {4, 0}, {0, 4}} : Points{{0, 0}, {4, 0}, {8, 0}});
            const auto before = oracle::triangleList(scene.kivo);
            ConstraintGraph2* pGraph = nullptr;
            const std::string text = scene.cutQuietly(vKnives, pGraph);
            EXPECT_EQ(nullptr, pGraph);
            if (b2D || vKnives.empty()) {
                EXPECT_EQ(said(vLines), text);
            } else {
                EXPECT_EQ(said({"The triangulation has no triangles yet, returning NULL"}), text);
            }
            EXPECT_EQ(before, oracle::triangleList(scene.kivo));
            EXPECT_EQ(3u, scene.kivo.numberOfPoints());
        }
    }
    // What is left cuts.
    Scene scene;
    scene.kivo.insert({{0, 0}, {4, 0}, {0, 4}});
    EXPECT_NE(nullptr, scene.cut({beyond, {{1, -1}, {1, 5}}, noLength}, APART));
    EXPECT_EQ(5u, scene.kivo.numberOfPoints());
}

TEST(CutTriangles, ofRealDataMeetsTheSecondOpinion) {
    for (const realData::Folder& folder : realData::folders()) {
        for (const realData::Path& path : realData::filesIn(folder, ".seg")) {
            const Segments vSegments = realData::readSegments(path);
            if (vSegments.size() > std::size_t(10000 / few)) continue;
            SCOPED_TRACE(path.filename().string());
            Rng rng(vSegments.size());
            Scene scene;
            Points vPoints;
            for (const Segment2& s : vSegments)
                if (s.getSrc() != s.getTrg()) vPoints.insert(vPoints.end(), {s.getSrc(), s.getTrg()});
            ConstraintGraph2* const pGraph = scene.add(vSegments, CIS_CONSTRAINED_DELAUNAY);
            if (pGraph == nullptr || !scene.kivo.is2D()) continue;
            {
                const CapturedMessages captured;
                Zone2* const pZone = scene.kivo.createParityZone({pGraph});
                if (pZone != nullptr) scene.vZones.push_back(pZone);
            }
            const auto knives = [&](std::size_t num, double jitter) {
                Segments v;
                for (; num > 0; --num) {
                    const Point2 p = anyOf(rng, vPoints), q = anyOf(rng, vPoints);
                    const double dx = (p.x() - q.x()) * jitter * doubles::uniform(rng),
                                 dy = (q.y() - p.y()) * jitter * doubles::uniform(rng);
                    v.emplace_back(Point2(p.x() + dx, p.y() + dy), Point2(q.x() + dy, q.y() - dx));
                }
                return v;
            };
            scene.cut(knives(8, 0.1), APART);
            scene.cut(knives(3, 0), NEAR);
        }
    }
}

TEST(CutTriangles, leavesATriangulationForAllThatMayFollow) {
    for (unsigned round = 0; round < 20 / few; ++round) {
        SCOPED_TRACE(round);
        Rng rng(round);
        Scene scene;
        scene.kivo.insert(zoned::randomPoints(rng, 60, -10, 10));
        ConstraintGraph2* const pGraph =
            scene.cut(meshed::bluntStar(rng, 5 + below(rng, 8), {0, 0}, 6), APART);
        ASSERT_NE(nullptr, pGraph);
        for (Point2* p : scene.vertices())
            if (!scene.kivo.isConstraint(p) && rng() % 2 == 0) scene.kivo.remove(p);
        expectConstrained(scene);
        Points vMore = zoned::randomPoints(rng, 30, -12, 12); // among them some on the chain, or nearly
        for (const Segment2& s : oracle::leavesOf({pGraph}))
            vMore.emplace_back((s.getSrc().x() + s.getTrg().x()) / 2, (s.getSrc().y() + s.getTrg().y()) / 2);
        scene.kivo.insert(vMore);
        expectConstrained(scene);
        MeshGenParams params = meshed::onlyAngles(scene.kivo.createZone(pGraph, ZL_INSIDE), 25);
        meshed::expectMeshed(scene.kivo, params, {pGraph});
        scene.cut({{vMore[0], vMore[1]}}, NEAR);
    }
}

TEST(CutTriangles, cutsWhatWasImported) {
    Kivo_2D source;
    Rng rng(3);
    source.insert(zoned::randomPoints(rng, 60, 0, 10));
    Points vCorners; // with a hole
    for (const Triangle2* pT : oracle::allTriangles(source))
        for (int i = 0; i < 3 && !(sqDistance(pT->getBarycenter(), {5, 5}) < 5); ++i)
            vCorners.push_back(*pT->getCorner(i));
    Scene scene;
    scene.kivo.insert(zoned::randomPoints(rng, 20, 11, 15));
    scene.addZone(scene.kivo.importTriangles(vCorners, false), true);
    scene.cut({{{-1, 3}, {16, 14}}, {{-1, 6}, {20, 5}}, {{5, -1}, {5, 12}}}, APART);
}

TEST(CutTriangles, appliesConstraintsThatWait) {
    Scene scene;
    scene.kivo.insert({{0, 0}, {4, 0}});
    scene.add({{{1, 0}, {3, 0}}, {{3, 0}, {5, 0}}}, CIS_CONSTRAINED_DELAUNAY);
    scene.kivo.insert({{2, -3}, {2, 3}});
    ConstraintGraph2* pGraph = nullptr;
    EXPECT_EQ("", scene.cutQuietly({{{2.5, 9}, {2.5, -9}}}, pGraph));
    ASSERT_NE(nullptr, pGraph);
    scene.vGraphs.push_back({pGraph, oracle::originalsOf(pGraph)});
    expectConstrained(scene);
    EXPECT_EQ(4u, oracle::leafEdges({scene.vGraphs[0]}).size());
}

TEST(CutTriangles, thatAListenerStopsLeavesAValidTriangulation) {
    struct Stopper : MsgBase {
        void update(MsgType, const char*, double) override {
            if (numLeft-- == 0) throw std::runtime_error("enough");
        }
        int numLeft = 0;
    } stopper;
    bool bStopped = true;
    int num = 0;
    for (; bStopped && num < 1000; ++num) {
        Rng rng(5);
        Scene scene;
        scene.kivo.insert(zoned::randomPoints(rng, 40, 0, 10));
        scene.add(zoned::square(2, 2, 5), CIS_CONSTRAINED_DELAUNAY);
        const auto anyPoint = [&] { return zoned::randomPoints(rng, 1, -1, 11)[0]; };
        const Segments vKnives = segmentsOf(8, anyPoint);
        stopper.numLeft = num;
        scene.kivo.subscribe(MSG_PROGRESS, &stopper);
        const CapturedMessages captured;
        bStopped = false;
        try {
            EXPECT_NE(nullptr, scene.kivo.cutTriangles(vKnives));
        } catch (const std::runtime_error&) {
            bStopped = true;
        }
        EXPECT_TRUE(scene.kivo.checkValidity(true, "stopped")) << num;
        scene.kivo.unsubscribe(MSG_PROGRESS, &stopper);
        EXPECT_NE(nullptr, scene.kivo.cutTriangles(vKnives));
        EXPECT_TRUE(scene.kivo.checkValidity(true, "again")) << num;
    }
    EXPECT_LT(2, num);
    EXPECT_FALSE(bStopped);
}
