#include "Triangle2.h"

#include "Vector2.h"
#include "functions.h"
#include "kernel/assertion.h"
#include "kernel/finite.h"
#include "kernel/tools.h"
#include "kernel/valueText.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <optional>

namespace TESK_KIVO2D {
namespace {

struct CornerPoints {
    const Point2& p0;
    const Point2& p1;
    const Point2& p2;

    explicit CornerPoints(const Triangle2& t)
        : p0(*t.getCorner(0)), p1(*t.getCorner(1)), p2(*t.getCorner(2)) {}
    double maxAbs() const { return std::max({p0.getMaxAbs(), p1.getMaxAbs(), p2.getMaxAbs()}); }
};

// ---- lengths ----------------------------------------------------------------------------------------------

// Three lengths, each opposite the corner of the same number, in units of 1 / scale.
struct EdgeLengths {
    double aLength[3];
    double scale = 1;

    explicit EdgeLengths(const Triangle2& t) {
        const CornerPoints corners(t);
        set(corners);
        // Beyond this even a difference of two coordinates may overflow.
        if (corners.maxAbs() > 0x1p1000) rescale(corners, -600);
        const double longest = std::max({aLength[0], aLength[1], aLength[2]});
        // Between these limits a product of four lengths neither overflows nor loses bits to underflow.
        const bool bOrdinary = longest > 0x1p-200 && longest < 0x1p200;
        if (!bOrdinary && longest > 0 && std::isfinite(longest)) rescale(corners, -std::ilogb(longest));
    }

private:
    void set(const CornerPoints& corners) {
        aLength[0] = length(corners.p1, corners.p2);
        aLength[1] = length(corners.p2, corners.p0);
        aLength[2] = length(corners.p0, corners.p1);
    }
    // Multiplies by a power of two on top of the scale so far.
    void rescale(const CornerPoints& corners, int exponent) {
        scale *= std::scalbn(1.0, std::clamp(exponent, -1000, 1000));
        set(corners);
    }
    double length(const Point2& a, const Point2& b) const {
        return std::hypot(b.x() * scale - a.x() * scale, b.y() * scale - a.y() * scale);
    }
};

// What is compared to find the shortest and the longest edge: squared lengths, but where the squares leave
// the range of doubles the lengths themselves.
struct EdgeSizes {
    double aSize[3];

    explicit EdgeSizes(const Triangle2& t) {
        for (int i = 0; i < 3; ++i)
            aSize[i] = t.getSquaredEdgeLength(i);
        const double largest = std::max({aSize[0], aSize[1], aSize[2]});
        if (largest > 1e-290 && std::isfinite(largest)) return;
        const EdgeLengths lengths(t);
        std::copy(lengths.aLength, lengths.aLength + 3, aSize);
    }
};

// The direction from one point to another, for normalize. Halved where the difference would overflow.
Vector2 directionTo(const Point2& to, const Point2& from) {
    const Vector2 difference = to - from;
    if (isFinite(difference)) return difference;
    return Vector2(to.x() * 0.5 - from.x() * 0.5, to.y() * 0.5 - from.y() * 0.5);
}

// ---- circumcentre -----------------------------------------------------------------------------------------

// One coordinate of the offset: the middle of the values with the largest and the smallest magnitude, rounded
// to single precision so that subtracting it is exact for typical input. Values beyond that range are left as
// they are.
double commonOffset(double v0, double v1, double v2) {
    double smallest = v0;
    double largest = 0;
    for (const double v : {v0, v1, v2}) {
        if (std::fabs(v) < std::fabs(smallest)) smallest = v;
        if (std::fabs(v) > std::fabs(largest)) largest = v;
    }
    const double offset = largest * 0.5 + smallest * 0.5; // the sum itself may overflow
    return std::fabs(offset) <= static_cast<double>(FLT_MAX) ? static_cast<double>(static_cast<float>(offset))
                                                             : offset;
}

Vector2 getCommonOffset(const CornerPoints& corners) {
    return Vector2(commonOffset(corners.p0.x(), corners.p1.x(), corners.p2.x()),
                   commonOffset(corners.p0.y(), corners.p1.y(), corners.p2.y()));
}

// The corners relative to their common offset. The scale is 1 for all ordinary triangles; otherwise it is a
// power of two that brings the corners to a size whose fourth power is a double.
struct LocalCorners {
    Vector2 aCorner[3];
    Vector2 offset;
    double scale = 1;

    explicit LocalCorners(const CornerPoints& corners) : offset(getCommonOffset(corners)) {
        const double size = corners.maxAbs();
        const bool bOrdinary = size > 0x1p-200 && size < 0x1p200;
        if (!bOrdinary && size > 0 && std::isfinite(size))
            scale = std::scalbn(1.0, std::clamp(-std::ilogb(size), -1000, 1000));
        aCorner[0] = toLocal(corners.p0);
        aCorner[1] = toLocal(corners.p1);
        aCorner[2] = toLocal(corners.p2);
    }
    Vector2 toLocal(const Point2& p) const {
        return Vector2(p.x() * scale - offset.x() * scale, p.y() * scale - offset.y() * scale);
    }
    Point2 toGlobal(const Vector2& v) const {
        return Point2(v.x() / scale + offset.x(), v.y() / scale + offset.y());
    }
};

// Strategy 1: the closed formula. It fails when its denominator vanishes.
std::optional<Vector2> circumcenterByFormula(const LocalCorners& corners) {
    const Vector2& a = corners.aCorner[0];
    const Vector2& b = corners.aCorner[1];
    const Vector2& c = corners.aCorner[2];
    const double la = a * a;
    const double lb = b * b;
    const double lc = c * c;
    const double denominator = 2 * ((c.y() * b.x() + b.y() * a.x() + c.x() * a.y()) -
                                    (c.y() * a.x() + b.x() * a.y() + c.x() * b.y()));
    if (denominator == 0) return std::nullopt;
    const double x = (b.y() - c.y()) * la + (c.y() - a.y()) * lb + (a.y() - b.y()) * lc;
    const double y = (a.x() - c.x()) * lb + (c.x() - b.x()) * la + (b.x() - a.x()) * lc;
    return Vector2(x / denominator, y / denominator);
}

// Strategy 2: bisection on the perpendicular bisector of the longest edge, the one opposite corner ith. It
// works for flat triangles too; the centre of a degenerate one comes out far away, at the end of the search.
Vector2 circumcenterByBisection(const LocalCorners& corners, int ith) {
    const Vector2& p = corners.aCorner[ith];
    const Vector2& q = corners.aCorner[Triangle2::incIndexBy1(ith)];
    const Vector2& r = corners.aCorner[Triangle2::incIndexBy2(ith)];
    const Vector2 mid = 0.5 * (q + r);
    Vector2 normal = (q - r).orthogonalVector();
    if (normal.length() == 0) return mid;
    // The normal shall point away from p, that is to the right of q -> r.
    if (normal * Vector2(r.y() - q.y(), q.x() - r.x()) < 0) normal = -normal;

    // An acute triangle has its centre on the side of p and not farther from the edge than p.
    const bool bTowardsP = (p - mid) * (p - mid) > (q - mid) * (q - mid);
    if (bTowardsP) normal = -normal;
    const double searchLength = (bTowardsP ? (p - mid).length() : 1e13) / normal.length();

    double low = 0;
    double high = 1;
    double t = 0.5;
    Vector2 center = mid + (searchLength * t) * normal;
    while (t != low && t != high) {
        // |p - center|^2 - |q - center|^2, as a product so that it does not cancel far away from the corners
        const double f = (q - p) * (2.0 * center - p - q);
        if (std::fabs(f) < 1e-16) break;
        const bool bBeyond = bTowardsP ? f < 0 : f > 0;
        (bBeyond ? high : low) = t;
        t = (low + high) * 0.5;
        center = mid + (searchLength * t) * normal;
    }
    return center;
}

double distance(const Point2& a, const Point2& b) { return (b - a).length(); }

// True for a centre that lies within the fan of the longest edge, the one opposite corner ith, and at equal
// distances from the corners. Collinear corners have no centre, however well the distances to a far point
// agree.
bool isAccurateCC(const Triangle2& t, int ith, const Point2& center) {
    const Point2& corner = *t.getCorner(ith);
    const Point2& next = *t.getCorner(Triangle2::incIndexBy1(ith));
    const Point2& prev = *t.getCorner(Triangle2::incIndexBy2(ith));
    const double r0 = distance(center, corner);
    const double r1 = distance(center, next);
    const double r2 = distance(center, prev);
    constexpr double tolerance = 1e-6;
    const bool bEqualDistances = std::fabs(r0 - r1) < tolerance && std::fabs(r1 - r2) < tolerance &&
                                 std::fabs(r2 - r0) < tolerance; // false when one is not a number
    return bEqualDistances && getOrientation2_mt(&prev, &corner, &center) != ORIENTATION2_CW &&
           getOrientation2_mt(&corner, &next, &center) != ORIENTATION2_CW &&
           getOrientation2_mt(&corner, &next, &prev) != ORIENTATION2_COLLINEAR;
}

const char* orientationText(Orientation2 orientation) {
    if (orientation == ORIENTATION2_CCW) return "CCW";
    return orientation == ORIENTATION2_CW ? "ATTENTION, CLOCKWISE CORNERS!" : "ATTENTION, COLLINEAR CORNERS";
}

// Half the cross product of two edges, in units of 1 / scale^2.
double areaOfCorners(const CornerPoints& c, double scale) {
    const auto along = [scale](double from, double to) { return to * scale - from * scale; };
    const double ux = along(c.p0.x(), c.p1.x()), uy = along(c.p0.y(), c.p1.y());
    const double vx = along(c.p0.x(), c.p2.x()), vy = along(c.p0.y(), c.p2.y());
    return std::fabs(ux * vy - uy * vx) / 2;
}

} // namespace

double Triangle2::getSquaredEdgeLength(int ith) const {
    KIVO_ASSERT(checkRange(ith), "checkRange(ith)");
    return sqDistance(*aCorners[incIndexBy1(ith)], *aCorners[incIndexBy2(ith)]);
}

int Triangle2::getMinIndex() const {
    const EdgeSizes sizes(*this);
    return static_cast<int>(std::min_element(sizes.aSize, sizes.aSize + 3) - sizes.aSize);
}

int Triangle2::getMaxIndex() const {
    const EdgeSizes sizes(*this);
    return static_cast<int>(std::max_element(sizes.aSize, sizes.aSize + 3) - sizes.aSize);
}

double Triangle2::getArea2D() const {
    const EdgeLengths lengths(*this);
    const double area = computeArea(lengths.aLength[0], lengths.aLength[1], lengths.aLength[2]);
    // The rounding errors of the lengths alone can make up for so much, so here the corners are asked. Many
    // slivers, as rounded crossings leave them, would add up to a visible error.
    const double longest = std::max({lengths.aLength[0], lengths.aLength[1], lengths.aLength[2]});
    if (!(area < 1e-6 * longest * longest)) return area / lengths.scale / lengths.scale;
    if (getOrientation2_mt(aCorners[0], aCorners[1], aCorners[2]) == ORIENTATION2_COLLINEAR) return 0;
    return areaOfCorners(CornerPoints(*this), lengths.scale) / lengths.scale / lengths.scale;
}

Point2 Triangle2::getBarycenter() const {
    const CornerPoints c(*this);
    const auto mean = [](double v0, double v1, double v2) {
        const double sum = v0 + v1 + v2;
        return std::isfinite(sum) ? sum / 3 : v0 / 3 + v1 / 3 + v2 / 3;
    };
    return Point2(mean(c.p0.x(), c.p1.x(), c.p2.x()), mean(c.p0.y(), c.p1.y(), c.p2.y()));
}

bool Triangle2::hasOnEdge(int ith, const Point2& q) const {
    KIVO_ASSERT(checkRange(ith), "checkRange(ith)");
    const Point2* pCorner = aCorners[ith];
    const Point2* pNext = aCorners[incIndexBy1(ith)];
    const Point2* pPrev = aCorners[incIndexBy2(ith)];
    return getOrientation2_mt(pNext, pPrev, &q) == ORIENTATION2_COLLINEAR &&
           getOrientation2_mt(pCorner, pNext, &q) != ORIENTATION2_CW &&
           getOrientation2_mt(pPrev, pCorner, &q) != ORIENTATION2_CW;
}

double Triangle2::getInteriorAngle2D(int ith) const {
    KIVO_ASSERT(checkRange(ith), "checkRange(ith)");
    const Point2& corner = *aCorners[ith];
    const Vector2 u = normalize(directionTo(*aCorners[incIndexBy1(ith)], corner));
    const Vector2 v = normalize(directionTo(*aCorners[incIndexBy2(ith)], corner));
    return getAngleDegree(u, v);
}

std::pair<Point2, bool> Triangle2::getDual() const {
    const LocalCorners corners{CornerPoints(*this)};
    const int ith = getMaxIndex();
    if (const std::optional<Vector2> local = circumcenterByFormula(corners)) {
        const Point2 center = corners.toGlobal(*local);
        if (isAccurateCC(*this, ith, center)) return {center, true};
    }
    const Point2 center = corners.toGlobal(circumcenterByBisection(corners, ith));
    return {center, isAccurateCC(*this, ith, center)};
}

std::ostream& operator<<(std::ostream& stream, const Triangle2& triangle) {
    const Point2* p0 = triangle.getCorner(0);
    const Point2* p1 = triangle.getCorner(1);
    const Point2* p2 = triangle.getCorner(2);
    const bool bHasCorners = p0 != nullptr && p1 != nullptr && p2 != nullptr;
    return writeAsOneItem(stream, [&](std::ostream& text) {
        text << "Triangle(" << static_cast<const void*>(&triangle) << "): ";
        if (!bHasCorners) {
            text << "no corners\n"; // a retired record
            return;
        }
        text << "area2D=" << triangle.getArea2D() << ", " << orientationText(getOrientation2_mt(p0, p1, p2))
             << "\n";
        for (int i = 0; i < 3; ++i)
            text << i << ": " << *triangle.getCorner(i)
                 << "\t oppTriangle: " << static_cast<const void*>(triangle.getOppositeTriangle(i)) << "\n";
    });
}

} // namespace TESK_KIVO2D
