// Vertices that leave the triangulation, or move in it.
#include "core/Dt2.h"

#include "constraints/ConstraintMgr.h"
#include "constraints/SegmentInserter.h"
#include "core/legalize.h"
#include "kernel/assertion.h"
#include "kernel/messages.h"
#include "meshing/RefinementDriver.h"

namespace TESK_KIVO2D {

WalkResult Dt2::find(const Point2& p, Triangle2* pNear) { return walk(pNear, p, pTeskPredicates); }

void Dt2::shift(Point2* pVtx, const Point2& to, const std::vector<Triangle2*>& vStar) {
    vCheckEdges.clear();
    for (Triangle2* const pT : vStar) {
        for (int i = 0; i < 3; ++i)
            vCheckEdges.push_back({pT, i});
    }
    MeshStore::moveVertex(pVtx, to);
    vertexVault.moved(pVtx);
    ++work.moves;
    work.flips += legalizeEdges(vCheckEdges, pTeskPredicates, pEdgeGuard);
}

Point2* Dt2::takeOut(Point2* pVtx) {
    vCheckEdges.clear();
    if (!vertexRemover.prepare(pVtx)) return nullptr;
    Point2* const pNeighbour = vertexRemover.remove();
    if (vertexRemover.isOnHull()) hullLinks.clear();
    vertexVault.removed(pVtx, pNeighbour);
    ++work.moves;
    work.flips += legalizeEdges(vCheckEdges, pTeskPredicates, pEdgeGuard);
    return pNeighbour;
}

void Dt2::prepareToPutIn(const Point2& at) {
    constexpr std::size_t roomForHull = 64; // few vertices see more edges of the hull
    store.reserveTriangles(roomForHull);
    vCheckT.reserve(roomForHull);
    vertexVault.startCell(at, store); // lays the grid out now, if it has to be
}

void Dt2::putIn(Point2* pVtx, const Point2& at, const Point2* pNear) {
    MeshStore::moveVertex(pVtx, at);
    const StartGrid::Cell cell = vertexVault.startCell(at, store);
    const WalkResult found = walk(pNear->getIncidentTriangle(), at, pTeskPredicates);
    KIVO_ASSERT(found.code != WalkResult::ON_CORNER, "pVtx->getIncidentTriangle()==NULL");
    place(pVtx, found);
    vertexVault.added(cell, pVtx, found.numSteps);
}

void Dt2::substitute(Point2* pVtx, Point2* pOther) {
    MeshStore::moveVertex(pVtx, *pOther);
    VertexRemover::replace(pOther, pVtx);
    hullLinks.clear();
    vertexVault.removed(pOther, pVtx);
    vertexVault.added(vertexVault.startCell(*pVtx, store), pVtx, 0);
    ++work.moves;
}

void Dt2::wasRemoved(Point2* pVtx, bool bReuse) {
    pRefinementMemory->innerVertices.remove(pVtx);
    if (bReuse) store.recycleVertex(pVtx);
}

void Dt2::forceSegment(ConstraintSegment2* pCSeg) { pSegmentInserter->force(pCSeg); }

void Dt2::beginMoves() { pConstraintMgr->beginMoves(); }

void Dt2::endMoves(bool bSegmentsHaveMoved) {
    pConstraintMgr->endMoves(bSegmentsHaveMoved);
    if (bSegmentsHaveMoved)
        pRefinementMemory->origins = {}; // nothing is on the line any more on which it was put
}

bool Dt2::mayRemove(const char* location) const {
    if (!hub.isBusy()) return true;
    reportWarning(location, "Vertices can't be moved or removed while an operation is running");
    return false;
}

void Dt2::removeInnerVertices(const Point2* pVtx, const Point2& rim) {
    if (!is2D() || !mayRemove("ConstraintSegment2::splitAndRemovePrev()")) return;
    for (Point2* const pInner : pRefinementMemory->innerVertices.findAround(pVtx, rim)) {
        if (pConstraintMgr->isConstraint(pInner) || takeOut(pInner) == nullptr) continue;
        wasRemoved(pInner, true);
    }
}

} // namespace TESK_KIVO2D
