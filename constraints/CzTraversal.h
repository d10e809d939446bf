#pragma once

#include "Point2.h"
#include "Triangle2.h"
#include "core/EdgeGuard.h"
#include "core/HalfEdge.h"
#include "kernel/TeskTest.h"

#include <vector>

namespace TESK_KIVO2D {

// A vertex of the polygon beside a segment, and what lies outside of the polygon's edge to the next vertex: a
// triangle, which knows the polygon's side behind its edge ith, or null.
struct Border {
    Point2* pVtx;
    Triangle2* pOuter;
    int ith;
};

// The triangles that a segment crosses, and the polygons that they leave on both sides of it when they go.
// Every vertex of the polygons is the end of a crossed edge, so it sees the segment. A vertex may stand in a
// polygon several times, where edges hang into it.
struct ConstraintZone {
    Point2* pStart;
    Point2* pStop;
    std::vector<Triangle2*> vTriangles;     // in order from start to stop
    std::vector<Border> lPolygon, rPolygon; // to the left and to the right, from start to stop

    void clear() {
        vTriangles.clear();
        lPolygon.clear();
        rPolygon.clear();
    }
};

// Where a walk along a segment ended.
struct CzResult {
    enum End {
        IS_EDGE,    // the ends are joined by an edge
        MET_VERTEX, // this vertex lies on the open segment
        MET_FIXED,  // the segment crosses this edge, which is fixed, in its interior
        REACHED     // the zone is complete
    };
    End end;
    Point2* pVtx;
    HalfEdge edge;
};

// Walks along the segment from a to b, two vertices of the triangulation, up to the first vertex on it or the
// first fixed edge across it. It may start from b. Decides by vertices only, never by computed points.
// Expected time is that of finding the way out of a vertex and one orientation for each edge crossed.
CzResult traverse(Point2* a, Point2* b, TeskTest& tests, const EdgeGuard* pGuard, ConstraintZone& zone);

} // namespace TESK_KIVO2D
