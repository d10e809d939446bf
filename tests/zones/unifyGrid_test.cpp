#include "tests/oracle/bruteForce.h"
#include "tests/support/files.h"
#include "tests/support/zoned.h"

#include <cfloat>
#include <limits>
#include <memory>
#include <sstream>

// Zones on common grids, against laws that are checked from outside.

using namespace zoned;

namespace {

// Multiples as they are meant: the nearest one, rounded to double; a number of 2^50 widths or more is one.
double onGrid(double x, double width) {
    if (!(std::fabs(x / width) < 0x1p50)) return x;
    const double multiple = std::nearbyint(x / width) * width;
    return std::isfinite(multiple) ? multiple : x;
}
Point2 onGrid(const Point2& p, double width) { return {onGrid(p.x(), width), onGrid(p.y(), width)}; }

std::set<Point2*> verticesOf(const Zone2* pZone) {
    std::vector<Point2*> v;
    pZone->getVertices(v);
    return {v.begin(), v.end()};
}

// Handles and coordinates of all triangles, in the order of their records.
using State = std::vector<std::pair<const void*, std::pair<double, double>>>;
State stateOf(const Kivo_2D& kivo) {
    Triangles v;
    kivo.getTrianglePointers(v);
    State state;
    for (const Triangle2* pT : v)
        for (int i = 0; i < 3; ++i)
            state.push_back({pT->getCorner(i), {pT->getCorner(i)->x(), pT->getCorner(i)->y()}});
    return state;
}

// Numbers of edges and rings of the border.
std::pair<std::size_t, std::size_t> shapeOf(const Zone2* pZone) {
    std::vector<Edge2> vEdges;
    pZone->getBoundaryEdges(vEdges);
    std::size_t num = 0;
    for (std::size_t i = 0, start = 0; i < vEdges.size(); ++i)
        if (vEdges[i].getTrg() == vEdges[start].getSrc()) {
            ++num;
            start = i + 1;
        }
    return {vEdges.size(), num};
}

void expectConstraintsAreEdges(const Kivo_2D& kivo, const std::vector<ConstraintGraph2*>& vGraphs) {
    for (const ConstraintGraph2* pGraph : vGraphs) {
        std::vector<ConstraintSegment2*> vLeaves;
        pGraph->getChildConstraintSegments(vLeaves);
        for (const ConstraintSegment2* pLeaf : vLeaves) {
            Point2 *const p = pLeaf->getSrc(), *const q = pLeaf->getTrg();
            ASSERT_TRUE(p->getIncidentTriangle() != nullptr && q->getIncidentTriangle() != nullptr);
            EXPECT_TRUE(kivo.getAdjacentTriangle(p, q) != nullptr ||
                        kivo.getAdjacentTriangle(q, p) != nullptr);
            EXPECT_TRUE(kivo.isConstraint(p, q));
        }
    }
}

void expectValid(const Kivo_2D& kivo, const std::vector<ConstraintGraph2*>& vGraphs) {
    const CapturedMessages captured;
    EXPECT_TRUE(kivo.checkValidity(true, "unified")) << captured.output();
    EXPECT_EQ("", oracle::findFault(kivo, [&](Point2* p, Point2* q) { return kivo.isConstraint(p, q); }));
    expectConstraintsAreEdges(kivo, vGraphs);
}

// A triangulation before a zone of it goes onto a grid.
struct Before {
    Before(const Kivo_2D& itsKivo, const Zone2* pItsZone, double itsWidth)
        : kivo(itsKivo), pZone(pItsZone), width(itsWidth), sZone(verticesOf(pZone)), shape(shapeOf(pZone)) {
        std::vector<Point2*> v;
        kivo.getVertexPointers(v);
        for (Point2* p : v)
            mAll.emplace(p, *p);
    }

    void expectUnified(std::size_t numLeft, const std::string& text, bool bMayLeak = false) const {
        EXPECT_LE(kivo.numberOfPoints(), mAll.size());
        std::set<Point2*> sNow;
        std::size_t numBeside = 0;
        for (Point2* p : verticesOf(pZone)) {
            sNow.insert(p);
            numBeside += onGrid(*p, width) != *p;
        }
        EXPECT_EQ(numBeside, numLeft);
        const std::string warning =
            numLeft == 0 ? ""
                         : "      [Kivo2D-Message] Zone2::unifyGrid(), WARNING: " + std::to_string(numLeft) +
                               (numLeft == 1 ? " vertex stays" : " vertices stay") +
                               " beside the grid: moving them would change how constraints lie\n";
        EXPECT_EQ(warning, text);
        std::set<std::pair<double, double>> sPlaces;
        std::vector<Point2*> v;
        kivo.getVertexPointers(v);
        const std::set<Point2*> sAlive(v.begin(), v.end());
        for (const Point2* p : v)
            sPlaces.emplace(p->x(), p->y());
        for (const auto& [p, old] : mAll) {
            const Point2 target = onGrid(old, width);
            if (sZone.count(p) == 0) { // may only go where another comes to
                if (bMayLeak) continue;
                EXPECT_EQ(1u, sPlaces.count({old.x(), old.y()})) << "a vertex outside has moved";
            } else if (sAlive.count(p) != 0) {
                EXPECT_TRUE(*p == target || *p == old) << "moved elsewhere";
            } else {
                EXPECT_EQ(1u, sPlaces.count({target.x(), target.y()})) << "lost";
            }
        }
        // Unless vertices fell together, or came to lie on the border.
        const auto [numEdges, numRings] = shapeOf(pZone);
        const bool bSameVertices = kivo.numberOfPoints() == mAll.size() && numEdges == shape.first;
        EXPECT_TRUE(shape.second == numRings || !bSameVertices || pZone->getZoneLocation() == ZL_GROW);
    }

    const Kivo_2D& kivo;
    const Zone2* pZone;
    double width;
    std::set<Point2*> sZone;
    std::pair<std::size_t, std::size_t> shape;
    std::map<Point2*, Point2> mAll;
};

struct Place {
    double factor, shift;
    Point2 of(const Point2& p) const { return {factor * p.x() + shift, factor * p.y() - shift}; }
};

// Zones of many kinds in one triangulation.
struct World {
    std::unique_ptr<Kivo_2D> pKivo = std::make_unique<Kivo_2D>();
    std::vector<ConstraintGraph2*> vGraphs;
    std::vector<Zone2*> vZones;

    World(std::uint64_t seed, const Place& place) {
        doubles::Rng rng(seed);
        const CapturedMessages captured;
        Kivo_2D& kivo = *pKivo;
        const auto moved = [&](Segments v) {
            for (Segment2& s : v)
                s = Segment2(place.of(s.getSrc()), place.of(s.getTrg()));
            return v;
        };
        const auto graph = [&](Segments v, bool bOriented = true) {
            v = moved(std::move(v));
            const auto cis = rng() % 4 == 0 ? CIS_CONFORMING_DELAUNAY : CIS_CONSTRAINED_DELAUNAY;
            vGraphs.push_back(kivo.createConstraint(v, cis, bOriented));
            return vGraphs.back();
        };
        Points vPoints = randomPoints(rng, doubles::below(rng, 60), -12, 12);
        for (Point2& p : vPoints)
            p = place.of(p);
        kivo.insert(vPoints);
        const int num = 3 + doubles::below(rng, 20);
        const Segments vOuter = star(rng, num, {0, 0}, 8);
        ConstraintGraph2* const pOuter = graph(vOuter);
        ConstraintGraph2* const pHole = graph(scaledAbout({0, 0}, 0.5, vOuter));
        ConstraintGraph2* const pLeft = graph(square(-10, -10, 10));
        ConstraintGraph2* const pRight = graph(square(0, -10, 10));
        for (int i = doubles::below(rng, 6); i > 0; --i) {
            const Points v = randomPoints(rng, 2, -11, 11);
            graph({{v[0], v[1]}}, false);
        }
        vZones = {kivo.createZone(pOuter, ZL_INSIDE),
                  kivo.createZone(pHole, ZL_OUTSIDE),
                  kivo.createZone(pLeft, ZL_INSIDE),
                  kivo.createZone(pRight, ZL_INSIDE),
                  kivo.createParityZone({pOuter, pHole}),
                  kivo.createZone(static_cast<ConstraintGraph2*>(nullptr), ZL_GLOBAL),
                  kivo.createZone(vGraphs, ZL_GROW, place.of({0.125, 0.25}))};
        vZones.push_back(zoneUnion(vZones[2], vZones[4]));
        vZones.push_back(zoneSymmetricDifference(vZones[2], vZones[0]));
        if (rng() % 2 == 0 && place.shift == 0 && place.factor == 1)
            kivo.refine(vZones[2 + rng() % 3], 20, 0.5, 4, true);
        kivo.applyConstraintsAndZones();
    }
    std::string obj(const std::string& name) const {
        const CapturedMessages captured;
        EXPECT_TRUE(pKivo->writeObj(name));
        return readFile(name);
    }
};

// The zones that each vertex is in which no constraint holds.
std::map<Point2*, unsigned> membership(const World& world) {
    std::map<Point2*, unsigned> mZones;
    for (std::size_t i = 0; i < world.vZones.size(); ++i)
        for (Point2* p : verticesOf(world.vZones[i]))
            if (!world.pKivo->isConstraint(p)) mZones[p] |= 1U << i;
    return mZones;
}

// What it returned and said itself. Zones that grow may complain of parts as thin as doubles are dense.
std::pair<std::size_t, std::string> unified(Zone2* pZone, double width) {
    const CapturedMessages captured;
    const std::size_t num = pZone->unifyGrid(width);
    std::string text;
    std::istringstream lines(captured.output() + captured.error());
    for (std::string line; std::getline(lines, line);)
        if (line.find("Zone2::unifyGrid()") != std::string::npos) text += line + "\n";
    return {num, text};
}

void tryWorld(std::uint64_t seed, const Place& place, std::size_t which, double width) {
    SCOPED_TRACE("seed " + std::to_string(seed) + ", zone " + std::to_string(which) + ", width " +
                 doubles::hex({{width, 0}}));
    World world(seed, place);
    Kivo_2D& kivo = *world.pKivo;
    Zone2* const pZone = world.vZones[which];
    if (pZone->getNumberOfTriangles() == 0) return;
    const Before before(kivo, pZone, width);
    const std::map<Point2*, unsigned> mMemberBefore = membership(world);
    const auto [numLeft, text] = unified(pZone, width);
    before.expectUnified(numLeft, text);
    expectValid(kivo, world.vGraphs);
    for (const auto& [p, zones] : membership(world)) {
        const auto it = mMemberBefore.find(p); // else it was on a segment that has vanished
        EXPECT_TRUE(it == mMemberBefore.end() || it->second == zones) << "left its zone";
    }
    EXPECT_GT(pZone->getNumberOfTriangles(), 0u);
    for (const Zone2* pOther : world.vZones)
        if (pOther->getNumberOfTriangles() > 0) shapeOf(pOther);
    const State state = stateOf(kivo);
    const std::string obj = world.obj("first.obj");
    EXPECT_EQ(std::make_pair(numLeft, text), unified(pZone, width));
    EXPECT_TRUE(state == stateOf(kivo));
    EXPECT_TRUE(obj == world.obj("second.obj"));
    if (seed % 4 == 0) {
        const World again(seed, place);
        EXPECT_EQ(std::make_pair(numLeft, text), unified(again.vZones[which], width));
        EXPECT_TRUE(obj == again.obj("again.obj"));
    }
    kivo.insert({place.of({0.3, 0.7}), place.of({-5, 5}), place.of({13, 13})});
    settle(kivo);
    expectValid(kivo, world.vGraphs);
}

} // namespace

TEST(UnifyGrid, putsZonesOfAllKindsOnGridsOfAllWidths) {
    static doubles::Rng rng(1);
    for (int round = 0; round < 150; ++round) {
        const std::uint64_t seed = rng();
        const double width = std::pow(10, doubles::uniform(rng, -3, 2));
        tryWorld(seed, {1, 0}, rng() % 9, round % 3 == 0 ? std::exp2(std::rint(std::log2(width))) : width);
        if (testing::Test::HasFailure()) return;
    }
}

// Segments and rings at random, with crossings, shared corners and vertices on each other's edges.
TEST(UnifyGrid, keepsSoupsOfSegmentsPlanar) {
    static doubles::Rng rng(3);
    for (int round = 0; round < 150; ++round) {
        const double step = round % 2 == 0 ? 1 : 0.1;
        const auto any = [&] {
            return Point2(doubles::below(rng, 12) * step, doubles::below(rng, 12) * step);
        };
        Kivo_2D kivo;
        std::vector<ConstraintGraph2*> vGraphs;
        for (int i = 3 + doubles::below(rng, 5); i > 0; --i) {
            const CapturedMessages captured;
            Segments v;
            Point2 p = any();
            const Point2 first = p;
            for (int j = doubles::below(rng, 6); j >= 0; --j) {
                const Point2 q = j == 0 ? first : any();
                v.emplace_back(p, q);
                p = q;
            }
            const auto cis = rng() % 4 == 0 ? CIS_CONFORMING_DELAUNAY : CIS_CONSTRAINED_DELAUNAY;
            vGraphs.push_back(kivo.createConstraint(v, cis, rng() % 2 == 0));
            kivo.insert(any());
        }
        std::erase(vGraphs, nullptr);
        if (!kivo.is2D()) continue;
        settle(kivo);
        std::vector<Zone2*> vZones = {kivo.createZone(static_cast<ConstraintGraph2*>(nullptr), ZL_GLOBAL),
                                      kivo.createParityZone(vGraphs), kivo.createEnclosedZone(vGraphs),
                                      kivo.createZone(vGraphs, ZL_GROW, any())};
        Triangles vHalf;
        for (Triangle2* pT : oracle::allTriangles(kivo))
            if (rng() % 2 == 0) vHalf.push_back(pT);
        {
            const CapturedMessages captured;
            vZones.push_back(kivo.createZone(vHalf));
        }
        std::erase(vZones, nullptr);
        for (int i = 0; i < 3; ++i) {
            Zone2* const pZone = vZones[rng() % vZones.size()];
            if (pZone->getNumberOfTriangles() == 0) continue;
            const double width = step * std::pow(10, doubles::uniform(rng, -2, 1));
            const Before before(kivo, pZone, width);
            const auto [numLeft, text] = unified(pZone, width);
            // What the hull has closed, open segments do not, once their ends have left it.
            before.expectUnified(numLeft, text, pZone->getZoneLocation() == ZL_GROW);
            expectValid(kivo, vGraphs);
            const bool bEmpty = trianglesOf(pZone).empty();
            EXPECT_TRUE(!bEmpty || pZone->getZoneLocation() == ZL_GROW);
            if (bEmpty) continue;
            const State state = stateOf(kivo);
            EXPECT_EQ(std::make_pair(numLeft, text), unified(pZone, width));
            EXPECT_TRUE(state == stateOf(kivo));
        }
        if (testing::Test::HasFailure()) return;
    }
}

// Areas that share borders: what one has beside its neighbours, they follow, and nothing else of them moves.
TEST(UnifyGrid, ofOneZoneLeavesItsNeighboursTheirInside) {
    static doubles::Rng rng(4);
    for (int round = 0; round < 30; ++round) {
        Kivo_2D kivo;
        std::vector<Zone2*> vZones;
        std::vector<ConstraintGraph2*> vGraphs;
        Point2 aCorners[6][6];
        for (int i = 0; i < 6; ++i)
            for (int j = 0; j < 6; ++j)
                aCorners[i][j] = {i + doubles::uniform(rng, -0.4, 0.4), j + doubles::uniform(rng, -0.4, 0.4)};
        for (int i = 0; i < 5; ++i)
            for (int j = 0; j < 5; ++j) {
                vGraphs.push_back(add(kivo, ringOf({aCorners[i][j], aCorners[i + 1][j],
                                                    aCorners[i + 1][j + 1], aCorners[i][j + 1]})));
                vZones.push_back(kivo.createZone(vGraphs.back(), ZL_INSIDE));
            }
        kivo.insert(randomPoints(rng, 100, -1, 6));
        Zone2* const pZone = vZones[12];
        if (round % 2 == 0) kivo.refine(pZone, 20, 0.1, 0.3, true);
        std::map<const Zone2*, std::pair<std::set<Point2*>, double>> mOthers;
        for (const Zone2* pOther : vZones)
            mOthers[pOther] = {verticesOf(pOther), pOther->getArea2D()};
        const std::set<Point2*> sMoving = verticesOf(pZone);
        const double width = std::pow(10, doubles::uniform(rng, -3, 0));
        unified(pZone, width);
        expectValid(kivo, vGraphs);
        for (const auto& [pOther, old] : mOthers) {
            const std::set<Point2*> sNow = verticesOf(pOther);
            const bool bShares = std::any_of(old.first.begin(), old.first.end(),
                                             [&](Point2* p) { return sMoving.count(p) != 0; });
            if (!bShares) {
                EXPECT_EQ(old.first, sNow);
                EXPECT_EQ(old.second, pOther->getArea2D());
            }
            for (Point2* p : old.first)
                EXPECT_TRUE(sMoving.count(p) != 0 || sNow.count(p) != 0 ||
                            p->getIncidentTriangle() == nullptr)
                    << "left its zone";
        }
        if (testing::Test::HasFailure()) return;
    }
}

TEST(UnifyGrid, refusesTolerancesThatAreNoPositiveNumbers) {
    Kivo_2D kivo;
    kivo.insert({{0.1, 0.2}, {1.3, 0.1}, {0.7, 1.9}});
    Zone2* const pZone = kivo.createZone(static_cast<ConstraintGraph2*>(nullptr), ZL_GLOBAL);
    const State state = stateOf(kivo);
    const std::string start = "      [Kivo2D-Message] Zone2::unifyGrid(), WARNING: ";
    for (const double width :
         {0.0, -0.0, -1.0, -DBL_MAX, std::numeric_limits<double>::quiet_NaN(),
          std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()})
        EXPECT_EQ(std::make_pair(std::size_t(0),
                                 start + "The tolerance must be a positive number, nothing to do\n"),
                  unified(pZone, width));
    for (const double width : {0x1p-1074, DBL_MIN, 1e-300})
        EXPECT_EQ(std::make_pair(std::size_t(0), std::string()), unified(pZone, width)); // all are on it
    EXPECT_TRUE(state == stateOf(kivo));
    for (const double width : {DBL_MAX, 1e300, 100.0}) {
        const std::size_t num = unified(pZone, width).first;
        EXPECT_EQ(1u, kivo.numberOfTriangles());
        EXPECT_LE(num, 3u);
        expectValid(kivo, {});
    }
    EXPECT_EQ(std::make_pair(std::size_t(0), start + "The zone has no triangles, nothing to do\n"),
              unified(zoneDifference(pZone, pZone), 1));
}

TEST(UnifyGrid, worksAtAnyScaleAndWithAnyTolerance) {
    static doubles::Rng rng(2);
    const Place aPlaces[] = {{1, 0}, {1, 5e6}, {1e-150, 0}, {1e150, 0}, {1e-300, 0}, {1e-10, 1}, {1e300, 0}};
    for (int round = 0; round < 60; ++round) {
        const Place& place = aPlaces[std::size_t(round) % std::size(aPlaces)];
        const std::uint64_t seed = rng();
        tryWorld(seed, place, rng() % 9, place.factor * std::pow(10, doubles::uniform(rng, -15, 4)));
        if (testing::Test::HasFailure()) return;
    }
}
