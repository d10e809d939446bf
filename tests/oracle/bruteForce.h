#pragma once

#include "Kivo_2D.h"

#include <array>
#include <functional>
#include <string>
#include <vector>

// The laws of a Delaunay triangulation, checked from outside: through the public interface, in exact
// integers.
namespace oracle {

enum EmptyCircleCheck {
    ONLY_NEIGHBOURS, // each edge against the two corners opposite: O(n)
    ALL_POINTS       // each triangle against each point: O(n^2)
};

// The first law that the triangulation breaks, in words, or an empty text. After the insertion of the given
// points, in whatever order and way, these must hold, one layer after the other:
//   - its vertices are the different points among them, each once;
//   - it is 2-D exactly when they are not all on one line;
//   - corners are vertices in counter-clockwise order, no directed edge occurs twice, neighbour pointers are
//   what the
//     corners say, and each vertex knows a triangle of its own;
//   - n points, h of them on the hull, have 2n - 2 - h triangles, whose areas add up to that of the hull;
//   - the hull, with and without the points inside straight pieces, is that of the points;
//   - no circle holds a point strictly inside.
std::string findFault(const TESK_KIVO2D::Kivo_2D& kivo, const std::vector<TESK_KIVO2D::Point2>& vInput,
                      EmptyCircleCheck check);

// The same for what is in the triangulation, whatever was inserted.
std::string findFault(const TESK_KIVO2D::Kivo_2D& kivo, EmptyCircleCheck check);

// The same, neighbour by neighbour, where the edges for which the predicate holds need not be Delaunay.
using EdgePredicate = std::function<bool(TESK_KIVO2D::Point2*, TESK_KIVO2D::Point2*)>;
std::string findFault(const TESK_KIVO2D::Kivo_2D& kivo, const EdgePredicate& isConstraint);

using Corners = std::array<std::pair<double, double>, 3>;
// Coordinates of the corners, rotated so that the smallest comes first, in the triangulation's own order.
std::vector<Corners> triangleList(const TESK_KIVO2D::Kivo_2D& kivo);
// The same, sorted.
std::vector<Corners> triangleSet(const TESK_KIVO2D::Kivo_2D& kivo);

// True when no edge could be flipped without loss: then the points have this Delaunay triangulation only.
bool isUnique(const TESK_KIVO2D::Kivo_2D& kivo);

} // namespace oracle
