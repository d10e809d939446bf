// What becomes of segments whose ends move or fall together.
#include "constraints/ConstraintMgr.h"

namespace TESK_KIVO2D {

void ConstraintMgr::reserveMerge(const std::vector<ConstraintSegment2*>& vCSegs) {
    sVertices.reserve(2);
    reserveSegments(2 * vCSegs.size() + 1);
    std::size_t numOwners = 0;
    for (const ConstraintSegment2* pCSeg : vCSegs)
        numOwners += 2 * pCSeg->getNumberOfOwners();
    reserveOwners(numOwners);
}

void ConstraintMgr::mergeEnds(const std::vector<ConstraintSegment2*>& vCSegs, Point2* pGone, Point2* pThere) {
    // Between two vertices at one place: a segment that is neither alive nor split, and never will be.
    ConstraintSegment2* const pNothing = findLiveOrMake(pGone, pThere, vCSegs.front()->cis);
    pNothing->bAlive = false;
    for (ConstraintSegment2* const pCSeg : vCSegs) {
        if (pCSeg == pNothing) continue;
        Point2* const pFar = pCSeg->otherEnd(pGone);
        ConstraintSegment2* const pMoved = findLiveOrMake(pFar, pThere, pCSeg->cis);
        const bool bGoneIsSource = pCSeg->pSrc == pGone;
        pCSeg->becomeParentOf(bGoneIsSource ? pNothing : pMoved, bGoneIsSource ? pMoved : pNothing);
    }
}

void ConstraintMgr::endMoves(bool bMoved) {
    bEndsMove = false;
    if (!bMoved) return;
    segments.clear();
    segmentPool.forEach([this](ConstraintSegment2* pCSeg) {
        if (pCSeg->isAlive()) segments.insert(pCSeg);
    });
}

void ConstraintMgr::appendLiveEdges(ConstraintSegment2* pCSeg, Point2* pFrom,
                                    std::vector<PointerPair>& vEdges) {
    std::vector<std::pair<ConstraintSegment2*, Point2*>> vToDo{{pCSeg, pFrom}};
    while (!vToDo.empty()) {
        const auto [pNext, pStart] = vToDo.back();
        vToDo.pop_back();
        if (pNext->isAlive()) vEdges.emplace_back(pStart, pNext->otherEnd(pStart));
        if (!pNext->hasChildren()) continue;
        ConstraintSegment2 *pKid0 = nullptr, *pKid1 = nullptr; // at the source, and at the target
        Point2* pSplit = nullptr;
        pNext->getChildrenAndSplitPoint(pKid0, pKid1, pSplit);
        const bool bFromSource = pNext->pSrc == pStart;
        vToDo.emplace_back(bFromSource ? pKid1 : pKid0, pSplit);
        vToDo.emplace_back(bFromSource ? pKid0 : pKid1, pStart);
    }
}

} // namespace TESK_KIVO2D
