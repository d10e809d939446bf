#include "kernel/intersection.h"

#include "kernel/intersection_stages.h"
#include "tests/oracle/exact.h"
#include "tests/support/segmentPairs.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <gtest/gtest.h>
#include <ostream>

using namespace TESK_KIVO2D;
using namespace segmentPairs;

namespace {

// Four ends of two segments, and the share of them that the double-double stage must answer.
struct Family {
    const char* name;
    std::function<Points(Rng&)> make;
    double minShare;
};
void PrintTo(const Family& family, std::ostream* pStream) { *pStream << family.name; }

Points ofSizes(Rng& rng, int minExponent, int maxExponent) {
    return drawn([&] { return doubles::ofSize(rng, minExponent, maxExponent); });
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
    const Points offsets = integers(rng, 1 << 20);
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
    {"smallGrid",          [](Rng& r) { return integers(r, 10); }, 1},
    {"grid",               [](Rng& r) { return integers(r, 5000); }, 1},
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
        Points p = GetParam().make(rng);
        if (i % 2 == 0) std::rotate(p.begin(), p.begin() + 2, p.end());
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
