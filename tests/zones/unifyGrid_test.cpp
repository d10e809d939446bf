#include "tests/oracle/bruteForce.h"
#include "tests/support/files.h"
#include "tests/support/zoned.h"

#include <cfloat>
#include <limits>
#include <memory>

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

std::size_t numRings(const Zone2* pZone) {
    std::vector<Edge2> vEdges;
    pZone->getBoundaryEdges(vEdges);
    std::size_t num = 0;
    for (std::size_t i = 0, start = 0; i < vEdges.size(); ++i)
        if (vEdges[i].getTrg() == vEdges[start].getSrc()) {
            ++num;
            start = i + 1;
        }
    return num;
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
        : kivo(itsKivo), pZone(pItsZone), width(itsWidth), sZone(verticesOf(pZone)),
          numPoints(kivo.numberOfPoints()), numZoneRings(numRings(pZone)) {
        std::vector<Point2*> v;
        kivo.getVertexPointers(v);
        for (Point2* p : v)
            mAll.emplace(p, *p);
    }

    void expectUnified(std::size_t numLeft, const std::string& text) const {
        EXPECT_LE(kivo.numberOfPoints(), numPoints);
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
            if (sZone.count(p) == 0) {                             // may only go where another comes to
                if (pZone->getZoneLocation() == ZL_GROW) continue; // another region may have its start point
                EXPECT_EQ(1u, sPlaces.count({old.x(), old.y()})) << "a vertex outside has moved";
            } else if (sAlive.count(p) != 0) {
                EXPECT_TRUE(*p == target || *p == old) << "moved elsewhere";
            } else {
                EXPECT_EQ(1u, sPlaces.count({target.x(), target.y()})) << "lost";
            }
        }
        if (kivo.numberOfPoints() == numPoints) {
            EXPECT_EQ(numZoneRings, numRings(pZone));
        }
        EXPECT_EQ(numPoints - mAll.size(), 0u);
    }

    const Kivo_2D& kivo;
    const Zone2* pZone;
    double width;
    std::set<Point2*> sZone;
    std::size_t numPoints, numZoneRings;
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
        const std::string path = pathOf(name);
        EXPECT_TRUE(pKivo->writeObj(path));
        return readFile(path);
    }
};

std::pair<std::size_t, std::string> unified(Zone2* pZone, double width) {
    const CapturedMessages captured;
    const std::size_t num = pZone->unifyGrid(width);
    return {num, captured.output() + captured.error()};
}

void tryWorld(std::uint64_t seed, const Place& place, std::size_t which, double width) {
    SCOPED_TRACE("seed " + std::to_string(seed) + ", zone " + std::to_string(which) + ", width " +
                 doubles::hex({{width, 0}}));
    World world(seed, place);
    Kivo_2D& kivo = *world.pKivo;
    Zone2* const pZone = world.vZones[which];
    if (pZone->getNumberOfTriangles() == 0) return;
    const Before before(kivo, pZone, width);
    const auto [numLeft, text] = unified(pZone, width);
    before.expectUnified(numLeft, text);
    expectValid(kivo, world.vGraphs);
    EXPECT_GT(pZone->getNumberOfTriangles(), 0u);
    for (const Zone2* pOther : world.vZones)
        if (pOther->getNumberOfTriangles() > 0) numRings(pOther);
    const State state = stateOf(kivo);
    const std::string obj = world.obj("first.obj");
    EXPECT_EQ(std::make_pair(numLeft, text), unified(pZone, width));
    EXPECT_EQ(state, stateOf(kivo));
    EXPECT_EQ(obj, world.obj("second.obj"));
    if (seed % 4 == 0) {
        const World again(seed, place);
        EXPECT_EQ(std::make_pair(numLeft, text), unified(again.vZones[which], width));
        EXPECT_EQ(obj, again.obj("again.obj"));
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
