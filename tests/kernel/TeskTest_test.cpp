#include "kernel/TeskTest.h"

#include "KivoException.h"
#include "functions.h"
#include "kernel/intersection.h"
#include "tests/oracle/exact.h"
#include "tests/support/capture.h"
#include "tests/support/doubles.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <limits>
#include <nlohmann/json.hpp>

using namespace TESK_KIVO2D;
using doubles::Points;
using doubles::Rng;

namespace {

Orientation2 asOrientation(int sign) {
    return sign > 0 ? ORIENTATION2_CCW : sign < 0 ? ORIENTATION2_CW : ORIENTATION2_COLLINEAR;
}

CircleInclusion2 asInclusion(int sign) {
    return sign > 0 ? CINC2_INCIRCLE : sign < 0 ? CINC2_OUTCIRCLE : CINC2_ZERO;
}

// A triangle with corners of its own, turned counter-clockwise.
struct FreeTriangle {
    FreeTriangle(const Point2& p, const Point2& q, const Point2& r) : a(p), b(q), c(r) {
        if (oracle::orientation(a, b, c) < 0) std::swap(b, c);
        t.setProperties(&a, &b, &c);
    }
    Point2 a, b, c;
    Triangle2 t;
};

// All entries, all rotations and all swaps of one triple against rationals.
void expectOrientationLaws(TeskTest& tests, const Point2& a, const Point2& b, const Point2& c) {
    const int sign = oracle::orientation(a, b, c);
    const Orientation2 expected = asOrientation(sign), swapped = asOrientation(-sign);
    const std::string text = doubles::hex({a, b, c});
    EXPECT_EQ(expected, tests.getOrientation2(&a, &b, &c)) << text;
    EXPECT_EQ(expected, tests.getOrientation2(&b, &c, &a)) << text;
    EXPECT_EQ(expected, tests.getOrientation2(&c, &a, &b)) << text;
    EXPECT_EQ(swapped, tests.getOrientation2(&b, &a, &c)) << text;
    EXPECT_EQ(swapped, tests.getOrientation2(&a, &c, &b)) << text;
    EXPECT_EQ(swapped, tests.getOrientation2(&c, &b, &a)) << text;
    EXPECT_EQ(expected, getOrientation2(&a, &b, &c)) << text;
    EXPECT_EQ(expected, getOrientation2_mt(&a, &b, &c)) << text;
}

Point2 gridNeighbour(const Point2& p, int i, int j) {
    return {doubles::stepped(p.x(), i), doubles::stepped(p.y(), j)};
}

const double notANumber = std::numeric_limits<double>::quiet_NaN();
const double infinity = std::numeric_limits<double>::infinity();

} // namespace

TEST(Orientation, isExactOn128By128NeighboursOfALine) {
    TeskTest tests;
    tests.setStaticBound(24);
    const Point2 b(12, 12), c(24, 24);
    for (int i = 0; i < 128; ++i) {
        const double x = 0.5 + i * 0x1p-53;
        for (int j = 0; j < 128; ++j)
            expectOrientationLaws(tests, {x, 0.5 + j * 0x1p-53}, b, c);
    }
}

TEST(Orientation, obeysRotationAndSwapOnAnyDoubles) {
    Rng rng(1);
    TeskTest tests;
    tests.setStaticBound(DBL_MAX);
    for (int i = 0; i < 2000; ++i) {
        const Points any = doubles::anyPoints(rng, 3), near = doubles::nearCollinear(rng);
        expectOrientationLaws(tests, any[0], any[1], any[2]);
        expectOrientationLaws(tests, near[0], near[1], near[2]);
    }
}

TEST(Orientation, neverReachesRationalsForEqualXOrEqualY) {
    TeskTest tests;
    tests.setStaticBound(DBL_MAX);
    const double far = 0x1.fffffffffffffp+1023;
    const Point2 aColumn[3] = {{0.1, -far}, {0.1, 0x1p-1074}, {0.1, far}};
    const Point2 aRow[3] = {{-far, 0.1}, {0x1p-1074, 0.1}, {far, 0.1}};
    EXPECT_EQ(ORIENTATION2_COLLINEAR, tests.getOrientation2(&aColumn[0], &aColumn[1], &aColumn[2]));
    EXPECT_EQ(ORIENTATION2_COLLINEAR, tests.getOrientation2(&aRow[0], &aRow[1], &aRow[2]));
    EXPECT_EQ(0u, tests.stageCounts().orientationExact);
}

TEST(Orientation, isCollinearForCoordinatesThatAreNotFinite) {
    CapturedMessages messages;
    const Point2 a(0, 0), b(1, 0);
    for (const double bad : {notANumber, infinity, -infinity}) {
        for (const Point2& c : {Point2(bad, 1), Point2(1, bad)}) {
            TeskTest tests;
            tests.setStaticBound(10);
            EXPECT_EQ(ORIENTATION2_COLLINEAR, tests.getOrientation2(&a, &b, &c));
            EXPECT_EQ(ORIENTATION2_COLLINEAR, getOrientation2(&c, &a, &b));
            EXPECT_EQ(ORIENTATION2_COLLINEAR, getOrientation2_mt(&a, &c, &b));
        }
    }
}

TEST(Orientation, ofAPointAgainstAnEdgeTakesTheEdgeOppositeTheCorner) {
    TeskTest tests;
    tests.setStaticBound(10);
    FreeTriangle f({0, 0}, {4, 0}, {0, 4});
    const Point2 belowEdge2(1, -1), beyondEdge0(3, 3);
    EXPECT_EQ(ORIENTATION2_CW, tests.getOrientation2(f.t, 2, belowEdge2));
    EXPECT_EQ(ORIENTATION2_CCW, tests.getOrientation2(f.t, 0, belowEdge2));
    EXPECT_EQ(ORIENTATION2_CW, tests.getOrientation2(f.t, 0, beyondEdge0));
    EXPECT_EQ(ORIENTATION2_COLLINEAR, tests.getOrientation2(f.t, 1, Point2(0, 9)));
    for (const int ith : {-1, 3}) {
        CapturedMessages messages;
        EXPECT_THROW(tests.getOrientation2(f.t, ith, belowEdge2), KivoException);
        EXPECT_NE(std::string::npos, messages.output().find("Condition [ num>=0 && num<3 failed ]\n"));
    }
}

TEST(StaticBound, isThreeTimes2ToTheMinus50TimesTheSquare) {
    TeskTest tests;
    EXPECT_EQ(0, tests.getMaxAbsCoord());
    EXPECT_EQ(0, tests.getUpperStaticBound());
    tests.setStaticBound(-4);
    EXPECT_EQ(4, tests.getMaxAbsCoord());
    EXPECT_EQ(0x1.8p-45, tests.getUpperStaticBound());
    EXPECT_EQ(-0x1.8p-45, tests.getLowerStaticBound());
}

TEST(StaticBound, growsToTheSumOfTheCoordinatesBeyondIt) {
    TeskTest tests;
    tests.setStaticBound(4);
    tests.growStaticBound({4, 0}, {1, -4}, {0, 0});
    EXPECT_EQ(4, tests.getMaxAbsCoord());
    tests.growStaticBound({5, 1}, {-6, 2}, {3, 3});
    EXPECT_EQ(11, tests.getMaxAbsCoord());
    tests.growStaticBound({0, 12}, {11, 0}, {1, 1});
    EXPECT_EQ(12, tests.getMaxAbsCoord());
}

TEST(StaticBound, complainsAboutPointsBeyondItAndAnswersRightAllTheSame) {
    TeskTest tests;
    const Point2 a(1, 2), b(-3, 0.25), c(0, 0);
    CapturedMessages messages;
    EXPECT_EQ(ORIENTATION2_CCW, tests.getOrientation2(&a, &b, &c));
    EXPECT_EQ("Static bound: 0\nmax p0: 2\nmax p1: 3\nmax p2: 0\n"
              "      [Kivo2D-Message] TeskTest::getOrientation2, WARNING: Recompute the static bound!\n"
              "maxAbsCoord=0\n",
              messages.output());
    tests.setStaticBound(3);
    const std::size_t length = messages.output().size();
    EXPECT_EQ(ORIENTATION2_CW, tests.getOrientation2(&b, &a, &c));
    EXPECT_EQ(length, messages.output().size()) << "a point on the bound is within";
    // Against a bound this small the static stage would take rounding errors for signs.
    tests.setStaticBound(1e-3);
    Rng rng(3);
    for (int i = 0; i < 500; ++i) {
        const Points p = doubles::nearCollinear(rng, 1000);
        EXPECT_EQ(asOrientation(oracle::orientation(p[0], p[1], p[2])),
                  tests.getOrientation2(&p[0], &p[1], &p[2]));
    }
}

TEST(InCircle, isExactOn64By64NeighboursOfACircle) {
    TeskTest tests;
    FreeTriangle f({3.1, 2.1}, {0.1, 5.1}, {-2.9, 2.1});
    for (int i = -32; i < 32; ++i) {
        for (int j = -32; j < 32; ++j) {
            const Point2 q = gridNeighbour({0.1, -0.9}, i, j);
            const CircleInclusion2 expected = asInclusion(oracle::inCircle(f.a, f.b, f.c, q));
            EXPECT_EQ(expected, tests.inCircle(f.t, q)) << doubles::hex({f.a, f.b, f.c, q});
            EXPECT_EQ(expected == CINC2_INCIRCLE, tests.isInCircleOrRectangle(f.t, q));
        }
    }
}

TEST(InCircle, countsTheFourthCornerOfARectangleAsInsideInTheBooleanFormOnly) {
    TeskTest tests;
    Rng rng(4);
    for (int i = 0; i < 200; ++i) {
        const double x0 = doubles::ofSize(rng, -300, 300), x1 = doubles::ofSize(rng, -300, 300);
        const double y0 = doubles::ofSize(rng, -300, 300), y1 = doubles::ofSize(rng, -300, 300);
        FreeTriangle f({x0, y0}, {x1, y0}, {x1, y1});
        const Point2 fourth(x0, y1);
        EXPECT_EQ(CINC2_ZERO, tests.inCircle(f.t, fourth));
        EXPECT_TRUE(tests.isInCircleOrRectangle(f.t, fourth));
        for (const int step : {-1, 1}) {
            const Point2 off = gridNeighbour(fourth, step, 0);
            const int sign = oracle::inCircle(f.a, f.b, f.c, off);
            EXPECT_EQ(asInclusion(sign), tests.inCircle(f.t, off));
            EXPECT_EQ(sign > 0, tests.isInCircleOrRectangle(f.t, off));
        }
    }
    // Every other point of the circle, the corners too, is on it and not inside.
    for (int i = 0; i < 500; ++i) {
        const Points p = doubles::cocircular(rng, 4, 17, -4);
        if (oracle::orientation(p[0], p[1], p[2]) == 0) continue;
        FreeTriangle f(p[0], p[1], p[2]);
        EXPECT_EQ(CINC2_ZERO, tests.inCircle(f.t, p[3]));
        const bool bRectangle =
            std::count_if(p.begin(), p.end() - 1, [&](auto& q) { return q.x() == p[3].x(); }) == 1 &&
            std::count_if(p.begin(), p.end() - 1, [&](auto& q) { return q.y() == p[3].y(); }) == 1 &&
            !(p[3] == p[0] || p[3] == p[1] || p[3] == p[2]);
        EXPECT_TRUE(bRectangle || !tests.isInCircleOrRectangle(f.t, p[3])) << doubles::hex(p);
    }
}

TEST(Segments, meetAsTheOracleSaysForAllOnA4By4Lattice) {
    TeskTest tests;
    // The smallest scale squares to 0, the largest to infinity.
    for (const double unit : {1.0, 1e-170, 0x1p-1074, 1e300}) {
        const auto point = [&](int i) { return Point2((i % 4) * unit, (i / 4) * unit); };
        for (int code = 0; code < 16 * 16 * 16 * 16; ++code) {
            const Point2 p1 = point(code % 16), p2 = point(code / 16 % 16), p3 = point(code / 256 % 16),
                         p4 = point(code / 4096);
            const int expected = oracle::meeting(p1, p2, p3, p4);
            ASSERT_EQ(expected, tests.classifySegments(p1, p2, p3, p4)) << doubles::hex({p1, p2, p3, p4});
        }
    }
}

TEST(Segments, touchByTheSmallestDistanceThatDoublesHave) {
    TeskTest tests;
    const Point2 a(0, 0), b(1, 0), inside(1e-20, 0), before(-1e-20, 0), c(0.5, 0x1p-1074), d(0.5, 1);
    EXPECT_EQ(IST_COLLINEAR, tests.classifySegments(a, b, inside, {-1, 0}));
    EXPECT_EQ(IST_NOIS, tests.classifySegments(a, b, before, {-1, 0}));
    EXPECT_EQ(IST_NOIS, tests.classifySegments(a, b, c, d));
    EXPECT_EQ(IST_REGULAR, tests.classifySegments(a, b, {0.5, -0.0}, d));
}

TEST(Intersection, isTheRationalOneRoundedOnceTowardsZero) {
    Rng rng(5);
    for (int i = 0; i < 3000; ++i) {
        Points p;
        while (p.size() < 4) {
            const int span = i % 3 == 0 ? 300 : 3;
            const double x = doubles::ofSize(rng, -span, span);
            p.emplace_back(x, doubles::ofSize(rng, -span, span));
        }
        double x = 0, y = 0;
        getIntersectionCoords(p[0], p[1], p[2], p[3], x, y);
        const oracle::RationalPoint exact = oracle::lineIntersection(p[0], p[1], p[2], p[3]);
        EXPECT_TRUE(oracle::isTruncation(x, exact.x) && oracle::isTruncation(y, exact.y)) << doubles::hex(p);
    }
}

TEST(Intersection, ofParallelLinesIsReportedAndThrows) {
    double x = 0, y = 0;
    for (const Point2& end : {Point2(2, 5), Point2(0, 1)}) { // parallel; a line without direction
        CapturedMessages messages;
        EXPECT_THROW(getIntersectionCoords({0, 0}, {1, 2}, {0, 1}, end, x, y), KivoException);
        const std::string expected =
            "      [Kivo2D-Message] TeskTest::getIntersectionCoords(), ERROR: denom=0 -> parallel segments\n"
            "      [Kivo2D-Message] Kivo, , ERROR: Condition [ false failed ]\n      intersection.cpp:";
        EXPECT_EQ(expected, messages.output().substr(0, expected.size()));
    }
    getIntersectionCoords({0, 0}, {1, 1}, {0, 1}, {1, 0}, x, y); // and the lock is free again
    EXPECT_EQ(0.5, x);
}

TEST(Debug, printsWhatEachStageSays) {
    struct Row {
        Point2 a, b, c;
        const char* text;
    };
    const Row aRows[] = {{{1, 0},
                          {0, 1},
                          {0, 0},
                          "simple result=1\nsimple test says positive\nResult of dynamic ub: 1\n"
                          "Result of dynamic lb: 1\nexact test says POSITIVE\n"},
                         {{0, 1},
                          {1, 0},
                          {0, 0},
                          "simple result=-1\nsimple test says negative\nResult of dynamic ub: -1\n"
                          "Result of dynamic lb: -1\nexact test says NEGATIVE\n"},
                         {{1, 1},
                          {2, 2},
                          {0, 0},
                          "simple result=0\nsimple test says 'no idea'\nResult of dynamic ub: 0\n"
                          "Result of dynamic lb: -0\nexact test says ZERO\n"}};
    for (const Row& row : aRows) {
        TeskTest tests;
        tests.setStaticBound(2);
        CapturedMessages messages;
        tests.debug(row.a, row.b, row.c);
        EXPECT_EQ("TeskTest::debug()\nSTATIC BOUND=1.06581e-14 resp. -1.06581e-14\n" + std::string(row.text),
                  messages.output());
    }
}

TEST(Orientation, hasNames) {
    EXPECT_EQ("ORIENTATION2_COLLINEAR", getString(ORIENTATION2_COLLINEAR));
    EXPECT_EQ("ORIENTATION2_CCW", getString(ORIENTATION2_CCW));
    EXPECT_EQ("ORIENTATION2_CW", getString(ORIENTATION2_CW));
    EXPECT_EQ("", getString(static_cast<Orientation2>(3)));
}

// Published inputs with their signs; they stay where they are, so only the folder's owner can run these.
namespace {

struct PublishedSigns : testing::TestWithParam<std::string> {
    std::vector<std::pair<Points, int>> read(const std::string& name) const {
        std::ifstream file(std::filesystem::path(GetParam()) / "open" / (name + ".json"));
        std::vector<std::pair<Points, int>> vItems;
        if (!file) return vItems;
        const auto bundle = nlohmann::json::parse(file);
        for (const auto& item : bundle["items"]) {
            const auto coords = item["coords"].get<std::vector<double>>();
            Points vPoints;
            for (std::size_t i = 0; i < coords.size(); i += 2)
                vPoints.emplace_back(coords[i], coords[i + 1]);
            vItems.emplace_back(vPoints, item["sign"].get<int>());
        }
        return vItems;
    }
};

std::vector<std::string> dataFolders() {
    const char* folder = std::getenv("KIVO2D_DATA");
    return folder == nullptr ? std::vector<std::string>() : std::vector<std::string>{folder};
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(PublishedSigns);
INSTANTIATE_TEST_SUITE_P(dataFolder, PublishedSigns, testing::ValuesIn(dataFolders()),
                         [](const auto&) { return "given"; });

} // namespace

TEST_P(PublishedSigns, ofOrientationsAreOurs) {
    const auto vItems = read("pred_orient2d_open");
    ASSERT_FALSE(vItems.empty());
    for (const auto& [p, sign] : vItems)
        EXPECT_EQ(asOrientation(sign), getOrientation2(&p[0], &p[1], &p[2])) << doubles::hex(p);
}

TEST_P(PublishedSigns, ofInCircleTestsAreOurs) {
    const auto vItems = read("pred_incircle_open");
    ASSERT_FALSE(vItems.empty());
    TeskTest tests;
    for (const auto& [p, sign] : vItems) {
        FreeTriangle f(p[0], p[1], p[2]);
        const bool bTurned = oracle::orientation(p[0], p[1], p[2]) < 0;
        EXPECT_EQ(asInclusion(bTurned ? -sign : sign), tests.inCircle(f.t, p[3])) << doubles::hex(p);
    }
}
