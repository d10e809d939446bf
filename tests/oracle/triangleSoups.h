#pragma once

#include "tests/oracle/bruteForce.h"
#include "tests/oracle/constraints.h"
#include "tests/oracle/zones.h"

#include <set>
#include <string>
#include <vector>

// Soups of triangles, three corners each, looked at pair by pair and in exact integers.
namespace oracle {

// Why a soup can't be part of one triangulation, as it is reported.
struct SoupFault {
    enum Kind {
        NOT_FINITE,
        DEGENERATE,
        SHARED_EDGE,
        CORNER_IN_EDGE,
        VERTEX_IN_EDGE,
        VERTEX_IN_TRIANGLE,
        OVERLAP,
        CROSSED_EDGE
    };
    Kind kind;
    std::size_t triangle; // the lowest number named
    std::string text;
    TESK_KIVO2D::Point2 point; // a corner or vertex that should not be where it is
    bool bFirst; // CROSSED_EDGE: seen from the segment's lower end; other edges are not reported
};
// All of them, by kind and triangle, beside the vertices and constraint segments of a triangulation. A vertex
// where the soup has a corner counts as that.
std::vector<SoupFault> soupFaults(const Points& vCorners, const Points& vVertices = {},
                                  const Segments& vConstraints = {});

// What the import of a soup without faults must make of it.
struct SoupFacts {
    std::vector<Corners> vTriangles; // counter-clockwise, the smallest corner first; sorted
    std::set<Edge> sBorder;          // of one triangle
    std::set<Edge> sNotDelaunay;     // of two, with a far corner strictly inside the other's circle
    std::size_t numCorners = 0;      // different ones
    std::size_t numTurned = 0;       // clockwise ones
};
SoupFacts soupFacts(const Points& vCorners);

} // namespace oracle
