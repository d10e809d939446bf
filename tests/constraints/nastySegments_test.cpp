#include "Kivo_2D.h"
#include "tests/oracle/bruteForce.h"
#include "tests/oracle/exact.h"
#include "tests/support/constrained.h"

#include <algorithm>
#include <cmath>

// Inputs that break makers of constrained triangulations, by name.

using namespace TESK_KIVO2D;
using doubles::below;
using doubles::Points;
using doubles::Rng;

namespace {

const Point2 aOrigins[] = {{0, 0}, {448262, 5411932}}; // and in map coordinates

Point2 moved(const Point2& p, const Point2& origin) { return {p.x() + origin.x(), p.y() + origin.y()}; }

Segments moved(Segments vSegments, const Point2& origin) {
    for (Segment2& s : vSegments)
        s = Segment2(moved(s.getSrc(), origin), moved(s.getTrg(), origin));
    return vSegments;
}

enum Way { CONSTRAINED_AT_ONCE, CONFORMING_AT_ONCE, ONE_BY_ONE, BACKWARDS_ONE_BY_ONE, NUM_WAYS };

void addInThisWay(Constrained& c, Segments vSegments, int way) {
    if (way == BACKWARDS_ONE_BY_ONE) std::reverse(vSegments.begin(), vSegments.end());
    if (way >= ONE_BY_ONE)
        c.addOneByOne(vSegments);
    else
        c.add(vSegments, way == CONFORMING_AT_ONCE ? CIS_CONFORMING_DELAUNAY : CIS_CONSTRAINED_DELAUNAY,
              vSegments.size() % 2 != 0);
    if (c.kivo.is2D()) return;
    const Point2 p = vSegments[0].getSrc();
    c.kivo.insert({moved(p, {-9, -8}), moved(p, {9, -7}), moved(p, {1, 10})});
    c.kivo.applyConstraintsAndZones();
}

// In one call of either strategy and by turns, in unit and in map coordinates, with the points there before.
void expectSurvival(const Segments& vSegments, const Points& vPoints = {}, int numWays = NUM_WAYS) {
    for (const Point2& origin : aOrigins) {
        for (int way = 0; way < numWays && !testing::Test::HasFailure(); ++way) {
            SCOPED_TRACE(way);
            Constrained c;
            for (const Point2& p : vPoints)
                c.kivo.insert(moved(p, origin));
            addInThisWay(c, moved(vSegments, origin), way);
            expectConstrained(c);
        }
    }
}

// By the constrained strategy in one call; the number of leaves.
std::size_t numLeaves(const Segments& vSegments, const Points& vPoints = {}) {
    Constrained c;
    c.kivo.insert(vPoints);
    addInThisWay(c, vSegments, CONSTRAINED_AT_ONCE);
    expectConstrained(c);
    return oracle::leafEdges(c.vGraphs).size();
}

Point2 onCircle(double angle, double radius = 1) {
    return {radius * std::cos(angle), radius * std::sin(angle)};
}

// Opposite points of the unit circle, joined past the centre at a random distance of up to maxMiss.
Segments star(int num, double maxMiss) {
    Rng rng(5);
    Segments vSegments;
    for (int i = 0; i < num; ++i) {
        const Point2 p = onCircle(3.141592653589793 * i / num);
        const double dx = doubles::uniform(rng, -maxMiss, maxMiss),
                     dy = doubles::uniform(rng, -maxMiss, maxMiss);
        vSegments.emplace_back(Point2(p.x() + dx, p.y() + dy), Point2(dx - p.x(), dy - p.y()));
    }
    return vSegments;
}

Point2 anyPoint(Rng& rng) {
    const double x = doubles::uniform(rng);
    return {x, doubles::uniform(rng)};
}

// Within a few neighbouring doubles of where the segments cross.
Point2 nearCrossing(Rng& rng, const Segment2& s, const Segment2& t, int maxSteps) {
    const auto exact = oracle::lineIntersection(s.getSrc(), s.getTrg(), t.getSrc(), t.getTrg());
    return doubles::jittered(rng, {exact.x.get_d(), exact.y.get_d()}, maxSteps);
}

Segment2 throughPoint(Rng& rng, const Point2& p) {
    const Point2 source = anyPoint(rng);
    return {source, {2 * p.x() - source.x(), 2 * p.y() - source.y()}};
}

} // namespace

TEST(SegmentsThatAre, repeatedReversedOrOverlappingShareTheirPieces) {
    const Segment2 whole({0, 0}, {12, 6}), back({12, 6}, {0, 0}), left({-4, -2}, {4, 2}),
        inner({2, 1}, {8, 4}), innermost({6, 3}, {4, 2}), right({16, 8}, {10, 5});
    EXPECT_EQ(1u, numLeaves({whole, whole}));
    EXPECT_EQ(1u, numLeaves({whole, back, whole}));
    EXPECT_EQ(3u, numLeaves({whole, inner}));
    EXPECT_EQ(3u, numLeaves({whole, left}));
    EXPECT_EQ(5u, numLeaves({whole, inner, innermost}));
    Segments vAll = {whole, back, left, inner, innermost, right, inner};
    EXPECT_EQ(8u, numLeaves(vAll));
    for (int i = 0; i < 30; ++i) {
        std::rotate(vAll.begin(), vAll.begin() + 1 + i % 5, vAll.end());
        expectSurvival(vAll, i % 2 == 0 ? Points{{3, 9}, {20, -4}} : Points());
    }
}

TEST(SegmentsThatRun, throughManyVerticesBecomeAChain) {
    Points vPoints;
    for (int i = 0; i <= 300; ++i)
        vPoints.emplace_back(3 * i, i % 7 == 0 ? -i : i), vPoints.emplace_back(2 * i, i);
    const Segments vSegments = {{{0, 0}, {600, 300}}, {{500, 250}, {-100, -50}}, {{7, 3}, {20, 10}}};
    EXPECT_EQ(302u, numLeaves(vSegments, vPoints));
    expectSurvival(vSegments, vPoints);
}

TEST(SegmentsThatRun, throughAHundredThousandVerticesNeedNoDeepStack) {
    Points vPoints = {{0, 5}, {-3, 70}};
    for (int i = 0; i <= 100000; ++i)
        vPoints.emplace_back(i, 2 * i);
    EXPECT_EQ(100000u, numLeaves({{{0, 0}, {100000, 200000}}}, vPoints));
}

TEST(SegmentsThatMeet, inTJunctionsGiveTheSameEdgesInEveryOrder) {
    Segments vSegments = {
        {{0, 0}, {8, 0}}, {{2, 0}, {2, 5}}, {{4, -5}, {4, 0}}, {{6, 3}, {6, 0}}, {{2, 3}, {6, 1}}};
    std::vector<int> vOrder = {0, 1, 2, 3, 4};
    std::vector<oracle::Edge> vEdges;
    do {
        Segments vOrdered;
        for (const int i : vOrder)
            vOrdered.push_back(vSegments[static_cast<std::size_t>(i)]);
        expectSurvival(vOrdered);
        Constrained c;
        for (const Segment2& s : vOrdered)
            c.add({s}, CIS_CONSTRAINED_DELAUNAY);
        if (vEdges.empty()) vEdges = oracle::leafEdges(c.vGraphs);
        EXPECT_EQ(10u, vEdges.size());
        EXPECT_EQ(vEdges, oracle::leafEdges(c.vGraphs)) << c.given();
    } while (std::next_permutation(vOrder.begin(), vOrder.end()) && !testing::Test::HasFailure());
}

TEST(SegmentsThatForm, bowTiesAndSpikesStayOneClosedWalk) {
    const Segments vBowTie = {{{0, 0}, {4, 4}}, {{4, 4}, {4, 0}}, {{4, 0}, {0, 4}}, {{0, 4}, {0, 0}}};
    const Segments vSkewed = {{{0, 0}, {4, 5}}, {{4, 5}, {5, 0}}, {{5, 0}, {0, 3}}, {{0, 3}, {0, 0}}};
    const Segments vSpikes = {{{0, 0}, {4, 0}}, {{4, 0}, {4, 4}}, {{4, 4}, {2, 4}},
                              {{2, 4}, {2, 9}}, {{2, 9}, {2, 4}}, {{2, 4}, {0, 4}},
                              {{0, 4}, {0, 0}}, {{0, 0}, {3, 3}}, {{3, 3}, {0, 0}}};
    const Segments vThinSpike = {
        {{0, 0}, {5, 7}}, {{5, 7}, {1e-9, 0}}, {{1e-9, 0}, {0, 0}}, {{0, 3}, {6, 1}}};
    for (const Segments& vSegments : {vBowTie, vSkewed, vSpikes, vThinSpike})
        expectSurvival(vSegments, {{9, 9}, {-1, 2}});
    EXPECT_EQ(6u, numLeaves(vBowTie));
    EXPECT_EQ(6u, numLeaves(vSkewed));
    Constrained c;
    EXPECT_TRUE(c.add(vBowTie, CIS_CONSTRAINED_DELAUNAY)->isPolygon());
    std::vector<Point2*> vVertices;
    c.vGraphs[0].pGraph->getPolygonVertices(vVertices);
    for (std::size_t i = 0; i < vVertices.size(); i += 2)
        EXPECT_EQ(vVertices[i + 1], vVertices[(i + 2) % vVertices.size()]);
}

TEST(SegmentsThatForm, starsThroughOnePointOrAlmostSurvive) {
    EXPECT_EQ(1000u, numLeaves(star(500, 0)));
    expectSurvival(star(500, 0), {}, 1);
    expectSurvival(star(150, 1e-16), {}, 1);
    for (const double maxMiss : {1e-15, 1e-9, 1e-3})
        expectSurvival(star(40, maxMiss));
}

TEST(SegmentsThatCross, withinAStepOfVerticesAndOtherCrossingsSurvive) {
    Rng rng(6);
    for (int round = 0; round < 150 && !testing::Test::HasFailure(); ++round) {
        SCOPED_TRACE(round);
        const Point2 center = anyPoint(rng);
        Segments vSegments = {throughPoint(rng, center), throughPoint(rng, center)};
        Points vPoints;
        for (int i = 0; i < 3; ++i)
            vPoints.push_back(nearCrossing(rng, vSegments[0], vSegments[1], 1));
        vSegments.push_back(throughPoint(rng, nearCrossing(rng, vSegments[0], vSegments[1], 1)));
        vSegments.emplace_back(nearCrossing(rng, vSegments[0], vSegments[2], 1), anyPoint(rng));
        vSegments.push_back(throughPoint(rng, nearCrossing(rng, vSegments[1], vSegments[3], 1)));
        vPoints.resize(static_cast<std::size_t>(round % 4));
        expectSurvival(vSegments, vPoints);
    }
}

TEST(SegmentsThatCross, atTinyAnglesSurvive) {
    Rng rng(7);
    for (double angle = 1e-9; angle > 5e-16; angle /= 10) {
        for (int round = 0; round < 10 && !testing::Test::HasFailure(); ++round) {
            SCOPED_TRACE(angle);
            Segments vSegments = {{anyPoint(rng), anyPoint(rng)}};
            const Point2 p = vSegments[0].getSrc(), q = vSegments[0].getTrg();
            for (int i = 0; i < 1 + round % 3; ++i) {
                const double before = doubles::uniform(rng, -0.5, 0.5),
                             after = doubles::uniform(rng, 0.5, 1.5), turn = angle * (1 + i);
                const auto turned = [&](double t) {
                    const double dx = q.x() - p.x(), dy = q.y() - p.y(), off = (t - 0.4) * turn;
                    return Point2(p.x() + t * dx - off * dy, p.y() + t * dy + off * dx);
                };
                vSegments.emplace_back(turned(before), turned(after));
            }
            expectSurvival(vSegments, {anyPoint(rng), anyPoint(rng)});
        }
    }
}

TEST(SegmentsThatCross, tenThousandOthersAreSplitByAll) {
    Segments vSegments = {{{-1, -0.3}, {10000, 0.4}}};
    for (int i = 0; i < 10000; ++i)
        vSegments.emplace_back(Point2(i, -1 - i % 3), Point2(i + i % 7 * 0.1, 1 + i % 5));
    EXPECT_EQ(30001u, numLeaves(vSegments));
    std::rotate(vSegments.begin(), vSegments.begin() + 1, vSegments.end()); // the long one is the last
    Constrained c;
    c.add(vSegments, CIS_CONFORMING_DELAUNAY);
    expectConstrained(c);
}

TEST(SegmentsThatEnd, onOrOutsideTheHullSurvive) {
    const Points vSquare = {{0, 0}, {8, 0}, {8, 8}, {0, 8}, {3, 5}, {5, 2}};
    const Segment2 diagonal({0, 0}, {8, 8}), betweenEdges({4, 0}, {0, 4}), fromOutside({-3, 4}, {4, 4}),
        rightAcross({-5, 1}, {13, 6}), outside({10, 10}, {12, 3}), alongEdge({2, 0}, {6, 0}),
        beyondEdge({4, 8}, {14, 8}), hullEdge({8, 0}, {8, 8}), fromCorner({8, 8}, {11, 11});
    for (const Segment2& s : {diagonal, betweenEdges, fromOutside, rightAcross, outside, alongEdge,
                              beyondEdge, hullEdge, fromCorner})
        expectSurvival({s}, vSquare);
    EXPECT_EQ(2u, numLeaves({hullEdge, beyondEdge}, {{0, 0}, {8, 0}, {8, 8}, {0, 8}}) - 1);
    expectSurvival({rightAcross, beyondEdge, outside, alongEdge, diagonal, hullEdge, fromCorner, betweenEdges,
                    fromOutside},
                   vSquare);
}

TEST(SegmentsOfBothStrategies, crossAndShareTheirPieces) {
    const Segments vConforming = {{{0, 0}, {3, 0}}, {{0, 3}, {9, 3}}, {{5, -2}, {5, 8}}};
    const Segments vForced = {{{1, -1}, {1, 2}}, {{3, 3}, {12, 3}}, {{0, 5}, {10, 1}}, {{5, 0}, {5, 9}}};
    for (const bool bForcedFirst : {false, true}) {
        Constrained c;
        if (bForcedFirst) c.add(vForced, CIS_CONSTRAINED_DELAUNAY);
        c.add(vConforming, CIS_CONFORMING_DELAUNAY);
        if (!bForcedFirst) c.add(vForced, CIS_CONSTRAINED_DELAUNAY, true);
        expectConstrained(c);
    }
}

TEST(ConformingSegments, endAtATenthOfADegree) {
    const double angle = 0.1 * 3.141592653589793 / 180;
    for (const double length : {1.0, 0.37, 2.9}) {
        const Segments vPair = {{{0, 0}, {1, 0}}, {{0, 0}, onCircle(angle, length)}};
        const Segments vCrossing = {{{-1, 0}, {1, 0}}, {onCircle(angle, -0.7), onCircle(angle, length)}};
        for (const Segments& vSegments : {vPair, vCrossing}) {
            expectSurvival(vSegments, {{0.5, 0.3}, {0.2, -0.4}});
            Constrained c;
            c.add(vSegments, CIS_CONFORMING_DELAUNAY);
            EXPECT_GT(20000u, c.kivo.numberOfPoints());
        }
    }
}

TEST(ConformingSegments, withoutSmallAnglesLeaveTheTriangulationDelaunay) {
    Rng rng(8);
    for (int round = 0; round < 20; ++round) {
        Constrained c;
        for (int i = 0; i < 200; ++i)
            c.kivo.insert(anyPoint(rng));
        c.add({{{0.1, 0.13}, {0.9, 0.17}},
               {{0.9, 0.17}, {0.5, 0.83}},
               {{0.5, 0.83}, {0.1, 0.13}},
               {{0.6, 0.1}, {0.2, 0.9}}},
              CIS_CONFORMING_DELAUNAY);
        expectConstrained(c);
        EXPECT_EQ("", oracle::findFault(c.kivo, oracle::ONLY_NEIGHBOURS));
    }
}

TEST(TwentyThousandShortSegments, withManyCrossingsSurvive) {
    Segments vSegments;
    generateRandomSegments(20000, 0, 1, 0.01, vSegments, 9);
    for (const ConstraintInsertionStrategy cis : {CIS_CONFORMING_DELAUNAY, CIS_CONSTRAINED_DELAUNAY}) {
        Constrained c;
        c.add(vSegments, cis);
        EXPECT_LT(42000u, c.kivo.numberOfPoints());
        expectConstrained(c);
    }
}
