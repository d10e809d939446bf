#pragma once

#include "bench/distributions.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

// Constraint sets for benchmarks, made from written recipes as the point sets are.
namespace bench {

struct ConstraintInput {
    Coordinates corners;                                       // ends of the segments
    std::vector<std::pair<std::size_t, std::size_t>> segments; // indices of corners
    std::vector<std::size_t> groupEnds; // behind the last segment of each polygon, in order
    Coordinates points;                 // further points
};

// ring (one polygon of 100 000 edges about the centre of numPoints uniform points), polygons (10 000 disjoint
// ones of 10 to 50 edges, one in each cell of a lattice, among numPoints uniform points), crossings
// (numPoints / 2 short segments that cross in many places, and no further points).
ConstraintInput makeConstraints(const std::string& kind, std::size_t numPoints);

// A strip of random points, one a unit of its length and half a unit to both sides of one segment along it
// all, which crosses about as many edges as there are points.
ConstraintInput makeStrip(std::size_t numPoints);

} // namespace bench
