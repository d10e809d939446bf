#pragma once

#include "Point2.h"
#include "Triangle2.h"
#include "ZoneQuality.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace TESK_KIVO2D {

enum class LimitOrder { ASCENDING, DESCENDING };

// The class of a number among limits, found without a search. The upper 15 bits of a double (sign, exponent,
// three of the mantissa) name a cell; no cell holds two limits, so the class is what the cell says or the
// next one.
template<LimitOrder order>
class CellTable {
public:
    // Class k begins with limit k - 1. At most 63 limits, in the order of the classes; no two in one cell.
    explicit CellTable(const std::vector<double>& vLimits);

    // Of any number but NaN.
    unsigned classOf(double value) const {
        const unsigned first = aClasses[std::bit_cast<std::uint64_t>(value) >> cellShift];
        return first + static_cast<unsigned>(isReached(value, aEnds[first]));
    }

private:
    static constexpr int cellShift = 49;

    static bool isReached(double value, double limit) {
        return order == LimitOrder::ASCENDING ? value >= limit : value <= limit;
    }

    std::array<std::uint8_t, std::size_t{1} << (64 - cellShift)> aClasses{};
    std::array<double, 64> aEnds{}; // the limit that ends each class
};

// A sum of numbers times powers of two, which neither overflows nor vanishes.
class ScaledSum {
public:
    void add(double value, int exponent = 0);
    // The sum divided by the number, at most the largest double.
    double dividedBy(double number) const;

private:
    double sum = 0.0; // in units of 2 to the power of
    int unit = 0;
};

// Measures triangles: the figures of ZoneQuality but for the number of vertices. In any place and of any
// size: nothing overflows but a figure itself, which is the largest double then.
//
// No angle of a usual triangle is computed: cotangents tell the bins. Usual triangles are collected and
// worked off in blocks, step by step, so that roots and divisions of different triangles overlap. What is
// very large, very small or very thin goes another way, in units of its own size.
class QualityMeter {
public:
    QualityMeter();

    // Corners in counter-clockwise order. The ids ascend. Bit i of the edges tells whether the one opposite
    // corner i counts with this triangle: each does with one of its two.
    void add(std::size_t id, const Point2& a, const Point2& b, const Point2& c, unsigned edges) {
        const double x0 = c.x() - b.x(), y0 = c.y() - b.y();
        const double x1 = a.x() - c.x(), y1 = a.y() - c.y();
        const double x2 = b.x() - a.x(), y2 = b.y() - a.y();
        const double square0 = x0 * x0 + y0 * y0, square1 = x1 * x1 + y1 * y1, square2 = x2 * x2 + y2 * y2;
        const double cross = x0 * y1 - y0 * x1, longest = std::max(std::max(square0, square1), square2);
        ++numTriangles;
        if (!(longest <= largestSquare && longest >= smallestSquare && cross * largestAspect >= longest)) {
            addUnusual(id, {&a, &b, &c}, edges);
            return;
        }
        const std::size_t k = numInBlock++;
        block.aIds[k] = id;
        block.aSquares[numEdgesInBlock] = square0;
        numEdgesInBlock += edges & 1;
        block.aSquares[numEdgesInBlock] = square1;
        numEdgesInBlock += edges >> 1 & 1;
        block.aSquares[numEdgesInBlock] = square2;
        numEdgesInBlock += edges >> 2 & 1;
        block.aDots[0][k] = -(x1 * x2 + y1 * y2);
        block.aDots[1][k] = -(x2 * x0 + y2 * y0);
        block.aDots[2][k] = -(x0 * x1 + y0 * y1);
        block.aCrosses[k] = cross;
        block.aLongest[k] = longest;
        if (numInBlock == blockSize) measureBlock();
    }
    // For the angles only.
    void addAngles(const Triangle2& t) { add(0, *t.getCorner(0), *t.getCorner(1), *t.getCorner(2), 0); }

    // Without vertices and worst triangles.
    ZoneQuality figures();
    // The angles alone.
    QualityDistribution angles();
    // The ids of the triangles with the smallest angles, at most 100, smallest first; of equal ones, the
    // smallest ids, in order.
    std::vector<std::size_t> worst();

private:
    static constexpr double largestSquare = 0x1p900, smallestSquare = 0x1p-900, largestAspect = 4096;
    static constexpr std::size_t blockSize = 48, numWorst = 100, worstRoom = 1024;
    static constexpr std::size_t numAngleBins = 36; // of 5 degrees
    static constexpr std::size_t numExponents = 2048;

    template<class Value>
    using Row = std::array<Value, blockSize>;
    struct Block {
        Row<std::size_t> aIds;
        std::array<Row<double>, 3> aDots; // of the edges that leave each corner
        Row<double> aCrosses;             // twice the area
        Row<double> aLongest;             // of the edges' squares
        // Squares of the edges that count; one more, which is overwritten.
        std::array<double, 3 * blockSize + 1> aSquares;
    };
    struct Worst {
        double cotangent;
        std::size_t id;
        bool operator<(const Worst& other) const {
            return cotangent != other.cotangent ? cotangent > other.cotangent : id < other.id;
        }
    };
    struct Extremes {
        double smallest = HUGE_VAL, largest = -HUGE_VAL;
        void add(double value) {
            smallest = std::min(smallest, value);
            largest = std::max(largest, value);
        }
        void add(const double* aValues, std::size_t num);
    };
    using AngleCounts = std::array<std::uint64_t, numAngleBins>;
    using ExponentCounts = std::array<std::uint64_t, numExponents>; // by the bits of the exponent
    struct Counts { // of corners each, so that equal triangles do not wait for each other's
        std::array<AngleCounts, 3> aAngles{};
        AngleCounts smallestAngles{};
        std::array<std::uint64_t, 16> aspects{};
        ExponentCounts lengths{}, areas{};
    };

    void addUnusual(std::size_t id, const std::array<const Point2*, 3>& aCorners, unsigned edges);
    void measureBlock();
    void measureEdges();
    void addLength(const Point2& a, const Point2& b);
    // Counts three angles, and returns the bin of the smallest one.
    unsigned countAngles(double cot0, double cot1, double cot2);
    void rememberWorst(std::size_t id, double cotangent);
    QualityDistribution smallestAngles() const;

    const CellTable<LimitOrder::DESCENDING>* pAngles;
    const CellTable<LimitOrder::ASCENDING>* pAspects;
    std::array<double, numAngleBins> aTangents; // of the middles of the bins
    Block block;
    std::size_t numInBlock = 0, numEdgesInBlock = 0;
    std::uint64_t numTriangles = 0, numEdges = 0;
    Counts counts;
    Extremes areas, aspects, lengths;
    Extremes tops, bottoms; // of the cotangents of smallest and largest angles
    double excessSum = 0;   // of smallest angles beyond the middles of their bins, in radians
    ScaledSum aspectSum, areaSum, lengthSum;
    double worstLimit = -HUGE_VAL;
    std::vector<Worst> vWorst; // candidates
};

} // namespace TESK_KIVO2D
