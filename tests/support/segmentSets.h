#pragma once

#include "Segment2.h"
#include "tests/support/segmentPairs.h"

// Sets of some number of segments that are hard on a spatial index: boxes that tell nothing, many that are
// equal, touches by a hair.
namespace segmentSets {

using namespace segmentPairs;
using TESK_KIVO2D::Segment2;
using Segments = std::vector<Segment2>;

inline Point2 between(const Segment2& s, double t) {
    const Point2 a = s.getSrc(), b = s.getTrg();
    return {a.x() + t * (b.x() - a.x()), a.y() + t * (b.y() - a.y())};
}

inline Segments many(int num, const std::function<Segment2(int)>& make) {
    Segments v;
    for (int i = 0; i < num; ++i)
        v.push_back(make(i));
    return v;
}
inline std::vector<Segment2*> pointersTo(Segments& vSegments) {
    std::vector<Segment2*> v;
    for (Segment2& s : vSegments)
        v.push_back(&s);
    return v;
}

// Of any length, along an axis, or of few steps.
inline Segments lattice(Rng& rng, int num) {
    const int size = 1 + below(rng, 4 + static_cast<int>(2 * std::sqrt(num))), mode = below(rng, 3);
    return many(num, [=, &rng](int i) {
        const Points p = integers(rng, size), d = integers(rng, 5);
        if (mode == 0) return Segment2(p[0], p[1]);
        if (mode == 1)
            return Segment2(p[0], i % 2 == 0 ? Point2(p[1].x(), p[0].y()) : Point2(p[0].x(), p[1].y()));
        return Segment2(p[0], {p[0].x() + d[0].x(), p[0].y() + d[0].y()});
    });
}

// Up to this length, but for a few from side to side.
inline Segments longAndShort(Rng& rng, int num, double length) {
    return many(num, [=, &rng](int i) {
        const Points p = uniform(rng, 0, 1);
        return Segment2(p[0], i % 50 == 3 ? p[1] : between({p[0], p[1]}, length));
    });
}

// Spokes with a hub that is one point or some units in the last place wide; a few may run through it.
inline Segments star(Rng& rng, int num) {
    const int steps = below(rng, 3) * below(rng, 2), numThrough = below(rng, 4) * below(rng, 2);
    return many(num, [=, &rng](int i) {
        const Point2 hub(7, 3), p = integers(rng, 2001)[0];
        if (i < numThrough) return Segment2({14 - p.x(), 6 - p.y()}, p);
        return Segment2(doubles::jittered(rng, hub, steps), i % 4 == 0 ? between({hub, p}, 1e-3) : p);
    });
}

// Pieces of one line and, on one side of it, fans with their hubs on it: it meets their boxes in one corner.
inline Segments fansOnALine(Rng& rng, int num) {
    const Points p = uniform(rng, 0, 50);
    const double dx = 1 + std::floor(p[0].x()), dy = 1 + std::floor(p[0].y());
    return many(num, [=, &rng](int i) {
        if (i % 150 == 0) return Segment2({-dx, -dy}, {(i + 1) * dx, (i + 1) * dy});
        if (i == 1) return Segment2({-2 * p[1].x(), 0}, {0, -2 * p[1].y()});
        const double k = i / 40, size = doubles::uniform(rng);
        return Segment2({k * dx, k * dy}, {k * dx + size, k * dy - 0.1 * size * size});
    });
}

// Parallel, and each in its place; now and then a short one that may touch or cross one of them.
inline Segments diagonals(Rng& rng, int num) {
    const int rareness = 1 + below(rng, 100), length = num + below(rng, 5 * num + 1);
    return many(num, [=, &rng](int i) {
        const Point2 p(2 * i + length, 2 * i - 3 * length), d = integers(rng, 5)[0];
        const Segment2 diagonal({-p.y(), p.x()}, p);
        if (i % rareness != rareness - 1) return diagonal;
        const Point2 q = between(diagonal, below(rng, 5) / 4.0);
        return Segment2(q, {q.x() + d.x(), q.y() + d.y()});
    });
}

// Pieces of a line: apart, touching or overlapping.
inline Segments dashes(Rng& rng, int num) {
    const Point2 step = integers(rng, 7)[0];
    const int range = 1 + below(rng, 4 * num + 1), length = below(rng, 4);
    return many(num, [=, &rng](int) {
        const double k = below(rng, range), end = k + below(rng, length + 1);
        return Segment2({k * step.x(), k * step.y()}, {end * step.x(), end * step.y()});
    });
}

// Either segment of pairs.
inline Segments paired(Rng& rng, int num, const std::function<Points(Rng&)>& makePair) {
    Points p;
    return many(num, [&](int i) {
        if (i % 2 == 0) p = makePair(rng);
        return i % 2 == 0 ? Segment2(p[0], p[1]) : Segment2(p[2], p[3]);
    });
}

// Sheared, so that all boxes overlap, turned, moved, scaled, with points in it and outliers: each now and
// then.
inline Segments varied(Rng& rng, Segments v) {
    const double shear = std::ldexp(below(rng, 2), below(rng, 20)), dy = rng() % 4 == 0 ? 4e6 : 0;
    const bool bTurned = rng() % 2 == 0;
    const int aExponents[] = {0, 0, 0, 0, -500, 500, 960, -1060}, exponent = aExponents[rng() % 8];
    for (Segment2& s : v) {
        Points p = {s.getSrc(), s.getTrg()};
        for (Point2& q : p)
            q = bTurned ? Point2(-q.y() - dy, q.x() + shear * q.y())
                        : Point2(q.x() + shear * q.y(), q.y() + dy);
        p = doubles::scaled(p, exponent);
        s = Segment2(p[0], p[1]);
    }
    const Point2 far(1e300, -1e-300);
    for (int i = v.empty() ? 0 : below(rng, 5) * below(rng, 2); i > 0; --i) {
        const Segment2 some = v[rng() % v.size()];
        const Point2 p = between(some, below(rng, 3) / 2.0);
        const Segment2 aInstead[] = {{p, p}, {p, p}, {p, far}, {far, far}};
        v[rng() % v.size()] = aInstead[rng() % 4];
    }
    return v;
}

struct Kind {
    const char* name;
    std::function<Segments(Rng&, int)> make;
    int maxNum = 600; // of more, looking at each pair takes long
};
inline const std::vector<Kind>& all() {
    static const std::vector<Kind> vKinds = {
        {"lattice", lattice},
        {"uniform", [](Rng& r, int num) { return longAndShort(r, num, std::ldexp(1, -below(r, 9))); }},
        {"star", star},
        {"fansOnALine", fansOnALine},
        {"diagonals", diagonals},
        {"dashes", dashes},
        {"touching", [](Rng& r, int num) { return paired(r, num, [](Rng& s) { return touching(s, 1); }); }},
        {"anyBits", [](Rng& r, int num) { return paired(r, num, anyBits); }, 100},
        {"extremes", [](Rng& r, int num) { return paired(r, num, extremes); }, 200},
    };
    return vKinds;
}

} // namespace segmentSets
