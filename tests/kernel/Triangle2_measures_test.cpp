#include "Triangle2.h"

#include "KivoException.h"
#include "Vector2.h"
#include "kernel/tools.h"
#include "tests/oracle/exact.h"
#include "tests/support/capture.h"
#include "tests/support/doubles.h"

#include <gtest/gtest.h>
#include <limits>
#include <sstream>

using namespace TESK_KIVO2D;
using doubles::Points;
using doubles::Rng;

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
const std::string prefix = "      [Kivo2D-Message] ";

// A triangle with corners of its own, in the order given.
struct FreeTriangle {
    explicit FreeTriangle(const Points& vPoints, int exponent = 0)
        : vCorners(doubles::scaled(vPoints, exponent)) {
        t.setProperties(&vCorners[0], &vCorners[1], &vCorners[2]);
    }
    Points vCorners;
    Triangle2 t;
};

// Counter-clockwise, drawn from [0, 1).
Points randomTriangle(Rng& rng) {
    Points vPoints;
    do {
        vPoints.clear();
        for (int i = 0; i < 3; ++i)
            vPoints.emplace_back(doubles::uniform(rng), doubles::uniform(rng));
    } while (oracle::orientation(vPoints[0], vPoints[1], vPoints[2]) <= 0);
    return vPoints;
}

template<class Number>
double deviation(const Number (&aDistance)[3]) {
    double largest = 0;
    for (int i = 0; i < 3; ++i) {
        const Number difference = aDistance[i] - aDistance[(i + 1) % 3];
        largest = std::max(largest, std::fabs(mpf_class(difference).get_d()));
    }
    return largest;
}

// The largest difference of the distances from the corners, with 512 bits.
double exactDeviation(const Points& vCorners, const Point2& center) {
    mpf_class aDistance[3];
    for (std::size_t i = 0; i < 3; ++i) {
        const mpf_class dx = mpf_class(vCorners[i].x(), 512) - center.x();
        const mpf_class dy = mpf_class(vCorners[i].y(), 512) - center.y();
        aDistance[i] = mpf_class(0, 512);
        aDistance[i] = sqrt(mpf_class(dx * dx + dy * dy, 512));
    }
    return deviation(aDistance);
}

// What the flag is defined by: distances in doubles, and the two outer edges of the fan of the longest edge.
bool isAccurate(const Points& vCorners, int ith, const Point2& center) {
    const auto corner = static_cast<std::size_t>(ith), next = (corner + 1) % 3, prev = (corner + 2) % 3;
    double aDistance[3];
    for (std::size_t i = 0; i < 3; ++i)
        aDistance[i] = std::hypot(vCorners[i].x() - center.x(), vCorners[i].y() - center.y());
    return deviation(aDistance) < 1e-6 &&
           oracle::orientation(vCorners[prev], vCorners[corner], center) >= 0 &&
           oracle::orientation(vCorners[corner], vCorners[next], center) >= 0;
}

std::string address(const void* p) {
    std::ostringstream stream;
    stream << p;
    return stream.str();
}

} // namespace

TEST(TriangleMeasures, ofTheUnitRightTriangle) {
    const FreeTriangle f({{0, 0}, {1, 0}, {0, 1}});
    EXPECT_NEAR(f.t.getArea2D(), 0.5, 1e-15);
    EXPECT_EQ(f.t.getInteriorAngle2D(0), std::acos(0.0) * 180.0 / 3.14159);
    EXPECT_GT(f.t.getInteriorAngle2D(0), 90.00007);
    EXPECT_EQ(f.t.getSquaredEdgeLength(0), 2);
    EXPECT_EQ(f.t.getSquaredEdgeLength(1), 1);
    EXPECT_EQ(f.t.getSquaredEdgeLength(2), 1);
    EXPECT_EQ(f.t.getMinIndex(), 1);
    EXPECT_EQ(f.t.getMaxIndex(), 0);
    EXPECT_EQ(f.t.getBarycenter(), Point2(1.0 / 3, 1.0 / 3));
    EXPECT_EQ(f.t.getBarycenter().getCustomIndex(), -1);
    const auto [center, bAccurate] = f.t.getDual();
    EXPECT_EQ(center, Point2(0.5, 0.5));
    EXPECT_TRUE(bAccurate);
}

TEST(TriangleMeasures, followScalingByPowersOfTwoToTheEndsOfTheRange) {
    Rng rng(31);
    for (int round = 0; round < 300; ++round) {
        const Points vPoints = randomTriangle(rng);
        const FreeTriangle unit(vPoints);
        // sin(angle) * product of the two sides, all independent of Heron's formula
        const Vector2 u = vPoints[1] - vPoints[0], v = vPoints[2] - vPoints[0];
        ASSERT_NEAR(unit.t.getArea2D(), 0.5 * (u.x() * v.y() - u.y() * v.x()), 1e-8);
        double sum = 0;
        for (int i = 0; i < 3; ++i)
            sum += unit.t.getInteriorAngle2D(i);
        ASSERT_NEAR(sum, 180 * 3.14159265358979 / 3.14159, 1e-6);
        for (const int exponent : {-940, -500, -300, -120, 90, 300, 500, 1023}) {
            const FreeTriangle scaled(vPoints, exponent);
            const double area = unit.t.getArea2D();
            ASSERT_EQ(scaled.t.getArea2D(), std::ldexp(area, 2 * exponent))
                << exponent << doubles::hex(vPoints);
            ASSERT_EQ(scaled.t.getMinIndex(), unit.t.getMinIndex());
            ASSERT_EQ(scaled.t.getMaxIndex(), unit.t.getMaxIndex());
            const Point2 center = scaled.t.getBarycenter();
            ASSERT_NEAR(std::ldexp(center.x(), -exponent), unit.t.getBarycenter().x(), 1e-15);
            for (int i = 0; i < 3; ++i)
                ASSERT_EQ(scaled.t.getInteriorAngle2D(i), unit.t.getInteriorAngle2D(i));
        }
    }
}

TEST(TriangleMeasures, handleCoordinatesWhoseDifferencesOverflow) {
    const FreeTriangle f({{-DBL_MAX, -DBL_MAX}, {DBL_MAX, -DBL_MAX}, {-DBL_MAX, DBL_MAX}});
    EXPECT_EQ(f.t.getArea2D(), std::numeric_limits<double>::infinity());
    EXPECT_EQ(f.t.getMaxIndex(), 0);
    EXPECT_NEAR(f.t.getInteriorAngle2D(0), 90, 1e-3);
    EXPECT_NEAR(f.t.getInteriorAngle2D(1), 45, 1e-3);
    EXPECT_NEAR(f.t.getBarycenter().x() / DBL_MAX, -1.0 / 3, 1e-15);
    const Point2 center = f.t.getDual().first;
    EXPECT_LT(center.getMaxAbs() / DBL_MAX, 1e-15);
}

TEST(TriangleMeasures, ofCollinearCornersAreNeutral) {
    CapturedMessages captured;
    for (const Points& vPoints : {Points{{0, 0}, {1, 0}, {3, 0}}, Points{{1, 1}, {2, 2}, {4, 4}},
                                  Points{{0, 0}, {5e-324, 0}, {1e-323, 0}}}) {
        const FreeTriangle f(vPoints);
        EXPECT_EQ(f.t.getArea2D(), 0);
        const auto [center, bAccurate] = f.t.getDual();
        EXPECT_FALSE(bAccurate);
        EXPECT_TRUE(std::isfinite(center.x()) && std::isfinite(center.y()));
    }
    const Point2 farCenter = FreeTriangle({{0, 0}, {1, 0}, {3, 0}}).t.getDual().first;
    EXPECT_NEAR(std::fabs(farCenter.y()), 1e13, 1e12);
    EXPECT_NEAR(farCenter.x(), 1.5, 1e-9);
    EXPECT_EQ(FreeTriangle({{2, 3}, {2, 3}, {2, 3}}).t.getDual(), std::pair(Point2(2, 3), false));
    EXPECT_EQ(captured.output(), "");
}

TEST(Circumcenter, isEquallyFarFromTheCornersWheneverItIsCalledAccurate) {
    EXPECT_EQ(FreeTriangle({{0, 0}, {4, 0}, {2, 1}}).t.getDual(), std::pair(Point2(2, -1.5), true));
    Rng rng(32);
    int numAccurate = 0, numNot = 0;
    for (int round = 0; round < 6000; ++round) {
        Points vPoints = randomTriangle(rng);
        const double height = std::ldexp(1.0, -doubles::below(rng, 45));
        for (Point2& p : vPoints)
            p = Point2(p.x() + (round % 3) * 1e5, p.y() * height + (round % 2) * 1e4);
        vPoints = doubles::scaled(vPoints, (round % 5) * 6);
        if (oracle::orientation(vPoints[0], vPoints[1], vPoints[2]) <= 0) continue;
        const auto [center, bAccurate] = FreeTriangle(vPoints).t.getDual();
        ASSERT_TRUE(std::isfinite(center.x()) && std::isfinite(center.y()));
        ASSERT_EQ(bAccurate, isAccurate(vPoints, FreeTriangle(vPoints).t.getMaxIndex(), center));
        (bAccurate ? numAccurate : numNot) += 1;
        const double limit = 1e-6 + 1e-15 * center.getMaxAbs();
        if (bAccurate) {
            ASSERT_LT(exactDeviation(vPoints, center), limit) << doubles::hex(vPoints);
        }
    }
    EXPECT_GT(numAccurate, 2000);
    EXPECT_GT(numNot, 500);
}

TEST(Circumcenter, ofCornersTooFlatForTheFormulaLiesFarOutOnTheBisector) {
    // The denominator of the closed formula rounds to 0, yet the corners are not collinear.
    const Points vPoints = {{0x1.14bed17a85858p-2, -0x1.29876dcb70b96p-1},
                            {-0x1.a8652674cf4ep-4, 0x1.d4e3cde9c68cep-1},
                            {0x1.c93eab373a467p-2, -0x1.496fa708ded34p+0}};
    ASSERT_GT(oracle::orientation(vPoints[0], vPoints[1], vPoints[2]), 0);
    const auto [center, bAccurate] = FreeTriangle(vPoints).t.getDual();
    EXPECT_TRUE(bAccurate);
    EXPECT_NEAR(Vector2(center.x(), center.y()).length(), 1e13, 1);
    EXPECT_LT(exactDeviation(vPoints, center), 0.002); // half the spacing of doubles there
}

TEST(Circumcenter, scalesToTheEndsOfTheRange) {
    Rng rng(33);
    for (int round = 0; round < 200; ++round) {
        const Points vPoints = randomTriangle(rng);
        const Point2 expected = FreeTriangle(vPoints).t.getDual().first;
        for (const int exponent : {-900, -400, 400, 900}) {
            const Point2 center = FreeTriangle(vPoints, exponent).t.getDual().first;
            const double size = 1e-7 * (1 + expected.getMaxAbs());
            ASSERT_NEAR(std::ldexp(center.x(), -exponent), expected.x(), size)
                << exponent << doubles::hex(vPoints);
            ASSERT_NEAR(std::ldexp(center.y(), -exponent), expected.y(), size)
                << exponent << doubles::hex(vPoints);
        }
    }
}

TEST(hasOnEdge, agreesWithExactArithmetic) {
    const FreeTriangle f({{0, 0}, {2, 0}, {0, 2}});
    for (const Point2& onEdge : Points({{1, 1}, {2, 0}, {0, 2}}))
        EXPECT_TRUE(f.t.hasOnEdge(0, onEdge));
    EXPECT_FALSE(f.t.hasOnEdge(0, Point2(3, -1)));
    EXPECT_FALSE(f.t.hasOnEdge(0, Point2(1, std::nextafter(1.0, 0.0))));
    Rng rng(34);
    int numOn = 0;
    for (int round = 0; round < 20000; ++round) {
        const auto draw = [&rng] {
            return Point2(doubles::below(rng, 5) * 0.1, doubles::below(rng, 5) * 0.1);
        };
        const Points vPoints = {draw(), draw(), draw()};
        if (oracle::orientation(vPoints[0], vPoints[1], vPoints[2]) <= 0) continue;
        const int ith = doubles::below(rng, 3);
        const auto next = static_cast<std::size_t>(ith + 1) % 3;
        const Point2 q = draw(), a = vPoints[next], b = vPoints[(next + 1) % 3];
        const bool bOn = oracle::orientation(a, b, q) == 0 && !(q < std::min(a, b)) && !(q > std::max(a, b));
        ASSERT_EQ(FreeTriangle(vPoints).t.hasOnEdge(ith, q), bOn) << ith << doubles::hex(vPoints);
        numOn += bOn ? 1 : 0;
    }
    EXPECT_GT(numOn, 500);
}

TEST(TriangleMeasures, refuseAnIndexBeyondTheCorners) {
    const FreeTriangle f({{0, 0}, {1, 0}, {0, 1}});
    for (const int ith : {-1, 3}) {
        CapturedMessages captured;
        EXPECT_THROW(f.t.getSquaredEdgeLength(ith), KivoException);
        EXPECT_THROW(f.t.getInteriorAngle2D(ith), KivoException);
        EXPECT_THROW(f.t.hasOnEdge(ith, Point2(0, 0)), KivoException);
        EXPECT_EQ(
            captured.output().rfind(prefix + "Kivo, , ERROR: Condition [ checkRange(ith) failed ]\n", 0), 0u);
    }
}

TEST(computeArea, reportsLengthsOfNoTriangle) {
    CapturedMessages captured;
    EXPECT_EQ(computeArea(3, 4, 5), 6);
    EXPECT_EQ(computeArea(1, 1, 2.1), 0); // misses it by less than 1
    EXPECT_EQ(captured.output(), "");
    EXPECT_EQ(computeArea(1, 1, 3), 0);
    EXPECT_THROW(computeArea(1, notANumber, 1), KivoException);
    EXPECT_EQ(
        captured.output(),
        prefix + "Triangle2::computeArea(), WARNING: Numeric issue in Triangle::getArea(), sqArea=-2.8125\n" +
            prefix + "Triangle2::computeArea(), WARNING: invalid value, no area for this triangle\n");
    EXPECT_THROW(FreeTriangle({{0, 0}, {1, 0}, {0, notANumber}}).t.getArea2D(), KivoException);
}

TEST(getAngleDegree, refusesVectorsThatAreNoUnitVectors) {
    EXPECT_EQ(getAngleDegree(Vector2(1, 0), Vector2(1.05, 0)), 0); // the product is clamped
    EXPECT_EQ(getAngleDegree(Vector2(1, 0), Vector2(-1.05, 0)), std::acos(-1.0) * 180 / 3.14159);
    CapturedMessages captured;
    EXPECT_THROW(getAngleDegree(Vector2(1, 0), Vector2(0, 2.5)), KivoException);
    EXPECT_EQ(captured.error(),
              "getAngleDegree has been called for vectors with length!=1.0: len0=1, len1=2.5\n");
    EXPECT_EQ(
        captured.output().rfind(prefix + "Kivo, , ERROR: Condition [ false failed ]\n      tools.cpp:", 0),
        0u);
}

TEST(TriangleMeasures, angleAtADoubledCornerIsAnError) {
    CapturedMessages captured;
    EXPECT_THROW(FreeTriangle({{1, 1}, {1, 1}, {2, 5}}).t.getInteriorAngle2D(0), KivoException);
    EXPECT_EQ(captured.output().rfind("warning: normalize(const Vector2& other), Null length vector!\n", 0),
              0u);
}

TEST(TriangleText, namesAreaOrientationCornersAndNeighbours) {
    const auto describe = [](const FreeTriangle& f, const std::string& first) {
        std::ostringstream stream, expected;
        stream << f.t;
        expected << "Triangle(" << address(&f.t) << "): " << first << "\n";
        for (int i = 0; i < 3; ++i)
            expected << i << ": " << f.vCorners[static_cast<std::size_t>(i)]
                     << "\t oppTriangle: " << address(f.t.getOppositeTriangle(i)) << "\n";
        EXPECT_EQ(stream.str(), expected.str());
    };
    FreeTriangle ccw({{0, 0}, {4, 0}, {0, 3}});
    const FreeTriangle other({{0, 0}, {0, 3}, {-4, 0}});
    ccw.t.setOppTriangle(1, const_cast<Triangle2*>(&other.t));
    describe(ccw, "area2D=6, CCW");
    describe(FreeTriangle({{0, 0}, {0, 3}, {4, 0}}), "area2D=6, ATTENTION, CLOCKWISE CORNERS!");
    describe(FreeTriangle({{0, 0}, {1, 1}, {2, 2}}), "area2D=0, ATTENTION, COLLINEAR CORNERS");

    ccw.t.clearProperties();
    std::ostringstream retired;
    retired << ccw.t;
    EXPECT_EQ(retired.str(), "Triangle(" + address(&ccw.t) + "): no corners\n");
}
