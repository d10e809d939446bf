#pragma once

#include "ConstraintGraph2.h"
#include "Triangle2.h"
#include "core/HalfEdge.h"

#include <vector>

namespace TESK_KIVO2D {

// A piece of a constraint graph that is an edge of the triangulation, in the direction that the user gave it.
struct GraphEdge {
    HalfEdge edge; // on one of its sides
    const Point2* pStart;
    Triangle2* pLeft;  // null outside the hull
    Triangle2* pRight; // the same
};

// The edges of the graph, in order along its segments. A piece that several of its segments share is listed
// for each of them. Pieces that are no edges yet are left out.
std::vector<GraphEdge> edgesOf(const ConstraintGraph2& graph);

} // namespace TESK_KIVO2D
