#include "kernel/TeskTest_stages.h"

#include "kernel/TeskTest.h"
#include "kernel/TeskTest_exact.h"
#include "tests/oracle/exact.h"
#include "tests/support/doubles.h"

#include <algorithm>
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

// Multiples of one point by powers of two: on one line, with differences that round. Every other time the
// last one is a neighbour.
Points scaledCopies(Rng& rng) {
    const Point2 p(doubles::uniform(rng, -1, 1), doubles::ofSize(rng, -8, 8));
    const auto copy = [&] {
        const double factor = std::ldexp(rng() % 2 == 0 ? 1.0 : -1.0, doubles::below(rng, 12));
        return Point2(factor * p.x(), factor * p.y());
    };
    const Point2 a = copy(), b = copy();
    return {a, b, doubles::jittered(rng, copy(), doubles::below(rng, 2))};
}

// (x0, y0) and (x1, y1) with their mirror images about x = sum / 2: on one circle. In any order, and
// mirrored at the diagonal or not.
Points trapezoid(Rng& rng, const Point2& p0, const Point2& p1, double sum) {
    Points vPoints = {p0, {sum - p0.x(), p0.y()}, p1, {sum - p1.x(), p1.y()}};
    if (rng() % 2 == 0) {
        for (Point2& p : vPoints)
            p = Point2(p.y(), p.x());
    }
    std::shuffle(vPoints.begin(), vPoints.end(), rng);
    return vPoints;
}

// Whole numbers whose differences reach 2^bits - 1 to 2^bits + 1. Every other time not quite on a circle.
Points latticeTrapezoid(Rng& rng, int minBits, int maxBits) {
    const int bits = minBits + doubles::below(rng, maxBits - minBits + 1);
    const int width = (1 << bits) - 1 + doubles::below(rng, 3);
    const auto coord = [&] { return rng() % 2 == 0 ? 0 : doubles::below(rng, width + 1); };
    const int x0 = coord(), y0 = coord(), x1 = coord(), y1 = width - coord();
    Points vPoints = trapezoid(rng, Point2(x0, y0), Point2(x1, y1), width);
    Point2& moved = vPoints[static_cast<std::size_t>(doubles::below(rng, 4))];
    if (rng() % 2 == 0) moved = Point2(moved.x() + (moved.x() == 0 ? 1 : -1), moved.y());
    return vPoints;
}

// With a coordinate off the lattice by less than rounded differences show.
Points hardlyOffLattice(Rng& rng) {
    Points vPoints = latticeTrapezoid(rng, 1, 25);
    for (Point2& p : vPoints) {
        if (p.x() == 0) p = Point2(doubles::ofSize(rng, -70, -50), p.y());
    }
    return vPoints;
}

// Full mantissas of different sizes, so that differences round. Every other time not quite on a circle.
Points roundingTrapezoid(Rng& rng) {
    const double x0 = doubles::ofSize(rng, -4, 0), y0 = doubles::ofSize(rng, -4, 0);
    const double x1 = doubles::ofSize(rng, -4, 0), y1 = doubles::ofSize(rng, -4, 0);
    Points vPoints = trapezoid(rng, Point2(x0, y0), Point2(x1, y1), 0);
    vPoints[3] = doubles::jittered(rng, vPoints[3], doubles::below(rng, 2) * 2);
    return vPoints;
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

// Around the smallest or the largest size that a stage takes.
Points scaledNear(Rng& rng, const Points& vPoints, int exponent) {
    return doubles::scaled(vPoints, (rng() % 2 == 0 ? exponent : -exponent) + doubles::below(rng, 31) - 15);
}

using F = std::vector<Family>;
// Squares turned by any angle and scaled, whose corners are doubles; corners in any order. The last one is
// moved by up to `shake` units in the last place.
Points turnedSquare(Rng& rng, int shake) {
    const auto any = [&] { return doubles::below(rng, 1 << 30) * 0x1.8p18 - 0x1p48; };
    const double x = any(), y = any(), vx = any(), vy = any();
    const Points vCorners = {{x, y}, {x + vx, y + vy}, {x + vx - vy, y + vy + vx}, {x - vy, y + vx}};
    Points v;
    for (std::uint64_t i = 0, first = rng() % 4; i < 4; ++i)
        v.push_back(vCorners[(first + i) % 4]);
    if (rng() % 2 == 0) std::swap(v[0], v[2]);
    v[3] = doubles::jittered(rng, v[3], shake);
    return scaledBetween(rng, v, -150, 150);
}

// clang-format off
const F orientationFamilies = {
    {"uniform",         [](Rng& r) { return uniformPoints(r, 3); }, 0.001, 0},
    {"lattice",         [](Rng& r) { return latticePoints(r, 3, 20, 1); }, 0.2, 0},
    {"nearCollinear",   [](Rng& r) { return doubles::nearCollinear(r); }, 1, 0},
    {"scaledCopies",    scaledCopies, 1, 0},
    {"scaledCopiesAtTheLimits", [](Rng& r) { return scaledNear(r, scaledCopies(r), 200); }, 1, 0},
    {"farAway",         [](Rng& r) { return doubles::nearCollinear(r, 1e6); }, 1, 0},
    {"tiny",            [](Rng& r) { return scaledBetween(r, doubles::nearCollinear(r), -1060, -400); }, 1, 0},
    {"squaresUnderflow",[](Rng& r) { return scaledBetween(r, doubles::nearCollinear(r), -545, -470); }, 1, 0},
    {"boundUnderflows", [](Rng& r) { return scaledBetween(r, doubles::nearCollinear(r), -516, -512); }, 1, 0},
    {"subnormal",       [](Rng& r) { return latticePoints(r, 3, 1000, 0x1p-1074); }, 1, 0},
    {"squaresOverflow", [](Rng& r) { return scaledBetween(r, doubles::nearCollinear(r, 1), 500, 540); }, 1, 0},
    {"squaresOverflowFarAway", [](Rng& r) { return scaledBetween(r, doubles::nearCollinear(r, 100), 500, 530); }, 1, 0},
    {"productsAtOverflow", productsAtOverflow, 1, 0},
    {"huge",            [](Rng& r) { return scaledBetween(r, doubles::nearCollinear(r), 900, 1021); }, 1, 0},
    {"mixedSizes",      [](Rng& r) { return pointsOfSize(r, 3, -60, 60); }, 1, 0},
    {"allSizes",        [](Rng& r) { return pointsOfSize(r, 3, -1074, 1023); }, 1, 0.2},
    {"anyBits",         [](Rng& r) { return doubles::anyPoints(r, 3); }, 1, 0.2},
};
const F inCircleFamilies = {
    {"uniform",         [](Rng& r) { return uniformPoints(r, 4); }, 0.001, 0},
    {"lattice",         [](Rng& r) { return latticePoints(r, 4, 20, 1); }, 0.1, 0},
    {"cocircular",      [](Rng& r) { return doubles::cocircular(r, 4, 1e5, -3e5); }, 1, 0},
    {"nearCocircular",  [](Rng& r) { return doubles::nearCocircular(r, 4); }, 1, 0},
    {"latticeTrapezoids", [](Rng& r) { return scaledBetween(r, latticeTrapezoid(r, 1, 30), -300, 300); }, 1, 0},
    {"latticesAtTheLimits", [](Rng& r) { return scaledNear(r, latticeTrapezoid(r, 10, 14), 200); }, 1, 0},
    {"hardlyOffLattices", hardlyOffLattice, 1, 0},
    {"roundingTrapezoids", roundingTrapezoid, 1, 0},
    {"turnedSquares", [](Rng& r) { return turnedSquare(r, int(r() % 3)); }, 1, 0},
    {"roundingTrapezoidsAtTheLimits", [](Rng& r) { return scaledNear(r, roundingTrapezoid(r), 200); }, 1, 0},
    {"nearCocircularAtTheLimits", [](Rng& r) { return scaledNear(r, doubles::nearCocircular(r, 4, 0, 4), r() % 2 == 0 ? 100 : 200); }, 1, 0},
    {"farAway",         [](Rng& r) { return doubles::nearCocircular(r, 4, 1e6); }, 1, 0},
    {"tiny",            [](Rng& r) { return scaledBetween(r, doubles::nearCocircular(r, 4), -1060, -300); }, 1, 0},
    {"permanentUnderflows", [](Rng& r) { return scaledBetween(r, doubles::nearCocircular(r, 4), -271, -240); }, 1, 0},
    {"permanentUnderflowsFarAway", [](Rng& r) { return scaledBetween(r, doubles::nearCocircular(r, 4, 1e3), -280, -250); }, 1, 0},
    {"needles",         [](Rng& r) { Points v = doubles::nearCollinear(r); v.push_back(doubles::jittered(r, v[2], 3)); return v; }, 1, 0},
    {"tinyNeedles",     [](Rng& r) { Points v = doubles::nearCollinear(r); v.push_back(doubles::jittered(r, v[0], 3)); return scaledBetween(r, v, -290, -200); }, 1, 0},
    {"subnormal",       [](Rng& r) { return latticePoints(r, 4, 1000, 0x1p-1074); }, 1, 0},
    {"permanentOverflows", [](Rng& r) { return scaledBetween(r, doubles::nearCocircular(r, 4), 245, 270); }, 1, 0},
    {"huge",            [](Rng& r) { return scaledBetween(r, doubles::nearCocircular(r, 4), 900, 1021); }, 1, 0},
    {"mixedSizes",      [](Rng& r) { return pointsOfSize(r, 4, -60, 60); }, 1, 0},
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
    const auto expectSign = [&](const Points& p, int sign) {
        const Decision expected = asDecision(sign);
        for (const auto stage : {stages::inCircleStatic, stages::inCircleLattice,
                                 stages::inCircleDoubleDouble, stages::inCircleExpansion}) {
            const Decision decision = stage(p[0], p[1], p[2], p[3]);
            EXPECT_TRUE(decision == stages::UNSURE || decision == expected) << doubles::hex(p);
        }
        EXPECT_EQ(expected, stages::inCircleExact(p[0], p[1], p[2], p[3], rationals)) << doubles::hex(p);
        EXPECT_TRUE(sign == 0 || !stages::isRectangle(p[0], p[1], p[2], p[3])) << doubles::hex(p);
    };
    for (int i = 0; i < samples && !HasFailure(); ++i) {
        Points p = GetParam().make(rng);
        if (oracle::orientation(p[0], p[1], p[2]) < 0) std::swap(p[0], p[1]);
        const int sign = oracle::inCircle(p[0], p[1], p[2], p[3]);
        expectSign(p, sign);
        expectSign({p[1], p[2], p[0], p[3]}, sign);
        expectSign({p[1], p[0], p[2], p[3]}, -sign);
        Triangle2 t;
        t.setProperties(&p[0], &p[1], &p[2]);
        EXPECT_EQ(static_cast<int>(asDecision(sign)), tests.inCircle(t, p[3])) << doubles::hex(p);
    }
    expectShare("static", tests.stageCounts().inCirclePastStatic, GetParam().maxPastStatic);
    expectShare("all but the rationals", tests.stageCounts().inCircleExact, GetParam().maxExact);
}

namespace {

using Counts = TeskTest::StageCounts;

// Inputs that one stage is there for.
struct Domain {
    const char* name;
    std::function<Points(Rng&)> make;
    std::uint64_t Counts::*pCount;
    double minShare; // of what gets past the static stage
};

// clang-format off
const std::vector<Domain> domains = {
    {"near lines, far away", [](Rng& r) { return doubles::nearCollinear(r, 1e3); }, &Counts::orientationDynamic, 0.9},
    {"on lines",             scaledCopies, &Counts::orientationExpansion, 0.9},
    {"lines of a grid",      [](Rng& r) { const Points p = uniformPoints(r, 3); return Points{p[0], {p[0].x(), p[1].y()}, {p[0].x(), p[2].y()}}; }, &Counts::orientationAxisParallel, 1},
    {"wide range",           [](Rng& r) { return pointsOfSize(r, 3, -600, 600); }, &Counts::orientationInterval, 0.01},
    {"rectangles",           [](Rng& r) { const Points p = uniformPoints(r, 2); return Points{p[0], {p[1].x(), p[0].y()}, p[1], {p[0].x(), p[1].y()}}; }, &Counts::inCircleRectangle, 1},
    {"lattice of 12 bits",   [](Rng& r) { return scaledBetween(r, latticeTrapezoid(r, 2, 11), -180, 180); }, &Counts::inCircleLattice, 0.7},
    {"lattice of 25 bits",   [](Rng& r) { return scaledBetween(r, latticeTrapezoid(r, 20, 24), -180, 160); }, &Counts::inCircleLattice, 0.7},
    {"turned squares",       [](Rng& r) { return turnedSquare(r, 0); }, &Counts::inCircleLattice, 1},
    {"near circles",         [](Rng& r) { return doubles::nearCocircular(r, 4); }, &Counts::inCircleDoubleDouble, 0.95},
    {"near circles, tiny",   [](Rng& r) { return scaledBetween(r, doubles::nearCocircular(r, 4), -900, -400); }, &Counts::inCircleDoubleDouble, 0.95},
    {"on circles",           roundingTrapezoid, &Counts::inCircleExpansion, 0.5},
};
// clang-format on

} // namespace

TEST(Stages, answerNearlyAllOfTheirKindAndCountEveryAnswer) {
    for (const Domain& domain : domains) {
        Rng rng(11);
        TeskTest tests;
        for (int i = 0; i < 2000; ++i) {
            Points p = domain.make(rng);
            if (p.size() == 3) {
                tests.orientationUnbounded(p[0], p[1], p[2]);
                continue;
            }
            if (oracle::orientation(p[0], p[1], p[2]) < 0) std::swap(p[0], p[1]);
            Triangle2 t;
            t.setProperties(&p[0], &p[1], &p[2]);
            tests.inCircle(t, p[3]);
        }
        const Counts& c = tests.stageCounts();
        const auto past = c.orientationPastStatic + c.inCirclePastStatic;
        EXPECT_EQ(c.orientationPastStatic, c.orientationDynamic + c.orientationAxisParallel +
                                               c.orientationExpansion + c.orientationInterval +
                                               c.orientationExact);
        EXPECT_EQ(c.inCirclePastStatic, c.inCircleRectangle + c.inCircleLattice + c.inCircleDoubleDouble +
                                            c.inCircleExpansion + c.inCircleExact);
        EXPECT_GT(past, 500u) << domain.name;
        EXPECT_GE(static_cast<double>(c.*domain.pCount), domain.minShare * static_cast<double>(past))
            << domain.name;
    }
}
