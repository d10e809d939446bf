#pragma once

#include "Triangle2.h"
#include "core/MeshStore.h"
#include "kernel/TeskTest.h"

#include <vector>

namespace TESK_KIVO2D {

// An edge of the convex hull: the edge of pT opposite corner ith, which has no neighbour. It runs
// counter-clockwise around the hull, from source to target.
struct HullEdge {
    Triangle2* pT;
    int ith;

    Point2* source() const { return pT->getCorner(Triangle2::incIndexBy1(ith)); }
    Point2* target() const { return pT->getCorner(Triangle2::incIndexBy2(ith)); }
    bool operator==(const HullEdge& other) const { return pT == other.pT && ith == other.ith; }
};

// The hull edges after and before this one. O(degree of the vertex between them).
HullEdge nextHullEdge(HullEdge edge);
HullEdge previousHullEdge(HullEdge edge);

// Joins a vertex that lies strictly beyond a hull edge to all hull edges that it sees, that is those that
// have it strictly on their outer side. The new triangles have the vertex at corner 0 and go onto the stack
// vCheckT.
void extendHull(HullEdge visibleEdge, Point2* pVtx, MeshStore& store, TeskTest& tests,
                std::vector<Triangle2*>& vCheckT);

// The hull vertices counter-clockwise, each once, from a triangulation that has at least one triangle.
void collectHull(const MeshStore& store, std::vector<Point2*>& vHull);
// Drops vertices on a straight piece between their neighbours in the closed sequence.
void dropCollinear(std::vector<Point2*>& vHull, TeskTest& tests);

} // namespace TESK_KIVO2D
