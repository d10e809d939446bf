#pragma once

#include "Point2.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

// Coordinates for tests: full 53-bit mantissas, every finite bit pattern, and points that are almost, or
// exactly, on one line or one circle.
namespace doubles {

using TESK_KIVO2D::Point2;
using Rng = std::mt19937_64;
using Points = std::vector<Point2>;

// In [low, high), all 53 bits drawn.
inline double uniform(Rng& rng, double low = 0, double high = 1) {
    return low + (high - low) * static_cast<double>(rng() >> 11) * 0x1p-53;
}

// In [0, n).
inline int below(Rng& rng, int n) { return static_cast<int>(rng() % static_cast<unsigned>(n)); }

// Any finite double: subnormal ones, both zeros and the largest included.
inline double anyFinite(Rng& rng) {
    for (;;) {
        const double value = std::bit_cast<double>(static_cast<std::uint64_t>(rng()));
        if (std::isfinite(value)) return value;
    }
}

// +-m * 2^e with m in [1, 2) and e in [minExponent, maxExponent]; below 2^-1022 bits fall off.
inline double ofSize(Rng& rng, int minExponent, int maxExponent) {
    const int exponent = minExponent + below(rng, maxExponent - minExponent + 1);
    const double magnitude = std::ldexp(uniform(rng, 1, 2), exponent);
    return rng() % 2 == 0 ? magnitude : -magnitude;
}

// The double that many representable neighbours further; stops at the largest finite one.
inline double stepped(double value, int steps) {
    const double target = steps < 0 ? -DBL_MAX : DBL_MAX;
    for (int i = std::abs(steps); i > 0; --i)
        value = std::nextafter(value, target);
    return value;
}

inline Point2 jittered(Rng& rng, const Point2& p, int maxSteps) {
    const int dx = below(rng, 2 * maxSteps + 1) - maxSteps;
    const int dy = below(rng, 2 * maxSteps + 1) - maxSteps;
    return {stepped(p.x(), dx), stepped(p.y(), dy)};
}

inline Points scaled(Points vPoints, int exponent) {
    for (Point2& p : vPoints)
        p = Point2(std::ldexp(p.x(), exponent), std::ldexp(p.y(), exponent));
    return vPoints;
}

// Three points, the last within a few neighbouring doubles of the line through the others.
inline Points nearCollinear(Rng& rng, double offset = 0) {
    const Point2 a(uniform(rng, -1, 1) + offset, uniform(rng, -1, 1) + offset);
    const Point2 b(uniform(rng, -1, 1) + offset, uniform(rng, -1, 1) + offset);
    const double t = uniform(rng, -2, 3);
    const Point2 onLine(a.x() + t * (b.x() - a.x()), a.y() + t * (b.y() - a.y()));
    return {a, b, jittered(rng, onLine, 2)};
}

// Points within a few neighbouring doubles of one circle, in random order round it.
inline Points nearCocircular(Rng& rng, std::size_t num, double offset = 0, int maxSteps = 2) {
    const Point2 center(uniform(rng, -1, 1) + offset, uniform(rng, -1, 1) + offset);
    const double radius = uniform(rng, 0.5, 2);
    Points vPoints;
    while (vPoints.size() < num) {
        const double angle = uniform(rng, 0, 6.283185307179586);
        const Point2 onCircle(center.x() + radius * std::cos(angle), center.y() + radius * std::sin(angle));
        vPoints.push_back(jittered(rng, onCircle, maxSteps));
    }
    return vPoints;
}

// Integer points exactly on the circle x^2 + y^2 = 1105 about (dx, dy); 32 of them are different.
inline Points cocircular(Rng& rng, std::size_t num, double dx = 0, double dy = 0) {
    static constexpr double aRepresentations[4][2] = {{33, 4}, {32, 9}, {31, 12}, {24, 23}};
    Points vPoints;
    while (vPoints.size() < num) {
        const auto& xy = aRepresentations[rng() % 4];
        const auto bits = rng();
        const double x = (bits & 1) != 0 ? xy[0] : -xy[0];
        const double y = (bits & 2) != 0 ? xy[1] : -xy[1];
        vPoints.emplace_back(((bits & 4) != 0 ? x : y) + dx, ((bits & 4) != 0 ? y : x) + dy);
    }
    return vPoints;
}

// Each coordinate is one of the bit patterns.
inline Points anyPoints(Rng& rng, std::size_t num) {
    Points vPoints;
    while (vPoints.size() < num) {
        const double x = anyFinite(rng);
        vPoints.emplace_back(x, anyFinite(rng));
    }
    return vPoints;
}

// Every bit, and ready to paste into a test.
inline std::string hex(const Points& vPoints) {
    std::string text = "{";
    for (const Point2& p : vPoints) {
        char buffer[80];
        std::snprintf(buffer, sizeof buffer, "%s{%a, %a}", text.size() > 1 ? ", " : "", p.x(), p.y());
        text += buffer;
    }
    return text + "}";
}

} // namespace doubles
