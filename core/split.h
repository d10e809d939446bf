#pragma once

#include "Triangle2.h"
#include "core/EdgeGuard.h"
#include "core/MeshStore.h"

#include <vector>

namespace TESK_KIVO2D {

// Splits put a vertex into a triangle or onto an edge. Links only: the caller knows where the vertex lies.
// Every triangle made or rebuilt has the vertex at corner 0 and goes onto the stack vCheckT when it has a
// neighbour behind the edge opposite. Records are reserved before the first link changes.

// Three triangles for one.
void splitTriangle(Triangle2* pT, Point2* pVtx, MeshStore& store, std::vector<Triangle2*>& vCheckT);

// Four triangles for the two that share the edge opposite corner ith, or two for one on the hull.
void splitEdge(Triangle2* pT, int ith, Point2* pVtx, MeshStore& store, std::vector<Triangle2*>& vCheckT);

// Pushes the triangle when there is something to legalise: a neighbour opposite corner 0.
inline void pushForCheck(Triangle2* pT, std::vector<Triangle2*>& vCheckT) {
    if (pT->getOppositeTriangle(0) != nullptr) vCheckT.push_back(pT);
}

} // namespace TESK_KIVO2D
