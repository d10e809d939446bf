#pragma once

#include "Point2.h"

namespace TESK_KIVO2D {

// The point where the lines p1p2 and p3p4 meet, computed in rationals and rounded once, towards zero.
// Parallel lines are a programming error: "denom=0 -> parallel segments" is reported and the assertion fails.
// The rationals are the process's own, behind a lock, so any thread may call.
void getIntersectionCoords(const Point2& p1, const Point2& p2, const Point2& p3, const Point2& p4, double& x,
                           double& y);

} // namespace TESK_KIVO2D
