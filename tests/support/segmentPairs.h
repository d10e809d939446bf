#pragma once

#include "SegmentChecker.h"
#include "tests/oracle/exact.h"
#include "tests/support/doubles.h"

#include <algorithm>
#include <functional>
#include <ostream>
#include <utility>

// Two segments as their four ends: crossing, touching, overlapping, and all that by a hair or not, by family.
namespace segmentPairs {

using doubles::Points;
using doubles::Rng;
using TESK_KIVO2D::Point2;

struct Family {
    const char* name;
    std::function<Points(Rng&)> make;
};
inline void PrintTo(const Family& family, std::ostream* pStream) { *pStream << family.name; }

inline Points map(Points vPoints, const std::function<double(double)>& ofX,
                  const std::function<double(double)>& ofY) {
    for (Point2& p : vPoints)
        p = Point2(ofX(p.x()), ofY(p.y()));
    return vPoints;
}

inline Points uniform(Rng& rng) {
    return map(
        Points(4), [&](double) { return doubles::uniform(rng); },
        [&](double) { return doubles::uniform(rng); });
}

inline Points integers(Rng& rng, int size) {
    const auto any = [&](double) { return doubles::below(rng, size); };
    return map(Points(4), any, any);
}

inline Points utm(Rng& rng) {
    const double unit = rng() % 2 == 0 ? 0x1p-30 : 0.001;
    return map(
        uniform(rng), [=](double x) { return std::round((5e5 + 900 * x) / unit) * unit; },
        [=](double y) { return std::round((4e6 + 900 * y) / unit) * unit; });
}

// An end of the second at a quarter of the first, or beside it; exactly there in half of the cases.
inline Points touching(Rng& rng) {
    Points p = rng() % 2 == 0
                   ? uniform(rng)
                   : map(
                         integers(rng, 500), [](double x) { return 4 * x; }, [](double y) { return 4 * y; });
    const double t = (doubles::below(rng, 7) - 1) / 4.0;
    const Point2 onLine(p[0].x() + t * (p[1].x() - p[0].x()), p[0].y() + t * (p[1].y() - p[0].y()));
    p[2] = doubles::jittered(rng, t == 0 ? p[0] : t == 1 ? p[1] : onLine, doubles::below(rng, 2));
    if (rng() % 4 == 0) p[3] = p[2];
    return p;
}

// On one line, as a rule; its direction has small numbers.
inline Points collinear(Rng& rng) {
    const Point2 base = integers(rng, 1 << 30)[0], step = integers(rng, 7)[0];
    Points p(4);
    for (Point2& q : p) {
        const int k = doubles::below(rng, 6);
        q = Point2(base.x() + k * step.x(), base.y() + k * (step.y() - 3));
    }
    if (rng() % 8 == 0) p[3] = doubles::jittered(rng, p[3], 1);
    return p;
}

// The second turned against the first by a small angle, about a point of both.
inline Points nearParallel(Rng& rng) {
    Points p = uniform(rng);
    const double angle = std::pow(10, -doubles::uniform(rng, 4, 17));
    const double dx = p[1].x() - p[0].x(), dy = p[1].y() - p[0].y();
    const Point2 pivot(p[0].x() + dx / 3, p[0].y() + dy / 3);
    p[2] = Point2(pivot.x() - dx + angle * dy, pivot.y() - dy - angle * dx);
    p[3] = Point2(pivot.x() + dx / 2 - angle * dy / 2, pivot.y() + dy / 2 + angle * dx / 2);
    return p;
}

// Along an axis or nearly, on both sides of it.
inline Points axisParallel(Rng& rng) {
    Points p = map(
        uniform(rng), [](double x) { return x - 0.5; }, [](double y) { return y - 0.5; });
    const double x = rng() % 2 == 0 ? -0.0 : p[0].x();
    p[0] = Point2(x, p[0].y());
    p[1] = Point2(rng() % 2 == 0 ? x : x + 1e-9, p[1].y());
    if (rng() % 2 == 0) p[3] = Point2(p[3].x(), p[2].y());
    if (rng() % 4 == 0) p[2] = Point2(0.0, p[2].y());
    if (rng() % 2 == 0) {
        for (Point2& q : p)
            q = Point2(q.y(), q.x());
    }
    return p;
}

inline Points anyOf(Rng& rng) {
    static constexpr Points (*aMakers[])(Rng&) = {uniform, touching, collinear, nearParallel, axisParallel};
    return aMakers[doubles::below(rng, 5)](rng);
}

inline Points times(Points vPoints, double factor) {
    const auto times = [=](double v) { return v * factor; };
    return map(std::move(vPoints), times, times);
}

// Every coordinate a corner of the range of doubles, or next to it.
inline Points extremes(Rng& rng) {
    static constexpr double aValues[] = {DBL_MAX, -DBL_MAX, 0x1p1023, -0x1p1023, 0.0, -0.0, 0x1p-1074, 1.0};
    const auto any = [&](double) {
        return doubles::stepped(aValues[doubles::below(rng, 8)], doubles::below(rng, 3) - 1);
    };
    return map(Points(4), any, any);
}

inline Points anyBits(Rng& rng) {
    Points p = doubles::anyPoints(rng, 4);
    if (rng() % 2 == 0) p[2 + rng() % 2] = p[rng() % 2];
    return p;
}

inline const std::vector<Family>& all() {
    static const std::vector<Family> vFamilies = {
        {"unit", uniform},
        {"utm", utm},
        {"integers", [](Rng& r) { return integers(r, 9); }},
        {"touching", touching},
        {"collinear", collinear},
        {"nearParallel", nearParallel},
        {"axisParallel", axisParallel},
        {"times1e150", [](Rng& r) { return times(anyOf(r), 1e150); }},
        {"times1e_150", [](Rng& r) { return times(anyOf(r), 1e-150); }},
        {"largest", [](Rng& r) { return doubles::scaled(anyOf(r), 990); }},
        {"subnormal", [](Rng& r) { return doubles::scaled(integers(r, 9), -1074); }},
        {"nearlySubnormal", [](Rng& r) { return doubles::scaled(anyOf(r), -1050); }},
        {"extremes", extremes},
        {"anyBits", anyBits},
    };
    return vFamilies;
}

inline bool isAt(const oracle::RationalPoint& exact, const Point2& p) {
    return exact.x == p.x() && exact.y == p.y();
}

inline TESK_KIVO2D::SegmentIntersectionType exactType(const Points& p) {
    using namespace TESK_KIVO2D;
    const auto common = oracle::commonPoints(p[0], p[1], p[2], p[3]);
    if (!common) return SIT_NONE;
    if (!(common->first == common->last)) return SIT_SEGMENT;
    const oracle::RationalPoint& q = common->first;
    return (isAt(q, p[0]) || isAt(q, p[1])) && (isAt(q, p[2]) || isAt(q, p[3])) ? SIT_ENDPOINT : SIT_POINT;
}

// Both directions of both segments, and either one first.
inline void forEachOrder(const Points& p, const std::function<void(const Points&)>& call) {
    for (unsigned bits = 0; bits < 8; ++bits) {
        Points q = p;
        if ((bits & 1) != 0) std::swap(q[0], q[1]);
        if ((bits & 2) != 0) std::swap(q[2], q[3]);
        if ((bits & 4) != 0) std::rotate(q.begin(), q.begin() + 2, q.end());
        call(q);
    }
}

} // namespace segmentPairs
