#pragma once

#include "Point2.h"
#include "core/TriangleSet.h"
#include "kernel/TeskTest.h"

#include <vector>

namespace TESK_KIVO2D {

// A start point for each part of the set that hangs together by edges: the barycentre of its first triangle
// that has it strictly inside. A part without such a triangle, which has hardly any area, gets none, and is
// reported.
std::vector<Point2> startPointsOf(const TriangleSet& triangles, TeskTest& tests);

} // namespace TESK_KIVO2D
