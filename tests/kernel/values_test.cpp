#include "Circle2.h"
#include "KivoException.h"
#include "Segment2.h"
#include "Triangle2.h"
#include "Vector2.h"
#include "VertexPair2.h"
#include "tests/oracle/exact.h"
#include "tests/support/capture.h"
#include "tests/support/doubles.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <iomanip>
#include <limits>
#include <locale>
#include <sstream>

using namespace TESK_KIVO2D;
using doubles::Rng;

namespace {

constexpr double infinite = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
const std::string nullVectorWarning = "warning: normalize(const Vector2& other), Null length vector!\n";

template<class T>
std::string text(const T& value) {
    std::ostringstream stream;
    stream << value;
    return stream.str();
}

std::string address(const void* p) { return text(p); }

// 1,234.5 becomes 1.234,5
struct CommaNumbers : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

} // namespace

TEST(Point2, copiesKeepIndexAndLoseTheirTriangle) {
    Point2 a(1, 2), b(3, 4), c(0, 9);
    Triangle2 t;
    t.setProperties(&a, &b, &c);
    a.setCustomIndex(7);
    const Point2 copy(a);
    Point2 assigned(5, 5);
    t.setVertexPointer(0, &assigned);
    assigned = a;
    EXPECT_EQ(a.getIncidentTriangle(), &t);
    for (const Point2& p : {copy, assigned, Segment2(a, b).getSrc(), Circle2(a, 1).getCenter()}) {
        EXPECT_EQ(p, a);
        EXPECT_EQ(p.getCustomIndex(), 7);
        EXPECT_EQ(p.getIncidentTriangle(), nullptr);
    }
}

TEST(Point2, ordersByXThenY) {
    const Point2 lowest;
    EXPECT_EQ(lowest.x(), -DBL_MAX);
    EXPECT_EQ(lowest.y(), -DBL_MAX);
    EXPECT_EQ(lowest.getCustomIndex(), -1);
    EXPECT_EQ(lowest, Point2());
    const doubles::Points vAscending = {lowest, {-DBL_MAX, 0}, {-1, 5}, {0, -5e-324},
                                        {0, 0}, {0, 5e-324},   {1, -9}};
    for (std::size_t i = 0; i < vAscending.size(); ++i) {
        for (std::size_t j = 0; j < vAscending.size(); ++j) {
            EXPECT_EQ(vAscending[i] < vAscending[j], i < j);
            EXPECT_EQ(vAscending[i] > vAscending[j], i > j);
            EXPECT_EQ(vAscending[i] == vAscending[j], i == j);
            EXPECT_EQ(vAscending[i] != vAscending[j], i != j);
        }
    }
    EXPECT_EQ(Point2(0.0, -0.0), Point2(-0.0, 0.0));
    EXPECT_EQ(Point2(-3, 3).getMaxAbs(), 3);
    EXPECT_EQ(Point2(2, -8).getMaxAbs(), 8);
}

TEST(ValueText, followsTheStreamButNeverTheLocale) {
    Point2 p(1234567.25, -0.5);
    p.setCustomIndex(1000);
    const std::string start = "Point2 (" + address(&p) + ",1000): ";
    EXPECT_EQ(text(p), start + "1.23457e+06, -0.5");

    std::ostringstream stream;
    stream.imbue(std::locale(std::locale::classic(), new CommaNumbers));
    stream << std::setprecision(12) << p << "|" << std::setfill('.') << std::setw(20) << Vector2(1, 2.5)
           << "|" << std::left << std::setw(20) << Vector2(1, 2.5) << "|";
    EXPECT_EQ(stream.str(), start + "1234567.25, -0.5|.....Vector2: 1, 2.5|Vector2: 1, 2.5.....|");
}

TEST(ValueText, ofCompoundValuesHoldsThePointFormat) {
    const Segment2 segment(Point2(0, 1), Point2(2.5, -3));
    const std::string line = text(segment);
    const std::string start =
        "Segment2 (" + address(&segment) + "): Point2 (" + address(&segment) + ",-1): 0, 1,Point2 (";
    EXPECT_EQ(line.substr(0, start.size()), start);
    EXPECT_EQ(line.substr(line.find(",-1): 2.5")), ",-1): 2.5, -3");

    const Circle2 circle(1, 2, 9);
    EXPECT_EQ(text(circle), "Circle2: Point2 (" + address(&circle) + ",-1): 1, 2, r=3");
    EXPECT_EQ(circle.getSqRadius(), 9);
    EXPECT_EQ(text(-Vector2(0, 1)), "Vector2: -0, -1");
}

TEST(Vector2, hasTheUsualAlgebra) {
    Vector2 u(3, 4);
    const Vector2 v(-1, 2);
    EXPECT_EQ(u * v, 5);
    EXPECT_EQ(text(2.0 * u - v / 2 + v * 3), text(Vector2(6 + .5 - 3, 8 - 1 + 6)));
    EXPECT_EQ(text(Point2(5, 7) - Point2(2, 3)), text(u));
    u.set(0, -2);
    EXPECT_EQ(u.length(), 2);
    EXPECT_TRUE(std::signbit((-u).x()));
}

TEST(Vector2, normalizesEveryFiniteVectorButZero) {
    Rng rng(11);
    CapturedMessages captured;
    std::vector<Vector2> vVectors = {{1e308, 1e308}, {DBL_MAX, DBL_MAX}, {5e-324, 5e-324}, {1e-200, 0},
                                     {0, -1e200},    {DBL_MAX, 5e-324},  {-5e-324, 0},     {3e-310, -4e-310}};
    for (int i = 0; i < 20000; ++i)
        vVectors.emplace_back(doubles::anyFinite(rng), doubles::anyFinite(rng));
    for (int i = 0; i < 20000; ++i) {
        const double x = doubles::ofSize(rng, -1074, 1022);
        vVectors.emplace_back(x, x * doubles::uniform(rng, -2, 2));
    }
    for (const Vector2& v : vVectors) {
        const Vector2 unit = normalize(v);
        ASSERT_NEAR(unit.length(), 1, 4e-16) << std::hexfloat << v;
        // Parallel: compared as quotients, which scaling by powers of two leaves alone.
        const int exponent = std::ilogb(std::max(std::fabs(v.x()), std::fabs(v.y())));
        const Vector2 scaled(std::scalbn(v.x(), -exponent), std::scalbn(v.y(), -exponent));
        ASSERT_NEAR(scaled.x() * unit.y(), scaled.y() * unit.x(), 1e-15) << std::hexfloat << v;
        ASSERT_GT(scaled * unit, 0);
    }
    EXPECT_EQ(captured.output(), "");
}

TEST(Vector2, withoutDirectionNormalizesToZeroWithOneWarning) {
    for (const Vector2& v : {Vector2(), Vector2(-0.0, 0), Vector2(infinite, 1), Vector2(1, notANumber),
                             Vector2(infinite, notANumber)}) {
        CapturedMessages captured;
        const Vector2 unit = normalize(v);
        EXPECT_EQ(captured.output(), nullVectorWarning);
        EXPECT_EQ(captured.error(), "");
        EXPECT_EQ(unit.x(), 0);
        EXPECT_EQ(unit.y(), 0);
    }
}

TEST(Vector2, hasAnOrthogonalUnitVectorWheneverItHasADirection) {
    const auto expectVector = [](const Vector2& v, double x, double y) {
        EXPECT_EQ(v.x(), x);
        EXPECT_EQ(v.y(), y);
    };
    CapturedMessages captured;
    expectVector(Vector2(3, 0).orthogonalVector(), 0, 1);
    expectVector(Vector2(-3, 0).orthogonalVector(), 0, 1);
    expectVector(Vector2(0, 2).orthogonalVector(), 1, 0);
    expectVector(Vector2(0, 0).orthogonalVector(), 0, 0);
    expectVector(Vector2(1, 1).orthogonalVector(), 1 / std::sqrt(2.0), -1 / std::sqrt(2.0)); // a tie
    Rng rng(12);
    for (int i = 0; i < 3000; ++i) {
        const Vector2 v(doubles::anyFinite(rng), doubles::anyFinite(rng));
        const Vector2 n = v.orthogonalVector();
        ASSERT_NEAR(n.length(), 1, 4e-16);
        ASSERT_NEAR(normalize(v) * n, 0, 4e-16) << std::hexfloat << v;
        ASSERT_GT(std::fabs(v.x()) > std::fabs(v.y()) ? n.y() : n.x(), 0);
    }
    EXPECT_EQ(captured.output(), "");
    expectVector(Vector2(notANumber, 1).orthogonalVector(), 0, 0);
    EXPECT_EQ(captured.output(), nullVectorWarning);
}

TEST(Segment2, equalityIgnoresDirectionAndIndices) {
    Point2 a(1, 2), b(3, 5);
    a.setCustomIndex(4);
    const Segment2 ab(a, b);
    Segment2 swapped(ab);
    swapped.swapSrcTrg();
    EXPECT_EQ(swapped, ab);
    EXPECT_EQ(swapped.getSrc(), b);
    EXPECT_EQ(swapped.getTrg().getCustomIndex(), 4);
    EXPECT_EQ(ab, Segment2(Point2(3, 5), Point2(1, 2)));
    EXPECT_NE(ab, Segment2(a, a));
    EXPECT_NE(ab, Segment2(b, b));
    EXPECT_EQ(ab.getSqLen2D(), 13);
    EXPECT_EQ(Segment2(), Segment2(Point2(), Point2()));
}

TEST(VertexPair2, isAnUnorderedKeyByIdentity) {
    Point2 aVtx[3] = {{1, 1}, {0, 0}, {1, 1}};
    const VertexPair2 pair(&aVtx[1], &aVtx[0]);
    EXPECT_EQ(pair, VertexPair2(&aVtx[0], &aVtx[1]));
    EXPECT_EQ(pair.getFirst(), &aVtx[0]);
    EXPECT_EQ(pair.getSecond(), &aVtx[1]);
    EXPECT_EQ(pair.getSqLen2D(), 2);
    EXPECT_NE(pair, VertexPair2(&aVtx[1], &aVtx[2])); // equal coordinates
    EXPECT_EQ(VertexPair2().getFirst(), nullptr);
    EXPECT_EQ(VertexPair2(&aVtx[0], nullptr).getSqLen2D(), 0);

    std::vector<VertexPair2> vAscending = {VertexPair2(), {nullptr, &aVtx[0]}};
    for (int i = 0; i < 3; ++i)
        for (int j = i; j < 3; ++j)
            vAscending.emplace_back(&aVtx[j], &aVtx[i]);
    for (std::size_t i = 0; i < vAscending.size(); ++i)
        for (std::size_t j = 0; j < vAscending.size(); ++j)
            EXPECT_EQ(vAscending[i] < vAscending[j], i < j);
}

TEST(timer, measuresSinceThePreviousCallAndPrintsUnderALabel) {
    timer("");
    CapturedMessages captured;
    EXPECT_GE(timer(""), 0);
    EXPECT_EQ(captured.output(), "");
    const double seconds = timer("two words");
    EXPECT_EQ(captured.output(), "Timer: two words " + text(seconds) + "s\n");
}
