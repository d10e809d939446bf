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

inline Decision decisionOf(double exactSign) {
    return exactSign > 0 ? POSITIVE : exactSign < 0 ? NEGATIVE : ZERO;
}

// Below this a bound, or what it is made from, may have lost bits to underflow and bounds nothing any more.
// Each of the terms that underflow can touch is off by less than 2^-1074, far below what the bound then
// leaves as margin.
inline constexpr double smallestSafeBound = 1e-290;

// Orientation determinant against a bound that holds for all points up to a largest absolute coordinate M.
// With u = 2^-53, each product of two differences carries a relative error of at most 3u + O(u^2) and is at
// most 4 M^2: both together are off by at most 24 u M^2 = 3 * 2^-50 M^2, and the final subtraction keeps the
// order.
inline double orientationDet(const Point2& a, const Point2& b, const Point2& c) {
    return (a.x() - c.x()) * (b.y() - c.y()) - (b.x() - c.x()) * (a.y() - c.y());
}
inline Decision orientStatic(const Point2& a, const Point2& b, const Point2& c, double bound) {
    const double det = orientationDet(a, b, c);
    if (det > bound) return POSITIVE;
    if (det < -bound) return NEGATIVE;
    return UNSURE;
}

// The same determinant against a bound from its own two products: 3u + O(u^2) of the sum of their magnitudes
// (Shewchuk 1997, constant A of orient2d).
inline Decision orientDynamic(const Point2& a, const Point2& b, const Point2& c) {
    const double left = (a.x() - c.x()) * (b.y() - c.y());
    const double right = (b.x() - c.x()) * (a.y() - c.y());
    const double det = left - right;
    const double magnitude = std::fabs(left) + std::fabs(right);
    if (!(magnitude > smallestSafeBound && magnitude < std::numeric_limits<double>::infinity()))
        return UNSURE;
    const double bound = magnitude * ((3 + 16 * 0x1p-53) * 0x1p-53);
    if (det > bound) return POSITIVE;
    if (det < -bound) return NEGATIVE;
    return UNSURE;
}

// Exact where all four differences, and what rounding lost of them, are of moderate size: then each product
// is a sum of doubles (Dekker 1971, Shewchuk 1997).
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

// Two doubles that are worked on at once where the processor can.
typedef double Pair __attribute__((vector_size(16)));

// In-circle determinant against a bound of its rounding error. Inlined: legalisation lives on it.
//
// The error is at most (10 + 96 u) u = 1.11e-15 times the permanent (Shewchuk 1997, constant A of incircle),
// which is the sum of lift_i (|x_j y_k| + |x_k y_j|) and so, as 2 |x y| <= x^2 + y^2, at most the sum of the
// products of two lifts. The bound takes 3.33e-15 times that sum. A product that underflows is off by up to
// 2^-1075, and the determinant multiplies that by a lift or by a minor, which is at most the sum of all
// lifts: the last term of the bound is far above both. A bound that is infinite or not a number passes no
// comparison.
struct CircleDet {
    double det;
    double bound;
};
inline CircleDet inCircleDet(const Point2& a, const Point2& b, const Point2& c, const Point2& d) {
    const Pair pd = {d.x(), d.y()};
    const Pair pa = Pair{a.x(), a.y()} - pd, pb = Pair{b.x(), b.y()} - pd, pc = Pair{c.x(), c.y()} - pd;
    const Pair aa = pa * pa, bb = pb * pb, cc = pc * pc;
    const Pair bc = pb * Pair{pc[1], pc[0]}, ca = pc * Pair{pa[1], pa[0]}, ab = pa * Pair{pb[1], pb[0]};
    const Pair liftsAB = Pair{aa[0], bb[0]} + Pair{aa[1], bb[1]};
    const Pair minorsAB = Pair{bc[0], ca[0]} - Pair{bc[1], ca[1]};
    const Pair termsAB = liftsAB * minorsAB;
    const double clift = cc[0] + cc[1];
    const double det = termsAB[0] + termsAB[1] + clift * (ab[0] - ab[1]);
    const double sumAB = liftsAB[0] + liftsAB[1];
    const double products = liftsAB[0] * liftsAB[1] + sumAB * clift;
    return {det, products * 0x1.dfe750c6a2288p-49 + (sumAB + clift + 1) * 0x1p-1000};
}
inline Decision inCircleStatic(const Point2& a, const Point2& b, const Point2& c, const Point2& d) {
    const CircleDet circle = inCircleDet(a, b, c, d);
    if (circle.det > circle.bound) return POSITIVE;
    if (circle.det < -circle.bound) return NEGATIVE;
    return UNSURE;
}

// True when d is the fourth corner of an axis-parallel rectangle with a, b, c: then it lies on their circle.
bool isRectangle(const Point2& a, const Point2& b, const Point2& c, const Point2& d);

// Exact where all six differences are multiples of one unit and at most 25 bits long, as on grids and in
// coordinates of fixed precision. Answers zeros too, which no error bound can. So it does for the corners of
// rectangles whose differences are doubles of any length, as on grids that are turned.
Decision inCircleLattice(const Point2& a, const Point2& b, const Point2& c, const Point2& d);

// The determinant to about twice the precision of doubles, against a bound from its permanent; differences
// may round.
Decision inCircleDoubleDouble(const Point2& a, const Point2& b, const Point2& c, const Point2& d);

// Exact where all six differences, and what rounding lost of them, are of moderate size, by expansion
// arithmetic (Shewchuk 1997).
Decision inCircleExpansion(const Point2& a, const Point2& b, const Point2& c, const Point2& d);

// Rational arithmetic; always decides.
Decision inCircleExact(const Point2& a, const Point2& b, const Point2& c, const Point2& d,
                       InCircleRationals& r);

} // namespace stages
} // namespace TESK_KIVO2D
