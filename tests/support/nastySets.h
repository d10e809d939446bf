#pragma once

#include "tests/support/doubles.h"

#include <algorithm>
#include <functional>
#include <ostream>

// Small point sets that break triangulators, by kind.
namespace nastySets {

using doubles::Points;
using doubles::Rng;
using TESK_KIVO2D::Point2;

struct Kind {
    const char* name;
    std::function<Points(Rng&)> make;
    bool bScales = true; // coordinates times 2^-100 ... 2^100 stay exact
};
inline void PrintTo(const Kind& kind, std::ostream* pStream) { *pStream << kind.name; }

inline std::size_t someCount(Rng& rng, int max = 16) {
    return static_cast<std::size_t>(1 + doubles::below(rng, max));
}

inline Points many(Rng& rng, const std::function<Point2(Rng&)>& make, int max = 16) {
    Points vPoints;
    for (std::size_t i = someCount(rng, max); i > 0; --i)
        vPoints.push_back(make(rng));
    return vPoints;
}

inline Point2 latticePoint(Rng& rng, int size, double unit = 1) {
    const double x = doubles::below(rng, size) * unit;
    return {x, doubles::below(rng, size) * unit};
}

inline Points lattice(Rng& rng, int size, double unit = 1) {
    return many(rng, [=](Rng& r) { return latticePoint(r, size, unit); });
}

// All on one line of small slope numbers, most often exactly; sometimes one point is off.
inline Points line(Rng& rng) {
    const int dx = doubles::below(rng, 4), dy = doubles::below(rng, 4);
    const double unit = rng() % 2 == 0 ? 1 : 0.1; // tenths leave the line by rounding
    Points vPoints = many(rng, [=](Rng& r) {
        const int t = doubles::below(r, 20) - 10;
        return Point2(t * dx * unit + 3, t * dy * unit - 5);
    });
    if (rng() % 2 == 0)
        vPoints.insert(vPoints.begin() + doubles::below(rng, static_cast<int>(vPoints.size())), {1, 7});
    return vPoints;
}

inline Points nearLine(Rng& rng) {
    const Points line = doubles::nearCollinear(rng, rng() % 2 == 0 ? 0 : 1000);
    return many(rng, [&](Rng& r) {
        const double t = doubles::below(r, 8);
        const Point2 p(line[0].x() + t * (line[1].x() - line[0].x()),
                       line[0].y() + t * (line[1].y() - line[0].y()));
        return doubles::jittered(r, p, 1);
    });
}

inline Points signedZeros(Rng& rng) {
    static constexpr double aValues[] = {0.0, -0.0, 1.0, -1.0, 0x1p-1074, -0x1p-1074};
    return many(rng, [](Rng& r) {
        const double x = aValues[doubles::below(r, 6)];
        return Point2(x, aValues[doubles::below(r, 6)]);
    });
}

inline Points twoFarClusters(Rng& rng) {
    return many(rng, [](Rng& r) {
        const double far = r() % 2 == 0 ? 0 : 1e8;
        const Point2 p = latticePoint(r, 4, 0.25);
        return Point2(p.x() + far, p.y() - far);
    });
}

// Long thin triangles between two lines that nearly touch.
inline Points needles(Rng& rng) {
    return many(rng, [](Rng& r) {
        const double x = doubles::uniform(r, -1, 1);
        return Point2(x, r() % 2 == 0 ? 0 : std::ldexp(1.0, -20 - doubles::below(r, 40)));
    });
}

inline Points anyBits(Rng& rng) { return doubles::anyPoints(rng, someCount(rng, 9)); }

inline Points allSizes(Rng& rng) {
    return many(
        rng,
        [](Rng& r) {
            const double x = doubles::ofSize(r, -1074, 1023);
            return Point2(x, doubles::ofSize(r, -1074, 1023));
        },
        9);
}

inline Points someScales(Rng& rng) {
    return many(rng, [](Rng& r) {
        const double x = doubles::ofSize(r, -30, 30);
        return Point2(x, doubles::ofSize(r, -30, 30));
    });
}

// Corners of the range of doubles and their neighbours.
inline Points extremes(Rng& rng) {
    return many(
        rng,
        [](Rng& r) {
            static constexpr double aValues[] = {DBL_MAX, -DBL_MAX, 0x1p1023, 0.0, 1.0, -0x1p1022};
            const Point2 p(aValues[doubles::below(r, 6)], aValues[doubles::below(r, 6)]);
            return doubles::jittered(r, p, 1);
        },
        9);
}

inline Points uniformPoints(Rng& rng) {
    return many(
        rng,
        [](Rng& r) {
            const double x = doubles::uniform(r);
            return Point2(x, doubles::uniform(r));
        },
        40);
}

inline const std::vector<Kind>& all() {
    static const std::vector<Kind> vKinds = {
        {"lattice3", [](Rng& r) { return lattice(r, 3); }},
        {"lattice7", [](Rng& r) { return lattice(r, 7); }},
        {"tenths", [](Rng& r) { return lattice(r, 9, 0.1); }},
        {"line", line},
        {"nearLine", nearLine},
        {"cocircular", [](Rng& r) { return doubles::cocircular(r, someCount(r)); }},
        {"cocircularFarAway", [](Rng& r) { return doubles::cocircular(r, someCount(r), 4e9, -0x1p40); }},
        {"nearCocircular", [](Rng& r) { return doubles::nearCocircular(r, someCount(r)); }},
        {"nearCocircularFarAway", [](Rng& r) { return doubles::nearCocircular(r, someCount(r), 1e6); }},
        {"nearCocircularUnderflow",
         [](Rng& r) { return doubles::scaled(doubles::nearCocircular(r, someCount(r)), -262); }, false},
        {"signedZeros", signedZeros, false},
        {"subnormal", [](Rng& r) { return lattice(r, 5, 0x1p-1074); }, false},
        {"huge", [](Rng& r) { return lattice(r, 4, 4e307); }, false},
        {"extremes", extremes, false},
        {"twoFarClusters", twoFarClusters},
        {"needles", needles},
        {"someScales", someScales},
        {"allSizes", allSizes, false},
        {"anyBits", anyBits, false},
        {"uniform", uniformPoints},
    };
    return vKinds;
}

} // namespace nastySets
