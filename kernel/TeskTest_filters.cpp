// Stages of the in-circle test that settle most of what the static one leaves open: a fixed number of
// operations, almost without a branch.
#include "kernel/TeskTest_stages.h"
#include "kernel/expansion.h"

#include <algorithm>
#include <bit>
#include <cstdint>

namespace TESK_KIVO2D::stages {
namespace {

// A number as a sum of two.
struct SplitNumber {
    double high;
    double low;
};

// A corner seen from another point, exactly: the rounded differences and what rounding lost of them, at most
// half a unit in the last place of each.
struct Corner {
    struct {
        double x, y;
    } high, low;
};

Corner difference(const Point2& p, const Point2& q) {
    Corner d{};
    expansion::twoSum(p.x(), -q.x(), d.high.x, d.low.x);
    expansion::twoSum(p.y(), -q.y(), d.high.y, d.low.y);
    return d;
}

struct Corners {
    Corner corners[3];

    Corners(const Point2& a, const Point2& b, const Point2& c, const Point2& seenFrom)
        : corners{difference(a, seenFrom), difference(b, seenFrom), difference(c, seenFrom)} {}
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

// p.x * q.y - q.x * p.y
SplitNumber longMinor(const Corner& p, const Corner& q) {
    double left = 0, leftError = 0, right = 0, rightError = 0, head = 0, headError = 0;
    expansion::twoProduct(p.high.x, q.high.y, left, leftError);
    expansion::twoProduct(q.high.x, p.high.y, right, rightError);
    expansion::twoSum(left, -right, head, headError);
    const double leftCross = p.high.x * q.low.y + p.low.x * q.high.y;
    const double rightCross = q.high.x * p.low.y + q.low.x * p.high.y;
    return {head, headError + ((leftError - rightError) + (leftCross - rightCross))};
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

SplitNumber longProduct(const SplitNumber& p, const SplitNumber& q) {
    double head = 0, headError = 0;
    expansion::twoProduct(p.high, q.high, head, headError);
    return {head, headError + (p.high * q.low + p.low * q.high)};
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
    return UNSURE;
}

// The error bound, with u = 2^-53. A difference x is X + x', |x'| <= u |X|. All two-sums and two-products are
// exact (Knuth 1969, Dekker 1971); every other operation rounds with a relative error of at most u. What
// follows counts errors in units of u^2 and leaves out O(u^3), for which the last step has room.
//   Minor. N = |X1 Y2| + |X2 Y1|. The errors of the two products are at most u N together, that of their
//   difference u N, the cross products 2u N; the low part is at most 4u N. Rounded are the cross products (2)
//   and their sums (2), the differences of the errors (1) and of the sums (2), the sum of both (3) and the
//   low part (4); the products of two rests are left out (1). The minor is off by at most 15 u^2 N.
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
