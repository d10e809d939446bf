#pragma once

#include "core/HalfEdge.h"
#include "core/MeshStore.h"
#include "kernel/TeskTest.h"

#include <unordered_map>
#include <vector>

namespace TESK_KIVO2D {

// An edge without a neighbour. It runs counter-clockwise around the hull, from source to target.
using HullEdge = HalfEdge;

// The hull edge after this one. O(degree of the vertex between them).
HullEdge nextHullEdge(HullEdge edge);

// Steps along the hull in O(1) where nextHullEdge would take as long as a vertex has triangles: a million
// points on a line with one beside it make a fan of a million. A step that first meets a large fan goes all
// around it and keeps what it found for this vertex, its hub; so a vertex pays for that twice at most, and
// others cost nothing. The vertices around one that leaves the hull must be forgotten, and it too.
class HullLinks {
public:
    HullEdge next(HullEdge edge) { return step(edge, true); }
    HullEdge previous(HullEdge edge) { return step(edge, false); }
    // The vertex now lies between these two on the hull.
    void inserted(const Point2* pBefore, const Point2* pVtx, const Point2* pAfter);
    void forget(const Point2* pVtx) {
        if (!mNext.empty()) mNext.erase(pVtx);
        if (!mPrevious.empty()) mPrevious.erase(pVtx);
    }
    void clear() {
        mNext.clear();
        mPrevious.clear();
    }

private:
    // What follows a hub on the hull: a vertex, and the edge between them as it was when last seen.
    struct Link {
        const Point2* pNeighbour;
        HullEdge edge;
    };
    using Links = std::unordered_map<const Point2*, Link>;

    HullEdge step(HullEdge edge, bool bForward);

    Links mNext, mPrevious; // of hubs, and of some that have left the hull
};

// Joins a vertex that lies strictly beyond a hull edge to all hull edges that it sees, that is those that
// have it strictly on their outer side. The new triangles have the vertex at corner 0 and go onto the stack
// vCheckT.
void extendHull(HullEdge visibleEdge, Point2* pVtx, MeshStore& store, TeskTest& tests, HullLinks& links,
                std::vector<Triangle2*>& vCheckT);

// The hull vertices counter-clockwise, each once, from a triangulation that has at least one triangle.
void collectHull(const MeshStore& store, std::vector<Point2*>& vHull);
// Drops vertices on a straight piece between their neighbours in the closed sequence.
void dropCollinear(std::vector<Point2*>& vHull, TeskTest& tests);

} // namespace TESK_KIVO2D
