#pragma once

#include "Point2.h"
#include "core/EdgeMarks.h"
#include "core/TriangleSet.h"
#include "kernel/TeskTest.h"

#include <vector>

namespace TESK_KIVO2D {

// What becomes of parts without a start point.
enum class DegenerateParts { ARE_REPORTED, ARE_LEFT_OUT };

// A start point for each part of the set that hangs together by edges that are not closed: the barycentre of
// its first triangle that has it strictly inside. A part without such a triangle, which has hardly any area,
// gets none. The border of the set is closed.
std::vector<Point2> startPointsOf(const TriangleSet& triangles, const EdgeMarks& closed, TeskTest& tests,
                                  DegenerateParts degenerateParts);
// Where nothing but the border is closed; degenerate parts are reported.
std::vector<Point2> startPointsOf(const TriangleSet& triangles, TeskTest& tests);

} // namespace TESK_KIVO2D
