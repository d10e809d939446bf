#pragma once

#include "Bbox2.h"
#include "Point2.h"
#include "Triangle2.h"
#include "core/MeshStore.h"
#include "core/StartGrid.h"
#include "core/firstTriangle.h"
#include "kernel/TeskTest.h"

#include <cstddef>
#include <span>
#include <unordered_map>
#include <utility>
#include <vector>

namespace TESK_KIVO2D {

class WorkerPool;

// Knows the vertices of a triangulation. While they all lie on one line it keeps them in a list, in the order
// in which they came, and looks for the first triangle among them. Afterwards it counts them and keeps a grid
// of start triangles over their box. The records belong to the MeshStore.
class VertexVault {
public:
    // False until the first triangle exists.
    bool is2D() const { return bFullDimensional; }
    std::size_t numberOfPoints() const { return bFullDimensional ? numActive : vStored.size() - numGone; }

    // --- while not 2-D
    // O(1), unless vertices have been taken out since the latest call.
    const std::vector<Point2*>& stored() const {
        if (numGone > 0) closeGaps();
        return vStored;
    }
    void store(Point2* pVtx) { vStored.push_back(pVtx); }
    // Makes sure that storing so many more cannot fail.
    void reserveStored(std::size_t num);
    // The stored vertex at these coordinates, or null. Expected O(1).
    Point2* findStored(const Point2& p);
    // Takes this very vertex out of the list; false when it is not there. Expected O(1), and O(n) once in n
    // times.
    bool takeOutStored(const Point2* pVtx);
    // The first two stored vertices and the first one that is not on their line, counter-clockwise, or false.
    // Each vertex is looked at once over all calls.
    bool findFirstTriangle(TeskTest& tests, Point2* (&corners)[3]);
    // Ends this state; the stored vertices are the caller's to insert, a corner of the first triangle at
    // once.
    std::vector<Point2*> becomeFullDimensional(const Point2* pCorner);
    // Begins this state again with these vertices, which are part of no triangle any more. Does not throw.
    void becomeLowerDimensional(std::vector<Point2*> vVertices);

    // --- 2-D
    // A triangle near the point: a start for walks.
    Triangle2* getCloT(const Point2& p) { return getCloT(startGrid.cellOf(p), p); }
    Triangle2* getCloT(StartGrid::Cell cell, const Point2& p) const;
    // The cell of a point that is about to become a vertex. Lays the grid out anew when it has become too
    // small, from the vertices of the store; that costs O(n) once in a doubling.
    StartGrid::Cell startCell(const Point2& p, const MeshStore& store);
    // The vertex has been linked in, from that cell after so many steps.
    void added(StartGrid::Cell start, const Point2* pVtx, int numSteps);
    // The vertex has been taken out; the other one, near it, stays.
    void removed(const Point2* pVtx, const Point2* pNeighbour) {
        --numActive;
        if (pLatest == pVtx) pLatest = pNeighbour;
    }
    // The vertex has other coordinates, in the triangulation still.
    void moved(const Point2* pVtx) { extent.add(*pVtx); }
    // The vertices have been linked in; near ones follow each other. Those without a triangle are left out.
    // Returns how many have one.
    std::size_t addedAll(std::span<Point2* const> vertices, const MeshStore& store, WorkerPool& workers);

    // --- duplicates that a batch met: registered during it, resolved at its end
    bool dupIsClean() const { return mRedundant2UniqueVtx.empty(); }
    void addRedundant(Point2* pRedundant, Point2* pUnique) {
        mRedundant2UniqueVtx.emplace_back(pRedundant, pUnique);
    }
    // Makes the redundant vertices ready for uniqueOf.
    void sortRedundant();
    // The vertex that stands for this one: itself, unless it was registered as redundant.
    Point2* uniqueOf(Point2* pVtx) const;
    void clearRedundant() { mRedundant2UniqueVtx.clear(); }

private:
    void fillLookup();
    void closeGaps() const;
    void layOutGrid(const Bbox2& frame, std::size_t numCells, const MeshStore& store);

    struct CoordinateHash {
        std::size_t operator()(const Point2* p) const;
    };
    struct CoordinateEqual {
        bool operator()(const Point2* p, const Point2* q) const { return *p == *q; }
    };
    // The stored vertices and where they stand.
    using Lookup = std::unordered_map<const Point2*, std::size_t, CoordinateHash, CoordinateEqual>;

    bool bFullDimensional = false;
    // All different, in the order in which they came; null where one was taken out. Closing these gaps
    // changes nothing for anybody else.
    mutable std::vector<Point2*> vStored;
    mutable std::size_t numGone = 0; // the nulls
    mutable Lookup mLookup;          // of the first numLookup stored ones
    mutable std::size_t numLookup = 0;
    mutable FirstTriangleSearch search; // in them
    std::size_t numActive = 0;
    Bbox2 extent; // of the active vertices
    // The active vertex that came last.
    const Point2* pLatest = nullptr;
    StartGrid startGrid;
    std::size_t numOfNextLayout = 0; // when the number of vertices has doubled
    std::vector<std::pair<Point2*, Point2*>> mRedundant2UniqueVtx;
};

} // namespace TESK_KIVO2D
