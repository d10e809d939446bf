// Vertices that leave the triangulation, or move in it.
#include "core/Dt2.h"

#include "constraints/ConstraintMgr.h"
#include "constraints/SegmentInserter.h"
#include "core/legalize.h"
#include "kernel/assertion.h"
#include "kernel/messages.h"
#include "meshing/RefinementDriver.h"

#include <algorithm>
#include <functional>
#include <sstream>
#include <utility>

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

void Dt2::remove(Point2* pVtx) {
    constexpr const char* location = "Dt2::remove()";
    if (pVtx == nullptr) {
        reportWarning("Dt2::remove(..)", "pVtx==NULL, illegal, return.");
        return;
    }
    if (!mayRemove(location)) return;
    const bool bOwn = store.isRecord(pVtx); // else nothing is read of it
    if (bOwn && pConstraintMgr->isConstraint(pVtx)) {
        reportWarning(location, "Illegal: Can't remove a constraint vertex");
        std::ostringstream text;
        text << *pVtx << "\n";
        printErrorText(text.str());
        return;
    }
    if (bOwn && !is2D() && vertexVault.takeOutStored(pVtx)) {
        wasRemoved(pVtx, true);
        return;
    }
    if (!bOwn || pVtx->getIncidentTriangle() == nullptr) {
        reportWarning(location, "vertex does not belong to the triangulation, return");
        return;
    }
    if (vertexRemover.lookAround(pVtx)) {
        takeOutPrepared(pVtx);
    } else {
        becomeLowerDimensional(pVtx);
    }
    wasRemoved(pVtx, true);
}

Point2* Dt2::takeOut(Point2* pVtx) {
    if (!vertexRemover.lookAround(pVtx)) return nullptr;
    if (pConstraintMgr->isConstraint(pVtx)) {
        legalizeSpokes(pVtx);
        vertexRemover.lookAround(pVtx);
    }
    Point2* const pNeighbour = vertexRemover.link().front();
    takeOutPrepared(pVtx);
    return pNeighbour;
}

void Dt2::takeOutPrepared(Point2* pVtx) {
    vertexRemover.prepare();
    const std::vector<Point2*>& vLink = vertexRemover.link();
    vertexVault.removed(pVtx, vLink.front());
    if (vertexRemover.isOnHull()) {
        hullLinks.forget(pVtx);
        for (const Point2* const pNeighbour : vLink)
            hullLinks.forget(pNeighbour);
    }
    vertexRemover.remove();
    ++work.moves;
}

void Dt2::becomeLowerDimensional(Point2* pVtx) {
    std::vector<Point2*> vLeft = vertexRemover.link();
    std::sort(vLeft.begin(), vLeft.end(), std::less<>());
    store.reserveRetired(vertexRemover.degree());
    for (std::size_t i = 0; i < vertexRemover.degree(); ++i)
        store.retireTriangle(vertexRemover.triangle(i));
    MeshStore::unlinkVertex(pVtx);
    for (Point2* const pLeft : vLeft)
        MeshStore::unlinkVertex(pLeft);
    hullLinks.clear();
    vertexVault.becomeLowerDimensional(std::move(vLeft));
    if (!pConstraintMgr->empty()) pConstraintMgr->applyLater();
    ++work.moves;
}

namespace {

// Fixed edges, but for those at one vertex.
class AllButSpokes : public EdgeGuard {
public:
    AllButSpokes(const EdgeGuard& itsGuard, const Point2* pItsHub) : guard(itsGuard), pHub(pItsHub) {}
    bool isFixed(const Point2* p, const Point2* q) const override {
        return p != pHub && q != pHub && guard.isFixed(p, q);
    }
    void wasSplit(Point2*, Point2*, Point2*) override {}

private:
    const EdgeGuard& guard;
    const Point2* pHub;
};

} // namespace

// Fixed edges at the vertex are none any more: it is about to go, and all edges at it must be legal.
void Dt2::legalizeSpokes(Point2* pVtx) {
    vCheckEdges.clear();
    constexpr std::size_t roomForFlips = 64;
    vCheckEdges.reserve(16 * vertexRemover.degree() + roomForFlips);
    for (std::size_t k = 0; k < vertexRemover.degree(); ++k) {
        for (int i = 0; i < 3; ++i)
            vCheckEdges.push_back({vertexRemover.triangle(k), i});
    }
    const AllButSpokes guard(*pConstraintMgr, pVtx);
    work.flips += legalizeEdges(vCheckEdges, pTeskPredicates, &guard);
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
