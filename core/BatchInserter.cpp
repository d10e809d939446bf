#include "core/BatchInserter.h"

#include "core/hilbertOrder.h"
#include "core/prefetch.h"
#include "core/walk.h"
#include "kernel/assertion.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <span>
#include <utility>

namespace TESK_KIVO2D {

void BatchInserter::insert(const Point2* aPoints, std::size_t numPoints, Point2** aHandles) {
    registerVertices(aPoints, numPoints, aHandles);
    try {
        if (!dt.is2D()) {
            numStoredBefore = dt.vertexVault.stored().size();
            dt.vertexVault.storeAll(std::exchange(vRange, {}));
            insertStored();
        } else if (!vRange.empty()) {
            insertAll(dt.vertexVault.getCloT(*vRange.front()));
        }
    } catch (...) {
        if (aHandles != nullptr) resolveHandles(aHandles, numPoints);
        recycleLeftOut();
        throw;
    }
    if (numIn == vRange.size()) return; // the usual batch: nothing was there before
    if (aHandles != nullptr) resolveHandles(aHandles, numPoints);
    recycleLeftOut();
}

// Makes one vertex for all points with the same coordinates, with the custom index of the first of them.
void BatchInserter::registerVertices(const Point2* aPoints, std::size_t numPoints, Point2** aHandles) {
    dt.store.prepareBatch(numPoints);
    dt.store.reserveTriangles(2 * numPoints);
    const HilbertOrder order(PointSource(aPoints, numPoints), dt.hc, dt.store.spareMemory());
    const std::span<const KeyedIndex> entries = order.entries();
    VertexVault& vault = dt.vertexVault;
    const bool bLookUp = !dt.is2D() && !vault.stored().empty();
    if (aHandles != nullptr && entries.size() < numPoints) std::fill(aHandles, aHandles + numPoints, nullptr);
    dt.store.reserveVertices(entries.size());
    if (bLookUp) vault.prepareToStore(entries.size());
    vRange.reserve(entries.size());
    const Point2* pPrevious = nullptr;
    Point2* pVtx = nullptr;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        constexpr std::size_t ahead = 16;
        if (i + ahead < entries.size()) {
            prefetch(aPoints + entries[i + ahead].index);
            if (aHandles != nullptr) prefetch(aHandles + entries[i + ahead].index);
        }
        const Point2& p = aPoints[entries[i].index];
        if (pPrevious == nullptr || p != *pPrevious) {
            pVtx = bLookUp ? vault.findStored(p) : nullptr;
            if (pVtx == nullptr) {
                pVtx = dt.store.createVertex(p);
                vRange.push_back(pVtx);
            }
            pPrevious = &p;
        }
        if (aHandles != nullptr) aHandles[entries[i].index] = pVtx;
    }
}

void BatchInserter::insertStored() {
    VertexVault& vault = dt.vertexVault;
    Point2* corners[3];
    if (!vault.findFirstTriangle(dt.pTeskPredicates, corners)) return; // they stay stored, all of them alive
    // For all of them: what follows must not fail where they would be lost.
    dt.store.reserveTriangles(2 * vault.stored().size());
    dt.pTeskPredicates.prepareInCircle();
    const bool bInOrder = numStoredBefore == 0;
    if (!bInOrder) {
        const auto begin = vault.stored().begin(), end = vault.stored().end();
        vStoredBefore.assign(
            begin, numStoredBefore == all ? end : begin + static_cast<std::ptrdiff_t>(numStoredBefore));
        vRange.reserve(vault.stored().size());
        const HilbertOrder order(PointSource(vault.stored()), dt.hc);
        for (const KeyedIndex& next : order.entries())
            vRange.push_back(vault.stored()[next.index]);
    }
    std::vector<Point2*> vStored = vault.becomeFullDimensional(corners[0]);
    if (bInOrder) vRange.swap(vStored);
    KIVO_ASSERT(vStored.size() <= vRange.size(), "numPreExistingVtx<=(size_t)distance(startIt,stopIt)");
    insertAll(dt.store.createTriangle(corners[0], corners[1], corners[2]));
}

void BatchInserter::insertAll(Triangle2* pStart) {
    try {
        insertRange(vRange.data(), vRange.data() + vRange.size(), pStart);
    } catch (...) {
        dt.vCheckT.clear();
        try {
            rescueStored(pStart);
        } catch (...) { // out of memory again: what is in must be counted all the same
            settle();
            throw;
        }
        settle();
        throw;
    }
    settle();
}

// Bisection as long as ranges are large: what is worked on stays in the cache.
Triangle2* BatchInserter::insertRange(Point2* const* pFirst, Point2* const* pLast, Triangle2* pStart) {
    constexpr std::ptrdiff_t blockSize = 4096;
    if (pLast - pFirst <= blockSize) {
        return insertBlock(pFirst, static_cast<std::size_t>(pLast - pFirst), pStart);
    }
    Point2* const* const pMiddle = pFirst + (pLast - pFirst) / 2;
    pStart = insertOne(*pMiddle, pStart);
    insertRange(pFirst, pMiddle, pStart);
    // The middle vertex has another triangle by now, or none if it is redundant.
    if (Triangle2* pMiddleT = (*pMiddle)->getIncidentTriangle()) pStart = pMiddleT;
    return insertRange(pMiddle + 1, pLast, pStart);
}

// Every second one of a coarser selection at each level, so that the whole block is refined at once. Going to
// the end of one half before the other is begun costs a fifth more flips, all along the border of the two.
Triangle2* BatchInserter::insertBlock(Point2* const* aVertices, std::size_t num, Triangle2* pStart) {
    if (num == 0) return pStart;
    pStart = insertOne(aVertices[0], pStart);
    for (std::size_t stride = std::bit_ceil(num) / 2; stride > 0; stride /= 2) {
        for (std::size_t i = stride; i < num; i += 2 * stride) {
            if (Triangle2* pNear = aVertices[i - stride]->getIncidentTriangle()) pStart = pNear;
            pStart = insertOne(aVertices[i], pStart);
        }
    }
    return pStart;
}

// Returns a triangle at the vertex, or at the vertex that lies there already.
Triangle2* BatchInserter::insertOne(Point2* pVtx, Triangle2* pStart) {
    if (pVtx->getIncidentTriangle() == nullptr) { // else a corner of the first triangle
        const WalkResult found = walk(pStart, *pVtx, dt.pTeskPredicates);
        if (found.code == WalkResult::ON_CORNER) {
            dt.vertexVault.addRedundant(pVtx, cornerAt(found, *pVtx));
            progress.advance();
            return found.pT;
        }
        dt.place(pVtx, found);
    }
    progress.advance();
    return pVtx->getIncidentTriangle();
}

// After a batch was cut off in the transition to 2-D: the client holds these vertices, so they must be in.
void BatchInserter::rescueStored(Triangle2* pStart) {
    std::sort(vStoredBefore.begin(), vStoredBefore.end(), std::less<>());
    for (Point2* pVtx : vRange) {
        if (!std::binary_search(vStoredBefore.begin(), vStoredBefore.end(), pVtx, std::less<>())) continue;
        if (pVtx->getIncidentTriangle() == nullptr) dt.place(pVtx, walk(pStart, *pVtx, dt.pTeskPredicates));
        pStart = pVtx->getIncidentTriangle();
    }
}

void BatchInserter::settle() {
    dt.vertexVault.sortRedundant();
    numIn = dt.vertexVault.addedAll(vRange, dt.store);
}

void BatchInserter::resolveHandles(Point2** aHandles, std::size_t numHandles) const {
    if (!dt.is2D()) return;
    for (std::size_t i = 0; i < numHandles; ++i) {
        Point2*& pHandle = aHandles[i];
        if (pHandle == nullptr || pHandle->getIncidentTriangle() != nullptr) continue;
        Point2* pUnique = dt.vertexVault.uniqueOf(pHandle);
        pHandle = pUnique != pHandle ? pUnique : nullptr; // null: the batch ended before it
    }
}

void BatchInserter::recycleLeftOut() {
    dt.vertexVault.clearRedundant();
    KIVO_ASSERT(dt.vertexVault.dupIsClean(), "mRedundant2UniqueVtx.empty()");
    if (!dt.is2D()) return;
    for (Point2* pVtx : vRange) {
        if (pVtx->getIncidentTriangle() == nullptr) dt.store.recycleVertex(pVtx);
    }
}

} // namespace TESK_KIVO2D
