#pragma once

#include "Kivo_2D.h"

#include <utility>
#include <vector>

// Sets of triangles found by slow means, through the public interface, in exact integers: winding numbers,
// the even-odd rule, floods over ordered sets.
namespace oracle {

using Graphs = std::vector<TESK_KIVO2D::ConstraintGraph2*>;
using Triangles = std::vector<TESK_KIVO2D::Triangle2*>; // ascending by address, each once
using Points = std::vector<TESK_KIVO2D::Point2>;
using Segments = std::vector<TESK_KIVO2D::Segment2>;

// Of the triangulation.
Triangles allTriangles(const TESK_KIVO2D::Kivo_2D& kivo);

// The live leaves in the user's direction, as often as the graphs have them.
Segments leavesOf(const Graphs& vGraphs);

// Those whose centre the closed rings run round, counted with the sign of the direction and in all.
Triangles withWindingNumber(const Triangles& vTriangles, const Segments& vRings, bool (*isInside)(int));
Triangles withOddCrossings(const Triangles& vTriangles, const Segments& vRings);

// What is reached from the left, or right, side of the directed leaves without crossing one. A leaf that its
// graph has more than once is no start.
enum Side { LEFT, RIGHT };
Triangles reachedFrom(Side side, const TESK_KIVO2D::Kivo_2D& kivo, const Graphs& vGraphs);
// From the centre of the triangle.
Triangles reachedFrom(TESK_KIVO2D::Triangle2* pStart, const Graphs& vGraphs);

// The least number of edges to cross on a way from outside the hull: odd, where an edge counts that an odd
// number of leaves run along; or not 0, where each of them counts.
Triangles oddlyEnclosed(const TESK_KIVO2D::Kivo_2D& kivo, const Graphs& vGraphs);
Triangles enclosed(const TESK_KIVO2D::Kivo_2D& kivo, const Graphs& vGraphs);

// Directed edges with one of the triangles on the left and none on the right, ascending.
using VertexPair = std::pair<TESK_KIVO2D::Point2*, TESK_KIVO2D::Point2*>;
std::vector<VertexPair> borderOf(const Triangles& vTriangles);

// Rounded once at the end. Segments: by the shoelace formula, positive for counter-clockwise rings.
double areaOf(const Triangles& vTriangles);
double areaOf(const Segments& vRing);
// What simple rings that do not cross enclose by parity: each counts by the number of others round it.
double parityArea(const std::vector<Segments>& vRings);

} // namespace oracle
