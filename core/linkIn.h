#pragma once

#include "Point2.h"
#include "Triangle2.h"
#include "core/EdgeGuard.h"
#include "core/MeshStore.h"
#include "core/WorkCounts.h"
#include "core/hull.h"
#include "core/legalize.h"
#include "core/walk.h"
#include "kernel/TeskTest.h"

#include <vector>

namespace TESK_KIVO2D {

// What the insertion of a vertex works on.
struct InsertionSite {
    MeshStore& store;
    TeskTest& tests;
    HullLinks& hullLinks;
    EdgeGuard* pGuard;                // null while no edge is fixed
    std::vector<Triangle2*>& vCheckT; // receives the triangles that are to be legalised
    CircleTies ties = CircleTies::TURN_DIAGONALS;
};

// Makes the vertex part of the triangulation at the place that its walk found, which is no corner: it splits
// a triangle or an edge, or extends the hull. A fixed edge that it lies on is split with it. Throws only
// before the first link changes.
void linkIn(Point2* pVtx, const WalkResult& found, const InsertionSite& site);

// The same, then legalises, and counts.
void insertVertex(Point2* pVtx, const WalkResult& found, const InsertionSite& site, WorkCounts& work);

} // namespace TESK_KIVO2D
