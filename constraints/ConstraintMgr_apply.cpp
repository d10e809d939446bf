#include "constraints/ConstraintMgr.h"

#include "kernel/assertion.h"
#include "kernel/messages.h"

#include <algorithm>
#include <utility>

namespace TESK_KIVO2D {
namespace {

constexpr const char* applyLocation = "ConstraintMgr::apply()";
constexpr int maxPasses = 499;

bool isKnown(ConstraintInsertionStrategy cis) {
    return cis == CIS_CONFORMING_DELAUNAY || cis == CIS_CONSTRAINED_DELAUNAY;
}

// How many Steiner points conforming segments may take in one call; what is left of them then is forced in.
// Real inputs need one or two a segment. But segments that meet at a small angle split each other for ever,
// and those that rounding has laid beside each other, a few units in the last place apart, want one every few
// units. What earlier calls took counts, and their Steiner points allow no further ones: else each call on
// such segments would make the triangulation several times as large.
std::size_t numSteinerPoints(std::size_t numSegments, std::size_t numVertices, std::size_t numMade) {
    const std::size_t numOfVertices = 2 * (numVertices - std::min(numMade, numVertices));
    return 1000 + 16 * numSegments + numOfVertices - std::min(numMade, numOfVertices);
}

// Lets conforming segments take Steiner points while it lives, and counts those that they took.
class SteinerAllowance {
public:
    SteinerAllowance(ConstraintHost& triangulation, std::size_t numSegments, std::size_t& numMadeSoFar)
        : dt(triangulation), numMade(numMadeSoFar),
          numAllowed(numSteinerPoints(numSegments, dt.numberOfPoints(), numMade)) {
        dt.allowSteinerPoints(numAllowed);
    }
    ~SteinerAllowance() { numMade += numAllowed - dt.allowSteinerPoints(0); }
    SteinerAllowance(const SteinerAllowance&) = delete;
    SteinerAllowance& operator=(const SteinerAllowance&) = delete;

private:
    ConstraintHost& dt;
    std::size_t& numMade;
    const std::size_t numAllowed;
};

// An order in which segments are applied fast. Vertices of a batch lie in memory as they lie in the plane, so
// most segments follow a neighbour, whose surroundings are in the cache.
std::vector<ConstraintSegment2*> sortedByEnds(std::vector<ConstraintSegment2*> vCSegs) {
    const auto isBefore = [](const ConstraintSegment2* pA, const ConstraintSegment2* pB) {
        return *pA < *pB;
    };
    std::sort(vCSegs.begin(), vCSegs.end(), isBefore);
    return vCSegs;
}

} // namespace

void ConstraintMgr::applySegment(ConstraintSegment2* pCSeg) {
    if (!dt.is2D()) return;
    if (!pCSeg->isAlive()) {
        std::vector<ConstraintSegment2*> vLeaves;
        pCSeg->getChildrenRec(vLeaves);
        // An earlier one may have split a later one.
        for (ConstraintSegment2* pLeaf : vLeaves)
            applySegment(pLeaf);
        return;
    }
    if (isKnown(pCSeg->getCIS())) {
        dt.insertSegment(pCSeg);
        return;
    }
    // All of them are withdrawn, else every later application would fail at one.
    forEachLiveSegment([](ConstraintSegment2* pLive) {
        if (!isKnown(pLive->getCIS())) pLive->bAlive = false;
    });
    reportError(applyLocation, "Unknown CIS");
    KIVO_ASSERT(false, "false");
}

void ConstraintMgr::applyGraph(ConstraintGraph2* pGraph, const std::vector<ConstraintSegment2*>& vCSegs,
                               ProgressHub::Operation& operation) {
    try {
        const SteinerAllowance allowance(dt, vCSegs.size(), numSteinerPointsMade);
        // Small sets in the order given, which users expect of the new vertices.
        constexpr std::size_t large = 4096;
        for (ConstraintSegment2* pCSeg : vCSegs.size() < large ? vCSegs : sortedByEnds(vCSegs)) {
            applySegment(pCSeg);
            operation.advance(2);
        }
        if (pGraph->getInsertionStrategy() == CIS_CONFORMING_DELAUNAY) makeDelaunay(vCSegs);
    } catch (...) {
        retreat(pGraph);
        throw;
    }
}

// Later segments have put vertices into the circles of earlier ones.
void ConstraintMgr::makeDelaunay(const std::vector<ConstraintSegment2*>& vCSegs) {
    ProgressHub::Operation silent(dt.progressHub(), applyLocation, vCSegs.size()); // inside another one
    std::vector<ConstraintSegment2*> vWork = vCSegs, vNext;
    for (int i = 0; i < maxPasses && !applyPass(vWork, vNext, silent); ++i)
        vWork.swap(vNext);
}

// After a graph could not be applied to the end. What is no edge and was asked for by nobody else is
// forgotten; what others have too is in a split that was cut short, and waits for the next application.
void ConstraintMgr::retreat(ConstraintGraph2* pGraph) {
    pGraph->bAbandoned = true;
    segmentPool.forEach([&](ConstraintSegment2* pCSeg) {
        if (!pCSeg->isAlive() || dt.isEdge(pCSeg->pSrc, pCSeg->pTrg)) return;
        bool bWanted = false;
        for (const Owner* p = &pCSeg->firstOwner; p != nullptr && p->pGraph != nullptr; p = p->pNext)
            bWanted = bWanted || !p->pGraph->bAbandoned;
        pCSeg->bAlive = bWanted;
        bPending = bPending || bWanted;
    });
}

void ConstraintMgr::apply() {
    std::vector<ConstraintSegment2*> vWork;
    forEachLiveSegment([&](ConstraintSegment2* pCSeg) { vWork.push_back(pCSeg); });
    if (vWork.empty()) {
        bPending = false;
        return;
    }
    vWork = sortedByEnds(std::move(vWork));
    bPending = true; // until the end is reached
    ProgressHub::Operation operation(dt.progressHub(), "apply", vWork.size());
    std::vector<ConstraintSegment2*> vNext;
    int budget = maxPasses;
    const SteinerAllowance allowance(dt, vWork.size(), numSteinerPointsMade);
    while (!applyPass(vWork, vNext, operation)) {
        vWork.swap(vNext);
        if (--budget == 0) {
            reportWarning(applyLocation, "insufficient numeric accuracy, need to skip last insertions");
            break;
        }
    }
    bPending = !dt.is2D();
    operation.finish();
}

// Returns true when nothing was split.
bool ConstraintMgr::applyPass(const std::vector<ConstraintSegment2*>& vWork,
                              std::vector<ConstraintSegment2*>& vNext, ProgressHub::Operation& operation) {
    bool bClean = true;
    vNext.clear();
    for (ConstraintSegment2* pCSeg : vWork) {
        const bool bWasAlive = pCSeg->isAlive();
        if (bWasAlive) {
            KIVO_ASSERT(pCSeg->isAlive(), "pCSeg->isAlive()");
            applySegment(pCSeg);
        }
        if (pCSeg->isAlive()) {
            vNext.push_back(pCSeg);
            operation.advance(1);
            continue;
        }
        bClean = false;
        pCSeg->getChildrenRec(vNext);
        if (bWasAlive) operation.advance(4);
    }
    return bClean;
}

} // namespace TESK_KIVO2D
