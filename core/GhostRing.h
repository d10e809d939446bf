#pragma once

#include "Point2.h"
#include "Triangle2.h"
#include "core/MeshStore.h"
#include "kernel/TeskTest.h"

#include <cstddef>

namespace TESK_KIVO2D {

// A triangulation ringed with ghosts: behind each hull edge s -> t lies a triangle (infinity, t, s), where
// infinity is a null corner, and ghosts that share a hull vertex are neighbours. So every edge has a
// neighbour on both sides, and points on a line are a triangulation too: each edge between two of them has a
// ghost on either side. A single point has no triangle at all.
//
// n points take 2n - 2 triangles, ghosts included, however they lie.
//
// This knows where such a part ends: its lexicographically extreme vertices by (x, y) and by (y, x). Of
// points on a line they are the ends.
struct RingedPart {
    Point2 *pLeft = nullptr, *pRight = nullptr, *pBottom = nullptr, *pTop = nullptr;

    explicit RingedPart(Point2* pVtx = nullptr) : pLeft(pVtx), pRight(pVtx), pBottom(pVtx), pTop(pVtx) {}
    // Takes in a vertex, or another part.
    void add(Point2* pVtx) {
        if (pLeft == nullptr) *this = RingedPart(pVtx);
        const double x = pVtx->x(), y = pVtx->y(); // most vertices end none of these
        if (x <= pLeft->x() && *pVtx < *pLeft) pLeft = pVtx;
        if (x >= pRight->x() && *pVtx > *pRight) pRight = pVtx;
        if (y < pBottom->y() || (y == pBottom->y() && x < pBottom->x())) pBottom = pVtx;
        if (y > pTop->y() || (y == pTop->y() && x > pTop->x())) pTop = pVtx;
    }
    void add(const RingedPart& other) {
        for (Point2* const pVtx : {other.pLeft, other.pRight, other.pBottom, other.pTop})
            add(pVtx);
    }
};

// Rings a triangulation with ghosts, whose records come from the store: as many as there are hull edges.
void addGhosts(const RingedPart& part, MeshStore& store);
// Makes a ringed line of different points on one line, in their order along it. Takes two records for each
// edge between them.
void makeLine(Point2* const* aVertices, std::size_t num, MeshStore& store);

// Merges two parts that a line parallel to an axis separates, and returns the whole. As Guibas & Stolfi 1985:
// an edge between the two hulls that has all on its left rises; triangles beside its way whose circles are
// not empty any more are opened from the outside, which is a flip that makes a ghost of a triangle; and the
// next triangle at the rising edge is a flip that makes a triangle of a ghost. Takes two records. At worst
// linear; for scattered points about the square root of their number.
RingedPart mergeRinged(const RingedPart& first, const RingedPart& second, Triangle2* aTwoRecords,
                       TeskTest& tests);

// Takes the ghosts away; the store gets their records. False when nothing is left, as of points on a line:
// then no vertex has a triangle. Throws, before anything changes, when memory runs out.
bool removeGhosts(const RingedPart& part, MeshStore& store);

} // namespace TESK_KIVO2D
