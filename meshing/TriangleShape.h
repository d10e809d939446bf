#pragma once

#include "Triangle2.h"

#include <algorithm>
#include <cmath>

namespace TESK_KIVO2D {

// Distances of a few units in the last place of the larger coordinate are what rounding makes of nothing: on
// so fine a scale as many bad triangles come into being as are mended, without end.
inline double resolutionAt(double largerCoordinate) {
    constexpr double numUnits = 4;
    return numUnits * (largerCoordinate - std::nextafter(largerCoordinate, 0.0));
}

// Measures of a triangle, in units of a power of two that makes the coordinates of its zone less than 1: so
// powers of lengths do not overflow, and a zone of any size is meshed alike. A triangle that is so much
// smaller than its zone that powers would underflow has units of its own.
struct TriangleShape {
    double aSqLengthsIgnoringZ[3]; // ascending
    double aSqOpposite[3];         // the same, of the edge opposite each corner
    double area;
    double scale; // what coordinates were multiplied by

    TriangleShape(const Triangle2& t, double zoneScale) : scale(zoneScale) {
        constexpr double tiny = 0x1p-200;
        measure(t);
        if (sqLongest() < tiny) enlarge(t);
    }

    double sqShortest() const { return aSqLengthsIgnoringZ[0]; }
    double sqLongest() const { return aSqLengthsIgnoringZ[2]; }
    // The corner opposite the shortest or the longest edge, the first of equals: that of the smallest or of
    // the largest angle.
    int getMinIndex() const { return indexOf(sqShortest()); }
    int getMaxIndex() const { return indexOf(sqLongest()); }

    // True when the smallest angle, whose squared cosine is given, is below; an angle below 90 degrees.
    bool hasSmallerAngle(double sqCos) const {
        const double middle = aSqLengthsIgnoringZ[1], longest = aSqLengthsIgnoringZ[2];
        const double dot = 0.5 * ((longest - aSqLengthsIgnoringZ[0]) + middle); // of the two longer edges
        return dot * dot > sqCos * (middle * longest);
    }
    // True when the largest angle, whose squared cosine is given, is above; an angle above 90 degrees.
    bool hasLargerAngle(double sqCos) const {
        const double shortest = aSqLengthsIgnoringZ[0], middle = aSqLengthsIgnoringZ[1];
        const double dot = 0.5 * (shortest + middle - aSqLengthsIgnoringZ[2]);
        return dot < 0 && dot * dot > sqCos * (shortest * middle);
    }

    // True when it is hardly higher than rounding can make it, where the height stands.
    bool isFlat(const Triangle2& t) const {
        return 2 * area < resolutionAt(*t.getCorner(getMaxIndex())) * std::sqrt(sqLongest());
    }
    // True when its shortest edge is hardly longer.
    bool hasTinyEdge(const Triangle2& t) const {
        const double resolution = resolutionAt(*t.getCorner(Triangle2::incIndexBy1(getMinIndex())));
        return sqShortest() < resolution * resolution;
    }

private:
    double resolutionAt(const Point2& p) const { return scale * TESK_KIVO2D::resolutionAt(p.getMaxAbs()); }
    void measure(const Triangle2& t) {
        const Point2 &p0 = *t.getCorner(0), &p1 = *t.getCorner(1), &p2 = *t.getCorner(2);
        const double x = p0.x() * scale, y = p0.y() * scale;
        const double ax = p1.x() * scale - x, ay = p1.y() * scale - y;
        const double bx = p2.x() * scale - x, by = p2.y() * scale - y;
        const double cx = bx - ax, cy = by - ay;
        const double a = ax * ax + ay * ay, b = bx * bx + by * by, c = cx * cx + cy * cy;
        aSqOpposite[0] = c;
        aSqOpposite[1] = b;
        aSqOpposite[2] = a;
        const double low = std::min(a, b), high = std::max(a, b);
        aSqLengthsIgnoringZ[0] = std::min(low, c);
        aSqLengthsIgnoringZ[1] = std::max(low, std::min(high, c));
        aSqLengthsIgnoringZ[2] = std::max(high, c);
        area = 0.5 * std::fabs(ax * by - ay * bx);
    }
    void enlarge(const Triangle2& t);

    int indexOf(double sqLength) const {
        return aSqOpposite[0] == sqLength ? 0 : aSqOpposite[1] == sqLength ? 1 : 2;
    }
};

} // namespace TESK_KIVO2D
