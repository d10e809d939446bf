#pragma once

#include "Point2.h"
#include "Triangle2.h"
#include "constraints/ConstraintMgr.h"
#include "core/HalfEdge.h"
#include "core/MeshStore.h"
#include "core/TriangleStamps.h"
#include "kernel/TeskTest.h"

#include <vector>

namespace TESK_KIVO2D {

// A vertex that is about to move along a straight line, with the constraint segments that end there.
struct MovingStar {
    const Point2* pVtx;
    Point2 target;
    const Point2* pAtTarget; // the vertex that lies there, or null
    std::vector<Triangle2*> vTriangles;
    std::vector<ConstraintSegment2*> vFixed; // its live segments
    std::vector<const Point2*> vFarEnds;     // and their other ends
};

// Tells whether something is in the way of a vertex: whether on its way it would meet a constraint segment,
// or one of its own segments would sweep over a vertex. If nothing is, the constraints are laid out in the
// plane afterwards as they were before, apart from what meets at the target. Exact.
class Sweep {
public:
    Sweep(const MeshStore& records, TeskTest& predicates, const ConstraintMgr& manager)
        : tests(predicates), mgr(manager), stamps(records) {}

    // Of a vertex that has segments.
    bool isClear(const MovingStar& star);
    // Of one without: a triangle at the target, or on the hull before it. Null when a constraint, or a vertex
    // with one, is in the way.
    Triangle2* followWay(const MovingStar& star);
    // Gives memory back that the next question needs again.
    void release() { stamps.release(); }

private:
    // What is swept: a triangle between the way and the far end of a segment, which may be flat.
    struct Area {
        const Point2& from;
        const Point2& to;
        const Point2& far;
        Orientation2 turn;
    };

    struct Step;
    Step leave(const Point2* pVtx, const Point2& to) const;
    Step cross(HalfEdge edge, const Point2& from, const Point2& to) const;
    bool hasConstraint(const Point2* pVtx) const;
    bool isAreaClear(const MovingStar& star, const Point2* pFarEnd);
    bool isInTheWay(const MovingStar& star, const Point2* x, const Point2* y) const;
    bool isOn(const Point2& p, const Point2& a, const Point2& b) const;
    bool doTouch(const Point2& a, const Point2& b, const Point2& c, const Point2& d) const;
    bool isIn(const Point2& p, const Area& area) const;
    bool doesTouch(const MovingStar& star, const Area& area, const Point2* x, const Point2* y) const;

    TeskTest& tests;
    const ConstraintMgr& mgr;
    TriangleStamps stamps;
    std::vector<Triangle2*> vMet; // those that touch the area; kept for its memory
};

} // namespace TESK_KIVO2D
