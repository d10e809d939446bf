#include "kernel/tools.h"

#include "KivoException.h"
#include "functions.h"
#include "kernel/assertion.h"
#include "kernel/intersection.h"
#include "kernel/messages.h"
#include "kernel/valueText.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <utility>

namespace TESK_KIVO2D {
namespace {

double cross(const Vector2& u, const Vector2& v) { return u.x() * v.y() - u.y() * v.x(); }

// A line as a base point and a direction whose larger component is between 1 and 2, so that neither squares
// nor products with it overflow. All points are scaled down where their differences would.
struct ScaledLine {
    Vector2 direction;
    Vector2 fromBase; // from the base point, the end nearer to p, to p
    Point2 base;
    double scale;

    ScaledLine(const Point2& p, const Point2& a, const Point2& b) {
        const double largest = std::max({p.getMaxAbs(), a.getMaxAbs(), b.getMaxAbs()});
        scale = largest > 0x1p1000 ? 0x1p-32 : 1.0;
        const Point2 sp = scaled(p), sa = scaled(a), sb = scaled(b);
        direction = sb - sa;
        const double size = std::max(std::fabs(direction.x()), std::fabs(direction.y()));
        if (size > 0) {
            const int exponent = std::ilogb(size);
            direction.set(std::scalbn(direction.x(), -exponent), std::scalbn(direction.y(), -exponent));
        }
        const bool bNearerToA = (sp - sa).length() <= (sp - sb).length();
        base = bNearerToA ? sa : sb;
        fromBase = sp - base;
    }
    Point2 scaled(const Point2& p) const { return Point2(p.x() * scale, p.y() * scale); }
    bool isPoint() const { return direction.x() == 0 && direction.y() == 0; }
};

double middle(double a, double b) {
    const double sum = a + b;
    return std::isfinite(sum) ? sum * 0.5 : a * 0.5 + b * 0.5;
}

// Exponent of the lowest bit that is set; larger than any such for zero.
int lowestBitExponent(double value) {
    if (value == 0) return std::numeric_limits<int>::max();
    int exponent;
    const auto mantissa =
        static_cast<std::uint64_t>(std::scalbn(std::frexp(std::fabs(value), &exponent), 53));
    return exponent - 53 + std::countr_zero(mantissa);
}

bool fitsDouble(std::int64_t value) { return static_cast<std::int64_t>(static_cast<double>(value)) == value; }

// A point with double coordinates exactly on the segment ab and in the middle quarter of its length. Written
// with the last bit as the unit, the segment runs from one pair of integers to another, and its integer
// points are g equal steps apart, g being the greatest common divisor of the differences. Not all of them fit
// the mantissa. Those at a round number of steps from one end are as good as that end, so a few near the
// middle are tried, seen from both.
std::optional<Point2> pointNearMiddle(const Point2& a, const Point2& b) {
    const int unit = std::min({lowestBitExponent(a.x()), lowestBitExponent(a.y()), lowestBitExponent(b.x()),
                               lowestBitExponent(b.y())});
    const int highest = std::ilogb(std::max(a.getMaxAbs(), b.getMaxAbs()));
    if (highest - unit > 60) return std::nullopt; // beyond 64 bits
    const auto integer = [unit](double value) {
        return static_cast<std::int64_t>(std::scalbn(value, -unit));
    };
    const std::int64_t ax = integer(a.x()), ay = integer(a.y());
    const std::int64_t dx = integer(b.x()) - ax, dy = integer(b.y()) - ay;
    const std::int64_t numSteps = std::gcd(dx, dy);
    for (std::int64_t grain = 1; grain <= numSteps / 4; grain *= 2) {
        const std::int64_t round = (numSteps / 2 + grain / 2) / grain * grain;
        for (const std::int64_t k : {round, numSteps - round}) {
            const std::int64_t x = ax + dx / numSteps * k, y = ay + dy / numSteps * k;
            if (fitsDouble(x) && fitsDouble(y))
                return Point2(std::scalbn(static_cast<double>(x), unit),
                              std::scalbn(static_cast<double>(y), unit));
        }
    }
    return std::nullopt;
}

} // namespace

double computeArea(double a, double b, double c) {
    const double s = (a + b + c) * 0.5;
    const double sqArea = (s - a) * s * (s - b) * (s - c);
    if (std::isnan(sqArea)) {
        reportWarning("Triangle2::computeArea()", "invalid value, no area for this triangle");
        throw KivoException();
    }
    if (sqArea > 0) return std::sqrt(sqArea);
    if (sqArea < -1)
        reportWarning("Triangle2::computeArea()",
                      "Numeric issue in Triangle::getArea(), sqArea=" + numberText(sqArea));
    return 0;
}

double getAngleDegree(const Vector2& u, const Vector2& v) {
    const double len0 = u.length();
    const double len1 = v.length();
    const bool bUnitVectors = std::fabs(1 - len0) <= 0.1 && std::fabs(1 - len1) <= 0.1;
    if (!bUnitVectors)
        printErrorText("getAngleDegree has been called for vectors with length!=1.0: len0=" +
                       numberText(len0) + ", len1=" + numberText(len1) + "\n");
    KIVO_ASSERT(bUnitVectors, "false");
    const double cosine = std::clamp(u * v, -1.0, 1.0);
    return std::acos(cosine) * 180.0 /
           3.14159; // Deliberate: five digits of pi, all angles of the library share it
}

std::optional<Point2> getIntersectionCoordsNoRounding(const Point2& p1, const Point2& p2, const Point2& p3,
                                                      const Point2& p4) {
    const Orientation2 side3 = getOrientation2(&p1, &p2, &p3), side4 = getOrientation2(&p1, &p2, &p4);
    const Orientation2 side1 = getOrientation2(&p3, &p4, &p1), side2 = getOrientation2(&p3, &p4, &p2);
    if (side3 == ORIENTATION2_COLLINEAR && side4 == ORIENTATION2_COLLINEAR) {
        const bool bPoint = p1 == p2 || p3 == p4;
        if (!bPoint)
            reportWarning("getIntersectionCoordsNoRounding()", "has been called for collinear segments");
        const bool bOneLine = side1 == ORIENTATION2_COLLINEAR && side2 == ORIENTATION2_COLLINEAR;
        const auto [first, last] = collinearPart(p1, p2, p3, p4);
        return bOneLine && first == last ? std::optional(Point2(first.x(), first.y())) : std::nullopt;
    }
    if (p3 == p4 || side3 == side4 || side1 == side2) return std::nullopt;
    // Different sides on both lines: the lines are not parallel and the segments meet.
    for (const auto& [side, pEnd] : {std::pair(side1, &p1), {side2, &p2}, {side3, &p3}, {side4, &p4}})
        if (side == ORIENTATION2_COLLINEAR) return Point2(pEnd->x(), pEnd->y());
    return getNearestIntersection(p1, p2, p3, p4);
}

Point2 getFootPoint(const Point2& p, const Point2& a, const Point2& b) {
    const ScaledLine line(p, a, b);
    if (line.isPoint()) return Point2(a.x(), a.y());
    const double t = (line.fromBase * line.direction) / (line.direction * line.direction);
    return Point2((line.base.x() + t * line.direction.x()) / line.scale,
                  (line.base.y() + t * line.direction.y()) / line.scale);
}

bool isBefore(const Point2& p, const Point2& q, const Point2& a, const Point2& b) {
    const auto compare = [](double from, double to, double first, double second) {
        return first == second || from == to ? 0 : (first < second) == (from < to) ? -1 : 1;
    };
    const int inX = compare(a.x(), b.x(), p.x(), q.x()), inY = compare(a.y(), b.y(), p.y(), q.y());
    // Halves, since differences may overflow.
    const bool bMainlyX = std::fabs(b.x() / 2 - a.x() / 2) >= std::fabs(b.y() / 2 - a.y() / 2);
    const int first = bMainlyX ? inX : inY, second = bMainlyX ? inY : inX;
    return first < 0 || (first == 0 && second < 0);
}

bool isInBox(const Point2& p, const Point2& a, const Point2& b) {
    return std::min(a.x(), b.x()) <= p.x() && p.x() <= std::max(a.x(), b.x()) &&
           std::min(a.y(), b.y()) <= p.y() && p.y() <= std::max(a.y(), b.y());
}

double getPointLineDistance(const Point2& p, const Point2& a, const Point2& b) {
    const ScaledLine line(p, a, b);
    if (line.isPoint()) return line.fromBase.length() / line.scale;
    // The difference of products does not always vanish on the line.
    if (getOrientation2_mt(&a, &b, &p) == ORIENTATION2_COLLINEAR) return 0;
    return std::fabs(cross(line.direction, line.fromBase)) / line.direction.length() / line.scale;
}

Point2 centerWithShift(const Point2& a, const Point2& b) {
    const Point2 center(middle(a.x(), b.x()), middle(a.y(), b.y()));
    if (getOrientation2_mt(&a, &b, &center) == ORIENTATION2_COLLINEAR) return center;
    return pointNearMiddle(a, b).value_or(center);
}

} // namespace TESK_KIVO2D
