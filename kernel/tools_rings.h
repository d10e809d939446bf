#pragma once

#include "Edge2.h"
#include "Triangle2.h"

#include <vector>

namespace TESK_KIVO2D {

// Tools on lists of triangles and on the directed edges that bound them. All run in O(n log n) without
// recursion, and all results follow the order of the input: addresses serve as keys only. A triangle that is
// listed twice counts once, at its first place, and null pointers are skipped.

// Every edge of every triangle, in the order of the triangles and of the opposite corners; an inner edge
// comes twice, once from each side.
std::vector<Edge2> getDirectedEdges(const std::vector<Triangle2*>& vT);

// Every edge once: an inner one is named by the triangle that comes first.
std::vector<Edge2> getUndirectedEdges(const std::vector<Triangle2*>& vT);

// The edges whose other side is missing or not listed. They run counter-clockwise around the listed area.
std::vector<Edge2> getBorders(const std::vector<Triangle2*>& vT);

// The parts that hang together by edges. Parts are ordered by their first triangle, triangles as listed.
std::vector<std::vector<Triangle2*>> getConnectedComponents(const std::vector<Triangle2*>& vT);

// Brings the edges of one closed ring into the order head to tail; the first edge stays the first. Otherwise
// the answer is false, the order stays, and a warning says "Not a ring1" for fewer than three edges, "Not a
// ring2" when some edge does not end where exactly one edge starts, "Not a ring3" when one round misses
// edges.
bool sortRing(std::vector<Edge2>& vRing);

struct PolygonParts {
    std::vector<std::vector<Edge2>> vvPolygons;
    std::vector<Edge2> vRemaining;
};

// Splits directed edges into closed polygons. No polygon passes a vertex twice, and where several touch in a
// vertex they do not cross there if the edges are the border of an area to their left. Each starts with its
// first edge in the order of the input, and so are the polygons ordered. Edges that close no polygon of three
// or more edges remain.
PolygonParts edgesToPolygons(const std::vector<Edge2>& vEdges);

} // namespace TESK_KIVO2D
