// Stages of the in-circle test that settle most of what the static one leaves open: a fixed number of
// operations, almost without a branch.
#include "kernel/TeskTest_stages.h"
#include "kernel/doubleDouble.h"

#include <algorithm>
#include <bit>
#include <cstdint>

namespace TESK_KIVO2D::stages {
namespace {

using doubleDouble::longMinor;
using doubleDouble::longProduct;
using doubleDouble::SplitNumber;
using Corner = doubleDouble::SplitVector; // a corner seen from another point

struct Corners {
    Corner corners[3];

    Corners(const Point2& a, const Point2& b, const Point2& c, const Point2& seenFrom)
        : corners{doubleDouble::difference(a, seenFrom), doubleDouble::difference(b, seenFrom),
                  doubleDouble::difference(c, seenFrom)} {}
};

double largestMagnitude(const Corners& d) {
    double largest = 0;
    for (const Corner& corner : d.corners)
        largest = std::max(largest, std::max(std::fabs(corner.high.x), std::fabs(corner.high.y)));
    return largest;
}

// The largest power of two that is not above a normal positive number.
double powerOfTwoBelow(double value) {
    return std::bit_cast<double>(std::bit_cast<std::uint64_t>(value) & 0x7ff0000000000000u);
}

// What v lacks to a multiple of unit; exact for |v| <= 2^51 unit, since the sum lies where doubles are whole
// multiples of unit.
double distanceToMultiple(double v, double unit) {
    const double shift = 0x1.8p52 * unit;
    return std::fabs(((v + shift) - shift) - v);
}

bool areMultiplesOf(double unit, const Corners& d) {
    double off = 0;
    for (const Corner& corner : d.corners)
        off += distanceToMultiple(corner.high.x, unit) + distanceToMultiple(corner.high.y, unit);
    return off == 0;
}

bool areExact(const Corners& d) {
    double lost = 0;
    for (const Corner& corner : d.corners)
        lost += std::fabs(corner.low.x) + std::fabs(corner.low.y);
    return lost == 0;
}

// True for the corners of a rectangle that is not along the axes, seen from the one opposite q. Differences
// must be exact. Products that large have exact tails.
bool isTurnedRectangle(const Corner& p, const Corner& q, const Corner& r) {
    if (q.high.x != p.high.x + r.high.x || q.high.y != p.high.y + r.high.y) return false;
    double sum = 0, lostX = 0, lostY = 0;
    expansion::twoSum(p.high.x, r.high.x, sum, lostX);
    expansion::twoSum(p.high.y, r.high.y, sum, lostY);
    double x = 0, y = 0, tailX = 0, tailY = 0;
    expansion::twoProduct(p.high.x, r.high.x, x, tailX);
    expansion::twoProduct(p.high.y, r.high.y, y, tailY);
    return lostX == 0 && lostY == 0 && x == -y && tailX == -tailY && std::fabs(x) >= 0x1p-900;
}

double lift(const Corner& p) { return p.high.x * p.high.x + p.high.y * p.high.y; }
double minor(const Corner& p, const Corner& q) { return p.high.x * q.high.y - q.high.x * p.high.y; }

// A number with the sign of the exact sum of three products of whole numbers below 2^51, times a power of
// two. Each product is below 2^102, so that its error is a whole number of at most 2^48; the first sum is
// below 2^103 with an error of at most 2^49. These four errors stay below 2^51 and add up exactly. The sum of
// the heads is exact below 2^53, being whole; where it is not, it outweighs the errors.
double sumOfProducts(const double (&p)[3], const double (&q)[3]) {
    double products[3], errors[3], partial = 0, partialError = 0;
    for (int i = 0; i < 3; ++i)
        expansion::twoProduct(p[i], q[i], products[i], errors[i]);
    expansion::twoSum(products[0], products[1], partial, partialError);
    return (partial + products[2]) + (partialError + (errors[0] + errors[1] + errors[2]));
}

// p.x^2 + p.y^2
SplitNumber longLift(const Corner& p) {
    double xx = 0, xxError = 0, yy = 0, yyError = 0, head = 0, headError = 0;
    expansion::twoProduct(p.high.x, p.high.x, xx, xxError);
    expansion::twoProduct(p.high.y, p.high.y, yy, yyError);
    expansion::twoSum(xx, yy, head, headError);
    const double cross = p.high.x * p.low.x + p.high.y * p.low.y;
    return {head, headError + ((xxError + yyError) + 2 * cross)};
}

double permanentOf(const Corner& a, const Corner& b, const Corner& c) {
    return lift(a) * (std::fabs(b.high.x * c.high.y) + std::fabs(c.high.x * b.high.y));
}

} // namespace

bool isRectangle(const Point2& a, const Point2& b, const Point2& c, const Point2& d) {
    // Of the three corners one shares d's coordinate, and the other two share another. No short circuits: on
    // a grid the answers follow no pattern that a branch could learn.
    const int likeDX = (a.x() == d.x()) + (b.x() == d.x()) + (c.x() == d.x());
    const int likeDY = (a.y() == d.y()) + (b.y() == d.y()) + (c.y() == d.y());
    const int pairsX = (a.x() == b.x()) + (b.x() == c.x()) + (c.x() == a.x());
    const int pairsY = (a.y() == b.y()) + (b.y() == c.y()) + (c.y() == a.y());
    return ((likeDX ^ 1) | (likeDY ^ 1) | (pairsX ^ 1) | (pairsY ^ 1)) == 0;
}

Decision inCircleLattice(const Point2& pa, const Point2& pb, const Point2& pc, const Point2& pd) {
    const Corners d(pa, pb, pc, pd);
    const double largest = largestMagnitude(d);
    // Within this range neither the fourth power of a unit nor the determinant leaves the range of doubles.
    if (!(largest >= 0x1p-200 && largest <= 0x1p200) || !areExact(d)) return UNSURE;
    const double power = powerOfTwoBelow(largest);
    const auto& [a, b, c] = d.corners;
    // Every difference is below 2 * power.
    if (areMultiplesOf(0x1p-11 * power, d)) {
        // Up to 12 bits: products have 24, lifts and minors 25, their products 50 and the sum of three 52, so
        // that nothing is ever rounded.
        return decisionOf(lift(a) * minor(b, c) + lift(b) * minor(c, a) + lift(c) * minor(a, b));
    }
    if (areMultiplesOf(0x1p-24 * power, d)) {
        // Up to 25 bits: products have 50, lifts and minors 51.
        return decisionOf(
            sumOfProducts({lift(a), lift(b), lift(c)}, {minor(b, c), minor(c, a), minor(a, b)}));
    }
    const bool bRectangle =
        isTurnedRectangle(a, b, c) || isTurnedRectangle(b, c, a) || isTurnedRectangle(c, a, b);
    return bRectangle ? ZERO : UNSURE;
}

// The error bound, in the units of doubleDouble.
//   Minor. Off by at most 15 u^2 N, with a low part of at most 4u N.
//   Lift. L = X^2 + Y^2. In the same way the low part is at most 4u L and the lift off by at most 13 u^2 L.
//   Term, lift times minor. The low part is at most (1 + 4 + 4) u LN. Rounded are the cross products (4 + 4),
//   their sum (8) and the low part (9); the product of the low parts is left out (16); lift and minor are off
//   themselves (13 + 15). A term is off by at most 69 u^2 LN.
//   Sum. With P the sum of the three LN, the heads add up exactly with two errors of u P each; rounded are
//   the sum of these (2), the sums of the low parts (9 + 9) and of both (11).
// Together 100 u^2 P. The final rounding keeps the sign. The bound is 256 u^2 = 2^-98 of the rounded
// permanent, which is within O(u) of P: more than twice what is needed.
//
// Underflow. A two-product is exact from 2^-960 on and off by less than 2^-950 below; with lifts of up to
// 2^400 this makes less than 2^-540, where the bound is at least 2^-498. No product is above 2^804.
Decision inCircleDoubleDouble(const Point2& pa, const Point2& pb, const Point2& pc, const Point2& pd) {
    const Corners d(pa, pb, pc, pd);
    const auto& [a, b, c] = d.corners;
    const double permanent = permanentOf(a, b, c) + permanentOf(b, c, a) + permanentOf(c, a, b);
    if (!(permanent >= 0x1p-400 && lift(a) + lift(b) + lift(c) <= 0x1p400)) return UNSURE;
    const SplitNumber aTerm = longProduct(longLift(a), longMinor(b, c));
    const SplitNumber bTerm = longProduct(longLift(b), longMinor(c, a));
    const SplitNumber cTerm = longProduct(longLift(c), longMinor(a, b));
    double ab = 0, abError = 0, head = 0, headError = 0;
    expansion::twoSum(aTerm.high, bTerm.high, ab, abError);
    expansion::twoSum(ab, cTerm.high, head, headError);
    const double det = head + ((abError + headError) + (aTerm.low + bTerm.low + cTerm.low));
    const double bound = permanent * 0x1p-98;
    return det > bound ? POSITIVE : det < -bound ? NEGATIVE : UNSURE;
}

} // namespace TESK_KIVO2D::stages
