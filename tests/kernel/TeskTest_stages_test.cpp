#include "kernel/TeskTest_stages.h"

#include "kernel/TeskTest.h"
#include "kernel/TeskTest_exact.h"
#include "tests/oracle/exact.h"
#include "tests/support/doubles.h"

#include <cfenv>
#include <functional>
#include <gtest/gtest.h>

using namespace TESK_KIVO2D;
using doubles::Points;
using doubles::Rng;
using stages::Decision;

namespace {

// Near-collinear triples whose products of differences lie about the largest double, with differences that
// round.
Points productsAtOverflow(Rng& rng) {
    const double width = std::ldexp(doubles::uniform(rng, 1, 2), 511), t = doubles::uniform(rng, 0.5, 1.5);
    const double height = std::ldexp(1 / std::ldexp(width, -511) / t, 513);
    const Point2 c(-width * doubles::uniform(rng), -height * doubles::uniform(rng));
    const Point2 onLine(c.x() + t * width, c.y() + t * height);
    return {{c.x() + width, c.y() + height}, doubles::jittered(rng, onLine, 2), c};
}

// Inputs of one kind, and the shares of them that may get past the static stage and as far as the rationals.
struct Family {
    const char* name;
    std::function<Points(Rng&)> make;
    double maxPastStatic;
    double maxExact;
};
void PrintTo(const Family& family, std::ostream* pStream) { *pStream << family.name; }

constexpr int samples = 20000;

Decision asDecision(int sign) {
    return sign > 0 ? stages::POSITIVE : sign < 0 ? stages::NEGATIVE : stages::ZERO;
}

Points uniformPoints(Rng& rng, int num) {
    Points vPoints;
    for (int i = 0; i < num; ++i) {
        const double x = doubles::uniform(rng, -100, 100);
        vPoints.emplace_back(x, doubles::uniform(rng, -100, 100));
    }
    return vPoints;
}

Points pointsOfSize(Rng& rng, int num, int minExponent, int maxExponent) {
    Points vPoints;
    for (int i = 0; i < num; ++i) {
        const double x = doubles::ofSize(rng, minExponent, maxExponent);
        vPoints.emplace_back(x, doubles::ofSize(rng, minExponent, maxExponent));
    }
    return vPoints;
}

Points latticePoints(Rng& rng, int num, int size, double unit) {
    Points vPoints;
    for (int i = 0; i < num; ++i) {
        const double x = doubles::below(rng, size) * unit;
        vPoints.emplace_back(x, doubles::below(rng, size) * unit);
    }
    return vPoints;
}

Points scaledBetween(Rng& rng, const Points& vPoints, int minExponent, int maxExponent) {
    return doubles::scaled(vPoints, minExponent + doubles::below(rng, maxExponent - minExponent + 1));
}

using F = std::vector<Family>;
// clang-format off
const F orientationFamilies = {
    {"uniform",         [](Rng& r) { return uniformPoints(r, 3); }, 0.001, 0},
    {"lattice",         [](Rng& r) { return latticePoints(r, 3, 20, 1); }, 0.2, 0},
    {"nearCollinear",   [](Rng& r) { return doubles::nearCollinear(r); }, 1, 0.5},
    {"farAway",         [](Rng& r) { return doubles::nearCollinear(r, 1e6); }, 1, 0},
    {"tiny",            [](Rng& r) { return scaledBetween(r, doubles::nearCollinear(r), -1060, -400); }, 1, 1},
    {"squaresUnderflow",[](Rng& r) { return scaledBetween(r, doubles::nearCollinear(r), -545, -470); }, 1, 1},
    {"boundUnderflows", [](Rng& r) { return scaledBetween(r, doubles::nearCollinear(r), -516, -512); }, 1, 1},
    {"subnormal",       [](Rng& r) { return latticePoints(r, 3, 1000, 0x1p-1074); }, 1, 1},
    {"squaresOverflow", [](Rng& r) { return scaledBetween(r, doubles::nearCollinear(r, 1), 500, 540); }, 1, 1},
    {"squaresOverflowFarAway", [](Rng& r) { return scaledBetween(r, doubles::nearCollinear(r, 100), 500, 530); }, 1, 1},
    {"productsAtOverflow", productsAtOverflow, 1, 1},
    {"huge",            [](Rng& r) { return scaledBetween(r, doubles::nearCollinear(r), 900, 1021); }, 1, 1},
    {"mixedSizes",      [](Rng& r) { return pointsOfSize(r, 3, -60, 60); }, 1, 0.01},
    {"allSizes",        [](Rng& r) { return pointsOfSize(r, 3, -1074, 1023); }, 1, 1},
    {"anyBits",         [](Rng& r) { return doubles::anyPoints(r, 3); }, 1, 1},
};
const F inCircleFamilies = {
    {"uniform",         [](Rng& r) { return uniformPoints(r, 4); }, 0.001, 0},
    {"lattice",         [](Rng& r) { return latticePoints(r, 4, 20, 1); }, 0.1, 0},
    {"cocircular",      [](Rng& r) { return doubles::cocircular(r, 4, 1e5, -3e5); }, 1, 0},
    {"nearCocircular",  [](Rng& r) { return doubles::nearCocircular(r, 4); }, 1, 1},
    {"farAway",         [](Rng& r) { return doubles::nearCocircular(r, 4, 1e6); }, 1, 0},
    {"tiny",            [](Rng& r) { return scaledBetween(r, doubles::nearCocircular(r, 4), -1060, -300); }, 1, 1},
    {"permanentUnderflows", [](Rng& r) { return scaledBetween(r, doubles::nearCocircular(r, 4), -271, -240); }, 1, 1},
    {"permanentUnderflowsFarAway", [](Rng& r) { return scaledBetween(r, doubles::nearCocircular(r, 4, 1e3), -280, -250); }, 1, 1},
    {"needles",         [](Rng& r) { Points v = doubles::nearCollinear(r); v.push_back(doubles::jittered(r, v[2], 3)); return v; }, 1, 1},
    {"tinyNeedles",     [](Rng& r) { Points v = doubles::nearCollinear(r); v.push_back(doubles::jittered(r, v[0], 3)); return scaledBetween(r, v, -290, -200); }, 1, 1},
    {"subnormal",       [](Rng& r) { return latticePoints(r, 4, 1000, 0x1p-1074); }, 1, 1},
    {"permanentOverflows", [](Rng& r) { return scaledBetween(r, doubles::nearCocircular(r, 4), 245, 270); }, 1, 1},
    {"huge",            [](Rng& r) { return scaledBetween(r, doubles::nearCocircular(r, 4), 900, 1021); }, 1, 1},
    {"mixedSizes",      [](Rng& r) { return pointsOfSize(r, 4, -60, 60); }, 1, 0.15},
    {"allSizes",        [](Rng& r) { return pointsOfSize(r, 4, -1074, 1023); }, 1, 1},
    {"anyBits",         [](Rng& r) { return doubles::anyPoints(r, 4); }, 1, 1},
};
// clang-format on

std::string nameOf(const testing::TestParamInfo<Family>& info) { return info.param.name; }

struct OrientationStages : testing::TestWithParam<Family> {};
struct InCircleStages : testing::TestWithParam<Family> {};
INSTANTIATE_TEST_SUITE_P(on, OrientationStages, testing::ValuesIn(orientationFamilies), nameOf);
INSTANTIATE_TEST_SUITE_P(on, InCircleStages, testing::ValuesIn(inCircleFamilies), nameOf);

void expectShare(const char* stage, std::uint64_t num, double limit) {
    EXPECT_LE(static_cast<double>(num), limit * samples)
        << "share that gets past the stage before: " << stage;
}

mpq_class determinant(const Points& p) {
    const mpq_class cx(p[2].x()), cy(p[2].y());
    return (p[0].x() - cx) * (p[1].y() - cy) - (p[1].x() - cx) * (p[0].y() - cy);
}

bool isBelow(double bound, const mpq_class& exact) {
    return std::isnan(bound) || (std::isinf(bound) ? bound < 0 : mpq_class(bound) <= exact);
}

} // namespace

TEST_P(OrientationStages, neverContradictRationalsAndDecideTheirShare) {
    Rng rng(7);
    OrientationRationals rationals;
    TeskTest tests;
    for (int i = 0; i < samples && !HasFailure(); ++i) {
        const Points p = GetParam().make(rng);
        const Decision expected = asDecision(oracle::orientation(p[0], p[1], p[2]));
        using stages::UNSURE;
        for (const Decision decision :
             {stages::orientDynamic(p[0], p[1], p[2]), stages::orientExpansion(p[0], p[1], p[2]),
              stages::orientInterval(p[0], p[1], p[2])}) {
            EXPECT_TRUE(decision == UNSURE || decision == expected) << doubles::hex(p);
        }
        EXPECT_EQ(expected, stages::orientExact(p[0], p[1], p[2], rationals)) << doubles::hex(p);
        tests.setStaticBound(std::max({p[0].getMaxAbs(), p[1].getMaxAbs(), p[2].getMaxAbs()}));
        EXPECT_EQ(static_cast<int>(expected), tests.orientation(p[0], p[1], p[2])) << doubles::hex(p);
        EXPECT_EQ(static_cast<int>(expected), tests.orientationUnbounded(p[0], p[1], p[2]))
            << doubles::hex(p);
    }
    // Every question was asked with the static stage and without it.
    expectShare("static", tests.stageCounts().orientationPastStatic - samples, GetParam().maxPastStatic);
    expectShare("all but the rationals", tests.stageCounts().orientationExact / 2, GetParam().maxExact);
}

TEST_P(OrientationStages, intervalHoldsTheDeterminantAndTheRoundingModeComesBack) {
    Rng rng(8);
    for (int i = 0; i < samples / 4 && !HasFailure(); ++i) {
        const Points p = GetParam().make(rng);
        const mpq_class exact = determinant(p);
        const stages::Interval bounds = stages::orientBounds(p[0], p[1], p[2]);
        EXPECT_TRUE(isBelow(bounds.lower, exact) && isBelow(-bounds.upper, -exact)) << doubles::hex(p);
    }
    EXPECT_EQ(FE_TONEAREST, std::fegetround());
}

TEST(OrientationStages, intervalIsNoPointWhereProductsRound) {
    // An optimiser that computes a product once for both rounding modes makes the two bounds equal.
    for (const double x : {0.1, 0.7, 1.0 / 3}) {
        const stages::Interval bounds = stages::orientBounds({x, 0.3}, {-0.7, x / 7}, {0, 0});
        EXPECT_LT(bounds.lower, bounds.upper);
        const double width = bounds.upper - bounds.lower;
        EXPECT_LT(width, 1e-15);
    }
}

TEST(OrientationStages, keepTheCallersRoundingMode) {
    TeskTest tests;
    for (const int mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
        std::fesetround(mode);
        stages::orientInterval({0.1, 0.1}, {0.3, 0.3}, {0.7, 0.7});
        const int after = std::fegetround();
        std::fesetround(FE_TONEAREST);
        EXPECT_EQ(mode, after);
    }
}

TEST_P(InCircleStages, neverContradictRationalsAndDecideTheirShare) {
    Rng rng(9);
    InCircleRationals rationals;
    TeskTest tests;
    for (int i = 0; i < samples && !HasFailure(); ++i) {
        Points p = GetParam().make(rng);
        if (oracle::orientation(p[0], p[1], p[2]) < 0) std::swap(p[0], p[1]);
        const Decision expected = asDecision(oracle::inCircle(p[0], p[1], p[2], p[3]));
        const stages::CornerDifferences differences(p[0], p[1], p[2], p[3]);
        for (const Decision decision :
             {stages::inCircleStatic(p[0], p[1], p[2], p[3]), stages::inCircleLattice(differences),
              stages::inCircleDoubleDouble(differences), stages::inCircleExpansion(differences)}) {
            EXPECT_TRUE(decision == stages::UNSURE || decision == expected) << doubles::hex(p);
        }
        EXPECT_EQ(expected, stages::inCircleExact(p[0], p[1], p[2], p[3], rationals)) << doubles::hex(p);
        EXPECT_TRUE(expected == stages::ZERO || !stages::isRectangle(p[0], p[1], p[2], p[3]))
            << doubles::hex(p);
        Triangle2 t;
        t.setProperties(&p[0], &p[1], &p[2]);
        EXPECT_EQ(static_cast<int>(expected), tests.inCircle(t, p[3])) << doubles::hex(p);
    }
    expectShare("static", tests.stageCounts().inCirclePastStatic, GetParam().maxPastStatic);
    expectShare("all but the rationals", tests.stageCounts().inCircleExact, GetParam().maxExact);
}
