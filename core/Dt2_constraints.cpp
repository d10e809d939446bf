// Constraints: what the client asks for, and what constraints ask of their triangulation.
#include "core/Dt2.h"

#include "constraints/ConstraintMgr.h"
#include "constraints/SegmentInserter.h"
#include "core/edgeSearch.h"
#include "core/legalize.h"
#include "core/queries.h"
#include "core/split.h"
#include "kernel/assertion.h"
#include "kernel/finite.h"
#include "kernel/messages.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace TESK_KIVO2D {

ConstraintGraph2* Dt2::createConstraint(std::vector<Segment2>& vSegments, ConstraintInsertionStrategy cis,
                                        bool bOrientedSegments) {
    if (vSegments.empty()) {
        reportWarning("Dt2::createConstraint(..)", "vSegments is empty, returning NULL");
        return nullptr;
    }
    if (!mayInsert("Kivo_2D::createConstraint()")) return nullptr;
    const auto finite = [](const Segment2& s) { return isFinite(s); };
    const std::vector<Segment2>* pSegments = &vSegments;
    std::vector<Segment2> vFinite;
    const auto numFinite =
        static_cast<std::size_t>(std::count_if(vSegments.begin(), vSegments.end(), finite));
    if (numFinite < vSegments.size()) {
        const std::size_t num = vSegments.size() - numFinite;
        reportWarning("Kivo_2D::createConstraint()", std::to_string(num) +
                                                         (num == 1 ? " segment" : " segments") +
                                                         " with a coordinate that is not finite ignored");
        std::copy_if(vSegments.begin(), vSegments.end(), std::back_inserter(vFinite), finite);
        pSegments = &vFinite;
    }
    pEdgeGuard = pConstraintMgr.get();
    return bOrientedSegments ? pConstraintMgr->createConstraint_oriented(*pSegments, cis)
                             : pConstraintMgr->createConstraint(*pSegments, cis);
}

void Dt2::applyConstraintsAndZones() {
    if (!is2D()) {
        reportWarning("Dt2::applyConstraintsAndZones()",
                      "The triangulation is not full dimensional yet. Nothing to do");
        return;
    }
    pConstraintMgr->apply();
}

ConstraintGraph2* Dt2::fixEdges(const std::vector<PointerPair>& vEdges) {
    pEdgeGuard = pConstraintMgr.get();
    return pConstraintMgr->createConstraint_directed(vEdges, CIS_CONSTRAINED_DELAUNAY);
}

void Dt2::newCDT_applyOneCS(ConstraintSegment2* pInitialCSeg) {
    KIVO_ASSERT(pInitialCSeg->getCIS() == CIS_CONSTRAINED_DELAUNAY,
                "pInitialCSeg->getCIS()==CIS_CONSTRAINED_DELAUNAY");
    insertSegment(pInitialCSeg);
}

void Dt2::insertSegmentConformingDelaunay(ConstraintSegment2* pCSeg) {
    KIVO_ASSERT(pCSeg->getCIS() == CIS_CONFORMING_DELAUNAY, "pCSeg->getCIS() == CIS_CONFORMING_DELAUNAY");
    insertSegment(pCSeg);
}

bool Dt2::insertSegment(ConstraintSegment2* pCSeg) { return pSegmentInserter->insert(pCSeg); }

std::size_t Dt2::allowSteinerPoints(std::size_t num) { return pSegmentInserter->allowSteinerPoints(num); }

bool Dt2::isEdge(const Point2* p, const Point2* q) const {
    return p->getIncidentTriangle() != nullptr && q->getIncidentTriangle() != nullptr &&
           findEdge(p, q).pT != nullptr;
}

Point2* Dt2::insertNear(const Point2& p, Triangle2* pNear) {
    growBox(p, p);
    return insertFrom(p, pNear);
}

Point2* Dt2::newVertex(const Point2& p) {
    store.reserveTriangles(2);
    vertexVault.startCell(p, store); // lays the grid out now, if it has to be, for replaceEdge must not fail
    return store.createVertex(p);
}

void Dt2::replaceEdge(HalfEdge edge, Point2* pVtx) {
    const Triangle2 *const pT = edge.pT, *const pN = edge.opposite();
    const Point2* const onT = pT->getCorner(edge.ith);
    const Point2* const onN = pN->getCorner(pN->getIntraTriangleIndex(pT));
    splitEdge(edge.pT, edge.ith, pVtx, store, vCheckT);
    ++work.insertions;
    work.flips += legalizeNewVertex(vCheckT, pTeskPredicates, pEdgeGuard, circleTies);
    vertexVault.added(vertexVault.startCell(*pVtx, store), pVtx, 0); // before what may run out of memory
    // Edges at a new vertex are legal where it lies in the triangle or on the edge that it splits. Here it
    // may lie a little beside the edge.
    vCheckEdges.assign({findEdge(pVtx, onT), findEdge(pVtx, onN)});
    work.flips += legalizeEdges(vCheckEdges, pTeskPredicates, pEdgeGuard);
}

void Dt2::legalizeAround(Point2* pVtx) {
    std::vector<Triangle2*> vIncidentT;
    getIncidentTriangles(pVtx, vIncidentT);
    vCheckEdges.clear();
    for (Triangle2* pT : vIncidentT) {
        for (int i = 0; i < 3; ++i)
            vCheckEdges.push_back({pT, i});
    }
    work.flips += legalizeEdges(vCheckEdges, pTeskPredicates, pEdgeGuard);
}

void Dt2::legalizeEdge(const Point2* p, const Point2* q) {
    const HalfEdge edge = findEdge(p, q);
    if (edge.pT == nullptr) return;
    vCheckEdges.assign(1, edge);
    work.flips += legalizeEdges(vCheckEdges, pTeskPredicates, pEdgeGuard);
}

} // namespace TESK_KIVO2D
