#include "tests/oracle/exact.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>

namespace oracle {

namespace {

// Of the lowest bit that is set; a large number for 0.
int lowestExponent(double value) {
    if (value == 0) return INT_MAX;
    int exponent = 0;
    auto mantissa = static_cast<long long>(std::ldexp(std::frexp(value, &exponent), 53));
    exponent -= 53;
    for (; mantissa % 2 == 0; mantissa /= 2)
        ++exponent;
    return exponent;
}

// value / 2^unit, which must be an integer.
void setInUnits(mpz_class& result, double value, int unit) {
    int exponent = 0;
    result = std::ldexp(std::frexp(value, &exponent), 53);
    const int shift = exponent - 53 - unit;
    if (shift >= 0) {
        result <<= static_cast<unsigned>(shift);
    } else {
        result >>= static_cast<unsigned>(-shift);
    }
}

// The points times one common power of two that makes all of them integers. No sign below depends on it.
void setExact(const Point2* aPoints, std::size_t num, ExactPoint* aExact) {
    int unit = INT_MAX;
    for (std::size_t i = 0; i < num; ++i)
        unit = std::min({unit, lowestExponent(aPoints[i].x()), lowestExponent(aPoints[i].y())});
    if (unit == INT_MAX) unit = 0; // zeros only
    for (std::size_t i = 0; i < num; ++i) {
        setInUnits(aExact[i].x, aPoints[i].x(), unit);
        setInUnits(aExact[i].y, aPoints[i].y(), unit);
    }
}

// Numbers that keep their memory, one set a thread: large tests wait for little else.
struct Scratch {
    ExactPoint aExact[4], aFrom[3];
    mpz_class square, area, sum;
};
Scratch& scratch() {
    static thread_local Scratch itsScratch;
    return itsScratch;
}

void setDifference(ExactPoint& result, const ExactPoint& p, const ExactPoint& q) {
    result.x = p.x - q.x;
    result.y = p.y - q.y;
}

void setCross(mpz_class& result, const ExactPoint& p, const ExactPoint& q) {
    result = p.x * q.y;
    mpz_submul(result.get_mpz_t(), p.y.get_mpz_t(), q.x.get_mpz_t());
}

bool between(const ExactPoint& a, const ExactPoint& b, const ExactPoint& q) {
    return std::min(a, b) <= q && q <= std::max(a, b);
}

bool isOn(const ExactPoint& a, const ExactPoint& b, const ExactPoint& q) {
    return orientation(a, b, q) == 0 && between(a, b, q);
}

} // namespace

std::vector<ExactPoint> exactPoints(const std::vector<Point2>& vPoints) {
    std::vector<ExactPoint> vExact(vPoints.size());
    setExact(vPoints.data(), vPoints.size(), vExact.data());
    return vExact;
}

mpz_class twiceArea(const ExactPoint& a, const ExactPoint& b, const ExactPoint& c) {
    return a.x * (b.y - c.y) + b.x * (c.y - a.y) + c.x * (a.y - b.y);
}

int orientation(const ExactPoint& a, const ExactPoint& b, const ExactPoint& c) {
    Scratch& s = scratch();
    setDifference(s.aFrom[0], a, c);
    setDifference(s.aFrom[1], b, c);
    setCross(s.area, s.aFrom[0], s.aFrom[1]);
    return sgn(s.area);
}

int orientation(const Point2& a, const Point2& b, const Point2& c) {
    const Point2 aPoints[] = {a, b, c};
    ExactPoint* const p = scratch().aExact;
    setExact(aPoints, 3, p);
    return orientation(p[0], p[1], p[2]);
}

int inCircle(const ExactPoint& a, const ExactPoint& b, const ExactPoint& c, const ExactPoint& d) {
    // Seen from d: the 3 x 3 determinant with rows (x, y, x^2 + y^2), developed by its third column.
    Scratch& s = scratch();
    setDifference(s.aFrom[0], a, d);
    setDifference(s.aFrom[1], b, d);
    setDifference(s.aFrom[2], c, d);
    s.sum = 0;
    for (int i = 0; i < 3; ++i) {
        const ExactPoint& p = s.aFrom[i];
        s.square = p.x * p.x;
        mpz_addmul(s.square.get_mpz_t(), p.y.get_mpz_t(), p.y.get_mpz_t());
        setCross(s.area, s.aFrom[(i + 1) % 3], s.aFrom[(i + 2) % 3]);
        mpz_addmul(s.sum.get_mpz_t(), s.square.get_mpz_t(), s.area.get_mpz_t());
    }
    return sgn(s.sum);
}

int inCircle(const Point2& a, const Point2& b, const Point2& c, const Point2& d) {
    const Point2 aPoints[] = {a, b, c, d};
    ExactPoint* const p = scratch().aExact;
    setExact(aPoints, 4, p);
    return inCircle(p[0], p[1], p[2], p[3]);
}

int meeting(const Point2& p1, const Point2& p2, const Point2& p3, const Point2& p4) {
    const Point2 aPoints[] = {p1, p2, p3, p4};
    ExactPoint* const p = scratch().aExact;
    setExact(aPoints, 4, p);
    const int o3 = orientation(p[0], p[1], p[2]), o4 = orientation(p[0], p[1], p[3]);
    const int o1 = orientation(p[2], p[3], p[0]), o2 = orientation(p[2], p[3], p[1]);
    const bool bProper = o1 * o2 < 0 && o3 * o4 < 0;
    const bool bTouching =
        isOn(p[0], p[1], p[2]) || isOn(p[0], p[1], p[3]) || isOn(p[2], p[3], p[0]) || isOn(p[2], p[3], p[1]);
    if (!bProper && !bTouching) return 0;
    return o1 == 0 && o2 == 0 && o3 == 0 && o4 == 0 ? 1 : 2;
}

RationalPoint lineIntersection(const Point2& p1, const Point2& p2, const Point2& p3, const Point2& p4) {
    // p1 + t (p2 - p1), where t solves (p1 + t (p2 - p1) - p3) x (p4 - p3) = 0.
    const mpq_class ux = mpq_class(p2.x()) - p1.x(), uy = mpq_class(p2.y()) - p1.y();
    const mpq_class vx = mpq_class(p4.x()) - p3.x(), vy = mpq_class(p4.y()) - p3.y();
    const mpq_class wx = mpq_class(p3.x()) - p1.x(), wy = mpq_class(p3.y()) - p1.y();
    const mpq_class t = (wx * vy - wy * vx) / (ux * vy - uy * vx);
    return {p1.x() + t * ux, p1.y() + t * uy};
}

std::optional<RationalSegment> commonPoints(const Point2& p1, const Point2& p2, const Point2& p3,
                                            const Point2& p4) {
    // p1 + t (p2 - p1) with t from 0 to 1, clipped by the sides of the box of p3p4 and by both sides of its
    // line.
    const mpq_class x = p1.x(), y = p1.y(), ux = p2.x() - x, uy = p2.y() - y;
    const mpq_class vx = p4.x() - mpq_class(p3.x()), vy = p4.y() - mpq_class(p3.y());
    mpq_class first = 0, last = 1;
    bool bEmpty = false;
    const auto clip = [&](const mpq_class& atStart, const mpq_class& slope) { // to atStart + t slope >= 0
        if (slope == 0) {
            bEmpty = bEmpty || atStart < 0;
            return;
        }
        const mpq_class t = -atStart / slope;
        if (slope > 0) {
            first = std::max(first, t);
        } else {
            last = std::min(last, t);
        }
    };
    const mpq_class side = vx * (y - p3.y()) - vy * (x - p3.x()), turn = vx * uy - vy * ux;
    clip(side, turn);
    clip(-side, -turn);
    clip(x - std::min(p3.x(), p4.x()), ux);
    clip(std::max(p3.x(), p4.x()) - x, -ux);
    clip(y - std::min(p3.y(), p4.y()), uy);
    clip(std::max(p3.y(), p4.y()) - y, -uy);
    if (bEmpty || last < first) return {};
    return RationalSegment{{x + first * ux, y + first * uy}, {x + last * ux, y + last * uy}};
}

bool isTruncation(double value, const mpq_class& exact) {
    if (!std::isfinite(value)) return false;
    const mpq_class magnitude = abs(exact);
    const double next = std::nextafter(std::fabs(value), std::numeric_limits<double>::infinity());
    const bool bSameSide = value == 0 || (value < 0) == (sgn(exact) < 0);
    return bSameSide && abs(mpq_class(value)) <= magnitude &&
           (std::isinf(next) || magnitude < mpq_class(next));
}

std::vector<std::size_t> hull(const std::vector<ExactPoint>& vSorted, bool bAll) {
    std::vector<std::size_t> vHull;
    const auto addChain = [&](auto begin, auto end) {
        const std::size_t start = vHull.size();
        for (auto i = begin; i != end; ++i) {
            while (vHull.size() >= start + 2) {
                const int turn =
                    orientation(vSorted[vHull[vHull.size() - 2]], vSorted[vHull.back()], vSorted[*i]);
                if (turn > 0 || (turn == 0 && bAll)) break;
                vHull.pop_back();
            }
            vHull.push_back(*i);
        }
        vHull.pop_back(); // the other chain begins with it
    };
    std::vector<std::size_t> vOrder(vSorted.size());
    for (std::size_t i = 0; i < vOrder.size(); ++i)
        vOrder[i] = i;
    addChain(vOrder.begin(), vOrder.end());
    addChain(vOrder.rbegin(), vOrder.rend());
    return vHull;
}

} // namespace oracle
