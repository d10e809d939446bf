#pragma once

#include "Point2.h"

#include <cmath>
#include <limits>

namespace TESK_KIVO2D {

// Working storage of the rational stages; defined in TeskTest_exact.cpp, the only source of theirs that sees
// GMP.
class OrientationRationals;
class InCircleRationals;

// The single stages of the predicates. Clients of TeskTest never call them; tests set them against each
// other.
namespace stages {

// The numbers are those of Orientation2 and CircleInclusion2.
enum Decision { ZERO = 0, POSITIVE = 1, NEGATIVE = 2, UNSURE = 3 };

// Below this a bound or a permanent may have lost bits to underflow, so that it no longer bounds anything.
// Each of the terms that underflow can touch is off by less than 2^-1074, far below what the bound then
// leaves as margin.
inline constexpr double smallestSafeBound = 1e-290;

// Orientation determinant against a bound that holds for all points up to a largest absolute coordinate M.
// With u = 2^-53, each product of two differences carries a relative error of at most 3u + O(u^2) and is at
// most 4 M^2: both together are off by at most 24 u M^2 = 3 * 2^-50 M^2, and the final subtraction keeps the
// order.
inline Decision orientStatic(const Point2& a, const Point2& b, const Point2& c, double bound) {
    const double det = (a.x() - c.x()) * (b.y() - c.y()) - (b.x() - c.x()) * (a.y() - c.y());
    if (det > bound) return POSITIVE;
    if (det < -bound) return NEGATIVE;
    return UNSURE;
}

// The same determinant against a bound from its own two products: 3u + O(u^2) of the sum of their magnitudes
// (Shewchuk 1997, constant A of orient2d).
Decision orientDynamic(const Point2& a, const Point2& b, const Point2& c);

// Exact where all four differences are free of rounding error and of moderate size: then each product is a
// sum of two doubles (Dekker 1971), and comparing the two sums is exact.
Decision orientExpansion(const Point2& a, const Point2& b, const Point2& c);

// Bounds of the determinant from directed rounding.
struct Interval {
    double lower;
    double upper;
};
Interval orientBounds(const Point2& a, const Point2& b, const Point2& c);
Decision orientInterval(const Point2& a, const Point2& b, const Point2& c);

// Rational arithmetic; always decides.
Decision orientExact(const Point2& a, const Point2& b, const Point2& c, OrientationRationals& r);

// In-circle determinant against a bound from its permanent. Inlined: legalisation lives on it.
inline Decision inCircleStatic(const Point2& a, const Point2& b, const Point2& c, const Point2& d) {
    const double adx = a.x() - d.x(), ady = a.y() - d.y();
    const double bdx = b.x() - d.x(), bdy = b.y() - d.y();
    const double cdx = c.x() - d.x(), cdy = c.y() - d.y();
    const double bdxcdy = bdx * cdy, cdxbdy = cdx * bdy;
    const double cdxady = cdx * ady, adxcdy = adx * cdy;
    const double adxbdy = adx * bdy, bdxady = bdx * ady;
    const double alift = adx * adx + ady * ady;
    const double blift = bdx * bdx + bdy * bdy;
    const double clift = cdx * cdx + cdy * cdy;
    const double det = alift * (bdxcdy - cdxbdy) + blift * (cdxady - adxcdy) + clift * (adxbdy - bdxady);
    const double permanent = alift * (std::fabs(bdxcdy) + std::fabs(cdxbdy)) +
                             blift * (std::fabs(cdxady) + std::fabs(adxcdy)) +
                             clift * (std::fabs(adxbdy) + std::fabs(bdxady));
    // 3.33e-15 is above (10 + 96 u) u = 1.11e-15, which bounds the rounding error of det (Shewchuk 1997,
    // constant A of incircle). A product that underflows is off by up to 2^-1075, and det multiplies that by
    // a lift or by a minor, which is at most a sum of lifts: the permanent must be far above both. One that
    // is infinite or not a number passes no comparison.
    const double smallestSafePermanent = smallestSafeBound + 1e-300 * (alift + blift + clift);
    const double bound = permanent * 0x1.dfe750c6a2288p-49;
    if (!(permanent > smallestSafePermanent && permanent < std::numeric_limits<double>::infinity()))
        return UNSURE;
    if (det > bound) return POSITIVE;
    if (det < -bound) return NEGATIVE;
    return UNSURE;
}

// True when d is the fourth corner of an axis-parallel rectangle with a, b, c: then it lies on their circle.
bool isRectangle(const Point2& a, const Point2& b, const Point2& c, const Point2& d);

// Exact where all six differences are free of rounding error and of moderate size, by expansion arithmetic
// (Shewchuk 1997).
Decision inCircleExpansion(const Point2& a, const Point2& b, const Point2& c, const Point2& d);

// Rational arithmetic; always decides.
Decision inCircleExact(const Point2& a, const Point2& b, const Point2& c, const Point2& d,
                       InCircleRationals& r);

} // namespace stages
} // namespace TESK_KIVO2D
