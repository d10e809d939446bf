#include "functions.h"

#include "kernel/messages.h"

#include <algorithm>

namespace TESK_KIVO2D {

namespace {

// The corners of a simple polygon through all the points, which are different and sorted, counter-clockwise;
// nothing when they all lie on one line. O(n).
//
// Let A be the first point and B the last. One chain of corners runs from A to B in the order of the points,
// the other one back. Sorted by (x, y) means sorted along some direction, so each chain is strictly monotone
// in that direction, and two chains could meet only where they are equally far along. The points on the line
// AB all belong to one chain; all points of the other one, and there are some, lie strictly on its own side
// of the line. Hence between A and B the one chain stays strictly off the line on that side, where the other
// one never is.
std::vector<Point2> connectSortedPoints(const std::vector<Point2>& vPoints) {
    if (vPoints.size() < 3) return {};
    const Point2& a = vPoints.front();
    const Point2& b = vPoints.back();
    const std::size_t numInner = vPoints.size() - 2;
    std::vector<Orientation2> vSides(numInner);
    for (std::size_t i = 0; i < numInner; ++i)
        vSides[i] = getOrientation2_mt(&a, &b, &vPoints[i + 1]);
    const auto isThere = [&](Orientation2 side) {
        return std::count(vSides.begin(), vSides.end(), side) > 0;
    };
    const bool bUpper = isThere(ORIENTATION2_CCW);
    if (!bUpper && !isThere(ORIENTATION2_CW)) return {};
    std::replace(vSides.begin(), vSides.end(), ORIENTATION2_COLLINEAR,
                 bUpper ? ORIENTATION2_CW : ORIENTATION2_CCW);

    std::vector<Point2> vRing{a};
    for (std::size_t i = 0; i < numInner; ++i) {
        if (vSides[i] == ORIENTATION2_CW) vRing.push_back(vPoints[i + 1]);
    }
    vRing.push_back(b);
    for (std::size_t i = numInner; i-- > 0;) {
        if (vSides[i] == ORIENTATION2_CCW) vRing.push_back(vPoints[i + 1]);
    }
    return vRing;
}

} // namespace

void generateRandomPolygon(std::size_t num, double min, double max, std::vector<Segment2>& vPolygon,
                           unsigned int seed) {
    vPolygon.clear();
    std::vector<Point2> vPoints;
    generateRandomPoints(num, min, max, vPoints, seed);
    std::sort(vPoints.begin(), vPoints.end());
    vPoints.erase(std::unique(vPoints.begin(), vPoints.end()), vPoints.end());
    const std::vector<Point2> vRing = connectSortedPoints(vPoints);
    if (vRing.empty()) {
        reportWarning("generateRandomPolygon()", "all points lie on one line, no polygon generated");
        return;
    }
    vPolygon.reserve(vRing.size());
    for (std::size_t i = 0; i < vRing.size(); ++i)
        vPolygon.emplace_back(vRing[i], vRing[i + 1 == vRing.size() ? 0 : i + 1]);
}

} // namespace TESK_KIVO2D
