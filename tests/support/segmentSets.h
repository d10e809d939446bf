#pragma once

#include "Segment2.h"
#include "tests/support/doubles.h"

#include <functional>
#include <ostream>

// Sets of some number of segments that are hard on a spatial index: boxes that tell nothing, many that are
// equal, touches by a hair.
namespace segmentSets {

using doubles::below;
using doubles::Rng;
using TESK_KIVO2D::Point2;
using TESK_KIVO2D::Segment2;
using Segments = std::vector<Segment2>;

struct Kind {
    const char* name;
    std::function<Segments(Rng&, int)> make;
    int maxNum = 4500; // of more, looking at each pair takes long
};
inline void PrintTo(const Kind& kind, std::ostream* pStream) { *pStream << kind.name; }

inline Point2 uniformPoint(Rng& rng, double size = 1) {
    const double x = doubles::uniform(rng, 0, size);
    return {x, doubles::uniform(rng, 0, size)};
}
inline Point2 latticePoint(Rng& rng, int size) {
    const double x = below(rng, size);
    return {x, static_cast<double>(below(rng, size))};
}
inline Point2 moved(const Point2& p, double dx, double dy) { return {p.x() + dx, p.y() + dy}; }
inline Point2 onCircle(Rng& rng, const Point2& center, double radius) {
    const double angle = doubles::uniform(rng, 0, 6.283185307179586);
    return moved(center, radius * std::cos(angle), radius * std::sin(angle));
}
inline Point2 between(const Segment2& s, double t) {
    const Point2 a = s.getSrc(), b = s.getTrg();
    return {a.x() + t * (b.x() - a.x()), a.y() + t * (b.y() - a.y())};
}
inline int root(int num) { return 2 + static_cast<int>(std::sqrt(num)); }

inline Segments many(int num, const std::function<Segment2(int)>& make) {
    Segments v;
    for (int i = 0; i < num; ++i)
        v.push_back(make(i));
    return v;
}

inline Segments lattice(Rng& rng, int num) {
    const int size = 2 + below(rng, root(num));
    return many(num, [&](int) { return Segment2(latticePoint(rng, size), latticePoint(rng, size)); });
}

inline Segments shortOnLattice(Rng& rng, int num) {
    const int size = root(num) + below(rng, root(num)), step = 1 + below(rng, 3);
    return many(num, [&](int) {
        const Point2 p = latticePoint(rng, size), d = latticePoint(rng, 2 * step + 1);
        return Segment2(p, moved(p, d.x() - step, d.y() - step));
    });
}

inline Segments uniform(Rng& rng, int num) {
    const double length = std::pow(10, -doubles::uniform(rng, 0, 3));
    return many(num, [&](int) {
        const Point2 p = uniformPoint(rng);
        return Segment2(p, onCircle(rng, p, length));
    });
}

// Mostly short ones, a few from side to side.
inline Segments longAndShort(Rng& rng, int num) {
    return many(num, [&](int i) {
        const Point2 p = uniformPoint(rng);
        return i % 50 == 3 ? Segment2(p, uniformPoint(rng)) : Segment2(p, onCircle(rng, p, 0.5 / root(num)));
    });
}

// Open, or closed to a ring; on a lattice they meet themselves.
inline Segments chain(Rng& rng, int num) {
    const int kind = below(rng, 3);
    std::vector<Point2> v = {{0, 0}};
    for (int i = 1; i < num; ++i) {
        const double angle = 6.283185307179586 * i / num;
        const Point2 step = latticePoint(rng, 3);
        v.push_back(kind == 0   ? Point2(std::cos(angle) - 1, std::sin(angle))
                    : kind == 1 ? onCircle(rng, v.back(), 0.1)
                                : moved(v.back(), step.x() - 1, step.y() - 1));
    }
    if (rng() % 2 == 0) v.push_back(v.front());
    Segments vSegments;
    for (std::size_t i = 1; i < v.size(); ++i)
        vSegments.emplace_back(v[i - 1], v[i]);
    return vSegments;
}

// Spokes with a common end; in some, one to three of them run through the hub.
inline Segments star(Rng& rng, int num) {
    const int numThrough = below(rng, 4) * below(rng, 2);
    return many(num, [&](int i) {
        const Point2 p = moved(latticePoint(rng, 2001), -1000, -1000);
        return Segment2(i < numThrough ? Point2(-p.x(), -p.y()) : Point2(0, 0), p);
    });
}

// Hubs that differ by some units in the last place.
inline Segments fan(Rng& rng, int num) {
    const Point2 hub = uniformPoint(rng);
    const int steps = below(rng, 4);
    return many(num, [&](int) {
        return Segment2(doubles::jittered(rng, hub, steps), onCircle(rng, hub, rng() % 2 == 0 ? 1 : 1e-3));
    });
}

// Pieces of one line and, on one side of it, fans with their hubs on it: it meets their boxes in one corner.
inline Segments fansOnALine(Rng& rng, int num) {
    const Point2 step = moved(latticePoint(rng, 50), 1, 1);
    return many(num, [&](int i) {
        if (i % 150 == 0) return Segment2({-step.x(), -step.y()}, {(i + 1) * step.x(), (i + 1) * step.y()});
        if (i == 1) return Segment2({-uniformPoint(rng, 100).x(), 0}, {0, -uniformPoint(rng, 100).y()});
        const double k = i / 40, size = doubles::uniform(rng);
        return Segment2({k * step.x(), k * step.y()},
                        {k * step.x() + size, k * step.y() - 0.1 * size * size});
    });
}

// Parallel, and each in its place; now and then a short one that may touch or cross one of them.
inline Segments diagonals(Rng& rng, int num) {
    const int rareness = 1 + below(rng, 100), length = num + below(rng, 5 * num + 1);
    return many(num, [&](int i) {
        const Point2 p(2 * i + length, 2 * i - 3 * length);
        if (i % rareness != rareness - 1) return Segment2({-p.y(), p.x()}, p);
        const Point2 q = between(Segment2({-p.y(), p.x()}, p), below(rng, 5) / 4.0);
        return Segment2(q, moved(q, below(rng, 3), below(rng, 3)));
    });
}

// Pieces of a few lines of one slope: apart, touching or overlapping.
inline Segments dashes(Rng& rng, int num) {
    const Point2 step = moved(latticePoint(rng, 7), 1, -3);
    const int numLines = 1 + below(rng, 3), range = 1 + below(rng, 4 * num + 1), length = below(rng, 4);
    return many(num, [&](int i) {
        const Point2 line(0, 7 * below(rng, numLines));
        const double k = below(rng, 2) == 0 ? 3.0 * i : below(rng, range), end = k + below(rng, length + 1);
        return Segment2(moved(line, k * step.x(), k * step.y()), moved(line, end * step.x(), end * step.y()));
    });
}

inline Segments nested(Rng& rng, int num) {
    const bool bOneLine = rng() % 2 == 0; // else chevrons inside one another
    return many(num, [&](int i) {
        if (bOneLine) return Segment2({1.0 * i, 3.0 * i}, {2.0 * num - i, 6.0 * num - 3 * i});
        return i % 2 == 0 ? Segment2({0, 1.0 * i}, {1.0 * num, 1.0 * i - num})
                          : Segment2({0, i - 1.0}, {-1.0 * num, i - 1.0 - num});
    });
}

inline Segments allTheSame(Rng& rng, int num) {
    const Segment2 s(latticePoint(rng, 3), latticePoint(rng, 3));
    return many(num, [&](int i) { return i % 2 == 0 ? s : Segment2(s.getTrg(), s.getSrc()); });
}

inline Segments axisParallel(Rng& rng, int num) {
    const int size = 2 * root(num), length = 1 + below(rng, 2 * size);
    return many(num, [&](int) {
        const Point2 p = latticePoint(rng, size);
        const double d = below(rng, length + 1);
        return rng() % 2 == 0 ? Segment2(p, moved(p, d, 0)) : Segment2(p, moved(p, 0, d));
    });
}

// Each starts on an earlier one, as far as doubles can say.
inline Segments roundedTouches(Rng& rng, int num) {
    Segments v = {Segment2(uniformPoint(rng), uniformPoint(rng))};
    while (static_cast<int>(v.size()) < num) {
        const Segment2& s = v[rng() % v.size()];
        const Point2 p = between(s, below(rng, 9) / 8.0);
        v.emplace_back(p, rng() % 4 == 0 ? between(s, doubles::uniform(rng)) : onCircle(rng, p, 0.2));
    }
    return v;
}

// A few units in the last place wide, far from the origin.
inline Segments clusters(Rng& rng, int num) {
    const std::vector<Point2> vCenters = {uniformPoint(rng, 1e6), uniformPoint(rng, 1e6),
                                          uniformPoint(rng, 1)};
    return many(num, [&](int) {
        const Point2& p = vCenters[rng() % 3];
        return Segment2(doubles::jittered(rng, p, 6), doubles::jittered(rng, p, 6));
    });
}

inline Segments anyBits(Rng& rng, int num) {
    return many(num, [&](int) {
        const auto p = doubles::anyPoints(rng, 2);
        return Segment2(p[0], p[1]);
    });
}

inline Segments extremes(Rng& rng, int num) {
    const auto any = [&] {
        static constexpr double aValues[] = {DBL_MAX, -DBL_MAX,  0x1p1023,   0.0,
                                             -0.0,    0x1p-1074, -0x1p-1022, 1};
        return doubles::stepped(aValues[rng() % 8], below(rng, 3) - 1);
    };
    return many(num, [&](int) {
        const double x = any(), y = any();
        return Segment2({x, any()}, {any(), y});
    });
}

inline Segments mapped(Segments v, const std::function<Point2(const Point2&)>& map) {
    for (Segment2& s : v)
        s = Segment2(map(s.getSrc()), map(s.getTrg()));
    return v;
}

// Sheared, so that all boxes overlap, turned, moved, scaled, with points in it and outliers: each now and
// then.
inline Segments varied(Rng& rng, Segments v) {
    const double shear = std::ldexp(1, below(rng, 20)) * below(rng, 2) * below(rng, 2);
    const bool bTurned = rng() % 2 == 0, bMoved = rng() % 4 == 0;
    const int aExponents[] = {0, 0, 0, 0, -500, 500, 960, -1060}, exponent = aExponents[rng() % 8];
    v = mapped(std::move(v), [&](const Point2& p) {
        const Point2 q(p.x() + shear * p.y() + (bMoved ? 5e5 : 0), p.y() + (bMoved ? 4e6 : 0));
        return Point2(std::ldexp(bTurned ? -q.y() : q.x(), exponent),
                      std::ldexp(bTurned ? q.x() : q.y(), exponent));
    });
    if (v.empty()) return v;
    const auto some = [&]() -> Segment2& { return v[rng() % v.size()]; };
    for (int i = below(rng, 5) * below(rng, 2); i > 0; --i) {
        const Point2 p = between(some(), below(rng, 3) / 2.0);
        some() = Segment2(p, p);
    }
    const Point2 far(1e300, -1e-300);
    if (rng() % 4 == 0) some() = Segment2(some().getSrc(), far);
    if (rng() % 8 == 0) some() = Segment2(far, far);
    return v;
}

inline const std::vector<Kind>& all() {
    static const std::vector<Kind> vKinds = {
        {"lattice", lattice, 700},
        {"shortOnLattice", shortOnLattice},
        {"uniform", uniform},
        {"longAndShort", longAndShort, 1500},
        {"chain", chain},
        {"star", star, 700},
        {"fan", fan, 700},
        {"fansOnALine", fansOnALine, 1500},
        {"diagonals", diagonals, 700},
        {"dashes", dashes},
        {"nested", nested, 512},
        {"allTheSame", allTheSame, 700},
        {"axisParallel", axisParallel},
        {"roundedTouches", roundedTouches, 1500},
        {"clusters", clusters, 1500},
        {"anyBits", anyBits, 300},
        {"extremes", extremes, 300},
    };
    return vKinds;
}

} // namespace segmentSets
