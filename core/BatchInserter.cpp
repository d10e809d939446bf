#include "core/BatchInserter.h"

#include "core/InserterMT.h"
#include "core/RangeInserter.h"
#include "core/firstTriangle.h"
#include "kernel/assertion.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <limits>
#include <new>
#include <utility>

namespace TESK_KIVO2D {

void BatchInserter::insert(std::span<const Point2> points, Point2** aHandles) {
    if (isForChunks(points.size()) &&
        dt.store.reserveTriangleRun(2 * (dt.numberOfPoints() + points.size()))) {
        insertInChunks(points, aHandles);
    } else {
        insertInSequence(points, aHandles);
    }
}

// With chunks all is triangulated anew, and no edge may be fixed. A few old vertices do not matter; several
// threads make up for as many as there are new ones.
bool BatchInserter::isForChunks(std::size_t numPoints) const {
    if (numPoints < dt.minChunkedBatch || dt.pEdgeGuard != nullptr) return false;
    constexpr std::size_t most = std::numeric_limits<std::uint32_t>::max(); // numbers have 32 bits
    if (numPoints + dt.numberOfPoints() > most) return false;
    constexpr std::size_t few = 8;
    return dt.numberOfPoints() <= (dt.numCPU > 1 ? numPoints : numPoints / few);
}

void BatchInserter::insertInSequence(std::span<const Point2> points, Point2** aHandles) {
    const std::span<Point2*> handles(aHandles, aHandles != nullptr ? points.size() : 0);
    const std::vector<Point2*>& vStored = dt.vertexVault.stored(); // none when 2-D
    takeOld(vStored);
    dt.store.prepareBatch(points.size());
    dt.store.reserveTriangles(2 * (vOld.size() + points.size()));
    dt.vertexVault.reserveStored(dt.is2D() ? 0 : points.size());
    vertices = BatchVertices(points, vStored, dt.hc, dt.store, workers, aHandles);
    try {
        if (!dt.is2D()) {
            insertLowerDimensional();
        } else if (!vertices.all().empty()) {
            insertAll(dt.vertexVault.getCloT(*vertices.all().front()));
        }
    } catch (...) {
        resolveHandles(handles);
        recycleLeftOut();
        throw;
    }
    if (numIn == vertices.all().size()) return; // the usual batch: nothing was there before
    resolveHandles(handles);
    recycleLeftOut();
}

void BatchInserter::insertLowerDimensional() {
    Point2* corners[3];
    if (vOld.empty()) { // need not be stored for the moment
        if (FirstTriangleSearch().find(vertices.all(), dt.pTeskPredicates, corners)) {
            insertAllStored(corners);
        } else {
            storeNew();
        }
    } else {
        storeNew();
        if (dt.vertexVault.findFirstTriangle(dt.pTeskPredicates, corners)) insertAllStored(corners);
    }
}

void BatchInserter::insertStored() {
    Point2* corners[3];
    if (!dt.vertexVault.findFirstTriangle(dt.pTeskPredicates, corners)) return;
    takeOld(dt.vertexVault.stored());
    dt.store.reserveTriangles(2 * vOld.size());
    vertices = BatchVertices({}, dt.vertexVault.stored(), dt.hc, dt.store, workers, nullptr);
    insertAllStored(corners);
}

void BatchInserter::takeOld(std::vector<Point2*> vVertices) {
    vOld = std::move(vVertices);
    std::sort(vOld.begin(), vOld.end(), std::less<>());
}

bool BatchInserter::isOld(const Point2* pVtx) const {
    return std::binary_search(vOld.begin(), vOld.end(), pVtx, std::less<>());
}

void BatchInserter::storeNew() {
    for (Point2* const pVtx : vertices.all()) {
        if (!isOld(pVtx)) dt.vertexVault.store(pVtx);
    }
}

// What is stored is among the vertices of the batch, and three of them span a triangle.
void BatchInserter::insertAllStored(Point2* const (&corners)[3]) {
    dt.pTeskPredicates.prepareInCircle();
    const std::vector<Point2*> vStored = dt.vertexVault.becomeFullDimensional(corners[0]);
    KIVO_ASSERT(vStored.size() <= vertices.all().size(),
                "numPreExistingVtx<=(size_t)distance(startIt,stopIt)");
    insertAll(dt.store.createTriangle(corners[0], corners[1], corners[2]));
}

void BatchInserter::insertAll(Triangle2* pStart) {
    const std::span<Point2* const> range = vertices.all();
    try {
        RangeInserter(dt.insertionSite(), dt.work, *this)
            .insert(range.data(), range.data() + range.size(), pStart);
    } catch (...) {
        dt.vCheckT.clear();
        try {
            rescueOld(pStart);
        } catch (...) { // out of memory again: what is in must be counted all the same
            settle();
            throw;
        }
        settle();
        throw;
    }
    settle();
}

// After a batch was cut off in the transition to 2-D: the client holds these vertices, so they must be in.
void BatchInserter::rescueOld(Triangle2* pStart) {
    for (Point2* const pVtx : vertices.all()) {
        if (!isOld(pVtx)) continue;
        if (pVtx->getIncidentTriangle() == nullptr) dt.place(pVtx, walk(pStart, *pVtx, dt.pTeskPredicates));
        pStart = pVtx->getIncidentTriangle();
    }
}

void BatchInserter::settle() {
    dt.vertexVault.sortRedundant();
    numIn = dt.vertexVault.addedAll(vertices.all(), dt.store, workers);
}

void BatchInserter::resolveHandles(std::span<Point2*> handles) const {
    if (!dt.is2D()) return;
    for (Point2*& pHandle : handles) {
        if (pHandle == nullptr || pHandle->getIncidentTriangle() != nullptr) continue;
        Point2* const pUnique = dt.vertexVault.uniqueOf(pHandle);
        pHandle = pUnique != pHandle ? pUnique : nullptr; // null: the batch ended before it
    }
}

void BatchInserter::recycleLeftOut() {
    dt.vertexVault.clearRedundant();
    KIVO_ASSERT(dt.vertexVault.dupIsClean(), "mRedundant2UniqueVtx.empty()");
    if (!dt.is2D()) return;
    for (Point2* const pVtx : vertices.all()) {
        if (pVtx->getIncidentTriangle() == nullptr) dt.store.recycleVertex(pVtx);
    }
}

void BatchInserter::insertInChunks(std::span<const Point2> points, Point2** aHandles) {
    std::vector<Point2*> vBefore = dt.vertexVault.stored();
    if (dt.is2D()) dt.getVertexPointers(vBefore);
    dt.store.prepareBatch(points.size());
    vBefore.reserve(vBefore.size() + points.size()); // so that all can be stored
    takeOld(vBefore);
    const HC2 curve = dt.hc.withoutWrap();
    vertices = BatchVertices(points, vBefore, curve, dt.store, workers, aHandles);
    const std::span<Point2* const> range = vertices.all();

    // While chunks are worked on, the triangulation is one of old vertices that nobody has inserted yet.
    dt.returnToStored(std::move(vBefore));
    const std::span<Triangle2> records = dt.store.takeTriangleRun(2 * range.size());
    dt.bInChunks = true;
    try {
        KIVO_ASSERT(records.size() == 2 * range.size(), "numDeadT<=numAllT");
        InserterMT inserter(curve, dt.pTeskPredicates.getMaxAbsCoord(), dt.maxChunkSize, workers, progress);
        const bool b2D = inserter.triangulate(range, records, dt.store);
        dt.bInChunks = false;
        dt.work += inserter.workCounts();
        dt.pTeskPredicates.addStageCounts(inserter.stageCounts());
        if (!b2D) {
            storeNew();
            return;
        }
    } catch (...) {
        dt.bInChunks = false;
        undoChunks({aHandles, aHandles != nullptr ? points.size() : 0});
        throw;
    }
    dt.vertexVault.becomeFullDimensional(range.front());
    settle();
}

// Chunks cannot be continued: the new vertices go, and the old ones are triangulated again.
void BatchInserter::undoChunks(std::span<Point2*> handles) {
    std::fill(handles.begin(), handles.end(), nullptr);
    dt.store.takeBackTriangles();
    for (Point2* const pVtx : vertices.all()) {
        MeshStore::unlinkVertex(pVtx);
        if (!isOld(pVtx)) dt.store.recycleVertex(pVtx);
    }
    try {
        BatchInserter(dt, workers, progress).insertStored();
    } catch (const std::bad_alloc&) { // then they stay stored, and the next insertion tries again
    }
}

} // namespace TESK_KIVO2D
