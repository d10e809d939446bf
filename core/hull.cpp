#include "core/hull.h"

#include "kernel/assertion.h"

#include <algorithm>
#include <new>

namespace TESK_KIVO2D {

namespace {

// Turns around one end of a hull edge, from triangle to triangle, towards the hull edge at the other side of
// the fan: forward around the target, backward around the source.
class Pivot {
public:
    Pivot(HullEdge edge, bool bForwards)
        : bForward(bForwards), pAxis(bForward ? edge.target() : edge.source()), pT(edge.pT),
          i(bForward ? Triangle2::incIndexBy1(edge.ith) : Triangle2::incIndexBy2(edge.ith)) {}
    // From the vertex's own triangle, towards the hull edge that starts there (forward) or ends there.
    Pivot(const Point2* pVtx, bool bForwards)
        : bForward(bForwards), pAxis(pVtx), pT(pVtx->getIncidentTriangle()) {
        turnTo(pT);
    }

    bool isAtHull() const { return pT->getOppositeTriangle(i) == nullptr; }
    void advance() { turnTo(pT->getOppositeTriangle(i)); }
    HullEdge edge() const { return {pT, i}; }

private:
    // The edge of the triangle that begins (forward) or ends at the axis.
    void turnTo(Triangle2* pNext) {
        pT = pNext;
        const int axis = pT->getIntraTriangleIndex(pAxis);
        i = bForward ? Triangle2::incIndexBy2(axis) : Triangle2::incIndexBy1(axis);
    }

    bool bForward;
    const Point2* pAxis;
    Triangle2* pT;
    int i = 0;
};

HullEdge pivotToEnd(Pivot pivot) {
    while (!pivot.isAtHull())
        pivot.advance();
    return pivot.edge();
}

// The hull edge between two neighbours on the hull, by turning around both at once: as long as the smaller
// fan.
HullEdge findHullEdge(const Point2* pSource, const Point2* pTarget) {
    Pivot aroundSource(pSource, true), aroundTarget(pTarget, false);
    for (;;) {
        if (aroundSource.isAtHull()) return aroundSource.edge();
        if (aroundTarget.isAtHull()) return aroundTarget.edge();
        aroundSource.advance();
        aroundTarget.advance();
    }
}

} // namespace

HullEdge nextHullEdge(HullEdge edge) {
    KIVO_ASSERT(edge.pT->getOppositeTriangle(edge.ith) == nullptr,
                "pCurTriangle->getOppositeTriangle(ith)==NULL");
    return pivotToEnd(Pivot(edge, true));
}

HullEdge HullLinks::step(HullEdge edge, bool bForward) {
    KIVO_ASSERT(edge.pT->getOppositeTriangle(edge.ith) == nullptr,
                "pCurTriangle->getOppositeTriangle(ith)==NULL");
    constexpr int largeFan = 64;
    Pivot pivot(edge, bForward);
    for (int i = 0; i < largeFan; ++i) {
        if (pivot.isAtHull()) return pivot.edge();
        pivot.advance();
    }
    const Point2* const pHub = bForward ? edge.target() : edge.source();
    Links& links = bForward ? mNext : mPrevious;
    const auto known = links.find(pHub);
    if (known == links.end()) {
        const HullEdge found = pivotToEnd(pivot);
        try {
            links[pHub] = {bForward ? found.target() : found.source(), found};
        } catch (const std::bad_alloc&) { // only a short cut is lost, and a hull may be half joined
        }
        return found;
    }
    Link& link = known->second;
    const Point2* const pSource = bForward ? pHub : link.pNeighbour;
    const Point2* const pTarget = bForward ? link.pNeighbour : pHub;
    // The triangle may have become another one since.
    const HullEdge& seen = link.edge;
    if (seen.pT->getOppositeTriangle(seen.ith) != nullptr || seen.source() != pSource ||
        seen.target() != pTarget)
        link.edge = findHullEdge(pSource, pTarget);
    return link.edge;
}

void HullLinks::inserted(const Point2* pBefore, const Point2* pVtx, const Point2* pAfter) {
    const auto relink = [&](Links& links, const Point2* pHub) {
        if (links.empty()) return;
        const auto known = links.find(pHub);
        if (known != links.end()) known->second.pNeighbour = pVtx;
    };
    relink(mNext, pBefore);
    relink(mPrevious, pAfter);
}

void extendHull(HullEdge visibleEdge, Point2* pVtx, MeshStore& store, TeskTest& tests, HullLinks& links,
                std::vector<Triangle2*>& vCheckT) {
    const auto isVisible = [&](const HullEdge& edge) {
        return tests.orientation(*edge.source(), *edge.target(), *pVtx) == ORIENTATION2_CW;
    };
    // The visible edges are one run around the hull: walk back to its first one, then join them in order. All
    // edges of the hull are never visible at once, so both walks end.
    HullEdge first = visibleEdge;
    std::size_t numVisible = 1;
    for (HullEdge edge = links.previous(first); isVisible(edge); edge = links.previous(first)) {
        first = edge;
        ++numVisible;
    }
    HullEdge last = visibleEdge;
    for (HullEdge edge = links.next(last); isVisible(edge); edge = links.next(last)) {
        last = edge;
        ++numVisible;
    }
    store.reserveTriangles(numVisible);
    vCheckT.reserve(numVisible);
    links.inserted(first.source(), pVtx, last.target());

    Triangle2* lastTriangle = nullptr;
    HullEdge edge = first;
    for (std::size_t i = 0; i < numVisible; ++i) {
        const HullEdge next = edge == last ? edge : links.next(edge); // before the edge gets a neighbour
        Triangle2* const pT = store.createTriangle(pVtx, edge.target(), edge.source());
        pT->setOppTriangle(0, edge.pT);
        edge.pT->setOppTriangle(edge.ith, pT);
        if (lastTriangle != nullptr) {
            pT->setOppTriangle(1, lastTriangle);
            lastTriangle->setOppTriangle(2, pT);
        }
        vCheckT.push_back(pT);
        lastTriangle = pT;
        edge = next;
    }
    KIVO_ASSERT(lastTriangle != nullptr, "lastTriangle!=NULL");
}

void collectHull(const MeshStore& store, std::vector<Point2*>& vHull) {
    vHull.clear();
    HullEdge start{nullptr, 0};
    store.forEachTriangle([&](Triangle2* pT) {
        for (int i = 0; i < 3 && start.pT == nullptr; ++i) {
            if (pT->getOppositeTriangle(i) == nullptr) start = {pT, i};
        }
    });
    KIVO_ASSERT(start.pT != nullptr, "pStartT!=0");
    KIVO_ASSERT(start.source() != nullptr, "pStartVtx!=0");
    HullEdge edge = start;
    do {
        vHull.push_back(edge.source());
        edge = nextHullEdge(edge);
    } while (!(edge == start));
    KIVO_ASSERT(!vHull.empty(), "!vConvexHullPoints.empty()");
}

void dropCollinear(std::vector<Point2*>& vHull, TeskTest& tests) {
    std::vector<Point2*> vSimplified;
    const std::size_t num = vHull.size();
    for (std::size_t i = 0; i < num; ++i) {
        const Point2& before = *vHull[(i + num - 1) % num];
        const Point2& after = *vHull[(i + 1) % num];
        if (tests.orientation(before, *vHull[i], after) != ORIENTATION2_COLLINEAR)
            vSimplified.push_back(vHull[i]);
    }
    vHull.swap(vSimplified);
}

} // namespace TESK_KIVO2D
