#include "kernel/intersection.h"

#include "Vector2.h"
#include "kernel/intersection_stages.h"
#include "tests/oracle/exact.h"
#include "tests/support/doubles.h"

#include <bit>
#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <ostream>

using namespace TESK_KIVO2D;
using doubles::Points;
using doubles::Rng;

namespace {

// Four ends of two segments, and the share of them that the double-double stage must answer.
struct Family {
    const char* name;
    std::function<Points(Rng&)> make;
    double minShare;
};
void PrintTo(const Family& family, std::ostream* pStream) { *pStream << family.name; }

Points uniform(Rng& rng, double low, double high) {
    Points vPoints;
    while (vPoints.size() < 4) {
        const double x = doubles::uniform(rng, low, high);
        vPoints.emplace_back(x, doubles::uniform(rng, low, high));
    }
    return vPoints;
}

Points map(Points vPoints, const std::function<double(double)>& ofX,
           const std::function<double(double)>& ofY) {
    for (Point2& p : vPoints)
        p = Point2(ofX(p.x()), ofY(p.y()));
    return vPoints;
}

// Metres with or without decimals.
Points utm(Rng& rng, double unit) {
    const auto rounded = [&](double v) { return unit > 0 ? std::round(v / unit) * unit : v; };
    return map(
        uniform(rng, 0, 1000), [&](double x) { return rounded(5e5 + x); },
        [&](double y) { return rounded(4e6 + y); });
}

Points grid(Rng& rng, int size) {
    return map(
        uniform(rng, 0, size), [](double x) { return std::floor(x); },
        [](double y) { return std::floor(y) - 5; });
}

Points ofSizes(Rng& rng, int minExponent, int maxExponent) {
    const auto size = [&](double) { return doubles::ofSize(rng, minExponent, maxExponent); };
    return map(Points(4), size, size);
}

// The second line turned against the first by the angle.
Points nearParallel(Rng& rng, double angle) {
    Points p = uniform(rng, 0, 1);
    const Vector2 d(p[1].x() - p[0].x(), p[1].y() - p[0].y());
    p[3] = Point2(p[2].x() + d.x() - angle * d.y(), p[2].y() + d.y() + angle * d.x());
    return p;
}

// An end of the second on or next to the first: at its end, on its middle or along a multiple of it.
Points touching(Rng& rng, int maxSteps) {
    Points p = rng() % 2 == 0 ? uniform(rng, -1, 1) : grid(rng, 1000);
    const double t = doubles::below(rng, 5) / 2.0 - 0.5;
    const Point2 onLine(p[0].x() + t * (p[1].x() - p[0].x()), p[0].y() + t * (p[1].y() - p[0].y()));
    p[2] = doubles::jittered(rng, t == 0 ? p[0] : t == 1 ? p[1] : onLine, maxSteps);
    if (rng() % 2 == 0) std::swap(p[2], p[3]);
    if (rng() % 2 == 0) p = {p[2], p[3], p[0], p[1]};
    return p;
}

// One segment or both parallel to an axis, now and then along it.
Points axisParallel(Rng& rng) {
    Points p = uniform(rng, -1, 1);
    const double x = rng() % 4 == 0 ? -0.0 : p[0].x();
    p[0] = Point2(x, p[0].y());
    p[1] = Point2(x, p[1].y());
    if (rng() % 2 == 0) p[3] = Point2(p[3].x(), p[2].y());
    if (rng() % 2 == 0) p = {p[2], p[3], p[1], p[0]};
    if (rng() % 2 == 0) {
        for (Point2& q : p)
            q = Point2(q.y(), q.x());
    }
    return p;
}

// Lines through the origin and close to it: coordinates that are 0, or nearly.
Points nearOrigin(Rng& rng, int maxSteps) {
    Points p = uniform(rng, -1, 1);
    for (const std::size_t i : {0u, 2u}) {
        const double factor = -std::ldexp(1, doubles::below(rng, 4));
        p[i + 1] = doubles::jittered(rng, Point2(factor * p[i].x(), factor * p[i].y()), maxSteps);
    }
    return p;
}

// Crossings at a double, or hardly beside it: both segments have it as their middle, until an end moves.
Points aroundDouble(Rng& rng) {
    const Points offsets = grid(rng, 1 << 20);
    const Point2 c(std::floor(doubles::uniform(rng, 0, 0x1p40)), doubles::below(rng, 3) * 0x1p40);
    Points p;
    for (const double sign : {1, -1, 1, -1}) {
        const Point2& offset = offsets[p.size() / 2];
        p.emplace_back(c.x() + sign * offset.x(), c.y() + sign * offset.y());
    }
    p[3] = doubles::jittered(rng, p[3], doubles::below(rng, 2));
    return doubles::scaled(p, doubles::below(rng, 100) - 80);
}

// clang-format off
const std::vector<Family> families = {
    {"unit",               [](Rng& r) { return uniform(r, 0, 1); }, 0.999},
    {"utm",                [](Rng& r) { return utm(r, 0); }, 0.999},
    {"utmMillimetres",     [](Rng& r) { return utm(r, 0.001); }, 0.999},
    {"utmEighths",         [](Rng& r) { return utm(r, 0.125); }, 0.999},
    {"smallGrid",          [](Rng& r) { return grid(r, 10); }, 1},
    {"grid",               [](Rng& r) { return grid(r, 5000); }, 1},
    {"axisParallel",       axisParallel, 0.999},
    {"touching",           [](Rng& r) { return touching(r, 0); }, 0.99},
    {"nearlyTouching",     [](Rng& r) { return touching(r, 1); }, 0.99},
    {"throughOrigin",      [](Rng& r) { return nearOrigin(r, 0); }, 0.99},
    {"nearlyOrigin",       [](Rng& r) { return nearOrigin(r, 1); }, 0},
    {"aroundDoubles",      aroundDouble, 0.9},
    {"angleOf1e6th",       [](Rng& r) { return nearParallel(r, 1e-6); }, 0.99},
    {"anglesDownTo1e15th", [](Rng& r) { return nearParallel(r, std::pow(10, -doubles::uniform(r, 9, 16))); }, 0},
    {"sizesOfAllKinds",    [](Rng& r) { return ofSizes(r, -80, 80); }, 0},
    {"largeSquares",       [](Rng& r) { return doubles::scaled(uniform(r, -1, 1), 498); }, 0},
    {"tinySquares",        [](Rng& r) { return doubles::scaled(uniform(r, -1, 1), -498); }, 0},
    {"largest",            [](Rng& r) { return doubles::scaled(uniform(r, -1, 1), 1023); }, 0},
    {"subnormal",          [](Rng& r) { return doubles::scaled(uniform(r, -1, 1), -1022 - doubles::below(r, 45)); }, 0},
    {"anyDouble",          [](Rng& r) { return doubles::anyPoints(r, 4); }, 0},
};
// clang-format on

bool areParallel(const Points& p) {
    const mpq_class dx = mpq_class(p[1].x()) - p[0].x(), dy = mpq_class(p[1].y()) - p[0].y();
    return dx * (mpq_class(p[3].y()) - p[2].y()) == dy * (mpq_class(p[3].x()) - p[2].x());
}

class Intersections : public testing::TestWithParam<Family> {};
INSTANTIATE_TEST_SUITE_P(All, Intersections, testing::ValuesIn(families),
                         [](const auto& info) { return info.param.name; });

} // namespace

TEST_P(Intersections, haveEveryBitOfTheTruncatedRationals) {
    Rng rng(12);
    constexpr int samples = 20000;
    int numCertain = 0, numMeeting = 0;
    for (int i = 0; i < samples && !HasFailure(); ++i) {
        const Points p = GetParam().make(rng);
        if (areParallel(p)) continue;
        ++numMeeting;
        numCertain += stages::intersectionDoubleDouble(p[0], p[1], p[2], p[3]) ? 1 : 0;
        const oracle::RationalPoint exact = oracle::lineIntersection(p[0], p[1], p[2], p[3]);
        double x = 0, y = 0;
        getIntersectionCoords(p[0], p[1], p[2], p[3], x, y);
        EXPECT_EQ(std::bit_cast<std::uint64_t>(exact.x.get_d()), std::bit_cast<std::uint64_t>(x))
            << doubles::hex(p);
        EXPECT_EQ(std::bit_cast<std::uint64_t>(exact.y.get_d()), std::bit_cast<std::uint64_t>(y))
            << doubles::hex(p);
    }
    EXPECT_GE(numMeeting, samples / 2);
    EXPECT_GE(numCertain, GetParam().minShare * numMeeting);
}
