#pragma once

#include <array>
#include <cstddef>
#include <utility>
#include <vector>

// A second opinion on Delaunay triangulations, from a library that shares no line with ours. This header
// names no type of either, so that it can be read next to both.
namespace oracle {

using Xy = std::pair<double, double>;

struct DelaunayFacts {
    std::size_t numVertices = 0;               // different points
    std::vector<std::array<Xy, 3>> vTriangles; // counter-clockwise, smallest corner first, sorted
    std::vector<Xy> vHull; // counter-clockwise from the smallest, points inside straight pieces included
};

// While all points lie on one line there are neither triangles nor a hull. Unique only where no four points
// are cocircular; the number of triangles and the hull are always.
DelaunayFacts cgalDelaunay(const std::vector<Xy>& vPoints);

} // namespace oracle
