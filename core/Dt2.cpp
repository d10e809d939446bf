#include "core/Dt2.h"

#include "constraints/ConstraintMgr.h"
#include "constraints/SegmentInserter.h"
#include "constraints/VertexMover.h"
#include "core/BatchInserter.h"
#include "core/extent.h"
#include "core/hull.h"
#include "core/legalize.h"
#include "core/linkIn.h"
#include "core/prefetch.h"
#include "core/split.h"
#include "kernel/assertion.h"
#include "kernel/finite.h"
#include "kernel/messages.h"
#include "meshing/RefinementDriver.h"
#include "zones/ZoneRegistry.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <thread>

namespace TESK_KIVO2D {
namespace {

void warnNotFinite(const char* location, std::size_t num) {
    reportWarning(location, std::to_string(num) + (num == 1 ? " point" : " points") +
                                " with a coordinate that is not finite ignored");
}

} // namespace

Dt2::Dt2(unsigned int numExpectedVertices)
    : store(numExpectedVertices), box(&pTeskPredicates), hub("DT2"),
      pConstraintMgr(std::make_unique<ConstraintMgr>(*this)),
      pSegmentInserter(std::make_unique<SegmentInserter>(*this, *pConstraintMgr)),
      pVertexMover(std::make_unique<VertexMover>(*this, *pConstraintMgr)),
      pZoneRegistry(std::make_unique<ZoneRegistry>(*this)),
      pRefinementMemory(std::make_unique<RefinementMemory>()) {
    vCheckT.reserve(256);
    vCheckEdges.reserve(256);
}

Dt2::~Dt2() = default;

Point2* Dt2::insert(const Point2& p) {
    if (!isFinite(p)) {
        warnNotFinite("Kivo_2D::insert()", 1);
        return nullptr;
    }
    if (!mayInsert("Kivo_2D::insert()")) return nullptr;
    KIVO_ASSERT(vCheckT.empty(), "vCheckT.empty()");
    growBox(p, p);
    if (!is2D()) return insertLowerDimensional(p);
    return insertFrom(p, nullptr);
}

Point2* Dt2::insertFrom(const Point2& p, Triangle2* pStart) {
    const StartGrid::Cell cell = vertexVault.startCell(p, store);
    // Where a start is given, much may have come in between since.
    Triangle2* const pClose = vertexVault.getCloT(cell, p);
    if (pStart == nullptr || sqDistance(*pClose->getCorner(0), p) < sqDistance(*pStart->getCorner(0), p))
        pStart = pClose;
    const WalkResult found = walk(pStart, p, pTeskPredicates);
    if (found.code == WalkResult::ON_CORNER) return cornerAt(found, p);
    prefetchSurroundings(found.pT);
    Point2* pVtx = store.createVertex(p);
    try {
        place(pVtx, found);
    } catch (...) {
        // Out of memory before the first link changed: the vertex is nowhere yet.
        vCheckT.clear();
        if (pVtx->getIncidentTriangle() == nullptr) store.recycleVertex(pVtx);
        throw;
    }
    vertexVault.added(cell, pVtx, found.numSteps);
    return pVtx;
}

Point2* Dt2::insertLowerDimensional(const Point2& p) {
    Point2* pVtx = vertexVault.findStored(p);
    if (pVtx == nullptr) {
        pVtx = store.createVertex(p);
        vertexVault.store(pVtx);
    }
    // Those that are stored may span a triangle already, if memory ran out before.
    ProgressHub::Operation progress(hub, "insert vertices", 1);
    WorkerPool callerOnly(1);
    BatchInserter(*this, callerOnly, progress).insertStored();
    return pVtx;
}

void Dt2::insertVector(const Point2* aPoints, std::size_t numPoints, Point2** aHandles) {
    if (!mayInsert("Kivo_2D::insert()")) {
        if (aHandles != nullptr) std::fill(aHandles, aHandles + numPoints, nullptr);
        return;
    }
    KIVO_ASSERT(vertexVault.dupIsClean(), "vertexVault.dupIsClean()");
    KIVO_ASSERT(vCheckT.empty(), "vCheckT.empty()");
    if (numPoints == 0) return;
    WorkerPool workers(numPoints >= minChunkedBatch ? numCPU : 1);
    const Extent extent = scanExtent(aPoints, numPoints, workers);
    if (extent.numFinite < numPoints) warnNotFinite("Kivo_2D::insert()", numPoints - extent.numFinite);
    if (extent.numFinite > 0) growBox(extent.box.getMinPoint(), extent.box.getMaxPoint());
    ProgressHub::Operation progress(hub, "insert vertices", numPoints);
    // Points are numbered by 32 bits inside a batch.
    constexpr std::size_t maxBatch = std::numeric_limits<std::uint32_t>::max();
    for (std::size_t first = 0; first < numPoints; first += maxBatch) {
        BatchInserter(*this, workers, progress)
            .insert({aPoints + first, std::min(maxBatch, numPoints - first)},
                    aHandles ? aHandles + first : nullptr);
    }
    progress.finish();
}

void Dt2::growBox(const Point2& low, const Point2& high) {
    Bbox2 grown = box;
    const bool bLow = grown.add(low);
    if (!grown.add(high) && !bLow) return;
    grown.doubleTheBox(); // and with it the static bound
    box = grown;
    hc.setBox(box);
}

void Dt2::place(Point2* pVtx, const WalkResult& found) { insertVertex(pVtx, found, insertionSite(), work); }

bool Dt2::mayInsert(const char* location) const {
    if (!bInChunks) return true;
    reportWarning(location, "Nothing can be inserted while a batch is triangulated in several threads");
    return false;
}

void Dt2::returnToStored(std::vector<Point2*> vVertices) {
    for (Point2* const pVtx : vVertices)
        MeshStore::unlinkVertex(pVtx);
    store.takeBackTriangles();
    hullLinks.clear();
    vertexVault.becomeLowerDimensional(std::move(vVertices));
}

Triangle2* Dt2::locate(const Point2& q) {
    if (!isFinite(q)) {
        warnNotFinite("Kivo_2D::locate()", 1);
        return nullptr;
    }
    return is2D() ? locateNear(q, nullptr) : nullptr;
}

Triangle2* Dt2::locateNear(const Point2& q, Triangle2* pHint) {
    Triangle2* pStart = vertexVault.getCloT(q);
    if (pHint != nullptr && sqDistance(*pHint->getCorner(0), q) < sqDistance(*pStart->getCorner(0), q))
        pStart = pHint;
    const WalkResult found = walkTo(q, pStart);
    if (found.code == WalkResult::INSIDE || found.code == WalkResult::ON_CORNER) return found.pT;
    const HullEdge edge{found.pT, found.code};
    const Orientation2 side = pTeskPredicates.orientationUnbounded(*edge.source(), *edge.target(), q);
    return side == ORIENTATION2_CW ? nullptr : found.pT;
}

// A query point does not raise the static bound: one far question would make all later ones slow.
WalkResult Dt2::walkTo(const Point2& q, Triangle2* pStart) {
    const bool bFar = q.getMaxAbs() > pTeskPredicates.getMaxAbsCoord();
    return walk(pStart, q, pTeskPredicates, bFar ? QueryRange::ANYWHERE : QueryRange::WITHIN_BOUND);
}

int Dt2::setNumCPU(int num) {
    static const int numHardwareThreads = std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
    numCPU = num > 0 ? num : num == 0 ? numHardwareThreads : 1;
    return numCPU;
}

} // namespace TESK_KIVO2D
