#pragma once

#include "Point2.h"
#include "Triangle2.h"
#include "core/RecordNumbers.h"
#include "core/SimplePool.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <span>
#include <utility>
#include <vector>

namespace TESK_KIVO2D {

// Records of vertices, numbered: some that were used before, and a run of fresh ones.
class VertexRecords {
public:
    VertexRecords(std::vector<Point2*> vUsed, std::span<Point2> freshRun)
        : vUsedBefore(std::move(vUsed)), fresh(freshRun) {}
    Point2* operator[](std::size_t i) const {
        return i < vUsedBefore.size() ? vUsedBefore[i] : &fresh[i - vUsedBefore.size()];
    }

private:
    std::vector<Point2*> vUsedBefore;
    std::span<Point2> fresh;
};

// Owns the records of one triangulation: vertices and triangles from their pools, and the stacks of those
// that can be used again. The triangle pool is at the same time the list of all triangles ever made.
class MeshStore {
public:
    // Sizes the first blocks for the expected number of vertices (n vertices have fewer than 2n triangles).
    explicit MeshStore(unsigned int numExpectedVertices);
    // Serves triangles from these records, which are another store's, and neither more of them nor vertices.
    explicit MeshStore(std::span<Triangle2> borrowed) { trianglePool.borrow(borrowed); }

    // A vertex with these coordinates and this custom index, part of no triangle yet.
    Point2* createVertex(const Point2& p) {
        if (vFreeVtx.empty()) return new (vertexPool.alloc()) Point2(p);
        Point2* pVtx = vFreeVtx.back();
        vFreeVtx.pop_back();
        *pVtx = p;
        return pVtx;
    }
    // Takes back the record of a vertex that is part of nothing. The next vertex gets it.
    void recycleVertex(Point2* pVtx) {
        try {
            vFreeVtx.push_back(pVtx);
        } catch (const std::bad_alloc&) { // then it lies idle
        }
    }

    // Puts records that came back into the order in which they were made, if that pays for so many new
    // vertices: the records of neighbours lie beside each other again then, and they are reached far faster.
    // Takes less than the insertion of these vertices.
    void prepareBatch(std::size_t numVertices);

    // Makes sure that the next num calls of createTriangle cannot fail. Called before links are touched, so
    // that memory that runs out leaves the mesh as it was.
    void reserveTriangles(std::size_t num) {
        if (vDeadT.size() < num) trianglePool.reserve(num - vDeadT.size());
    }
    // Makes room for a run of so many triangles when all that there are have been taken back. False when
    // that would not be one run, since the pool has outgrown its first range of addresses.
    bool reserveTriangleRun(std::size_t num) {
        if (trianglePool.size() < num) trianglePool.reserve(num - trianglePool.size());
        return trianglePool.isOneRun(num);
    }

    // Memory of reserved triangles that are not made yet: it costs nothing to use until the next one is.
    std::span<char> spareMemory() const { return trianglePool.spare(); }

    // So many triangle records that follow one another, for the caller to construct; none if those that are
    // reserved do not. Until then they must not be looked at.
    std::span<Triangle2> takeTriangleRun(std::size_t num) { return trianglePool.allocRun(num); }
    // All triangles are gone at once; the vertices keep their links to them.
    void takeBackTriangles() {
        trianglePool.takeBackAll();
        vDeadT.clear();
    }
    // The records of so many vertices, for the caller to construct.
    VertexRecords takeVertices(std::size_t num);

    // A triangle whose corners and neighbours the caller sets before anything else happens.
    Triangle2* newTriangle() {
        if (vDeadT.empty()) return new (trianglePool.alloc()) Triangle2;
        Triangle2* pT = vDeadT.back();
        vDeadT.pop_back();
        return pT;
    }
    // A triangle with these corners, which must not run clockwise, and no neighbours.
    Triangle2* createTriangle(Point2* p0, Point2* p1, Point2* p2) {
        Triangle2* pT = newTriangle();
        pT->setProperties(p0, p1, p2);
        return pT;
    }
    // Gives the record back for the next triangle. Until then it leads to one that lives, or did at least for
    // longer than this one; see survivorOf.
    void retireTriangle(Triangle2* pT, Triangle2* pSurvivor = nullptr) {
        pT->clearProperties();
        pT->setOppTriangle(0, pSurvivor);
        vDeadT.push_back(pT);
    }
    // Of a triangle that was remembered from earlier: itself while it lives, whatever it has become since;
    // one that was near it; or null.
    static Triangle2* survivorOf(Triangle2* pT) {
        const auto isDead = [](const Triangle2* p) { return p != nullptr && p->getCorner(0) == nullptr; };
        Triangle2* pSurvivor = pT;
        while (isDead(pSurvivor))
            pSurvivor = pSurvivor->getOppositeTriangle(0);
        while (isDead(pT)) { // next time the way is short
            Triangle2* const pNext = pT->getOppositeTriangle(0);
            pT->setOppTriangle(0, pSurvivor);
            pT = pNext;
        }
        return pSurvivor;
    }

    // Makes sure that so many triangles can be given back without asking for memory.
    void reserveRetired(std::size_t num) {
        const std::size_t needed = vDeadT.size() + num;
        if (vDeadT.capacity() < needed) vDeadT.reserve(std::max(needed, 2 * vDeadT.size()));
    }

    // The vertex is part of no triangle any more.
    static void unlinkVertex(Point2* pVtx) { pVtx->pIncidentT = nullptr; }
    // Gives the vertex other coordinates, wherever it is.
    static void moveVertex(Point2* pVtx, const Point2& to) {
        pVtx->dX = to.x();
        pVtx->dY = to.y();
    }

    std::size_t numTriangles() const {
        const std::size_t numAllT = trianglePool.size(), numDeadT = vDeadT.size();
        KIVO_ASSERT(numDeadT <= numAllT, "numDeadT<=numAllT");
        return numAllT - numDeadT;
    }

    // Calls f with each live triangle, in the order of their records. A dead one has no corners.
    template<class F>
    void forEachTriangle(F f) const {
        trianglePool.forEach([&](Triangle2* pT) {
            if (pT->getCorner(0) != nullptr) f(pT);
        });
    }
    // Calls f with each vertex that is part of a triangle, in the order of their records.
    template<class F>
    void forEachVertex(F f) const {
        vertexPool.forEach([&](Point2* pVtx) {
            if (pVtx->getIncidentTriangle() != nullptr) f(pVtx);
        });
    }

    // True for a vertex that was made here, whether it is still in use or not. Any address may be asked for.
    bool isRecord(const Point2* pVtx) const { return vertexPool.isRecord(pVtx); }
    // The vertex record made first, or null.
    const Point2* firstVertex() const { return vertexPool.first(); }

    // Numbers of all records made so far, dead ones included.
    RecordNumbers<Triangle2> triangleNumbers() const { return RecordNumbers<Triangle2>(trianglePool); }
    // The same with those reserved for later, and what tells that more were reserved since.
    RecordNumbers<Triangle2> reservedTriangleNumbers() const {
        return RecordNumbers<Triangle2>(trianglePool, RecordNumbers<Triangle2>::RESERVED);
    }
    std::size_t numTriangleBlocks() const { return trianglePool.numberOfBlocks(); }
    RecordNumbers<Point2> vertexNumbers() const { return RecordNumbers<Point2>(vertexPool); }

private:
    SimplePool<Point2> vertexPool;
    SimplePool<Triangle2> trianglePool;
    std::vector<Point2*> vFreeVtx;
    std::vector<Triangle2*> vDeadT;
};

} // namespace TESK_KIVO2D
