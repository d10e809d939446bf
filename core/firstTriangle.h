#pragma once

#include "Point2.h"
#include "kernel/TeskTest.h"

#include <cstddef>
#include <span>

namespace TESK_KIVO2D {

// The first two of these different vertices and the first one that is not on their line, counter-clockwise,
// or false. The search begins behind the first numCollinear, which are known to lie on that line; afterwards
// it tells how many do.
bool findFirstTriangle(std::span<Point2* const> vertices, std::size_t& numCollinear, TeskTest& tests,
                       Point2* (&corners)[3]);

} // namespace TESK_KIVO2D
