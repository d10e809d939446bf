#pragma once

#include "bench/distributions.h"

#include <array>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

// Triangles to import and knives to cut with, made from written recipes as the point sets are.
namespace bench {

struct SoupInput {
    Coordinates points;
    std::vector<std::array<std::size_t, 3>> triangles;              // indices of points
    std::vector<std::pair<std::size_t, std::size_t>> edges() const; // each once
};

// About so many triangles, in random order, each beginning with any of its corners: uniform (the Delaunay
// triangulation of random points), grid (squares of integers, halved one way or the other at random), coast
// (constraints of real data, many times side by side). Together they fill the hull of their points.
SoupInput makeSoup(const std::string& kind, std::size_t numTriangles);

// Source and target one after the other: long (one from side to side of the unit square), or so many as the
// kind says, between random points of it.
Coordinates makeKnives(const std::string& kind);

} // namespace bench
