#include "kernel/intersection.h"

#include "kernel/assertion.h"
#include "kernel/doubleDouble.h"
#include "kernel/intersection_stages.h"
#include "kernel/messages.h"

#include <algorithm>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <gmp.h>
#include <mutex>

namespace TESK_KIVO2D {
namespace {

// Coordinates are multiplied by one power of two that makes integers of them all: that leaves quotients of
// integers, whose common factors need not be looked for.
struct IntersectionIntegers {
    std::mutex mutex;
    mpz_t coords[8];      // x and y of p1 to p4
    mpz_t differences[6]; // x and y of p2 - p1, p4 - p3, p3 - p1
    mpz_t minors[2];      // (p2 - p1) x (p4 - p3), (p3 - p1) x (p4 - p3)
    mpq_t result;

    IntersectionIntegers() {
        for (mpz_t& z : coords)
            mpz_init(z);
        for (mpz_t& z : differences)
            mpz_init(z);
        for (mpz_t& z : minors)
            mpz_init(z);
        mpq_init(result);
    }
};

// Created on first use and never cleared, so that it serves to the very end of the process.
IntersectionIntegers& integers() {
    static IntersectionIntegers* pIntegers = new IntersectionIntegers;
    return *pIntegers;
}

// Sets the coordinates divided by the power of two whose exponent is returned.
int setCoords(mpz_t (&coords)[8], const double (&values)[8]) {
    int exponents[8], lowest = INT_MAX;
    double mantissas[8];
    for (int i = 0; i < 8; ++i) {
        mantissas[i] = std::ldexp(std::frexp(values[i], &exponents[i]), DBL_MANT_DIG);
        if (values[i] != 0) lowest = std::min(lowest, exponents[i]);
    }
    for (int i = 0; i < 8; ++i) {
        mpz_set_d(coords[i], mantissas[i]);
        if (values[i] != 0)
            mpz_mul_2exp(coords[i], coords[i], static_cast<mp_bitcnt_t>(exponents[i] - lowest));
    }
    return lowest == INT_MAX ? 0 : lowest - DBL_MANT_DIG;
}

void setMinor(mpz_t& minor, const mpz_t* p, const mpz_t* q) {
    mpz_mul(minor, p[0], q[1]);
    mpz_submul(minor, p[1], q[0]);
}

int compareMagnitudes(mpq_t& p, mpq_t& q) {
    mpq_abs(p, p);
    mpq_abs(q, q);
    return mpq_cmp(p, q);
}

// Of the double towards zero from the quotient and the next one the nearer.
double nearestOf(mpq_t& quotient, double truncated) {
    const double away = mpq_sgn(quotient) < 0 ? -HUGE_VAL : HUGE_VAL, next = std::nextafter(truncated, away);
    if (std::isinf(next)) return truncated;
    mpq_t middle, other;
    mpq_init(middle);
    mpq_init(other);
    mpq_set_d(middle, truncated);
    mpq_set_d(other, next);
    mpq_add(middle, middle, other);
    mpq_div_2exp(middle, middle, 1);
    mpq_canonicalize(quotient);
    const int order = compareMagnitudes(quotient, middle);
    mpq_clear(middle);
    mpq_clear(other);
    return order > 0 ? next : truncated;
}

// p1 + N (p2 - p1) / D along an axis. The quotient is divided once and its bits cut off, which does not need
// lowest terms.
double coordinate(IntersectionIntegers& n, int axis, int exponent, stages::Rounding rounding) {
    mpz_ptr num = mpq_numref(n.result), denom = mpq_denref(n.result);
    mpz_mul(num, n.coords[axis], n.minors[0]);
    mpz_addmul(num, n.differences[axis], n.minors[1]);
    if (mpz_sgn(n.minors[0]) < 0) mpz_neg(num, num);
    mpz_abs(denom, n.minors[0]);
    mpz_ptr scaled = exponent < 0 ? denom : num;
    mpz_mul_2exp(scaled, scaled, static_cast<mp_bitcnt_t>(std::abs(exponent)));
    const double truncated = mpq_get_d(n.result);
    return rounding == stages::TO_NEAREST ? nearestOf(n.result, truncated) : truncated;
}

stages::Coordinates intersectionExact(const double (&coords)[8], stages::Rounding rounding) {
    IntersectionIntegers& n = integers();
    const std::lock_guard<std::mutex> lock(n.mutex);
    const int exponent = setCoords(n.coords, coords);
    constexpr int ends[3][2] = {{2, 0}, {6, 4}, {4, 0}};
    for (int i = 0; i < 6; ++i) {
        const auto& [to, from] = ends[i / 2];
        mpz_sub(n.differences[i], n.coords[to + i % 2], n.coords[from + i % 2]);
    }
    setMinor(n.minors[0], n.differences, n.differences + 2);
    setMinor(n.minors[1], n.differences + 4, n.differences + 2);
    if (mpz_sgn(n.minors[0]) == 0) {
        reportError("TeskTest::getIntersectionCoords()", "denom=0 -> parallel segments");
        KIVO_ASSERT(false, "false");
    }
    return {coordinate(n, 0, exponent, rounding), coordinate(n, 1, exponent, rounding)};
}

stages::Coordinates intersection(const Point2& p1, const Point2& p2, const Point2& p3, const Point2& p4,
                                 stages::Rounding rounding) {
    if (const auto certain = stages::intersectionDoubleDouble(p1, p2, p3, p4, rounding)) return *certain;
    return intersectionExact({p1.x(), p1.y(), p2.x(), p2.y(), p3.x(), p3.y(), p4.x(), p4.y()}, rounding);
}

double extent(const Point2& a, const Point2& b) {
    return std::max(std::fabs(a.x() - b.x()), std::fabs(a.y() - b.y()));
}

double unitOf(const Point2& p) { return std::nextafter(p.getMaxAbs(), HUGE_VAL) - p.getMaxAbs(); }

// For coordinates whose products neither overflow nor vanish. The size is the larger extent of ab.
bool isNearLine(const Point2& p, const Point2& a, const Point2& b, double size, double unit) {
    const double minor =
        doubleDouble::longMinor(doubleDouble::difference(b, a), doubleDouble::difference(p, a)).high;
    return std::fabs(minor) <= unit * size; // the length is no smaller
}

} // namespace

void getIntersectionCoords(const Point2& p1, const Point2& p2, const Point2& p3, const Point2& p4, double& x,
                           double& y) {
    const stages::Coordinates at = intersection(p1, p2, p3, p4, stages::TOWARDS_ZERO);
    x = at.x;
    y = at.y;
}

Point2 getNearestIntersection(const Point2& p1, const Point2& p2, const Point2& p3, const Point2& p4) {
    const stages::Coordinates at = intersection(p1, p2, p3, p4, stages::TO_NEAREST);
    return Point2(at.x, at.y);
}

bool isWithinUnitOfLine(const Point2& p, const Point2& a, const Point2& b) {
    const double size = extent(a, b);
    const double largest = std::max({p.getMaxAbs(), a.getMaxAbs(), b.getMaxAbs()});
    if (size > 0x1p-500 && largest < 0x1p500) return isNearLine(p, a, b, size, unitOf(p));
    if (largest == 0) return false;
    // As if the largest coordinate were about 1. A unit of the smallest doubles is what it is.
    const int exponent = -std::ilogb(largest);
    const auto scaled = [=](const Point2& v) {
        return Point2(std::ldexp(v.x(), exponent), std::ldexp(v.y(), exponent));
    };
    const Point2 scaledP = scaled(p), scaledA = scaled(a), scaledB = scaled(b);
    const double scaledSize = extent(scaledA, scaledB);
    const double unit = std::max(unitOf(scaledP), std::ldexp(DBL_TRUE_MIN, exponent));
    return scaledSize > 0x1p-500 && isNearLine(scaledP, scaledA, scaledB, scaledSize, unit);
}

} // namespace TESK_KIVO2D
