#include "core/VertexRemover.h"

#include "kernel/assertion.h"

namespace TESK_KIVO2D {

// Fills vStar and vCorners: triangle i has corners i and i + 1, and behind the edge between them lies what
// is outside.
void VertexRemover::lookAround() {
    vStar.clear();
    vCorners.clear();
    const auto turn = [this](const Triangle2* pT, bool bForwards) {
        const int i = pT->getIntraTriangleIndex(pGoing);
        return pT->getOppositeTriangle(bForwards ? Triangle2::incIndexBy1(i) : Triangle2::incIndexBy2(i));
    };
    Triangle2* const pAny = pGoing->getIncidentTriangle();
    Triangle2* pFirst = pAny;
    for (Triangle2* pT = pAny; pT != nullptr;) { // to where the fan begins, if it has a beginning
        pFirst = pT;
        pT = turn(pT, false);
        if (pT == pAny) break;
    }
    Triangle2* pT = pFirst;
    do {
        const int i = pT->getIntraTriangleIndex(pGoing);
        Triangle2* const pOutside = pT->getOppositeTriangle(i);
        const int ithOutside = pOutside != nullptr ? pOutside->getIntraTriangleIndex(pT) : 0;
        const std::size_t num = vStar.size();
        vStar.push_back(pT);
        vCorners.push_back(
            {pT->getCorner(Triangle2::incIndexBy1(i)), {pOutside, ithOutside}, num - 1, num + 1});
        pT = pT->getOppositeTriangle(Triangle2::incIndexBy1(i));
    } while (pT != nullptr && pT != pFirst);
    bHull = pT == nullptr;
    const std::size_t last = vStar.size() - 1;
    if (bHull) {
        const Triangle2& end = *vStar[last];
        Point2* const pLast = end.getCorner(Triangle2::incIndexBy2(end.getIntraTriangleIndex(pGoing)));
        vCorners.push_back({pLast, {nullptr, 0}, last, 0});
    } else {
        vCorners[0].previous = last;
        vCorners[last].next = 0;
    }
}

bool VertexRemover::prepare(Point2* pVtx) {
    pGoing = pVtx;
    lookAround();
    store.reserveRetired(vStar.size());
    constexpr std::size_t roomForFlips = 64;
    vCheckEdges.reserve(vCheckEdges.size() + 16 * vStar.size() + roomForFlips);
    if (!bHull) return true;
    for (std::size_t i = 0; i < vStar.size(); ++i) {
        if (vCorners[i].outside.pT != nullptr || (i > 0 && isEar(i))) return true;
    }
    return false;
}

bool VertexRemover::isEar(std::size_t i) const {
    const Point2 &a = *vCorners[vCorners[i].previous].pVtx, &b = *vCorners[i].pVtx,
                 &c = *vCorners[vCorners[i].next].pVtx;
    if (tests.orientation(a, b, c) != ORIENTATION2_CCW) return false;
    // On the hull the neighbours span less than a half turn around the vertex.
    return bHull || tests.orientation(a, c, *pGoing) != ORIENTATION2_CW;
}

void VertexRemover::replace(Point2* pVtx, Point2* pByVtx) {
    Triangle2* const pFirst = pVtx->getIncidentTriangle();
    const auto step = [=](Triangle2* pT, bool bForwards) {
        const int i = pT->getIntraTriangleIndex(pVtx);
        pT->setVertexPointer(i, pByVtx);
        pT->becomeIncidentAt(i);
        return pT->getOppositeTriangle(bForwards ? Triangle2::incIndexBy1(i) : Triangle2::incIndexBy2(i));
    };
    Triangle2* const pBefore =
        pFirst->getOppositeTriangle(Triangle2::incIndexBy2(pFirst->getIntraTriangleIndex(pVtx)));
    Triangle2* pT = step(pFirst, true);
    while (pT != nullptr && pT != pFirst)
        pT = step(pT, true);
    if (pT == nullptr) { // on the hull: what lies on the other side of the first one
        for (pT = pBefore; pT != nullptr;)
            pT = step(pT, false);
    }
    MeshStore::unlinkVertex(pVtx);
}

Point2* VertexRemover::remove() {
    for (Triangle2* const pT : vStar)
        store.retireTriangle(pT);
    store.unlinkVertex(pGoing);
    // A neighbour that gets no new triangle keeps one outside.
    for (const Corner& corner : vCorners) {
        if (corner.outside.pT == nullptr) continue;
        for (const int i : {0, 1, 2})
            corner.outside.pT->becomeIncidentAt(i);
        corner.outside.pT->setOppTriangle(corner.outside.ith, nullptr);
    }
    if (bHull) {
        fillNotch();
    } else {
        fillHole();
    }
    return vCorners[0].pVtx;
}

void VertexRemover::fillHole() {
    std::size_t i = 0, numLeft = vCorners.size(), numFailed = 0;
    while (numLeft > 3) {
        if (isEar(i)) {
            cutOff(i);
            i = vCorners[i].previous; // may have become one
            --numLeft;
            numFailed = 0;
        } else {
            i = vCorners[i].next;
            ++numFailed;
            KIVO_ASSERT(numFailed <= numLeft, "vRemainingT.size()==3");
        }
    }
    makeTriangle(vCorners[i].previous, i, vCorners[i].next);
}

// As in the scan of Graham 1972.
void VertexRemover::fillNotch() {
    const std::size_t last = vCorners.size() - 1;
    for (std::size_t i = 1; i != last;) {
        if (isEar(i)) {
            cutOff(i);
            i = vCorners[i].previous;
            if (i == 0) i = vCorners[i].next;
        } else {
            i = vCorners[i].next;
        }
    }
}

void VertexRemover::cutOff(std::size_t i) {
    const std::size_t a = vCorners[i].previous, c = vCorners[i].next;
    makeTriangle(a, i, c);
    vCorners[a].next = c;
    vCorners[c].previous = a;
}

// The hole's edge from a to c is that of the new triangle from now on.
void VertexRemover::makeTriangle(std::size_t a, std::size_t b, std::size_t c) {
    Triangle2* const pT = store.createTriangle(vCorners[a].pVtx, vCorners[b].pVtx, vCorners[c].pVtx);
    const auto join = [pT](int ith, HalfEdge outside) {
        if (outside.pT == nullptr) return;
        pT->setOppTriangle(ith, outside.pT);
        outside.pT->setOppTriangle(outside.ith, pT);
    };
    join(2, vCorners[a].outside);
    join(0, vCorners[b].outside);
    const bool bLast = vCorners[c].next == a;
    if (!bHull && bLast) join(1, vCorners[c].outside);
    vCorners[a].outside = {pT, 1};
    for (const int i : {0, 1, 2})
        vCheckEdges.push_back({pT, i});
}

} // namespace TESK_KIVO2D
