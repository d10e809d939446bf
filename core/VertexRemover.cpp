#include "core/VertexRemover.h"

#include "core/prefetch.h"
#include "kernel/assertion.h"

#include <algorithm>

namespace TESK_KIVO2D {
namespace {

// The next triangle around the vertex, and what will be asked for of this one.
Triangle2* turn(const Triangle2* pT, const Point2* pVtx, bool bForwards) {
    const int i = pT->getIntraTriangleIndex(pVtx);
    prefetch(static_cast<const void*>(pT->getCorner(Triangle2::incIndexBy1(i))));
    prefetch(pT->getOppositeTriangle(i));
    return pT->getOppositeTriangle(bForwards ? Triangle2::incIndexBy1(i) : Triangle2::incIndexBy2(i));
}

} // namespace

bool VertexRemover::lookAround(Point2* pVtx) {
    pGoing = pVtx;
    collectStar();
    collectLink();
    return !bHull || !isLinkStraight();
}

// In both directions at once, so that two records are on their way from memory at any time.
void VertexRemover::collectStar() {
    vStar.assign(1, pGoing->getIncidentTriangle());
    vBackwards.clear();
    bHull = false;
    Triangle2 *pForward = vStar.front(), *pBackward = pForward;
    for (;;) {
        Triangle2* const pNext = turn(pForward, pGoing, true);
        if (pNext == pBackward) break;
        bHull = pNext == nullptr;
        if (bHull) break;
        vStar.push_back(pForward = pNext);
        Triangle2* const pPrevious = turn(pBackward, pGoing, false);
        if (pPrevious == pForward) break;
        bHull = pPrevious == nullptr;
        if (bHull) break;
        vBackwards.push_back(pBackward = pPrevious);
    }
    if (bHull) {
        while ((pForward = turn(pForward, pGoing, true)) != nullptr)
            vStar.push_back(pForward);
        while ((pBackward = turn(pBackward, pGoing, false)) != nullptr)
            vBackwards.push_back(pBackward);
    }
    vStar.insert(vStar.begin(), vBackwards.rbegin(), vBackwards.rend());
}

void VertexRemover::collectLink() {
    vLink.clear();
    vOutside.clear();
    for (const Triangle2* const pT : vStar) {
        const int i = pT->getIntraTriangleIndex(pGoing);
        vLink.push_back(pT->getCorner(Triangle2::incIndexBy1(i)));
        vOutside.push_back({pT->getOppositeTriangle(i), 0});
    }
    if (!bHull) return;
    const Triangle2& end = *vStar.back();
    vLink.push_back(end.getCorner(Triangle2::incIndexBy2(end.getIntraTriangleIndex(pGoing))));
}

bool VertexRemover::isLinkStraight() const {
    const auto isThere = [](const HalfEdge& outside) { return outside.pT != nullptr; };
    if (std::any_of(vOutside.begin(), vOutside.end(), isThere)) return false;
    for (std::size_t i = 2; i < vLink.size(); ++i) {
        if (tests.orientation(*vLink[i - 2], *vLink[i - 1], *vLink[i]) != ORIENTATION2_COLLINEAR)
            return false;
    }
    return true;
}

void VertexRemover::prepare() {
    filling.find(*pGoing, vLink.data(), vLink.size(), bHull);
    assignRecords();
    for (std::size_t i = 0; i < vOutside.size(); ++i) {
        if (vOutside[i].pT != nullptr) vOutside[i].ith = vOutside[i].pT->getIntraTriangleIndex(vStar[i]);
    }
    store.reserveRetired(vStar.size());
}

// There are always more triangles around the vertex than come in their place.
void VertexRemover::assignRecords() {
    vRecords.clear();
    auto record = vStar.begin();
    for (std::size_t number = 0; number < filling.numTriangles(); ++number) {
        const LinkTriangulation::Triangle& t = filling.triangle(number);
        if (filling.isInfinite(t)) {
            vRecords.push_back(nullptr);
            continue;
        }
        vRecords.push_back(*record++);
        const Point2 &a = *vLink[t.aCorners[0]], &b = *vLink[t.aCorners[1]], &c = *vLink[t.aCorners[2]];
        // What the Delaunay edges at the vertex are for.
        KIVO_ASSERT(tests.orientation(a, b, c) == ORIENTATION2_CCW, "vRemainingT.size()==3");
    }
    numNew = static_cast<std::size_t>(record - vStar.begin());
}

void VertexRemover::remove() {
    store.unlinkVertex(pGoing);
    linkInside();
    linkOutside();
    Triangle2* const pLiving = numNew > 0 ? vStar.front() : vLink.front()->getIncidentTriangle();
    for (std::size_t i = numNew; i < vStar.size(); ++i)
        store.retireTriangle(vStar[i], pLiving);
    constexpr std::size_t large = 4096;
    if (vStar.size() <= large) return;
    vStar = vBackwards = vRecords = {};
    vLink = {};
    vOutside = {};
}

void VertexRemover::linkInside() {
    for (std::size_t number = 0; number < vRecords.size(); ++number) {
        if (vRecords[number] == nullptr) continue;
        const LinkTriangulation::Triangle& t = filling.triangle(number);
        const auto neighbour = [&](int i) {
            const LinkTriangulation::Side side = t.aNeighbours[i];
            return side == LinkTriangulation::none ? nullptr : vRecords[side >> 2];
        };
        vRecords[number]->setPropertiesAndOppT(vLink[t.aCorners[0]], vLink[t.aCorners[1]],
                                               vLink[t.aCorners[2]], neighbour(0), neighbour(1),
                                               neighbour(2));
    }
}

void VertexRemover::linkOutside() {
    for (std::size_t i = 0; i < vOutside.size(); ++i) {
        const HalfEdge outside = vOutside[i];
        const LinkTriangulation::Side side = filling.sideAt(i);
        Triangle2* const pInside = vRecords[side >> 2];
        if (pInside != nullptr) pInside->setOppTriangle(static_cast<int>(side & 3), outside.pT);
        if (outside.pT == nullptr) continue;
        outside.pT->setOppTriangle(outside.ith, pInside);
        if (!bHull) continue;
        // A vertex that gets no new triangle keeps one outside.
        outside.pT->becomeIncidentAt(Triangle2::incIndexBy1(outside.ith));
        outside.pT->becomeIncidentAt(Triangle2::incIndexBy2(outside.ith));
    }
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

} // namespace TESK_KIVO2D
