#pragma once

#include "Point2.h"

namespace TESK_KIVO2D {

// The point where the lines p1p2 and p3p4 meet: the exact coordinates, rounded once, towards zero.
// Parallel lines are a programming error: "denom=0 -> parallel segments" is reported and the assertion fails.
// Any thread may call. Double-double arithmetic settles nearly all calls (see intersection_stages.h); the
// integers for the others are the process's own, behind a lock.
void getIntersectionCoords(const Point2& p1, const Point2& p2, const Point2& p3, const Point2& p4, double& x,
                           double& y);

// The same point, with each coordinate rounded to the nearest double, or to another one that is hardly
// further away. It lies in every box with double coordinates that holds the exact point.
Point2 getNearestIntersection(const Point2& p1, const Point2& p2, const Point2& p3, const Point2& p4);

// True when the point lies within a unit in the last place of its larger coordinate of the line ab, as far as
// double-double arithmetic tells; never where a is b.
bool isWithinUnitOfLine(const Point2& p, const Point2& a, const Point2& b);

} // namespace TESK_KIVO2D
