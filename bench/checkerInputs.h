#pragma once

#include "Segment2.h"

#include <cstddef>
#include <string>
#include <vector>

// Segment sets for benchmarks, made from written recipes as the point sets are.
namespace bench {

using Segments = std::vector<TESK_KIVO2D::Segment2>;

// That many segments, and the long one, in random order.
//   random            equally long ones, 0.0015 for a million, that start in the unit square: 0.716 pairs
//   intersect
//                     a segment
// Boxes tell nothing, and no pair intersects but at ends:
//   diagonals         parallel ones, shifted along the x-axis, whose boxes are nearly the same
//   turnedDiagonals   parallel ones, shifted across their direction, whose boxes are nearly the same
//   star              from one common end into all directions
//   fan               from a tiny circle into all directions
//   hatching          rows of nearly equal directions
// Hits are many:
//   crossing          chords through the middle of a circle, nearly
//   overlapLevel      on the x-axis
//   overlapSlanted    on a slanted line, exactly
// One segment is far longer than the others:
//   longOverRandom    a diagonal over random ones
//   longOverLattice   a diagonal over a lattice of level ones, no pair of which intersects
Segments makeSegments(const std::string& kind, std::size_t numSegments);

// Those of a file of the test data.
Segments readSegments(const std::string& name);

} // namespace bench
