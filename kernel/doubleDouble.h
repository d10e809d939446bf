#pragma once

#include "Point2.h"
#include "kernel/expansion.h"

namespace TESK_KIVO2D {

// Arithmetic with about twice the precision of doubles. The error bounds count in units of u^2 with
// u = 2^-53 and leave out O(u^3). Two-sums and two-products are exact (Knuth 1969, Dekker 1971) and every
// other operation rounds with a relative error of at most u, as long as none under- or overflows, which the
// callers make sure of.
namespace doubleDouble {

// A number as a sum of two.
struct SplitNumber {
    double high;
    double low;
};

// A point seen from another one, exactly: the rounded differences and what rounding lost of them, at most u
// times as large.
struct SplitVector {
    struct {
        double x, y;
    } high, low;
};

inline SplitVector difference(const Point2& p, const Point2& q) {
    SplitVector d{};
    expansion::twoSum(p.x(), -q.x(), d.high.x, d.low.x);
    expansion::twoSum(p.y(), -q.y(), d.high.y, d.low.y);
    return d;
}

// p.x * q.y - q.x * p.y
//
// N = |X1 Y2| + |X2 Y1|, of the rounded differences. The errors of the two products are at most u N together,
// that of their difference u N, the cross products 2u N; the low part is at most 4u N. Rounded are the cross
// products (2) and their sums (2), the differences of the errors (1) and of the sums (2), the sum of both (3)
// and the low part (4); the products of two rests are left out (1). The minor is off by at most 15 u^2 N.
inline SplitNumber longMinor(const SplitVector& p, const SplitVector& q) {
    double left = 0, leftError = 0, right = 0, rightError = 0, head = 0, headError = 0;
    expansion::twoProduct(p.high.x, q.high.y, left, leftError);
    expansion::twoProduct(q.high.x, p.high.y, right, rightError);
    expansion::twoSum(left, -right, head, headError);
    const double leftCross = p.high.x * q.low.y + p.low.x * q.high.y;
    const double rightCross = q.high.x * p.low.y + q.low.x * p.high.y;
    return {head, headError + ((leftError - rightError) + (leftCross - rightCross))};
}

// The N of this bound.
inline double minorSize(const SplitVector& p, const SplitVector& q) {
    return std::fabs(p.high.x * q.high.y) + std::fabs(q.high.x * p.high.y);
}

inline SplitNumber longProduct(const SplitNumber& p, const SplitNumber& q) {
    double head = 0, headError = 0;
    expansion::twoProduct(p.high, q.high, head, headError);
    return {head, headError + (p.high * q.low + p.low * q.high)};
}

// The same number with a low part of at most u times the high one.
inline SplitNumber normalized(const SplitNumber& number) {
    SplitNumber result{};
    expansion::twoSum(number.high, number.low, result.high, result.low);
    return result;
}

// p / q of normalised numbers; the low part is at most 3u times the high one.
//
// The remainder p.high - q.high * head of a rounded quotient is a double, at most u |p|, and the first two
// subtractions give it exactly. Rounded are head * q.low (1), its difference to p.low (2), the sum (3) and
// the low part (3); dividing by q.high in place of q costs another 3. Off by at most 12 u^2 |p / q|.
inline SplitNumber longQuotient(const SplitNumber& p, const SplitNumber& q) {
    const double head = p.high / q.high;
    double product = 0, productError = 0;
    expansion::twoProduct(head, q.high, product, productError);
    const double remainder = ((p.high - product) - productError) + (p.low - head * q.low);
    return {head, remainder / q.high};
}

} // namespace doubleDouble
} // namespace TESK_KIVO2D
