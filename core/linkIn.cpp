#include "core/linkIn.h"

#include "core/HalfEdge.h"
#include "core/split.h"

namespace TESK_KIVO2D {
namespace {

void splitEdgeAt(HalfEdge edge, Point2* pVtx, const InsertionSite& site) {
    Point2 *const p = edge.source(), *const q = edge.target();
    site.store.reserveTriangles(2); // whatever fails must fail before the constraint is split
    if (site.pGuard != nullptr && site.pGuard->isFixed(p, q)) site.pGuard->wasSplit(p, q, pVtx);
    const bool bHull = edge.opposite() == nullptr;
    splitEdge(edge.pT, edge.ith, pVtx, site.store, site.vCheckT);
    if (bHull) site.hullLinks.inserted(p, pVtx, q);
}

} // namespace

void linkIn(Point2* pVtx, const WalkResult& found, const InsertionSite& site) {
    if (found.code == WalkResult::INSIDE && found.edge < 0) {
        splitTriangle(found.pT, pVtx, site.store, site.vCheckT);
        return;
    }
    const HalfEdge edge{found.pT, found.code == WalkResult::INSIDE ? found.edge : found.code};
    if (found.code == WalkResult::INSIDE ||
        site.tests.orientation(*edge.source(), *edge.target(), *pVtx) == ORIENTATION2_COLLINEAR) {
        splitEdgeAt(edge, pVtx, site);
    } else {
        extendHull(edge, pVtx, site.store, site.tests, site.hullLinks, site.vCheckT);
    }
}

void insertVertex(Point2* pVtx, const WalkResult& found, const InsertionSite& site, WorkCounts& work) {
    linkIn(pVtx, found, site);
    ++work.insertions;
    work.walkSteps += static_cast<std::uint64_t>(found.numSteps);
    work.flips += legalizeNewVertex(site.vCheckT, site.tests, site.pGuard, site.ties);
}

} // namespace TESK_KIVO2D
