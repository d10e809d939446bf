#include "tests/support/zoned.h"

// What segments enclose by parity, or at all: soups of rings that touch, cross, overlap and repeat, in any
// winding and order, with open ends.

using namespace zoned;
using doubles::below;
using doubles::Rng;

namespace {

struct Soup {
    Kivo_2D kivo;
    std::vector<ConstraintGraph2*> vGraphs;
    Segments vGiven;

    void add(Rng& rng, Segments vSegments) {
        if (rng() % 2 == 0) vSegments = reversed(vSegments);
        if (rng() % 2 == 0) std::shuffle(vSegments.begin(), vSegments.end(), rng);
        if (rng() % 3 == 0)
            for (Segment2& s : vSegments)
                if (rng() % 2 == 0) s.swapSrcTrg();
        vGiven = joined(vGiven, vSegments);
        vGraphs.push_back(zoned::add(kivo, vSegments, rng() % 2 != 0));
    }
    Triangles all() const { return oracle::allTriangles(kivo); }
};

Point2 latticePoint(Rng& rng, int size) {
    const double x = below(rng, size);
    return {x, double(below(rng, size))};
}
Segments latticeRing(Rng& rng, int size) {
    Points vCorners = {latticePoint(rng, size)};
    while (vCorners.size() < 3u + rng() % 4) {
        const Point2 p = latticePoint(rng, size);
        if (p != vCorners.back() && p != vCorners.front()) vCorners.push_back(p);
    }
    return ringOf(vCorners);
}
Segments rectangle(Rng& rng, int size) {
    const double x0 = below(rng, size), y0 = below(rng, size);
    const double x1 = x0 + 1 + below(rng, size), y1 = y0 + 1 + below(rng, size);
    return ringOf({{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}});
}

void expectParityZone(Soup& soup, const std::vector<Point2>& vHoles, const Triangles& vExpected) {
    const CapturedMessages captured;
    Zone2* const pZone = soup.kivo.createParityZone(soup.vGraphs, vHoles);
    if (vExpected.empty()) {
        EXPECT_EQ(nullptr, pZone);
        EXPECT_NE("", captured.output() + captured.error());
        return;
    }
    EXPECT_EQ("", captured.output() + captured.error());
    expectZone(soup.kivo, pZone, vExpected);
    EXPECT_EQ(ZL_BOUNDED, pZone->getZoneLocation());
    EXPECT_TRUE(soup.kivo.checkValidity(true, "parity"));
}

Triangles without(Triangles v, const Soup& soup, const Points& vHoles) {
    for (const Point2& hole : vHoles)
        if (Triangle2* const pT = soup.kivo.locate(hole))
            v = differenceOf(v, oracle::reachedFrom(pT, soup.vGraphs));
    return v;
}

} // namespace

TEST(ParityZone, ofRingsFollowsTheEvenOddRule) {
    for (unsigned int seed = 1; seed <= 60 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Rng rng(seed);
        Soup soup;
        if (seed % 3 == 0) soup.kivo.insert(randomPoints(rng, 10, -2, 10));
        Segments vTogether;
        for (int i = 1 + below(rng, 5); i > 0; --i) {
            const Segments vRing = seed % 2 == 0 ? rectangle(rng, 5) : latticeRing(rng, 7);
            if (seed % 5 < 2)
                vTogether = joined(vTogether, vRing); // several rings, one graph
            else
                soup.add(rng, vRing);
            if (rng() % 6 == 0) soup.add(rng, vRing); // twice is no border
        }
        if (!vTogether.empty()) soup.add(rng, vTogether);
        if (!soup.kivo.is2D()) continue;
        const Triangles vOdd = oracle::withOddCrossings(soup.all(), oracle::leavesOf(soup.vGraphs));
        if (seed % 2 == 0) { // on a lattice no crossing is rounded
            EXPECT_EQ(oracle::withOddCrossings(soup.all(), soup.vGiven), vOdd);
        }
        EXPECT_EQ(oracle::oddlyEnclosed(soup.kivo, soup.vGraphs), vOdd);
        expectParityZone(soup, {}, vOdd);
        disturb(soup.kivo, rng, soup.vGraphs, 8);
        expectParityZone(soup, {}, oracle::withOddCrossings(soup.all(), oracle::leavesOf(soup.vGraphs)));
    }
}

TEST(ParityZone, keepsOpenEndsAndLeavesHolesOut) {
    for (unsigned int seed = 1; seed <= 60 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Rng rng(seed);
        Soup soup;
        soup.kivo.insert({{-3, -3}, {15, -2}, {4, 17}});
        for (int i = 1 + below(rng, 3); i > 0; --i)
            soup.add(rng, latticeRing(rng, 9));
        Segments vLoose;
        for (int i = below(rng, 6); i > 0; --i) {
            const Point2 p = latticePoint(rng, 12), q = latticePoint(rng, 12);
            if (p != q) vLoose.emplace_back(p, q);
        }
        if (!vLoose.empty()) soup.add(rng, vLoose);
        const Triangles vOdd = oracle::oddlyEnclosed(soup.kivo, soup.vGraphs);
        expectParityZone(soup, {}, vOdd);
        std::vector<Point2> vHoles = {{40, 40}};
        for (int i = below(rng, 3); i >= 0; --i)
            vHoles.emplace_back(doubles::uniform(rng, 0, 9), doubles::uniform(rng, 0, 9));
        expectParityZone(soup, vHoles, without(vOdd, soup, vHoles));
        const Triangles vEnclosed = without(oracle::enclosed(soup.kivo, soup.vGraphs), soup, vHoles);
        const CapturedMessages captured;
        Zone2* const pEnclosed = soup.kivo.createEnclosedZone(soup.vGraphs, vHoles);
        if (vEnclosed.empty()) {
            EXPECT_EQ(nullptr, pEnclosed);
        } else {
            expectZone(soup.kivo, pEnclosed, vEnclosed);
        }
    }
}

TEST(ParityZone, ofAMapWithBordersGivenOnceIsACheckerboardAndTheEnclosedOneTheWholeMap) {
    Kivo_2D kivo;
    kivo.insert({{-3, -3}, {9, -3}, {3, 9}});
    Segments vGrid;
    for (int i = 0; i <= 4; ++i) {
        vGrid.emplace_back(Point2(0, i), Point2(4, i));
        vGrid.emplace_back(Point2(i, 4), Point2(i, 0));
    }
    ConstraintGraph2* const pGrid = add(kivo, vGrid, false);
    Zone2* const pParity = kivo.createParityZone({pGrid});
    Zone2* const pEnclosed = kivo.createEnclosedZone({pGrid}, {{1.5, 1.5}});
    expectNearArea(12, pParity->getArea2D()); // the cells at the rim
    expectNearArea(15, pEnclosed->getArea2D());
    expectZone(kivo, pParity, oracle::oddlyEnclosed(kivo, {pGrid}));
}

TEST(ParityZone, ofPendingSegmentsAppliesThemFirst) {
    Kivo_2D kivo;
    Segments vLine = {{{0, 0}, {4, 0}}};
    ConstraintGraph2* const pLine = add(kivo, vLine);
    kivo.insert({{2, 3}, {2, -3}});
    Segments vRest = {{{4, 0}, {2, 3}}, {{2, 3}, {0, 0}}};
    kivo.insert({{-9, -9}, {9, -9}, {0, 9}});
    const Zone2* const pZone = kivo.createParityZone({pLine, add(kivo, vRest)});
    ASSERT_NE(nullptr, pZone);
    expectNearArea(6, pZone->getArea2D());
}
