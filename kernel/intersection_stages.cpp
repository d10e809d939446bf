#include "kernel/intersection_stages.h"

#include "kernel/TeskTest_stages.h"
#include "kernel/doubleDouble.h"

#include <bit>
#include <cstdint>

namespace TESK_KIVO2D::stages {
namespace {

using doubleDouble::SplitNumber;
using doubleDouble::SplitVector;

// The four points' coordinates along one axis.
struct Ends {
    double p1, p2, p3, p4;
};

// The lines meet at p1 + t (p2 - p1).
struct Parameter {
    SplitNumber t;
    double error; // at most this
};

// Coordinates between 2^-70 and 2^70, and 0, are multiples of 2^-122. Then the products and quotients below,
// and the errors of the products, are 0 or between 2^-949 and 2^530.
bool areModerate(const Ends& ends) {
    const auto isModerate = [](double v) {
        const double magnitude = std::fabs(v);
        return (v == 0) | ((magnitude >= 0x1p-70) & (magnitude <= 0x1p70));
    };
    return isModerate(ends.p1) & isModerate(ends.p2) & isModerate(ends.p3) & isModerate(ends.p4);
}

double nextTowardsZero(double v) { return std::bit_cast<double>(std::bit_cast<std::uint64_t>(v) - 1); }

// With D = (p2 - p1) x (p4 - p3) and N = (p3 - p1) x (p4 - p3) the parameter is N / D. Their minors are off
// by at most 15 u^2 |D|' and 15 u^2 |N|', where |D|' and |N|' sum up the magnitudes of the two products. That
// makes at most 15 u^2 (|N|' + |t| |D|') / |D| in the parameter, as long as D is far from 0.
std::optional<Parameter> parameter(const SplitVector& d, const SplitVector& e, const SplitVector& f) {
    const SplitNumber denom = doubleDouble::normalized(doubleDouble::longMinor(d, e));
    const SplitNumber num = doubleDouble::normalized(doubleDouble::longMinor(f, e));
    const double denomSize = doubleDouble::minorSize(d, e), numSize = doubleDouble::minorSize(f, e);
    if (!(denomSize * 0x1p-40 < std::fabs(denom.high))) return std::nullopt;
    const SplitNumber t = doubleDouble::longQuotient(num, denom);
    return Parameter{t, (numSize + std::fabs(t.high) * denomSize) / std::fabs(denom.high) * 0x1p-100};
}

// On which side of a coordinate the meeting point lies, exactly, by expansions: D times its distance is
// N (p2 - p1) - D (c - p1). Minors change their sign where the axes change places, N and D together.
[[gnu::noinline]] Decision compareExactly(double c, const Ends& along, const Ends& across) {
    using expansion::Difference;
    const Difference offset(c, along.p1), d(along.p2, along.p1), e(along.p4, along.p3);
    const Difference f(along.p3, along.p1);
    const Difference dAcross(across.p2, across.p1), eAcross(across.p4, across.p3);
    const Difference fAcross(across.p3, across.p1);
    if (offset.num == 0) return UNSURE; // the others are of moderate size
    double denom[16], num[16], reached[64], wanted[64], distance[128];
    const int denomLength = expansion::minorOf(d, eAcross, dAcross, e, denom);
    const int numLength = expansion::minorOf(f, eAcross, fAcross, e, num);
    const int reachedLength = expansion::times<16>(num, numLength, d, reached);
    const int wantedLength = expansion::times<16>(denom, denomLength, offset, wanted);
    for (int i = 0; i < wantedLength; ++i)
        wanted[i] = -wanted[i];
    const int length = expansion::sum(reached, reachedLength, wanted, wantedLength, distance);
    const double sign = distance[length - 1];
    return decisionOf(denom[denomLength - 1] > 0 ? sign : -sign);
}

// The error bound of p1 + t d, in the units of doubleDouble. The parameter is off by 15 (|N|' + |t| |D|') /
// |D| and the quotient by another 12 |t|, the product by 16 |d t|: its low part is at most 5u |d t|, with
// roundings of the cross products (3 + 1), their sum (4) and the low part (5) and the product of the low
// parts left out (3). The sum with p1 rounds its low part, at most u |sum| + 5u |d t|. As |D| is at most
// |D|', and the rest rounds little, this is below 48 |d| (|N|' + |t| |D|') / |D| + |sum|. Taken are 64 and 2.
//
// high + low is the rounded sum and what rounding lost, so that low is at most half the distance to the next
// double on its side. With an error of at most 2^-56 |high|, an eighth of a unit in the last place, the exact
// coordinate lies strictly between the neighbours of high, which serves for the nearest double. For the one
// towards zero it remains to see on which side of high. Where the error leaves that open, mostly since the
// coordinate is high, expansions tell.
std::optional<double> coordinate(const Ends& along, const Ends& across, const SplitNumber& d,
                                 const Parameter& at, Rounding rounding) {
    // On lines parallel to the other axis; a sum with 0 is never -0.
    if (along.p1 == along.p2) return along.p1 + 0.0;
    if (along.p3 == along.p4) return along.p3 + 0.0;
    const SplitNumber way = doubleDouble::longProduct(d, at.t);
    double head = 0, headError = 0, high = 0, low = 0;
    expansion::twoSum(along.p1, way.high, head, headError);
    expansion::twoSum(head, headError + way.low, high, low);
    const double error = std::fabs(d.high) * at.error + std::fabs(high) * 0x1p-105;
    if (std::fabs(high) <= error) {
        return compareExactly(0, along, across) == ZERO ? std::optional(0.0) : std::nullopt;
    }
    if (!(error <= 0x1p-56 * std::fabs(high))) return std::nullopt;
    if (rounding == TO_NEAREST) return high;
    const Decision side = low > error    ? POSITIVE
                          : low < -error ? NEGATIVE
                                         : compareExactly(high, along, across);
    if (side == UNSURE) return std::nullopt;
    return side == ZERO || (side == POSITIVE) == (high > 0) ? high : nextTowardsZero(high);
}

} // namespace

std::optional<Coordinates> intersectionDoubleDouble(const Point2& p1, const Point2& p2, const Point2& p3,
                                                    const Point2& p4, Rounding rounding) {
    const Ends x{p1.x(), p2.x(), p3.x(), p4.x()}, y{p1.y(), p2.y(), p3.y(), p4.y()};
    if (!areModerate(x) || !areModerate(y)) return std::nullopt;
    const SplitVector d = doubleDouble::difference(p2, p1);
    const std::optional<Parameter> at =
        parameter(d, doubleDouble::difference(p4, p3), doubleDouble::difference(p3, p1));
    if (!at) return std::nullopt;
    const std::optional<double> atX = coordinate(x, y, {d.high.x, d.low.x}, *at, rounding);
    if (!atX) return std::nullopt;
    const std::optional<double> atY = coordinate(y, x, {d.high.y, d.low.y}, *at, rounding);
    if (!atY) return std::nullopt;
    return Coordinates{*atX, *atY};
}

} // namespace TESK_KIVO2D::stages
