#pragma once

#include "Point2.h"

#include <gmpxx.h>
#include <optional>
#include <vector>

// Geometry in integers and rationals, written apart from the library: other formulas, no filter, no shortcut.
namespace oracle {

using TESK_KIVO2D::Point2;

struct ExactPoint {
    mpz_class x, y;
    auto operator<=>(const ExactPoint& other) const {
        const int order = cmp(x, other.x);
        return (order != 0 ? order : cmp(y, other.y)) <=> 0;
    }
    bool operator==(const ExactPoint& other) const { return x == other.x && y == other.y; }
};

// The points times one common power of two that makes all of them integers. No sign below depends on it.
std::vector<ExactPoint> exactPoints(const std::vector<Point2>& vPoints);

// Twice the signed area; positive for counter-clockwise triples.
mpz_class twiceArea(const ExactPoint& a, const ExactPoint& b, const ExactPoint& c);

// -1, 0 or 1; positive for counter-clockwise triples.
int orientation(const ExactPoint& a, const ExactPoint& b, const ExactPoint& c);
int orientation(const Point2& a, const Point2& b, const Point2& c);

// -1, 0 or 1; positive when d lies inside the circle of the counter-clockwise triple a, b, c.
int inCircle(const ExactPoint& a, const ExactPoint& b, const ExactPoint& c, const ExactPoint& d);
int inCircle(const Point2& a, const Point2& b, const Point2& c, const Point2& d);

// How the closed segments p1p2 and p3p4 meet: 0 not at all, 1 with all four ends on one line, 2 otherwise.
int meeting(const Point2& p1, const Point2& p2, const Point2& p3, const Point2& p4);

struct RationalPoint {
    mpq_class x, y;
    bool operator==(const RationalPoint& other) const { return x == other.x && y == other.y; }
};
// Where two lines that are not parallel meet.
RationalPoint lineIntersection(const Point2& p1, const Point2& p2, const Point2& p3, const Point2& p4);

// The points that the closed segments p1p2 and p3p4 share, from the first one met on the way from p1 to p2 to
// the last. Either may be a single point.
struct RationalSegment {
    RationalPoint first, last;
};
std::optional<RationalSegment> commonPoints(const Point2& p1, const Point2& p2, const Point2& p3,
                                            const Point2& p4);

// True when value is what is left of exact after rounding towards zero.
bool isTruncation(double value, const mpq_class& exact);

// The hull, counter-clockwise from the smallest point; with bAll also the points inside its straight pieces.
// Indices into the points, which must be sorted and different and not all on one line.
std::vector<std::size_t> hull(const std::vector<ExactPoint>& vSorted, bool bAll);

} // namespace oracle
