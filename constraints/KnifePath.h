#pragma once

#include "Point2.h"
#include "constraints/ConstraintMgr.h"
#include "constraints/KnifeCut.h"
#include "core/HalfEdge.h"
#include "core/hull.h"
#include "core/walk.h"
#include "kernel/TeskTest.h"

#include <vector>

namespace TESK_KIVO2D {

// Follows a knife through a triangulation, which stays as it is, and notes in their order: the vertices on
// it, its crossings with the inside of edges, rounded to nearest, and its ends. Of a knife that reaches
// beyond the hull it sees what lies within. Crossings with the hull are rounded to the hull or outwards: else
// a thin triangle would stay whole between the end of the cut and the hull.
class KnifePath {
public:
    KnifePath(const ConstraintMgr& manager, HullLinks& hullLinks, TeskTest& predicates)
        : mgr(manager), links(hullLinks), tests(predicates) {}

    // The start is where the walk to the knife's source ended. The knife has a length.
    KnifeCut follow(const Segment2& knife, const WalkResult& start);
    // The same cut, followed from the knife's target, to which the walk led.
    KnifeCut followBack(const Segment2& knife, const WalkResult& end);

private:
    // How the knife goes on: from a vertex, or across an edge of a triangle whose source is to its right, or,
    // with neither, not at all.
    struct Position {
        Point2* pVtx = nullptr;
        HalfEdge edge = {nullptr, 0};
    };

    void run(const Point2& from, const Point2& to, const WalkResult& start);
    Position enter(const WalkResult& start);
    Position enterFromEdge(HalfEdge edge);
    Position enterFromOutside(HullEdge edge);
    Position crossHull(HullEdge edge);
    Position leaveVertex(Point2* pFrom);
    Position leaveTriangle(Triangle2* pT);
    Position passTriangle(Triangle2* pT, int apex);
    // The vertex, or the edge, is next on the line of the knife, which may end before.
    Position reach(Point2* pVtx);
    Position reachAlong(Point2* pFrom, Point2* pVtx); // an edge
    Position reach(HalfEdge edge);

    Orientation2 side(const Point2* p) { return tests.orientationUnbounded(src, trg, *p); }
    Orientation2 sideOf(HalfEdge edge, const Point2& p) {
        return tests.orientationUnbounded(*edge.source(), *edge.target(), p);
    }
    // For points on the line of the knife.
    bool isBeforeTarget(const Point2& p) const { return src < trg ? p < trg : trg < p; }

    void add(const Point2& point, Point2* pNear) { vStops.push_back({point, nullptr, nullptr, pNear}); }
    void addOnEdge(const Point2& point, Point2* p, Point2* q);
    Position stopAt(Point2* pVtx);
    void addCrossing(HalfEdge edge);
    Point2 roundedOutwards(HullEdge edge, const Point2& p);

    const ConstraintMgr& mgr;
    HullLinks& links;
    TeskTest& tests;
    Point2 src, trg;
    std::vector<KnifeStop> vStops;
};

} // namespace TESK_KIVO2D
