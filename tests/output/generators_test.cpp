#include "functions.h"

#include "KivoException.h"
#include "tests/oracle/exact.h"
#include "tests/support/capture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <set>

using namespace TESK_KIVO2D;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double largest = std::numeric_limits<double>::max();

using Polygon = std::vector<Segment2>;

bool isOnSegment(const Point2& p, const Point2& a, const Point2& b) {
    return !(p < std::min(a, b)) && !(std::max(a, b) < p) && oracle::orientation(a, b, p) == 0;
}

// Every corner and every pair of sides, exactly.
std::string findFault(const Polygon& vPolygon) {
    const std::size_t num = vPolygon.size();
    bool bCounterClockwise = false;
    for (std::size_t i = 0; i < num; ++i) {
        const Point2 src = vPolygon[i].getSrc(), trg = vPolygon[i].getTrg();
        const Segment2& next = vPolygon[(i + 1) % num];
        if (trg != next.getSrc()) return "not a closed chain";
        if (isOnSegment(next.getTrg(), src, trg) || isOnSegment(src, trg, next.getTrg()))
            return "turns back on itself";
        for (std::size_t k = i + 2; k < num; ++k) {
            const bool bNeighbours = (k + 1) % num == i;
            if (!bNeighbours && oracle::meeting(src, trg, vPolygon[k].getSrc(), vPolygon[k].getTrg()) != 0)
                return "touches itself";
        }
        const bool bSmallest = std::none_of(vPolygon.begin(), vPolygon.end(),
                                            [&](const Segment2& side) { return side.getSrc() < trg; });
        if (bSmallest) bCounterClockwise = oracle::orientation(src, trg, next.getTrg()) > 0;
    }
    return bCounterClockwise ? "" : "not counter-clockwise";
}

// The points that the polygon generator draws.
std::set<Point2> drawnPoints(std::size_t num, double min, double max, unsigned int seed) {
    std::vector<Point2> vPoints;
    generateRandomPoints(num, min, max, vPoints, seed);
    return {vPoints.begin(), vPoints.end()};
}

bool areOnOneLine(const std::set<Point2>& sPoints) {
    for (const Point2& p : sPoints)
        if (oracle::orientation(*sPoints.begin(), *sPoints.rbegin(), p) != 0) return false;
    return true;
}

} // namespace

TEST(Generators, numbersAreTheLowestFifteenBitsOfTheCLibraryScaled) {
    std::vector<double> vNumbers(3, 99.0);
    generateRandomNumbers(1000, -5, 20, vNumbers, 42);
    ASSERT_EQ(1000U, vNumbers.size());
    std::srand(42);
    for (const double number : vNumbers)
        EXPECT_EQ((std::rand() & 0x7FFF) * (25 * 3.0517578125e-5) + -5, number);
    std::vector<Point2> vPoints(3);
    generateRandomPoints(500, -5, 20, vPoints, 42);
    ASSERT_EQ(500U, vPoints.size());
    for (std::size_t i = 0; i < 500; ++i)
        EXPECT_EQ(Point2(vNumbers[i], vNumbers[500 + i]), vPoints[i]);
}

TEST(Generators, onlySeedZeroGivesOtherDataOnEachCall) {
    std::set<std::vector<double>> sSequences;
    std::vector<double> vNumbers;
    for (int i = 0; i < 20; ++i) {
        generateRandomNumbers(10, 0, 1, vNumbers, 0);
        sSequences.insert(vNumbers);
    }
    EXPECT_EQ(20U, sSequences.size());
    Polygon vFirst, vSecond;
    generateRandomSegments(50, 0, 1, 0.1, vFirst, 5);
    generateRandomSegments(50, 0, 1, 0.1, vSecond, 5);
    EXPECT_EQ(vFirst, vSecond);
    generateRandomSegments(50, 0, 1, 0.1, vSecond, 6);
    EXPECT_NE(vFirst, vSecond);
}

TEST(Generators, anEmptyRangeIsAnAssertionAndAnInfiniteOneAWarning) {
    CapturedMessages messages;
    std::vector<double> vNumbers;
    std::vector<Point2> vPoints;
    Polygon vSegments;
    EXPECT_THROW(generateRandomNumbers(3, 2, 2, vNumbers, 1), KivoException);
    EXPECT_THROW(generateRandomPoints(3, 2, 1, vPoints, 1), KivoException);
    EXPECT_THROW(generateRandomSegments(3, 2, 2, 1, vSegments, 1), KivoException);
    EXPECT_THROW(generateRandomPolygon(3, 2, 2, vSegments, 1), KivoException);
    EXPECT_NE(std::string::npos, messages.output().find("Condition [ min<max failed ]"));
    for (const double max : {infinity, std::nan("")}) {
        generateRandomNumbers(3, 0, max, vNumbers, 1);
        generateRandomPoints(3, 0, max, vPoints, 1);
        generateRandomSegments(3, 0, max, 1, vSegments, 1);
        EXPECT_TRUE(vNumbers.empty() && vPoints.empty() && vSegments.empty());
    }
}

TEST(Generators, aRangeBeyondTheDoublesStaysFiniteAndWithin) {
    std::vector<double> vNumbers;
    generateRandomNumbers(10000, -largest, largest, vNumbers, 3);
    double lowest = 0, highest = 0;
    for (const double number : vNumbers) {
        ASSERT_TRUE(number >= -largest && number < largest);
        lowest = std::min(lowest, number);
        highest = std::max(highest, number);
    }
    EXPECT_LT(lowest, -0.9 * largest);
    EXPECT_GT(highest, 0.9 * largest);
}

TEST(Generators, segmentsStartInTheSquareAndHaveOneOfThreeLengths) {
    Polygon vSegments(7);
    generateRandomSegments(30000, 10, 20, 2, vSegments,
                           9); // a pool of more points than there are random values
    ASSERT_EQ(30000U, vSegments.size());
    int aCounts[3] = {0, 0, 0};
    std::set<Point2> sStarts;
    for (const Segment2& segment : vSegments) {
        const Point2 src = segment.getSrc();
        EXPECT_TRUE(src.x() >= 10 && src.x() < 20 && src.y() >= 10 && src.y() < 20);
        const double length = std::sqrt(segment.getSqLen2D());
        const int kind = length > 1.8 ? 0 : length > 1.3 ? 1 : 2;
        const double aLengths[] = {2, 1.6, 1};
        EXPECT_NEAR(aLengths[kind], length, 1e-13);
        ++aCounts[kind];
        sStarts.insert(src);
    }
    for (const int count : aCounts)
        EXPECT_NEAR(10000, count, 500);
    // 30000 draws from 60100 points; from the first 32768 only they would be near 19600.
    EXPECT_NEAR(60100 * (1 - std::exp(-30000.0 / 60100)), static_cast<double>(sStarts.size()), 300);
}

TEST(Generators, segmentsThatCannotBeEndWithAWarning) {
    CapturedMessages messages;
    Polygon vSegments;
    const std::string prefix = "      [Kivo2D-Message] generateRandomSegments(), WARNING: ";
    generateRandomSegments(10, 1e10, 2e10, 1e-9, vSegments, 1);
    EXPECT_TRUE(vSegments.empty());
    EXPECT_EQ(prefix + "maxLen vanishes against the coordinates, only 0 segments generated\n",
              messages.output());
    for (const double maxLen : {0.0, -1.0, infinity, std::nan("")}) {
        generateRandomSegments(10, 0, 1, maxLen, vSegments, 1);
        EXPECT_TRUE(vSegments.empty());
    }
    generateRandomSegments(0, 0, 1, 1, vSegments, 1);
    EXPECT_TRUE(vSegments.empty());
    const std::string text = prefix + "maxLen must be positive and finite, nothing generated\n";
    EXPECT_EQ(4 * text.size(), messages.output().size() - messages.output().find(text));
}

TEST(Generators, polygonsAreSimpleAndRunThroughEveryPoint) {
    CapturedMessages messages;
    std::size_t numRefused = 0, numCornersLost = 0;
    const auto check = [&](double min, double max, std::size_t num, unsigned int seed) {
        const std::set<Point2> sPoints = drawnPoints(num, min, max, seed);
        Polygon vPolygon(2);
        generateRandomPolygon(num, min, max, vPolygon, seed);
        numCornersLost += num - sPoints.size();
        if (areOnOneLine(sPoints)) {
            ++numRefused;
            EXPECT_TRUE(vPolygon.empty());
            return;
        }
        std::set<Point2> sCorners;
        for (const Segment2& segment : vPolygon)
            sCorners.insert(segment.getSrc());
        EXPECT_EQ(vPolygon.size(), sCorners.size());
        EXPECT_EQ(sPoints, sCorners);
        ASSERT_EQ("", findFault(vPolygon)) << min << " " << max << " " << num << " seed " << seed;
    };
    // Out there only integers are doubles, so the points fall on a grid of a few steps: ties, points drawn
    // twice and points on the splitting line abound.
    const double far = 0x1p52;
    for (unsigned int seed = 1; seed <= 2000; ++seed) {
        for (const int steps : {1, 2, 3, 5, 9})
            check(far, far + steps, seed % 25, seed);
        check(-0.1, 0.3, seed % 20, seed);
    }
    check(-largest, largest, 300, 1);
    EXPECT_LT(500U, numRefused);
    EXPECT_LT(10000U, numCornersLost);
    const std::string line = "      [Kivo2D-Message] generateRandomPolygon(), WARNING: all points lie on one "
                             "line, no polygon generated\n";
    EXPECT_EQ(numRefused * line.size(), messages.output().size());
    EXPECT_EQ(0U, messages.output().find(line));
}

TEST(Generators, circlesAreAppendedWithTheTruncatedTurn) {
    std::vector<Point2> vPoints{{7, 7}};
    generateCircle(4, 0, 0, 1, 1, vPoints);
    ASSERT_EQ(5U, vPoints.size());
    EXPECT_EQ(Point2(1, 0), vPoints[1]);
    for (int i = 1; i < 4; ++i) {
        EXPECT_DOUBLE_EQ(std::cos(i * 1.570795), vPoints[1 + static_cast<std::size_t>(i)].x());
        EXPECT_DOUBLE_EQ(std::sin(i * 1.570795), vPoints[1 + static_cast<std::size_t>(i)].y());
    }
    generateCircle(1, 10, 20, 3, 5, vPoints);
    EXPECT_EQ(Point2(13, 20), vPoints.back());
    CapturedMessages messages;
    generateCircle(0, 0, 0, 1, 1, vPoints);
    EXPECT_EQ("      [Kivo2D-Message] generateCircle(), WARNING: numPoints=0\n", messages.output());
    EXPECT_EQ(6U, vPoints.size());
}

TEST(Generators, sineSegmentsAreJoinedPeriodicAndExchangeable) {
    Polygon vSine, vSwapped;
    generateSineSegments(24, 3, 10, 100, 6, 2, false, vSine);
    generateSineSegments(24, 3, 10, 100, 6, 2, true, vSwapped);
    ASSERT_EQ(24U, vSine.size());
    for (std::size_t i = 0; i < 24; ++i) {
        const Point2 src = vSine[i].getSrc(), trg = vSine[i].getTrg();
        EXPECT_DOUBLE_EQ(10 + 6 * static_cast<double>(i) / 24, src.x());
        EXPECT_NEAR(100 + 2 * std::sin(3.14159265358979 / 4 * static_cast<double>(i)), src.y(), 1e-12);
        EXPECT_EQ(trg, i == 23 ? Point2(16, 100) : vSine[i + 1].getSrc());
        EXPECT_EQ(src.y(), vSine[i % 8].getSrc().y());
        EXPECT_EQ(Point2(src.y(), src.x()), vSwapped[i].getSrc());
        EXPECT_EQ(Point2(trg.y(), trg.x()), vSwapped[i].getTrg());
    }
    CapturedMessages messages;
    generateSineSegments(0, 3, 0, 0, 1, 1, false, vSine);
    EXPECT_EQ("      [Kivo2D-Message] generateSineSegments(), WARNING: numSegments=0\n", messages.output());
    EXPECT_EQ(24U, vSine.size());
}
