#pragma once

#include "Point2.h"
#include "core/HalfEdge.h"
#include "kernel/TeskTest.h"
#include "meshing/TriangleMarks.h"

namespace TESK_KIVO2D {

// What comes of looking from a corner of a triangle at a point.
struct Sight {
    enum End {
        INSIDE,    // the point lies strictly inside the triangle edge.pT
        ON_EDGE,   // on this edge, which is open, between its ends
        AT_CORNER, // at a vertex
        BLOCKED,   // behind, or on, this closed edge of the triangle
        AWAY       // the point does not lie in the angle at the corner
    };
    End end;
    HalfEdge edge;
};

// Follows the straight line from corner ith of the triangle, across the edge opposite, to the point, which
// differs from the corner, as far as edges are open. Exact; never allocates. Costs one or two orientations an
// edge crossed.
Sight look(Triangle2* pT, int ith, const Point2& q, TeskTest& tests, const TriangleMarks& marks);

} // namespace TESK_KIVO2D
