#pragma once

#include "Point2.h"
#include "bench/distributions.h"

#include <string>
#include <vector>

namespace bench {

// The points of a set as the library takes them.
std::vector<TESK_KIVO2D::Point2> converted(const Coordinates& points);

// A point set, kept until another one is asked for.
const Coordinates& input(const std::string& kind, std::size_t num);

// Points of the unit square that are in no uniform set of num points.
Coordinates queries(std::size_t num);

} // namespace bench
