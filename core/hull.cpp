#include "core/hull.h"

#include "kernel/assertion.h"

#include <algorithm>

namespace TESK_KIVO2D {

HullEdge nextHullEdge(HullEdge edge) {
    // Pivot around the target: cross the edges that begin there until one has nothing behind it.
    KIVO_ASSERT(edge.pT->getOppositeTriangle(edge.ith) == nullptr,
                "pCurTriangle->getOppositeTriangle(ith)==NULL");
    const Point2* const pAxis = edge.target();
    Triangle2* pT = edge.pT;
    int i = Triangle2::incIndexBy1(edge.ith);
    while (Triangle2* pBehind = pT->getOppositeTriangle(i)) {
        pT = pBehind;
        i = Triangle2::incIndexBy2(pT->getIntraTriangleIndex(pAxis));
    }
    return {pT, i};
}

HullEdge previousHullEdge(HullEdge edge) {
    // Pivot around the source: cross the edges that end there.
    KIVO_ASSERT(edge.pT->getOppositeTriangle(edge.ith) == nullptr,
                "pCurTriangle->getOppositeTriangle(ith)==NULL");
    const Point2* const pAxis = edge.source();
    Triangle2* pT = edge.pT;
    int i = Triangle2::incIndexBy2(edge.ith);
    while (Triangle2* pBehind = pT->getOppositeTriangle(i)) {
        pT = pBehind;
        i = Triangle2::incIndexBy1(pT->getIntraTriangleIndex(pAxis));
    }
    return {pT, i};
}

void extendHull(HullEdge visibleEdge, Point2* pVtx, MeshStore& store, TeskTest& tests,
                std::vector<Triangle2*>& vCheckT) {
    const auto isVisible = [&](const HullEdge& edge) {
        return tests.orientation(*edge.source(), *edge.target(), *pVtx) == ORIENTATION2_CW;
    };
    // The visible edges are one run around the hull: walk back to its first one, then join them in order. All
    // edges of the hull are never visible at once, so both walks end.
    HullEdge first = visibleEdge;
    std::size_t numVisible = 1;
    for (HullEdge edge = previousHullEdge(first); isVisible(edge); edge = previousHullEdge(first)) {
        first = edge;
        ++numVisible;
    }
    HullEdge last = visibleEdge;
    for (HullEdge edge = nextHullEdge(last); isVisible(edge); edge = nextHullEdge(last)) {
        last = edge;
        ++numVisible;
    }
    store.reserveTriangles(numVisible);

    Triangle2* lastTriangle = nullptr;
    HullEdge edge = first;
    for (std::size_t i = 0; i < numVisible; ++i) {
        const HullEdge next = edge == last ? edge : nextHullEdge(edge); // before the edge gets a neighbour
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
