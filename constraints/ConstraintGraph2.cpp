#include "ConstraintGraph2.h"

#include "Color.h"
#include "Segment2.h"
#include "Visualizer2.h"
#include "constraints/ConstraintMgr.h"
#include "kernel/assertion.h"
#include "kernel/messages.h"

#include <array>
#include <locale>
#include <sstream>

namespace TESK_KIVO2D {
namespace {

// An edge from start to end.
struct Run {
    Point2* pStart;
    Point2* pEnd;
};

Run runOf(const ConstraintSegment2* pCSeg, bool bReverse) {
    if (bReverse) return {pCSeg->getTrg(), pCSeg->getSrc()};
    return {pCSeg->getSrc(), pCSeg->getTrg()};
}

} // namespace

// --- construction

void ConstraintGraph2::prepare(const std::vector<ConstraintSegment2*>& vCSegs) {
    pRingStart = checkAndSortPolygon(vCSegs, vCSegParents);
    bPolygon = pRingStart != nullptr;
    if (!bPolygon) vCSegParents = vCSegs;
    std::size_t numOwners = 0;
    for (ConstraintSegment2* pCSeg : vCSegParents) {
        // A new segment has room for its first owner.
        if (pCSeg->firstOwner.pGraph != nullptr || pCSeg->hasChildren())
            numOwners += mgr.countNotOwned(pCSeg, this);
    }
    mgr.reserveOwners(numOwners);
}

void ConstraintGraph2::commit(const std::vector<std::pair<Point2*, Point2*>>* pDirected) {
    bOriented = bPolygon || pDirected != nullptr;
    bool bAnyDead = false;
    for (ConstraintSegment2* pRoot : vCSegParents) {
        if (pRoot->firstOwner.pGraph == nullptr && !pRoot->hasChildren()) {
            pRoot->enterOwner(this);
            continue;
        }
        bAnyDead = bAnyDead || pRoot->hasChildren();
        mgr.forEachNotOwned(pRoot, this, [this](ConstraintSegment2* pCSeg) {
            pCSeg->enterOwner(this);
            if (pCSeg->isWithdrawn()) pCSeg->bAlive = true; // wanted again, and applied soon
        });
    }
    if (bPolygon) {
        enterRingDirections();
    } else if (pDirected != nullptr) {
        enterUserDirections(*pDirected);
    } else {
        for (ConstraintSegment2* pCSeg : vCSegParents)
            pCSeg->enterDirection(this, false);
    }
    if (!bAnyDead) return;
    // Only now: a segment that was given keeps its direction, though it may descend from another one.
    for (ConstraintSegment2* pCSeg : vCSegParents) {
        if (pCSeg->hasChildren()) enterDescendants(pCSeg, bOriented);
    }
}

void ConstraintGraph2::enterRingDirections() {
    const Point2* pConnector = pRingStart;
    for (ConstraintSegment2* pCSeg : vCSegParents) {
        pCSeg->enterDirection(this, pCSeg->pSrc != pConnector);
        pConnector = pCSeg->otherEnd(pConnector);
    }
}

void ConstraintGraph2::enterUserDirections(const std::vector<std::pair<Point2*, Point2*>>& vDirected) {
    auto itCSeg = vCSegParents.begin();
    for (const auto& [pStart, pEnd] : vDirected) {
        if (pStart == pEnd) continue;
        (*itCSeg)->enterDirection(this, (*itCSeg)->pSrc != pStart);
        ++itCSeg;
    }
}

// --- directions

void ConstraintGraph2::enterDescendants(ConstraintSegment2* pRoot, bool bAlong) {
    std::vector<ConstraintSegment2*>& vStack = mgr.vStack;
    vStack.assign({pRoot});
    while (!vStack.empty()) {
        ConstraintSegment2* const pParent = vStack.back();
        vStack.pop_back();
        ConstraintSegment2 *pKid0 = nullptr, *pKid1 = nullptr;
        std::array<bool, 2> aReverse = {false, false};
        if (bAlong) {
            getDirectChildren(pParent, pKid0, pKid1);
            aReverse = directionsAlong(pParent, pKid0, pKid1);
        } else {
            Point2* pSplit = nullptr;
            pParent->getChildrenAndSplitPoint(pKid0, pKid1, pSplit);
            KIVO_ASSERT(pKid0 != nullptr && pKid1 != nullptr, "pKid0!=0 && pKid1!=0");
        }
        if (pKid1->enterDirection(this, aReverse[1]) && pKid1->hasChildren()) vStack.push_back(pKid1);
        if (pKid0->enterDirection(this, aReverse[0]) && pKid0->hasChildren()) vStack.push_back(pKid0);
    }
}

std::array<bool, 2> ConstraintGraph2::directionsAlong(ConstraintSegment2* pParent,
                                                      ConstraintSegment2* pChild0,
                                                      ConstraintSegment2* pChild1) const {
    const auto [pParentSrc, pParentTrg] = runOf(pParent, isReverse(pParent));
    const bool bReverse0 = pChild0->getSrc() != pParentSrc;
    const bool bReverse1 = pChild1->getTrg() != pParentTrg;
    const auto [pChild0Src, pChild0Trg] = runOf(pChild0, bReverse0);
    const auto [pChild1Src, pChild1Trg] = runOf(pChild1, bReverse1);
    KIVO_ASSERT(pChild0Src == pParentSrc || pChild1Src == pParentSrc,
                "pChild0Src==pParentSrc || pChild1Src==pParentSrc");
    KIVO_ASSERT(pChild0Trg == pChild1Src || pChild1Trg == pChild0Src,
                "pChild0Trg==pChild1Src || pChild1Trg==pChild0Src");
    KIVO_ASSERT(pChild0Trg == pParentTrg || pChild1Trg == pParentTrg,
                "pChild0Trg==pParentTrg || pChild1Trg==pParentTrg");
    return {bReverse0, bReverse1};
}

void ConstraintGraph2::notifySplit(ConstraintSegment2* pParentCSeg, bool bFirst) {
    KIVO_ASSERT(!pParentCSeg->isAlive(), "!pParentCSeg->isAlive()");
    enterDescendants(pParentCSeg, true);
    ConstraintSegment2 *pKid0 = nullptr, *pKid1 = nullptr;
    Point2* pSplit = nullptr;
    pParentCSeg->getChildrenAndSplitPoint(pKid0, pKid1, pSplit);
    KIVO_ASSERT(pSplit != nullptr, "pSplit!=0");
    if (bFirst) mgr.registerSplit(pParentCSeg, pKid0, pKid1);
}

bool ConstraintGraph2::isReverse(ConstraintSegment2* pCSeg) const {
    const ConstraintSegment2::Owner* const pOwner = pCSeg == nullptr ? nullptr : pCSeg->findOwner(this);
    KIVO_ASSERT(pOwner != nullptr && pOwner->bDirectionKnown, "q_it!=mCSegReverse.end()");
    return pOwner->bReverse;
}

// --- queries

bool ConstraintGraph2::isConstraint(ConstraintSegment2* pCSeg) const {
    if (pCSeg == nullptr || !pCSeg->isAlive()) return false;
    const ConstraintSegment2::Owner* const pOwner = pCSeg->findOwner(this);
    return pOwner != nullptr && pOwner->bDirectionKnown;
}

bool ConstraintGraph2::isConstraint(Point2* p0, Point2* p1) const {
    if (p0 == p1) return false;
    // Deliberate: the question counts like a segment. Labels printed later depend on it.
    ConstraintSegment2::takeLabel();
    return isConstraint(mgr.getConstraintSegment(p0, p1));
}

void ConstraintGraph2::getOriginalConstraintSegments(std::vector<ConstraintSegment2*>& vSegments) const {
    vSegments = vCSegParents;
}

void ConstraintGraph2::getChildConstraintSegments(std::vector<ConstraintSegment2*>& vSegments) const {
    for (ConstraintSegment2* pCSeg : vCSegParents) {
        if (pCSeg->isAlive()) {
            vSegments.push_back(pCSeg);
        } else {
            pCSeg->getChildrenRec(vSegments);
        }
    }
}

void ConstraintGraph2::getDirectChildren(ConstraintSegment2* pParent, ConstraintSegment2*& pChild0,
                                         ConstraintSegment2*& pChild1) const {
    pChild0 = nullptr;
    pChild1 = nullptr;
    if (pParent == nullptr || !pParent->hasChildren()) return;
    const auto [pSrc, pTrg] = runOf(pParent, isReverse(pParent));
    pChild0 = pParent->aChildren[pSrc == pParent->pSrc ? 0 : 1];
    pChild1 = pParent->aChildren[pSrc == pParent->pSrc ? 1 : 0];
    KIVO_ASSERT(pChild0->getSrc() == pSrc || pChild0->getTrg() == pSrc,
                "pChild0->getSrc()==pSrc || pChild0->getTrg()==pSrc");
    KIVO_ASSERT(pChild1->getSrc() == pTrg || pChild1->getTrg() == pTrg,
                "pChild1->getSrc()==pTrg || pChild1->getTrg()==pTrg");
}

void ConstraintGraph2::getOrderedLiveSegments(std::vector<ConstraintSegment2*>& vCSegs) const {
    std::vector<ConstraintSegment2*> vStack;
    for (ConstraintSegment2* pRoot : vCSegParents) {
        vStack.push_back(pRoot);
        while (!vStack.empty()) {
            ConstraintSegment2* const pCSeg = vStack.back();
            vStack.pop_back();
            if (pCSeg->isAlive()) vCSegs.push_back(pCSeg);
            if (!pCSeg->hasChildren()) continue;
            ConstraintSegment2 *pKid0 = nullptr, *pKid1 = nullptr;
            getDirectChildren(pCSeg, pKid0, pKid1);
            KIVO_ASSERT(pKid0 != nullptr && pKid1 != nullptr, "pKid0!=0 && pKid1!=0");
            vStack.push_back(pKid1);
            vStack.push_back(pKid0);
        }
    }
}

void ConstraintGraph2::getPolygonVertices(std::vector<Point2*>& vVertices) const {
    std::vector<ConstraintSegment2*> vAliveCSeg;
    getOrderedLiveSegments(vAliveCSeg);
    vVertices.reserve(vVertices.size() + 2 * vAliveCSeg.size());
    for (ConstraintSegment2* pCSeg : vAliveCSeg) {
        KIVO_ASSERT(pCSeg->isAlive(), "pCSeg->isAlive()");
        if (!isConstraint(pCSeg)) {
            std::ostringstream text;
            text.imbue(std::locale::classic());
            text << "BUG in ConstraintGraph2::getPolygonVertices\nownerCG=" << static_cast<const void*>(this)
                 << "\nFor constraint segment pCSeg: " << *pCSeg << "\n";
            printText(text.str());
            return;
        }
        const Run run = runOf(pCSeg, isReverse(pCSeg));
        vVertices.push_back(run.pStart);
        vVertices.push_back(run.pEnd);
    }
}

// --- drawing

void ConstraintGraph2::show(const std::string& postscriptFilename) const {
    Visualizer2 vis(postscriptFilename);
    show(&vis, Color(CRED));
    vis.writeFile();
}

void ConstraintGraph2::show(Visualizer2* pVis, const Color& color) const {
    if (pVis == nullptr) {
        reportWarning("ConstraintGraph2::show()", "No drawing given, nothing is drawn");
        return;
    }
    std::vector<ConstraintSegment2*> vLeaves;
    getChildConstraintSegments(vLeaves);
    for (const ConstraintSegment2* pCSeg : vLeaves)
        pVis->addObject(Segment2(*pCSeg->getSrc(), *pCSeg->getTrg()), color);
}

} // namespace TESK_KIVO2D
