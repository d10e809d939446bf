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

Points endsOf(const Segments& vSegments) {
    Points v;
    for (const Segment2& s : vSegments)
        v.insert(v.end(), {s.getSrc(), s.getTrg()});
    return v;
}

struct Scene : Constrained {
    std::vector<Zone2*> vZones;

    void addGraph(ConstraintGraph2* pGraph) {
        if (pGraph != nullptr) vGraphs.push_back({pGraph, oracle::originalsOf(pGraph)});
    }
    // Where some of them are conforming a cut may ask for more Steiner points on them.
    Nearness addConstraints(const Segments& vSegments, bool bSomeConforming) {
        if (bSomeConforming) addOneByOne(vSegments);
        for (std::size_t i = 0; i < vSegments.size() && !bSomeConforming; ++i)
            add({vSegments[i]}, CIS_CONSTRAINED_DELAUNAY, i % 3 == 0);
        return bSomeConforming ? NEAR : APART;
    }

    // Zones of most kinds: all, inside and outside of a ring, and where no border can be rounded across their
    // start points, a grown or imported third of the triangles, and what it and the inside do not share.
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
        vZones.push_back(kivo.createZone(static_cast<ConstraintGraph2*>(nullptr), ZL_GLOBAL));
        if (!pRing->isPolygon()) return;
        vZones.push_back(kivo.createZone(pRing, ZL_INSIDE));
        vZones.push_back(kivo.createZone(pRing, ZL_OUTSIDE));
        if (nearness == NEAR) return;
        oracle::Triangles vSome = oracle::allTriangles(kivo);
        std::sort(vSome.begin(), vSome.end(), [](const Triangle2* pT, const Triangle2* pOther) {
            return pT->getBarycenter() < pOther->getBarycenter();
        });
        vSome.resize((vSome.size() + 2) / 3);
        Points vCorners;
        for (const Triangle2* pT : vSome)
            vCorners.insert(vCorners.end(), {*pT->getCorner(0), *pT->getCorner(1), *pT->getCorner(2)});
        vZones.push_back(vSome.size() % 2 == 0 ? kivo.createZone(vSome) : kivo.importTriangles(vCorners));
        ASSERT_NE(nullptr, vZones.back());
        std::vector<ConstraintGraph2*> vBorder;
        vZones.back()->getConstraintGraphs(vBorder);
        for (ConstraintGraph2* pGraph : vBorder)
            addGraph(pGraph);
        if (Zone2* const pDifference = zoneSymmetricDifference(vZones[1], vZones.back()))
            vZones.push_back(pDifference);
    }

    // Cuts, and demands what must hold.
    ConstraintGraph2* cut(const Segments& vKnives, Nearness nearness) {
        const oracle::CutWitness witness(kivo, vKnives, vGraphs, vZones);
        const auto before = oracle::triangleList(kivo);
        std::vector<double> vAreas;
        for (const Zone2* pZone : vZones)
            vAreas.push_back(pZone->getArea2D());
        std::string said;
        ConstraintGraph2* const pGraph = cutUnwatched(vKnives, said);
        const std::string text = "cut " + doubles::hex(endsOf(vKnives)) + "\n" + given();
        EXPECT_EQ("", nearness == APART ? witness.findFault(pGraph) : witness.findLoss(pGraph)) << text;
        EXPECT_TRUE(pGraph != nullptr || before == oracle::triangleList(kivo)) << text;
        EXPECT_TRUE(nearness == NEAR || witness.warnings() == said) << said << text;
        for (std::size_t i = 0; i < vZones.size() && nearness == APART; ++i)
            EXPECT_NEAR(vAreas[i], vZones[i]->getArea2D(), 1e-8 * vAreas[0]) << text;
        expectConstrained(*this);
        return pGraph;
    }
    ConstraintGraph2* cutUnwatched(const Segments& vKnives, std::string& said) {
        const CapturedMessages captured;
        ConstraintGraph2* const pGraph =
            vKnives.size() == 1 ? kivo.cutTriangles(vKnives[0]) : kivo.cutTriangles(vKnives);
        said = captured.output() + captured.error();
        addGraph(pGraph);
        return pGraph;
    }
};

Segments scaled(const Segments& vSegments, int exponent) {
    Segments v;
    for (const Segment2& s : vSegments) {
        const Points p = doubles::scaled({s.getSrc(), s.getTrg()}, exponent);
        v.emplace_back(p[0], p[1]);
    }
    return v;
}

template<class Value>
const Value& anyOf(Rng& rng, const std::vector<Value>& v) {
    return v[rng() % v.size()];
}

Segments segmentsOf(int num, const std::function<Point2()>& makePoint, bool bDistinct = true) {
    Segments v;
    for (; num > 0; --num) {
        const Point2 p = makePoint();
        v.emplace_back(p, makePoint());
        if (bDistinct && v.back().getTrg() == p) v.pop_back();
    }
    return v;
}

// A lattice, halves of whose steps are exact: knives meet vertices, edges and each other in all ways.
struct Lattice {
    int size;

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
        return rng() % 2 == 0 ? zoned::square(x, y, s) : zoned::ringOf({{x, y}, {x + s, y}, {x, y + s}});
    }
    // Any way, along an axis or a diagonal, or through (1/3, 1/3).
    Segment2 knife(Rng& rng) const {
        const int numParts = 1 + below(rng, 2);
        const auto at = [&] { return double(below(rng, (size + 3) * numParts)) / numParts - 1; };
        const double x = at(), y = at(), d = below(rng, 2 * size) - size;
        switch (below(rng, 6)) {
        case 0:
            return {{x, y}, {x + below(rng, 5) - 2, y}};
        case 1:
            return {{x, y}, {x, y + below(rng, 5) - 2}};
        case 2:
            return {{x, y}, {x + d, rng() % 2 == 0 ? y + d : y - d}};
        case 3:
            return {{x, y}, {1 - 2 * x, 1 - 2 * y}};
        default:
            return {{x, y}, {rng() % 20 == 0 ? infinity : at(), at()}};
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
    for (unsigned round = 0; round < 120 / few && !testing::Test::HasFailure(); ++round) {
        SCOPED_TRACE(round);
        Rng rng(round);
        const double aOffsets[] = {0, 5e6, -1e3}, offset = aOffsets[round % 3];
        const int exponent = round % 7 != 0 ? 0 : round % 2 == 0 ? 490 : -490;
        const auto points = [&](int num, double margin) {
            const Points v = zoned::randomPoints(rng, num, offset - margin, offset + 10 + margin);
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

// Nothing may rest on where a crossing is rounded to, and to which side of what lies beside it. Also where
// coordinates are integers from 2^52 on, and between a few ends that are one step apart.
TEST(CutTriangles, ofNastySetsKeepsAllLaws) {
    std::vector<nastySets::Kind> vKinds = nastySets::all();
    for (const int height : {2, 5, 9})
        for (const double dx : {0.0, 0x1p52})
            vKinds.push_back({"coarse", [=](Rng& rng) {
                                  return nastySets::many(rng, [=](Rng& r) {
                                      const double x = dx + below(r, dx == 0 ? 100 : 9);
                                      return Point2(x, below(r, height) - 0x1p52);
                                  });
                              }});
    vKinds.push_back({"map", [](Rng& rng) { return zoned::randomPoints(rng, 20, 5e6, 5e6 + 10); }});
    for (const nastySets::Kind& kind : vKinds) {
        for (unsigned round = 0; round < 14 / few && !testing::Test::HasFailure(); ++round) {
            SCOPED_TRACE(kind.name + std::string(" ") + std::to_string(round));
            Rng rng(round);
            Points vPoints = kind.make(rng), vEnds = kind.make(rng);
            Scene scene;
            scene.kivo.insert(vPoints);
            if (!scene.kivo.is2D()) continue;
            vEnds.insert(vEnds.end(), vPoints.begin(), vPoints.end());
            const bool bBundle = kind.name == std::string("map");
            if (bBundle) vEnds = {vEnds.front(), vEnds.back()};
            const auto anyEnd = [&] { return doubles::jittered(rng, anyOf(rng, vEnds), below(rng, 2)); };
            scene.addOneByOne(segmentsOf(3, anyEnd));
            scene.addZones(zoned::ringOf({vPoints[0], anyOf(rng, vPoints), vPoints.back()}), NEAR);
            for (int i = 0; i < 3; ++i)
                scene.cut(segmentsOf(bBundle ? 4 : 1 + below(rng, 4), anyEnd, false), NEAR);
        }
    }
}

// The square from 0 to 4 with its diagonal from (0, 0) to (4, 4): how many vertices and pieces there are.
// Chains go along the knives, so cutting once more changes nothing.
TEST(CutTriangles, makesTheVerticesAndPiecesThatOneExpects) {
    struct Case {
        const char* name;
        Segments vKnives;
        std::size_t numNew, numPieces;
    };
    constexpr double y = 1 - 0x1p-53;
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
        {"there and back", {{{-1, 1}, {5, 1}}, {{5, 1}, {-1, 1}}}, 3, 4},
        {"one a part of the other", {{{-1, 1}, {5, 1}}, {{3, 1}, {2, 1}}}, 5, 5},
        {"overlapping", {{{-1, 1}, {3, 1}}, {{2, 1}, {5, 1}}}, 5, 5},
        {"a cross", {{{2, 3}, {4, 3}}, {{3.5, 2}, {3.5, 4}}}, 7, 6},
        {"a cross on an edge", {{{-1, 1}, {5, 1}}, {{1, -1}, {1, 5}}}, 5, 4},
        {"a T", {{{1, 2}, {1, 4}}, {{0, 3}, {1, 3}}}, 4, 3},
        {"stops that are rounded above each other", {{{2, 1}, {3, 0}}, {{1.5, y}, {2.5, y}}}, 5, 4},
        {"a cross outside", {{{-1, 2}, {6, 2}}, {{6, 1}, {3, 4}}}, 6, 4},
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
        const auto before = oracle::triangleList(scene.kivo);
        scene.cut(zoned::reversed(some.vKnives), APART);
        for (const Segment2& knife : some.vKnives)
            scene.cut({knife}, APART);
        EXPECT_EQ(before, oracle::triangleList(scene.kivo));
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

TEST(CutTriangles, byARingMakesAPolygonForAllThatMayFollow) {
    for (unsigned round = 0; round < 30 / few; ++round) {
        SCOPED_TRACE(round);
        Rng rng(round);
        Scene scene;
        scene.kivo.insert(zoned::randomPoints(rng, 60, -10, 10));
        Segments vRing = meshed::bluntStar(rng, 5 + below(rng, 8), {0, 0}, 6);
        if (round % 2 == 0) vRing = zoned::reversed(vRing);
        ConstraintGraph2* const pGraph = scene.cut(vRing, APART);
        ASSERT_TRUE(pGraph != nullptr && pGraph->isPolygon());
        Zone2* const pZone = scene.kivo.createZone(pGraph, ZL_INSIDE);
        zoned::expectNearArea(std::abs(oracle::areaOf(vRing)), pZone->getArea2D());
        std::vector<Point2*> vVertices;
        scene.kivo.getVertexPointers(vVertices);
        for (Point2* p : vVertices)
            if (!scene.kivo.isConstraint(p) && rng() % 2 == 0) scene.kivo.remove(p);
        expectConstrained(scene);
        Points vMore = zoned::randomPoints(rng, 30, -12, 12); // and some on the chain, or nearly
        for (const Segment2& s : oracle::leavesOf({pGraph}))
            vMore.emplace_back((s.getSrc().x() + s.getTrg().x()) / 2, (s.getSrc().y() + s.getTrg().y()) / 2);
        scene.kivo.insert(vMore);
        expectConstrained(scene);
        MeshGenParams params = meshed::onlyAngles(pZone, 25);
        meshed::expectMeshed(scene.kivo, params, {pGraph});
        scene.cut({{vMore[0], vMore[1]}}, NEAR);
    }
}

TEST(CutTriangles, byHundredsOfKnivesIsSoundAtOnceAndOneByOne) {
    Rng rng(5);
    const Points vPoints = zoned::randomPoints(rng, 300, 0, 10);
    const auto anyEnd = [&] {
        return below(rng, 6) == 0 ? anyOf(rng, vPoints) : zoned::randomPoints(rng, 1, -1, 11)[0];
    };
    Scene scene;
    scene.kivo.insert(vPoints);
    scene.addZones(zoned::square(2, 2, 5), APART);
    scene.cut(segmentsOf(150 / few, anyEnd), APART);
    std::string said;
    for (const Segment2& knife : segmentsOf(150 / few, anyEnd))
        scene.cutUnwatched({knife}, said);
    expectConstrained(scene);
    EXPECT_NEAR(25, scene.vZones[1]->getArea2D(), 1e-9);
}

TEST(CutTriangles, saysWhatCanNotCutAndThenChangesNothing) {
    const Segment2 beyond({5, 0}, {5, 9}), notFinite({0, std::nan("")}, {1, 1}), noLength({1, 1}, {1, 1});
    const Segment2 atCorner({-1, 1}, {1, -1}), atEdge({2, 0}, {2, -3}), infinite({0, 0}, {infinity, 1});
    const Segments vAll = {beyond, atEdge, noLength, atCorner, infinite, noLength, notFinite};
    const std::string start = "      [Kivo2D-Message] Dt2::cutTriangles(..), WARNING: ";
    const std::string ignored = start + "2 knives with a coordinate that is not finite ignored\n" + start +
                                "2 knives of no length ignored\n" + start +
                                "3 knives that meet the triangulation in no more than a point ignored\n";
    for (const bool b2D : {true, false}) {
        Scene scene; // which compares what is said, and what there is before and afterwards
        scene.kivo.insert(b2D ? Points{{0, 0}, {4, 0}, {0, 4}} : Points{{0, 0}, {4, 0}, {8, 0}});
        for (const Segments& v : {Segments{}, {notFinite}, {noLength}, {beyond}, {atCorner}, {atEdge}})
            EXPECT_EQ(nullptr, scene.cut(v, APART));
        std::string said;
        EXPECT_EQ(nullptr, scene.cutUnwatched(vAll, said));
        EXPECT_EQ(b2D ? ignored + start + "No knife is left, returning NULL\n"
                      : start + "The triangulation has no triangles yet, returning NULL\n",
                  said);
        EXPECT_EQ(b2D, scene.cut({beyond, {{1, -1}, {1, 5}}, noLength}, APART) != nullptr); // what is left
    }
}

TEST(CutTriangles, ofRealDataMeetsTheSecondOpinion) {
    for (const realData::Folder& folder : realData::folders()) {
        for (const realData::Path& path : realData::filesIn(folder, ".seg")) {
            const Segments vSegments = realData::readSegments(path);
            if (vSegments.size() > std::size_t(10000 / few)) continue;
            SCOPED_TRACE(path.filename().string());
            Rng rng(vSegments.size());
            Scene scene;
            ConstraintGraph2* const pGraph = scene.add(vSegments, CIS_CONSTRAINED_DELAUNAY);
            if (pGraph == nullptr || !scene.kivo.is2D()) continue;
            {
                const CapturedMessages captured;
                Zone2* const pZone = scene.kivo.createParityZone({pGraph});
                if (pZone != nullptr) scene.vZones.push_back(pZone);
            }
            const Points vPoints = endsOf(oracle::originalsOf(pGraph));
            const auto knives = [&](int num, double jitter) {
                Segments v = segmentsOf(num, [&] { return anyOf(rng, vPoints); });
                for (Segment2& s : v) {
                    const Point2 p = s.getSrc(), q = s.getTrg();
                    const double dx = (p.x() - q.x()) * jitter * doubles::uniform(rng);
                    const double dy = (q.y() - p.y()) * jitter * doubles::uniform(rng);
                    s = Segment2({p.x() + dx, p.y() + dy}, {q.x() + dy, q.y() - dx});
                }
                return v;
            };
            scene.cut(knives(8, 0.1), APART);
            scene.cut(knives(3, 0), NEAR);
        }
    }
}

TEST(CutTriangles, appliesConstraintsThatWait) {
    Scene scene;
    scene.kivo.insert({{0, 0}, {4, 0}});
    scene.add({{{1, 0}, {3, 0}}, {{3, 0}, {5, 0}}}, CIS_CONSTRAINED_DELAUNAY);
    scene.kivo.insert({{2, -3}, {2, 3}});
    std::string said;
    ASSERT_NE(nullptr, scene.cutUnwatched({{{2.5, 9}, {2.5, -9}}}, said));
    EXPECT_EQ("", said);
    expectConstrained(scene);
    EXPECT_EQ(4u, oracle::leafEdges({scene.vGraphs[0]}).size());
}

TEST(CutTriangles, thatAListenerStopsLeavesAValidTriangulation) {
    struct Stopper : MsgBase {
        void update(MsgType, const char*, double) override {
            if (numLeft-- == 0) throw std::runtime_error("enough");
        }
        int numLeft = 0;
    };
    bool bStopped = true;
    int num = 0;
    for (; bStopped && num < 1000; ++num) {
        SCOPED_TRACE(num);
        Rng rng(5);
        Scene scene;
        scene.kivo.insert(zoned::randomPoints(rng, 40, 0, 10));
        scene.add(zoned::square(2, 2, 5), CIS_CONSTRAINED_DELAUNAY);
        const Segments vKnives = segmentsOf(8, [&] { return zoned::randomPoints(rng, 1, -1, 11)[0]; });
        Stopper stopper;
        stopper.numLeft = num;
        scene.kivo.subscribe(MSG_PROGRESS, &stopper);
        const CapturedMessages captured;
        try {
            EXPECT_NE(nullptr, scene.kivo.cutTriangles(vKnives));
            bStopped = false;
        } catch (const std::runtime_error&) {
        }
        EXPECT_TRUE(scene.kivo.checkValidity(true, "stopped"));
        scene.kivo.unsubscribe(MSG_PROGRESS, &stopper);
        EXPECT_NE(nullptr, scene.kivo.cutTriangles(vKnives));
        EXPECT_TRUE(scene.kivo.checkValidity(true, "again"));
    }
    EXPECT_LT(2, num);
    EXPECT_FALSE(bStopped);
}
