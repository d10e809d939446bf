#pragma once

#include "Point2.h"
#include "Vector2.h"

#include <algorithm>
#include <optional>

namespace TESK_KIVO2D {

// Area from three edge lengths by Heron's formula. Degenerate lengths give 0, with a warning where they miss
// the triangle inequality by far; lengths that are not numbers are reported and throw KivoException.
double computeArea(double a, double b, double c);

// Angle between two unit vectors in degrees, where 3.14159 stands for pi. Vectors whose length is off by more
// than 0.1 are a programming error.
double getAngleDegree(const Vector2& u, const Vector2& v);

// What the segments p1p2 and p3p4, on one line, have in common, from the first to the last of it: nothing
// where the last comes before the first. On a line points are in the order of their coordinates. Refers to
// the points.
struct CollinearPart {
    const Point2& first;
    const Point2& last;
};
inline CollinearPart collinearPart(const Point2& p1, const Point2& p2, const Point2& p3, const Point2& p4) {
    return {std::max(std::min(p1, p2), std::min(p3, p4)), std::min(std::max(p1, p2), std::max(p3, p4))};
}

// The one point that the segments p1p2 and p3p4, which may be points, share: an end that lies on the other
// segment as it is, else where they cross, as near as getNearestIntersection comes to it. Nothing when they
// share none or more than one. Whether they meet is decided exactly; segments on one line get a warning. The
// points must be finite. Safe in any thread.
std::optional<Point2> getIntersectionCoordsNoRounding(const Point2& p1, const Point2& p2, const Point2& p3,
                                                      const Point2& p4);

// The point of the line ab that is nearest to p; a when the line is a single point.
Point2 getFootPoint(const Point2& p, const Point2& a, const Point2& b);

// True when p comes before q on the way from a to b. For points of that segment, each of which may have been
// rounded to nearest: that keeps their order in each coordinate. The one in which the segment is longer tells
// more of them apart.
bool isBefore(const Point2& p, const Point2& q, const Point2& a, const Point2& b);

// True when p lies in the closed box with corners a and b.
bool isInBox(const Point2& p, const Point2& a, const Point2& b);

// Distance of p from the line ab, from a when the line is a single point. Exactly 0 for a point on the line.
double getPointLineDistance(const Point2& p, const Point2& a, const Point2& b);

// The middle of the segment ab. Where rounding moves it off the segment, it is shifted to a point with double
// coordinates that lies exactly on the segment, in the middle quarter of it, if there is one that whole steps
// find (mostly when the slope is a ratio of small numbers). It never lies beyond the ends, and it equals one
// of them only when no other double lies between them in either coordinate.
Point2 centerWithShift(const Point2& a, const Point2& b);

} // namespace TESK_KIVO2D
