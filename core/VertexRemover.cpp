#include "core/VertexRemover.h"

#include "core/prefetch.h"
#include "kernel/assertion.h"

#include <algorithm>

namespace TESK_KIVO2D {
namespace {

constexpr std::size_t large = 4096; // memory for larger stars is not kept

} // namespace

// A triangle around a vertex: all that is asked of it.
class VertexRemover::Turn {
public:
    Turn(const Point2* pCentre, Triangle2* pFirst) : pVtx(pCentre) { enter(pFirst); }

    void enter(Triangle2* pNext) {
        pT = pNext;
        // All of it at once: it may lie on two cache lines, and the way on is known from both of them.
        const Triangle2 copy = *pT;
        const int i = copy.getIntraTriangleIndex(pVtx), j = Triangle2::incIndexBy1(i),
                  k = Triangle2::incIndexBy1(j);
        pNextT = copy.getOppositeTriangle(j);
        pPreviousT = copy.getOppositeTriangle(k);
        pFrom = copy.getCorner(j);
        pTo = copy.getCorner(k);
        pOutside = copy.getOppositeTriangle(i);
    }

    const Point2* pVtx;
    Triangle2 *pT, *pNextT, *pPreviousT, *pOutside;
    Point2 *pFrom, *pTo;
};

bool VertexRemover::lookAround(Point2* pVtx) {
    pGoing = pVtx;
    collectStar();
    return !bHull || !isLinkStraight();
}

// In both directions at once, so that two records are on their way from memory at any time. The vertices of
// the link are fetched as soon as they are known, which is from the triangle before when it goes forwards: so
// the last record is not waited for.
void VertexRemover::collectStar() {
    first = last = vBuffer.size() / 2;
    Turn forward(pGoing, pGoing->getIncidentTriangle()), backward = forward;
    const auto pushForward = [&](Point2* pFrom) {
        prefetch(static_cast<const void*>(forward.pTo));
        if (last == vBuffer.size()) makeRoom();
        vBuffer[last++] = {forward.pT, pFrom, forward.pOutside, 0, false};
    };
    const auto goForward = [&](Triangle2* pNext) {
        Point2* const pFrom = forward.pTo;
        forward.enter(pNext);
        pushForward(pFrom);
    };
    const auto goBackward = [&](Triangle2* pPrevious) {
        backward.enter(pPrevious);
        prefetch(static_cast<const void*>(backward.pFrom));
        if (first == 0) makeRoom();
        vBuffer[--first] = {pPrevious, backward.pFrom, backward.pOutside, 0, false};
    };
    prefetch(static_cast<const void*>(forward.pFrom));
    pushForward(forward.pFrom);
    for (;;) {
        Triangle2 *const pNext = forward.pNextT, *const pPrevious = backward.pPreviousT;
        bHull = pNext == nullptr || pPrevious == nullptr;
        if (bHull || pNext == backward.pT) break;
        goForward(pNext);
        if (pPrevious == pNext) break;
        goBackward(pPrevious);
    }
    while (bHull && forward.pNextT != nullptr)
        goForward(forward.pNextT);
    while (bHull && backward.pPreviousT != nullptr)
        goBackward(backward.pPreviousT);
    vLink.clear();
    for (const Spoke& spoke : spokes())
        vLink.push_back(spoke.pFrom);
    if (bHull) vLink.push_back(forward.pTo);
}

// At both ends.
void VertexRemover::makeRoom() {
    constexpr std::size_t atFirst = 64;
    std::vector<Spoke> vLarger(std::max(atFirst, 2 * vBuffer.size()));
    const std::size_t num = last - first, newFirst = (vLarger.size() - num) / 2;
    std::copy(vBuffer.begin() + static_cast<std::ptrdiff_t>(first),
              vBuffer.begin() + static_cast<std::ptrdiff_t>(last),
              vLarger.begin() + static_cast<std::ptrdiff_t>(newFirst));
    vBuffer.swap(vLarger);
    first = newFirst;
    last = first + num;
}

bool VertexRemover::isLinkStraight() const {
    const auto isInside = [](const Spoke& spoke) { return spoke.pOutside != nullptr; };
    if (std::any_of(spokes().begin(), spokes().end(), isInside)) return false;
    for (std::size_t i = 2; i < vLink.size(); ++i) {
        if (tests.orientation(*vLink[i - 2], *vLink[i - 1], *vLink[i]) != ORIENTATION2_COLLINEAR)
            return false;
    }
    return true;
}

void VertexRemover::prepare() {
    filling.find(*pGoing, vLink.data(), vLink.size(), bHull);
    assignRecords();
    store.reserveRetired(vSpare.size());
}

// A triangle with an edge of the link gets the record of the one that had it, and what is outside of most
// edges of the link, far away in memory, needs no other links. There are more records than new triangles.
void VertexRemover::assignRecords() {
    vRecords.assign(filling.numTriangles(), nullptr);
    vSpare.clear();
    for (std::size_t i = 0; i < degree(); ++i) {
        Spoke& spoke = spokes()[i];
        const std::size_t number = filling.sideAt(i) >> 2;
        spoke.bStays = vRecords[number] == nullptr && !filling.isInfinite(filling.triangle(number));
        if (spoke.bStays) {
            vRecords[number] = spoke.pT;
        } else {
            vSpare.push_back(spoke.pT);
            prefetchLinks(spoke.pOutside);
        }
    }
    for (std::size_t number = 0; number < vRecords.size(); ++number) {
        const LinkTriangulation::Triangle& t = filling.triangle(number);
        if (filling.isInfinite(t)) continue;
        if (vRecords[number] == nullptr) {
            vRecords[number] = vSpare.back();
            vSpare.pop_back();
        }
        const Point2 &a = *vLink[t.aCorners[0]], &b = *vLink[t.aCorners[1]], &c = *vLink[t.aCorners[2]];
        // What the Delaunay edges at the vertex are for.
        KIVO_ASSERT(tests.orientation(a, b, c) == ORIENTATION2_CCW, "vRemainingT.size()==3");
    }
}

void VertexRemover::remove() {
    store.unlinkVertex(pGoing);
    linkInside();
    linkOutside();
    Triangle2* const pSurvivor = vLink.front()->getIncidentTriangle();
    for (Triangle2* const pT : vSpare)
        store.retireTriangle(pT, pSurvivor);
    if (degree() <= large) return;
    vBuffer = {};
    first = last = 0;
    vLink = {};
    vRecords = vSpare = {};
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
    // All of them first: one triangle may lie behind several edges, and this knows it by the old triangles.
    for (Spoke& spoke : spokes()) {
        if (spoke.pOutside != nullptr && (!spoke.bStays || bHull))
            spoke.ithOutside = spoke.pOutside->getIntraTriangleIndex(spoke.pT);
    }
    for (std::size_t i = 0; i < degree(); ++i) {
        Triangle2* const pOutside = spokes()[i].pOutside;
        const LinkTriangulation::Side side = filling.sideAt(i);
        Triangle2* const pInside = vRecords[side >> 2];
        if (pInside != nullptr) pInside->setOppTriangle(static_cast<int>(side & 3), pOutside);
        if (pOutside == nullptr || (spokes()[i].bStays && !bHull)) continue;
        const int ith = spokes()[i].ithOutside;
        pOutside->setOppTriangle(ith, pInside);
        if (!bHull) continue;
        // A vertex that gets no new triangle keeps one outside.
        pOutside->becomeIncidentAt(Triangle2::incIndexBy1(ith));
        pOutside->becomeIncidentAt(Triangle2::incIndexBy2(ith));
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
