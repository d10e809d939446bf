#pragma once

#include "Point2.h"
#include "kernel/TeskTest.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace TESK_KIVO2D {

// Triangles as somebody has given them, three corners each: corners with equal coordinates become one point,
// clockwise triangles are turned round, and the edges between the points know their triangles. Nothing is
// assumed of how the triangles lie; those that are none are set aside.
class TriangleSoup {
public:
    using Index = std::uint32_t;
    static constexpr Index none = ~Index{0};
    static constexpr std::size_t maxCorners = none - 2; // half-edges are numbered

    struct Triangle {
        std::array<Index, 3> aPoints; // counter-clockwise
        Index given;                  // its place among those given
    };
    // One side of an edge, by what is beyond it: corner i of a triangle and the next one.
    struct Half {
        Index triangle; // in triangles()
        int i;
    };
    // The sides of an edge: packed, see halfOf.
    using Halves = std::span<const std::uint64_t>;
    struct Edge {
        Index p, q; // the lower one first
        Halves halves;
    };

    // Their number is a multiple of three, and no more than maxCorners. O(n log n), mostly O(n).
    explicit TriangleSoup(const std::vector<Point2>& vCorners);

    // In the order of the Hilbert curve, so that neighbours are near in memory too; each is the first one
    // given of those with its coordinates.
    const std::vector<Point2>& points() const { return vPoints; }
    // In the order of their lowest points.
    const std::vector<Triangle>& triangles() const { return vTriangles; }
    const Point2& cornerOf(const Triangle& triangle, int i) const {
        return vPoints[triangle.aPoints[static_cast<std::size_t>(i)]];
    }
    // The three corners as they were given.
    std::span<const Point2, 3> givenCorners(Index given) const {
        return std::span<const Point2, 3>(&vGiven[3 * std::size_t{given}], 3);
    }
    std::size_t numTurned() const { return numTurnedRound; }
    // Places among those given.
    const std::vector<Index>& notFinite() const { return vNotFinite; }
    const std::vector<Index>& degenerate() const { return vDegenerate; }

    // The point with these coordinates, or none. Expected O(1).
    Index find(const Point2& p) const { return vSlots[slotOf(p)]; }
    // O(log of the number of edges at the lower of the two).
    bool isEdge(Index p, Index q) const { return !halvesBetween(p, q).empty(); }
    Halves halvesBetween(Index p, Index q) const;
    static Half halfOf(std::uint64_t packed) {
        const Index half = static_cast<Index>(packed);
        return {half / 3, static_cast<int>(half % 3)};
    }
    // True when the triangle lies to the left of the edge from the first point to the second one.
    bool isLeft(Half half, Index first) const {
        return vTriangles[half.triangle].aPoints[static_cast<std::size_t>(half.i)] == first;
    }
    // The corner that is not on the edge.
    Index apexOf(Half half) const {
        return vTriangles[half.triangle].aPoints[static_cast<std::size_t>((half.i + 2) % 3)];
    }

    // Calls f with each edge.
    template<class F>
    void forEachEdge(F f) const {
        for (Index p = 0; p < vPoints.size(); ++p) {
            for (std::size_t k = vFirst[p]; k < vFirst[p + 1];) {
                const Index q = upperOf(vHalves[k]);
                std::size_t end = k + 1;
                while (end < vFirst[p + 1] && upperOf(vHalves[end]) == q)
                    ++end;
                f(Edge{p, q, Halves(&vHalves[k], end - k)});
                k = end;
            }
        }
    }

private:
    static Index upperOf(std::uint64_t packed) { return static_cast<Index>(packed >> 32); }

    void add(Index given, TeskTest& tests);
    Index indexOf(const Point2& p);
    std::size_t firstSlotOf(const Point2& p) const;
    std::size_t slotOf(const Point2& p) const;
    void sortAlongCurve();
    void sortTriangles();
    void collectEdges();

    const std::vector<Point2>& vGiven;
    std::vector<Point2> vPoints;
    std::vector<Triangle> vTriangles;
    std::size_t numTurnedRound = 0;
    std::vector<Index> vNotFinite, vDegenerate;
    std::vector<Index> vSlots;          // of points: a hash table with open addressing
    std::vector<std::size_t> vFirst;    // of the halves at each point that is the lower one of an edge
    std::vector<std::uint64_t> vHalves; // the upper point, and the number of the half
};

} // namespace TESK_KIVO2D
