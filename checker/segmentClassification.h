#pragma once

#include "Point2.h"
#include "SegmentChecker.h"
#include "kernel/TeskTest.h"

namespace TESK_KIVO2D {

// What the segments p1p2 and p3p4, which may be points, have in common. Exact; the same for any order and
// direction of the two. Their coordinates must lie within the static bound. Two segments with the same ends
// have SIT_SEGMENT, two equal points SIT_ENDPOINT.
SegmentIntersectionType classifySegments(TeskTest& tests, const Point2& p1, const Point2& p2,
                                         const Point2& p3, const Point2& p4);

} // namespace TESK_KIVO2D
