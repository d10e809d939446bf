#pragma once

#include "tests/support/doubles.h"

#include <functional>

// Two segments as their four ends: crossing, touching, overlapping, and all that by a hair or not.
namespace segmentPairs {

using doubles::below;
using doubles::Points;
using doubles::Rng;
using TESK_KIVO2D::Point2;

inline Points drawn(const std::function<double()>& draw) {
    Points p;
    while (p.size() < 4) {
        const double x = draw();
        p.emplace_back(x, draw());
    }
    return p;
}

inline Points uniform(Rng& rng, double low, double high) {
    return drawn([&] { return doubles::uniform(rng, low, high); });
}

inline Points integers(Rng& rng, int size) {
    return drawn([&] { return below(rng, size) - size / 2; });
}

// Metres, with all their decimals or in this unit.
inline Points utm(Rng& rng, double unit = 0) {
    Points p = uniform(rng, 0, 1000);
    const auto rounded = [=](double v) { return unit > 0 ? std::round(v / unit) * unit : v; };
    for (Point2& q : p)
        q = Point2(rounded(5e5 + q.x()), rounded(4e6 + q.y()));
    return p;
}

// An end of the second at a quarter of the first, or beside it; exactly there in half of the cases.
inline Points touching(Rng& rng, int maxSteps) {
    Points p = rng() % 2 == 0 ? uniform(rng, -1, 1) : doubles::scaled(integers(rng, 500), 2);
    const double t = (below(rng, 7) - 1) / 4.0;
    const Point2 onLine(p[0].x() + t * (p[1].x() - p[0].x()), p[0].y() + t * (p[1].y() - p[0].y()));
    p[2] = doubles::jittered(rng, t == 0 ? p[0] : t == 1 ? p[1] : onLine, maxSteps);
    if (rng() % 4 == 0) p[3] = p[2];
    return p;
}

// On one line, as a rule; its direction has small numbers.
inline Points collinear(Rng& rng) {
    const Point2 base = integers(rng, 1 << 30)[0], step = integers(rng, 9)[0];
    Points p;
    while (p.size() < 4) {
        const int k = below(rng, 6);
        p.emplace_back(base.x() + k * step.x(), base.y() + k * step.y());
    }
    if (rng() % 8 == 0) p[3] = doubles::jittered(rng, p[3], 1);
    return p;
}

// The second turned against the first by the angle, about a point of the first or, far from crossing, of its
// own.
inline Points nearParallel(Rng& rng, double angle) {
    Points p = uniform(rng, 0, 1);
    const double dx = p[1].x() - p[0].x(), dy = p[1].y() - p[0].y();
    const Point2 pivot = rng() % 2 == 0 ? p[2] : Point2(p[0].x() + dx / 3, p[0].y() + dy / 3);
    p[2] = Point2(pivot.x() - dx + angle * dy, pivot.y() - dy - angle * dx);
    p[3] = Point2(pivot.x() + dx / 2 - angle * dy / 2, pivot.y() + dy / 2 + angle * dx / 2);
    return p;
}

// Along an axis or nearly, on both sides of it.
inline Points axisParallel(Rng& rng) {
    Points p = uniform(rng, -1, 1);
    const double x = rng() % 2 == 0 ? -0.0 : p[0].x();
    p[0] = Point2(x, p[0].y());
    p[1] = Point2(rng() % 4 != 0 ? x : x + 1e-9, p[1].y());
    if (rng() % 2 == 0) p[3] = Point2(p[3].x(), p[2].y());
    if (rng() % 4 == 0) p[2] = Point2(0.0, p[2].y());
    if (rng() % 2 == 0) {
        for (Point2& q : p)
            q = Point2(q.y(), q.x());
    }
    return p;
}

// Every coordinate a corner of the range of doubles, or next to it.
inline Points extremes(Rng& rng) {
    static constexpr double aValues[] = {DBL_MAX, -DBL_MAX, 0x1p1023, 0.0, -0.0, 0x1p-1074, 0x1p-1022, 1};
    return drawn([&] {
        const double value = aValues[below(rng, 8)];
        return doubles::stepped(value, below(rng, 3) - 1);
    });
}

inline Points anyBits(Rng& rng) {
    Points p = doubles::anyPoints(rng, 4);
    if (rng() % 4 == 0) p[2] = p[0];
    return p;
}

} // namespace segmentPairs
