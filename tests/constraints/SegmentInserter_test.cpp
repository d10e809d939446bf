#include "constraints/SegmentInserter.h"

#include "Kivo_2D.h"
#include "core/Dt2.h"
#include "kernel/intersection.h"
#include "tests/support/capture.h"
#include "tests/support/doubles.h"

#include <cmath>
#include <gtest/gtest.h>
#include <utility>
#include <vector>

using namespace TESK_KIVO2D;

namespace {

std::vector<Segment2> bars(int num) {
    std::vector<Segment2> vSegments;
    for (int i = 1; i <= num; ++i)
        vSegments.push_back({Point2(i, -1), Point2(i + 0.5, 1)});
    return vSegments;
}

TEST(SegmentInserter, skipsTheRestWithAWarningWhenItsBudgetIsUsedUp) {
    Kivo_2D kivo;
    kivo.insert({{0, 0}, {21, 0}, {10, -9}, {10, 9}});
    std::vector<Segment2> vSegments = bars(20);
    kivo.createConstraint(vSegments);
    Point2 *const p = kivo.insert(Point2(0, 0)), *const q = kivo.insert(Point2(21, 0));
    Dt2& dt = *kivo.getImpl();
    ConstraintMgr& mgr = dt.constraintMgr();
    const ConstraintGraph2* const pGraph = mgr.createConstraint({{p, q}}, CIS_CONSTRAINED_DELAUNAY, false);
    SegmentInserter inserter(dt, mgr);
    inserter.setBudget(8);
    {
        const CapturedMessages messages;
        EXPECT_FALSE(inserter.insert(mgr.getConstraintSegment(p, q)));
        EXPECT_EQ(
            "      [Kivo2D-Message] ConstraintMgr::apply(), WARNING: insufficient numeric accuracy, need to "
            "skip last insertions\n",
            messages.output());
    }
    std::vector<ConstraintSegment2*> vLeaves;
    pGraph->getChildConstraintSegments(vLeaves);
    EXPECT_LT(1u, vLeaves.size());
    EXPECT_GT(21u, vLeaves.size());
    // What is there is sound, and the rest follows when asked for again.
    const CapturedMessages messages;
    kivo.insert(Point2(10.25, 3));
    kivo.applyConstraintsAndZones();
    EXPECT_TRUE(kivo.checkValidity(true, "budget"));
    vLeaves.clear();
    pGraph->getChildConstraintSegments(vLeaves);
    EXPECT_EQ(21u, vLeaves.size());
}

// Three segments of which the truncated crossings would slide down the one of the others, unit by unit.
TEST(SegmentInserter, segmentsDoNotSlidePastEachOther) {
    Kivo_2D kivo;
    for (const Segment2& segment :
         {Segment2({11, 2}, {4, 4}), Segment2({2, 10}, {12, 0}), Segment2({6, 6}, {12, 0})}) {
        std::vector<Segment2> vSegments = {segment};
        kivo.createConstraint(vSegments);
    }
    EXPECT_GT(12u, kivo.numberOfPoints());
    const CapturedMessages messages;
    EXPECT_TRUE(kivo.checkValidity(true, "slide"));
}

// Conforming segments that leave one point at a tenth of a degree are Delaunay after few Steiner points.
TEST(SegmentInserter, conformingSegmentsAtASmallAngleEnd) {
    Kivo_2D kivo;
    kivo.insert({{-1, -1}, {2, -1}, {2, 1}, {-1, 1}});
    std::vector<Segment2> vSegments = {{{0, 0}, {1, 0}}, {{0, 0}, {0.9, 0.00157}}, {{0, 0}, {0.7, -0.00122}}};
    const ConstraintGraph2* const pGraph = kivo.createConstraint(vSegments, CIS_CONFORMING_DELAUNAY);
    EXPECT_GT(100u, kivo.numberOfPoints());
    std::vector<ConstraintSegment2*> vLeaves;
    pGraph->getChildConstraintSegments(vLeaves);
    TeskTest tests;
    tests.setStaticBound(8);
    for (const ConstraintSegment2* pLeaf : vLeaves) {
        const Triangle2* const pT = kivo.getAdjacentTriangle(pLeaf->getSrc(), pLeaf->getTrg());
        const Triangle2* const pN = kivo.getAdjacentTriangle(pLeaf->getTrg(), pLeaf->getSrc());
        const Point2& far = *pN->getCorner(pN->getIntraTriangleIndex(pT));
        EXPECT_NE(CINC2_INCIRCLE, tests.inCircle(*pT, far));
    }
}

TEST(SegmentInserter, nearestIntersectionsStayInTheBoxOfBothSegments) {
    doubles::Rng rng(12);
    for (int i = 0; i < 200000; ++i) {
        const double scale = i % 3 == 0 ? 1 : i % 3 == 1 ? 1e6 : 1e-9;
        const auto any = [&] {
            return Point2(0.3 + scale * doubles::uniform(rng), 0.7 + scale * doubles::uniform(rng));
        };
        const Point2 p = any(), q = any(), r = any(), s = any();
        const auto side = [](const Point2& a, const Point2& b, const Point2& c) {
            return getOrientation2(&a, &b, &c);
        };
        if (side(p, q, r) == side(p, q, s) || side(r, s, p) == side(r, s, q)) continue;
        const Point2 at = getNearestIntersection(p, q, r, s);
        for (const auto& [a, b] : {std::pair(p, q), {r, s}}) {
            Bbox2 box;
            box.add(a);
            box.add(b);
            EXPECT_TRUE(box.isInBox(at)) << at;
        }
        double x, y;
        getIntersectionCoords(p, q, r, s, x, y);
        EXPECT_TRUE(at.x() == x || at.x() == std::nextafter(x, x < 0 ? -1e308 : 1e308)) << at;
        EXPECT_TRUE(at.y() == y || at.y() == std::nextafter(y, y < 0 ? -1e308 : 1e308)) << at;
    }
}

} // namespace
