#pragma once

#include "bench/checkerInputs.h"

#include <cstddef>
#include <vector>

// Boost.Geometry's R-tree and CGAL's box intersection in the place of our index. The pairs are tested by our
// own public function on all sides; CGAL's do_intersect is no faster here.
namespace bench::rival {

// As one would write it, or with what we found to help on random segments.
enum class Tuning { none, best };

// The numbers of the segments that intersect another one, from segments to end without anything prepared.
// Segments that are known to intersect are not asked for, nor two such tested.

// Packed at once; one query a segment, which ends with the first hit. The best: queries in the order of the
// tree, which takes half the time. Nodes of 8 to 32 entries and visitors instead of query iterators are no
// faster, and the names of the splitting rules mean nothing to a packed tree.
std::vector<std::size_t> illegalByBoost(const Segments& segments, Tuning tuning);

// All pairs of boxes. The best: a cutoff of 1600, tried from 10, the default, to 6400. Pointers to boxes are
// slower.
std::vector<std::size_t> illegalByCgal(const Segments& segments, Tuning tuning);

} // namespace bench::rival
