#include "checker/segmentClassification.h"

#include "kernel/tools.h"

namespace TESK_KIVO2D {
namespace {

SegmentIntersectionType classifyCollinear(const Point2& p1, const Point2& p2, const Point2& p3,
                                          const Point2& p4) {
    const auto [first, last] = collinearPart(p1, p2, p3, p4);
    if (last < first) return SIT_NONE;
    if (first < last) return SIT_SEGMENT;
    const bool bEndOfBoth = (first == p1 || first == p2) && (first == p3 || first == p4);
    return bEndOfBoth ? SIT_ENDPOINT : SIT_POINT;
}

} // namespace

SegmentIntersectionType classifySegments(TeskTest& tests, const Point2& p1, const Point2& p2,
                                         const Point2& p3, const Point2& p4) {
    const Orientation2 side3 = sideOf(tests, p1, p2, p3), side4 = sideOf(tests, p1, p2, p4);
    if (side3 == side4) {
        if (side3 != ORIENTATION2_COLLINEAR) return SIT_NONE;
        // A segment that is one point has no line: only now it shows whether it lies on the other's.
        if (p1 == p2 && sideOf(tests, p3, p4, p1) != ORIENTATION2_COLLINEAR) return SIT_NONE;
        return classifyCollinear(p1, p2, p3, p4);
    }
    // They are not parallel: they meet where each touches or crosses the other's line.
    if (sideOf(tests, p3, p4, p1) == sideOf(tests, p3, p4, p2)) return SIT_NONE;
    return p1 == p3 || p1 == p4 || p2 == p3 || p2 == p4 ? SIT_ENDPOINT : SIT_POINT;
}

} // namespace TESK_KIVO2D
