#pragma once

#include "Point2.h"
#include "SegmentChecker.h"
#include "kernel/TeskTest.h"

namespace TESK_KIVO2D {

// Side of c seen from the directed line a -> b. Segments often share ends: that needs no arithmetic.
inline Orientation2 sideOf(TeskTest& tests, const Point2& a, const Point2& b, const Point2& c) {
    const stages::Decision decision = stages::orientStatic(a, b, c, tests.filterBound());
    if (decision != stages::UNSURE) return static_cast<Orientation2>(decision);
    return c == a || c == b ? ORIENTATION2_COLLINEAR : tests.orientationUnbounded(a, b, c);
}

// What the segments p1p2 and p3p4, which may be points, have in common. Exact; the same for any order and
// direction of the two. Their coordinates must lie within the static bound. Two segments with the same ends
// have SIT_SEGMENT, two equal points SIT_ENDPOINT.
SegmentIntersectionType classifySegments(TeskTest& tests, const Point2& p1, const Point2& p2,
                                         const Point2& p3, const Point2& p4);

} // namespace TESK_KIVO2D
