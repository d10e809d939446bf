#include "Kivo_2D.h"
#include "tests/oracle/exact.h"
#include "tests/support/constrained.h"

#include <algorithm>

// Where two constraints cross a vertex is made at the rounded crossing. It may lie beyond the triangles at
// the crossed edge, on another vertex, or on the far side of other constraints: nothing may rest on where it
// lies. Coordinates from 2^52 on are integers, so that rounding moves a crossing by up to a whole step of the
// grid.

using namespace TESK_KIVO2D;
using doubles::below;
using doubles::Points;
using doubles::Rng;

namespace {

constexpr double coarse = 0x1p52;

// Integers in a box, with one step as the unit in the last place of both coordinates, or of x alone.
struct CoarseGrid {
    int width, height;
    double dx, dy;

    Point2 at(int x, int y) const { return {x + dx, y + dy}; }
    Point2 any(Rng& rng) const {
        const int x = below(rng, width);
        return at(x, below(rng, height));
    }
    Segment2 anySegment(Rng& rng) const {
        const Point2 source = any(rng);
        for (;;) {
            const Point2 target = any(rng);
            if (target != source) return {source, target};
        }
    }
};

constexpr CoarseGrid aGrids[] = {{6, 6, coarse, coarse},    {20, 4, coarse, coarse},
                                 {300, 3, coarse, -coarse}, {40, 40, -coarse, coarse},
                                 {16, 6, coarse, 0},        {9, 9, -5, -coarse}};

double nearest(const mpq_class& exact) {
    const double low = exact.get_d(),
                 high = doubles::stepped(low, low < 0 ? -1 : 1); // it rounds towards zero
    return abs(exact - low) < abs(exact - high) ? low : high;
}

// Whether the point that the crossing of s and t is rounded to lies in neither triangle at the edge s.
bool leavesBothTriangles(const Kivo_2D& kivo, ConstraintSegment2* s, const Segment2& t) {
    Point2 *p = s->getSrc(), *q = s->getTrg();
    const auto side = [](const Point2& a, const Point2& b, const Point2& c) {
        return oracle::orientation(a, b, c);
    };
    if (side(*p, *q, t.getSrc()) * side(*p, *q, t.getTrg()) >= 0) return false;
    if (side(t.getSrc(), t.getTrg(), *p) * side(t.getSrc(), t.getTrg(), *q) >= 0) return false;
    const auto exact = oracle::lineIntersection(*p, *q, t.getSrc(), t.getTrg());
    const Point2 rounded(nearest(exact.x), nearest(exact.y));
    const auto isOutside = [&](const Triangle2* pT) {
        for (int i = 0; pT != nullptr && i < 3; ++i) {
            if (side(*pT->getCorner(i), *pT->getCorner((i + 1) % 3), rounded) < 0) return true;
        }
        return pT == nullptr;
    };
    return isOutside(kivo.getAdjacentTriangle(p, q)) && isOutside(kivo.getAdjacentTriangle(q, p));
}

// Adds the segments one by one. How many leaves were crossed at points that rounding moved away from them.
int addAll(Constrained& c, const Segments& vSegments, int strategies) {
    int numAway = 0;
    for (const Segment2& t : vSegments) {
        std::vector<ConstraintSegment2*> vLeaves;
        for (const oracle::GivenGraph& given : c.vGraphs)
            given.pGraph->getChildConstraintSegments(vLeaves);
        const bool bSmall = vLeaves.size() < 60;
        for (std::size_t k = 0; bSmall && k < vLeaves.size(); ++k)
            numAway += leavesBothTriangles(c.kivo, vLeaves[k], t) ? 1 : 0;
        const auto i = static_cast<int>(c.vGraphs.size());
        c.add({t}, ConstraintInsertionStrategy(strategies == 2 ? i % 2 : strategies));
        if (bSmall) expectConstrained(c);
    }
    expectConstrained(c);
    return numAway;
}

} // namespace

TEST(CrossingsRoundedAway, fromTheCrossedTrianglesKeepAllLaws) {
    Rng rng(10);
    int numAway = 0;
    for (int round = 0; round < 600 && !testing::Test::HasFailure(); ++round) {
        SCOPED_TRACE(round);
        const CoarseGrid& grid = aGrids[round % 6];
        Constrained c;
        c.kivo.insert({grid.any(rng),
                       {grid.dx, grid.dy},
                       {grid.dx + grid.width, grid.dy},
                       {grid.dx, grid.dy + grid.height}});
        Segments vSegments;
        for (int i = 3 + below(rng, 8); i > 0; --i)
            vSegments.push_back(grid.anySegment(rng));
        numAway += addAll(c, vSegments, round % 3);
        c.kivo.insert({grid.any(rng), grid.any(rng)});
        expectConstrained(c);
    }
    EXPECT_LT(100, numAway);
}

TEST(CrossingsRoundedAway, besideSliversOfAFewStepsKeepAllLaws) {
    Rng rng(11);
    int numAway = 0;
    for (int round = 0; round < 100 && !testing::Test::HasFailure(); ++round) {
        SCOPED_TRACE(round);
        // Vertices within a few steps of the edge that is crossed, in map coordinates.
        const Point2 p(448262 + doubles::uniform(rng), 5411932 + doubles::uniform(rng));
        const Point2 q(p.x() + doubles::uniform(rng, 1, 2), p.y() + doubles::uniform(rng, -1, 1));
        Points vPoints = {{p.x() + 0.6, p.y() + 7}, {p.x() + 0.4, p.y() - 7}};
        const auto alongEdge = [&](double t) {
            return Point2(p.x() + t * (q.x() - p.x()), p.y() + t * (q.y() - p.y()));
        };
        for (int i = 0; i < 6; ++i)
            vPoints.push_back(doubles::jittered(rng, alongEdge(doubles::uniform(rng, 0.3, 0.7)), 2));
        Segments vSegments = {{p, q}};
        for (int i = 0; i < 5; ++i) {
            const double x = p.x() + doubles::uniform(rng, 0, 2), turn = doubles::uniform(rng, -1, 1);
            vSegments.emplace_back(Point2(x, p.y() + 4), Point2(x + turn, p.y() - 3));
            const Point2 beside = doubles::jittered(rng, alongEdge(doubles::uniform(rng, 0.2, 0.8)), 3);
            vSegments.emplace_back(doubles::jittered(rng, p, 3), doubles::jittered(rng, beside, 3));
        }
        Constrained c;
        c.kivo.insert(vPoints);
        numAway += addAll(c, vSegments, round % 20 == 0 ? CIS_CONFORMING_DELAUNAY : CIS_CONSTRAINED_DELAUNAY);
    }
    EXPECT_LT(100, numAway);
}

// The worst of 60000 random trials.
TEST(CrossingsRoundedAway, fromThreeConstraintsAtOnceKeepAllLaws) {
    const CoarseGrid& grid = aGrids[2];
    Constrained c;
    c.kivo.insert({grid.at(24, 1), grid.at(0, 0), grid.at(300, 0), grid.at(0, 3)});
    addAll(c,
           {{grid.at(90, 0), grid.at(32, 1)},
            {grid.at(217, 0), grid.at(145, 1)},
            {grid.at(82, 1), grid.at(297, 0)},
            {grid.at(294, 0), grid.at(16, 1)}},
           CIS_CONSTRAINED_DELAUNAY);
    EXPECT_EQ(3, addAll(c, {{grid.at(127, 0), grid.at(190, 2)}}, CIS_CONSTRAINED_DELAUNAY));
}

// Two segments from one point that lie on each other but for rounding, and one that crosses both: crossings
// that are rounded to one side only would go down them step by step.
TEST(CrossingsRoundedAway, doNotSlideAtAnyScale) {
    const auto g = [](double value) { return value * 1e150; };
    const Points vEnds = {{g(8), g(4)}, {g(5), g(10)}, {g(10), g(8)}, {g(8), g(5)},
                          {g(5), g(5)}, {g(3), g(9)},  {g(4), g(3)},  {g(3), g(3)},
                          {g(8), g(4)}, {g(6), g(8)},  {g(10), g(3)}, {g(3), g(8)}};
    for (const int exponent : {-1520, -1100, -501, 0, 510}) {
        const Points vScaled = doubles::scaled(vEnds, exponent);
        Constrained c;
        for (std::size_t i = 0; i < vEnds.size(); i += 2)
            c.add({{vScaled[i], vScaled[i + 1]}}, CIS_CONSTRAINED_DELAUNAY);
        EXPECT_GT(30u, c.kivo.numberOfPoints()) << exponent;
        expectConstrained(c);
    }
}
