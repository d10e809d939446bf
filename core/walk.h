#pragma once

#include "Point2.h"
#include "Triangle2.h"
#include "kernel/TeskTest.h"

namespace TESK_KIVO2D {

// Where a walk ended.
struct WalkResult {
    enum Code {
        INSIDE = -1,       // in the triangle, or on its edge `edge` if that is not -1
        BEYOND_EDGE_0 = 0, // codes 0 to 2: on or beyond this edge of the triangle, an edge of the hull
        ON_CORNER = 4      // at a corner of the triangle
    };
    Triangle2* pT;
    short code;
    short edge;
    int numSteps; // triangles crossed on the way
};

// The corner of an ON_CORNER result that has these coordinates.
Point2* cornerAt(const WalkResult& found, const Point2& q);

// The point to walk to, and whether it lies within the static bound of the predicates.
enum class QueryRange { WITHIN_BOUND, ANYWHERE };

// Walks from the start triangle towards q, crossing edges that have q on their outer side. Never allocates.
// Its length is the distance in triangles for a good start; after 1000 steps the order of edges is drawn at
// random, by a generator that begins anew in each walk, which breaks the rare cycles that a triangulation
// with fixed edges allows.
WalkResult walk(Triangle2* pStartTriangle, const Point2& q, TeskTest& tests,
                QueryRange range = QueryRange::WITHIN_BOUND);

} // namespace TESK_KIVO2D
