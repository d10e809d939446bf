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

void ConstraintMgr::forgetSplitSegments() {
    segments.clear();
    segmentPool.forEach([this](ConstraintSegment2* pCSeg) {
        if (pCSeg->isAlive()) segments.insert(pCSeg);
    });
}

} // namespace TESK_KIVO2D
