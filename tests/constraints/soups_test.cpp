#include "Kivo_2D.h"
#include "tests/oracle/bruteForce.h"
#include "tests/oracle/exact.h"
#include "tests/support/constrained.h"
#include "tests/support/frames.h"

#include <algorithm>
#include <numeric>
#include <set>

// Random segments on small grids: ends, crossings and overlaps meet everywhere.

using namespace TESK_KIVO2D;
using doubles::below;
using doubles::Points;
using doubles::Rng;
using oracle::Edge;

namespace {

Point2 gridPoint(Rng& rng, int size, const Frame& frame = aFrames[0]) {
    const int x = below(rng, size);
    return frame.place(x, below(rng, size));
}

Segment2 gridSegment(Rng& rng, int size, const Frame& frame = aFrames[0]) {
    const Point2 source = gridPoint(rng, size, frame);
    for (;;) {
        const Point2 target = gridPoint(rng, size, frame);
        if (target != source) return {source, target};
    }
}

Segments gridSegments(Rng& rng, int num, int size, const Frame& frame) {
    Segments vSegments;
    while (num-- > 0)
        vSegments.push_back(gridSegment(rng, size, frame));
    return vSegments;
}

bool isOn(const Segment2& s, const Point2& p) { return oracle::meeting(s.getSrc(), s.getTrg(), p, p) != 0; }

// Both have inner points on different sides of the other.
bool cross(const Segment2& s, const Segment2& t) {
    return oracle::meeting(s.getSrc(), s.getTrg(), t.getSrc(), t.getTrg()) == 2 && !isOn(s, t.getSrc()) &&
           !isOn(s, t.getTrg()) && !isOn(t, s.getSrc()) && !isOn(t, s.getTrg());
}

// Segments between the points that overlap and touch, but do not cross.
Segments withoutCrossings(Rng& rng, const Points& vPoints, int numTries) {
    Segments vSegments;
    const auto any = [&] {
        return vPoints[static_cast<std::size_t>(below(rng, static_cast<int>(vPoints.size())))];
    };
    for (int i = 0; i < numTries; ++i) {
        const Point2 source = any();
        const Segment2 s(source, any());
        const auto crosses = [&](const Segment2& t) { return cross(s, t); };
        if (s.getSqLen2D() > 0 && std::none_of(vSegments.begin(), vSegments.end(), crosses))
            vSegments.push_back(s);
    }
    return vSegments;
}

Points gridPoints(Rng& rng, int num, int size) {
    Points vPoints;
    while (num-- > 0)
        vPoints.push_back(gridPoint(rng, size));
    return vPoints;
}

// The steps from grid point to grid point of a segment with integer ends; false if one is in the set already.
bool addSteps(const Edge& edge, std::set<Edge>& sSteps) {
    const auto [p, q] = edge;
    const int dx = int(q.first - p.first), dy = int(q.second - p.second), num = std::gcd(dx, dy);
    bool bNew = true;
    for (int i = 0; i < num; ++i) {
        const Point2 a(p.first + i * dx / num, p.second + i * dy / num);
        bNew &= sSteps.insert(oracle::edgeOf(a, {a.x() + dx / num, a.y() + dy / num})).second;
    }
    return bNew;
}

struct Soups : testing::TestWithParam<Frame> {};
INSTANTIATE_TEST_SUITE_P(of, Soups, testing::ValuesIn(aFrames),
                         [](const auto& info) { return info.param.name; });

} // namespace

TEST_P(Soups, keepAllLawsInOneCallAndInManyWithPointsInBetween) {
    Rng rng(1);
    for (int round = 0; round < 120 && !HasFailure(); ++round) {
        SCOPED_TRACE(round);
        const int size = 4 + below(rng, 13), strategies = below(rng, 3), numCalls = 1 + below(rng, 5);
        Constrained c;
        for (int call = 0; call < numCalls; ++call) {
            const int num = (1 + below(rng, 20)) / numCalls + 1;
            const int cis = strategies == 2 ? below(rng, 2) : strategies;
            c.add(gridSegments(rng, num, size, GetParam()), ConstraintInsertionStrategy(cis), rng() % 2 == 0);
            if (rng() % 2 == 0) expectConstrained(c);
            if (rng() % 3 == 0) c.kivo.insert(gridPoint(rng, 2 * size, GetParam()));
            if (rng() % 3 == 0)
                c.kivo.insert({gridPoint(rng, size, GetParam()), gridPoint(rng, size, GetParam())});
        }
        if (c.kivo.is2D()) c.kivo.applyConstraintsAndZones();
        expectConstrained(c);
    }
}

TEST_P(Soups, keepAllLawsWhenPointsAreInsertedOnConstraints) {
    Rng rng(2);
    for (int round = 0; round < 60 && !HasFailure(); ++round) {
        SCOPED_TRACE(round);
        Constrained c;
        c.add(gridSegments(rng, 8, 8, GetParam()), ConstraintInsertionStrategy(round % 2));
        c.kivo.insert({GetParam().place(-1, -1), GetParam().place(9, -2), GetParam().place(3, 11)});
        c.kivo.applyConstraintsAndZones();
        for (int i = 0; i < 12; ++i) {
            const auto vEdges = oracle::leafEdges(c.vGraphs);
            const auto& [p, q] =
                vEdges[static_cast<std::size_t>(below(rng, static_cast<int>(vEdges.size())))];
            const Point2 source(p.first, p.second), target(q.first, q.second);
            const Point2 middle(source.x() / 2 + target.x() / 2, source.y() / 2 + target.y() / 2);
            const auto isInside = [&](const Edge& edge) {
                const Point2 a(edge.first.first, edge.first.second), b(edge.second.first, edge.second.second);
                return a != middle && b != middle && isOn({a, b}, middle);
            };
            const auto numSplit = std::count_if(vEdges.begin(), vEdges.end(), isInside);
            EXPECT_TRUE(c.kivo.isConstraint(c.kivo.insert(middle)) || numSplit == 0);
            const auto vAfter = oracle::leafEdges(c.vGraphs);
            EXPECT_EQ(vEdges.size() + static_cast<std::size_t>(numSplit), vAfter.size());
            EXPECT_EQ(0, std::count_if(vAfter.begin(), vAfter.end(), isInside));
        }
        expectConstrained(c);
    }
}

TEST(SoupsWithoutCrossings, coverExactlyWhatTheInputCovers) {
    Rng rng(3);
    for (int round = 0; round < 200 && !HasFailure(); ++round) {
        SCOPED_TRACE(round);
        const int size = 4 + below(rng, 13);
        const Segments vSegments = withoutCrossings(rng, gridPoints(rng, 5 + below(rng, 40), size), 60);
        Constrained c;
        if (round % 2 == 0 && !vSegments.empty())
            c.add(vSegments, CIS_CONSTRAINED_DELAUNAY);
        else
            for (const Segment2& s : vSegments)
                c.add({s}, CIS_CONSTRAINED_DELAUNAY);
        expectConstrained(c);
        std::set<Edge> sInput, sLeaves;
        for (const Segment2& s : vSegments)
            addSteps(oracle::edgeOf(s.getSrc(), s.getTrg()), sInput);
        for (const Edge& edge : oracle::leafEdges(c.vGraphs))
            EXPECT_TRUE(!c.kivo.is2D() || addSteps(edge, sLeaves)) << "two leaves overlap";
        EXPECT_TRUE(!c.kivo.is2D() || sInput == sLeaves) << c.given();
    }
}

TEST(SoupsWithoutCrossings, giveTheSameEdgesInAnyOrder) {
    Rng rng(4);
    for (int round = 0; round < 60 && !HasFailure(); ++round) {
        SCOPED_TRACE(round);
        Points vPoints = gridPoints(rng, 40, 12);
        // Off the grid by less than would make new crossings matter: no four ends are cocircular.
        if (round % 2 == 0)
            for (Point2& p : vPoints)
                p = Point2(p.x() + doubles::uniform(rng, 0, 0.4), p.y() + doubles::uniform(rng, 0, 0.4));
        Segments vSegments = withoutCrossings(rng, vPoints, 60);
        std::vector<Edge> vEdges;
        std::vector<oracle::Corners> vTriangles;
        for (int order = 0; order < 4; ++order) {
            Constrained c;
            c.kivo.insert(vPoints);
            if (order < 2)
                c.add(vSegments, CIS_CONSTRAINED_DELAUNAY);
            else
                for (const Segment2& s : vSegments)
                    c.add({s}, CIS_CONSTRAINED_DELAUNAY);
            if (order == 0) {
                vEdges = oracle::leafEdges(c.vGraphs);
                vTriangles = oracle::triangleSet(c.kivo);
            }
            EXPECT_EQ(vEdges, oracle::leafEdges(c.vGraphs)) << c.given();
            EXPECT_TRUE(round % 2 != 0 || vTriangles == oracle::triangleSet(c.kivo)) << c.given();
            expectConstrained(c);
            std::shuffle(vSegments.begin(), vSegments.end(), rng);
        }
    }
}

TEST(PendingSegments, becomeEdgesWhenTheTriangulationIsThere) {
    for (const ConstraintInsertionStrategy cis : {CIS_CONFORMING_DELAUNAY, CIS_CONSTRAINED_DELAUNAY}) {
        for (const bool bByCall : {false, true}) {
            Constrained c;
            c.add({{{0, 0}, {6, 6}}, {{2, 2}, {4, 4}}, {{5, 5}, {1, 1}}}, cis);
            c.add({{{3, 3}, {9, 9}}}, cis, true);
            EXPECT_EQ("", c.messages);
            expectConstrained(c);
            {
                const CapturedMessages captured;
                c.kivo.applyConstraintsAndZones();
                EXPECT_EQ("      [Kivo2D-Message] Kivo2D::applyConstraintsAndZones(), WARNING: The "
                          "triangulation is not "
                          "2D yet, can't apply the constraints\n",
                          captured.output());
            }
            c.kivo.insert({{0, 6}, {6, 0}, {3, 3}, {7, 7}, {2, 9}});
            EXPECT_EQ("", oracle::findConstraintFault(c.kivo, c.vGraphs, true));
            if (bByCall)
                c.kivo.applyConstraintsAndZones();
            else
                c.add({{{0, 6}, {6, 0}}}, cis);
            expectConstrained(c);
        }
    }
}
