#pragma once

#include "Point2.h"
#include "kernel/TeskTest.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace TESK_KIVO2D {

// What takes the place of the triangles around a vertex once it is gone: the Delaunay triangulation of its
// link, found by indices before anything is touched.
//
// The link is an array of positions, counter-clockwise. That of a hull vertex runs from its neighbour on the
// hull to the other one; the point at infinity follows as one more position and closes it, so triangles with
// that corner stand for edges of the new hull.
//
// The method is that of Chew (1990): the positions but for three are taken out of the ring in random order,
// and then put back one by one in the opposite order. One that comes between two others replaces the
// triangles, from the one at their edge on, whose circles contain it. What is left around the edge is always
// seen from the vertex, and its circles hold the vertex or go through it, because circles through the vertex
// and two that follow each other are empty of the others. So every conflict is found by a step across an
// edge, and every new triangle runs counter-clockwise, without any test of it, where points lie on one circle
// too. Expected O(k) for k positions, whatever the points, plus O(log k) to find the three.
//
// The vertex's own edges must be Delaunay edges. Those of the link need not: they may be fixed.
class LinkTriangulation {
public:
    // A side of a triangle, the one opposite its corner i, as 4 times its number plus i.
    using Side = std::uint32_t;
    static constexpr Side none = ~Side(0);
    struct Triangle {
        std::uint32_t aCorners[3];
        Side aNeighbours[3]; // none at the edges of the link
    };

    explicit LinkTriangulation(TeskTest& predicates) : tests(predicates) {}

    // At least three positions, or two for a vertex on the hull.
    void find(const Point2& vertex, Point2* const* aLink, std::size_t numLink, bool bHull);

    std::size_t numTriangles() const { return numMade; }
    // How many conflicts were asked about since construction.
    std::uint64_t numQuestions() const { return numAsked; }
    const Triangle& triangle(std::size_t number) const { return vTriangles[number]; }
    bool isInfinite(const Triangle& t) const {
        return t.aCorners[0] >= infinity || t.aCorners[1] >= infinity || t.aCorners[2] >= infinity;
    }
    // The side that lies on the edge of the link from this position to the next.
    Side sideAt(std::size_t position) const { return vPositions[position].side; }

private:
    struct Position {
        std::uint32_t previous, next; // in the ring, or when the position was taken out of it
        Side side;
    };
    // An edge across which there may be a conflict, seen from inside, so from right to left of the position.
    struct Edge {
        std::uint32_t from, to;
        Side beyond;
    };

    void makeRoom();
    void chooseFirstThree(const Point2& vertex, std::uint32_t (&aFirst)[3]) const;
    void takeOut(const std::uint32_t (&aFirst)[3]);
    void putBack(std::uint32_t position);
    bool isInConflict(const Triangle& t, const Point2& p) const;
    std::uint32_t takeSlot();

    TeskTest& tests;
    Point2* const* aPoints = nullptr;
    std::uint32_t numPositions = 0;
    std::uint32_t infinity = none; // its position, or none
    std::uint32_t numMade = 0;
    std::uint64_t numAsked = 0;
    // Their sizes only grow, up to a limit: what is in use is counted apart.
    std::vector<Triangle> vTriangles;
    std::vector<Position> vPositions;
    std::vector<std::uint32_t> vOrder; // in which positions were taken out
    std::vector<std::uint32_t> vFree;  // triangles to be used again
    std::vector<Edge> vEdges;
};

} // namespace TESK_KIVO2D
