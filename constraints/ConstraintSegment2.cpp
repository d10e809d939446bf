#include "ConstraintSegment2.h"

#include "Point2.h"
#include "constraints/ConstraintMgr.h"
#include "constraints/SegmentRelease.h"
#include "kernel/assertion.h"
#include "kernel/messages.h"
#include "kernel/valueText.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <functional>
#include <new>

namespace TESK_KIVO2D {

std::uint32_t ConstraintSegment2::takeLabel() {
    static std::atomic<std::uint32_t> nextLabel{0};
    return nextLabel.fetch_add(1, std::memory_order_relaxed);
}

ConstraintSegment2::ConstraintSegment2(Point2* p0, Point2* p1, ConstraintInsertionStrategy strategy)
    : pSrc(p0), pTrg(p1), label(takeLabel()), cis(strategy) {
    KIVO_ASSERT(std::less<>{}(p0, p1), "p0<p1");
}

bool ConstraintSegment2::operator<(const ConstraintSegment2& other) const {
    if (pSrc != other.pSrc) return std::less<>{}(pSrc, other.pSrc);
    return std::less<>{}(pTrg, other.pTrg);
}

// --- owners

std::size_t ConstraintSegment2::getNumberOfOwners() const {
    std::size_t num = 0;
    for (const Owner* p = &firstOwner; p != nullptr && p->pGraph != nullptr; p = p->pNext)
        ++num;
    return num;
}

ConstraintSegment2::Owner* ConstraintSegment2::findOwner(const ConstraintGraph2* pGraph) {
    for (Owner* p = &firstOwner; p != nullptr; p = p->pNext) {
        if (p->pGraph == pGraph) return p;
    }
    return nullptr;
}

void ConstraintSegment2::enterOwner(ConstraintGraph2* pGraph) {
    if (firstOwner.pGraph == nullptr) {
        firstOwner.pGraph = pGraph;
        return;
    }
    firstOwner.pNext = new (pGraph->mgr.ownerPool.alloc()) Owner{pGraph, firstOwner.pNext, false, false};
}

void ConstraintSegment2::addOwner(ConstraintGraph2* pGraph) {
    pGraph->mgr.forEachNotOwned(this, pGraph, [=](ConstraintSegment2* pCSeg) { pCSeg->enterOwner(pGraph); });
}

bool ConstraintSegment2::enterDirection(const ConstraintGraph2* pGraph, bool bReverse) {
    Owner* const pOwner = findOwner(pGraph);
    if (pOwner == nullptr || pOwner->bDirectionKnown) return false;
    pOwner->bDirectionKnown = true;
    pOwner->bReverse = bReverse;
    return true;
}

// --- splitting

bool ConstraintSegment2::isInBox(const Point2& p) const { return clampedIntoBox(p) == p; }

Point2 ConstraintSegment2::clampedIntoBox(const Point2& p) const {
    Point2 clamped(std::clamp(p.x(), std::min(pSrc->x(), pTrg->x()), std::max(pSrc->x(), pTrg->x())),
                   std::clamp(p.y(), std::min(pSrc->y(), pTrg->y()), std::max(pSrc->y(), pTrg->y())));
    clamped.setCustomIndex(p.getCustomIndex());
    return clamped;
}

bool ConstraintSegment2::split_combinatorialOnly(Point2* pSplit) {
    KIVO_ASSERT(pSplit != nullptr, "pSplit!=0");
    KIVO_ASSERT(isAlive(), "isAlive()");
    KIVO_ASSERT(!hasEnd(pSplit), "p0!=pSplit && p1!=pSplit");
    KIVO_ASSERT(firstOwner.pGraph != nullptr, "!sOwners.empty()");
    firstOwner.pGraph->mgr.prefetchSplit(this, pSplit);
    // A vertex beyond the ends would make a child as large as its parent, and trees with loops.
    if (!isInBox(*pSplit)) {
        reportWarning("ConstraintSegment2::split_combinatorialOnly()",
                      "Ignoring a split point outside the box of the constraint segment");
        return false;
    }
    splitAt(pSplit);
    return true;
}

Point2* ConstraintSegment2::insertAndSplit(const Point2& p) {
    KIVO_ASSERT(bAlive, "bAlive");
    KIVO_ASSERT(!hasChildren(), "vChildren.empty()");
    KIVO_ASSERT(firstOwner.pGraph != nullptr, "!sOwners.empty()");
    ConstraintMgr& mgr = firstOwner.pGraph->mgr;
    ConstraintHost* const pOwnerDt = &mgr.host();
    KIVO_ASSERT(pOwnerDt != nullptr, "pOwnerDt!=0");
    if (!std::isfinite(p.x()) || !std::isfinite(p.y())) {
        reportWarning("ConstraintSegment2::insertAndSplit",
                      "Ignoring a point with a coordinate that is not finite");
        return nullptr;
    }
    Point2* pSplit = nullptr;
    try {
        {
            const SegmentRelease release(*this); // else the insertion would split it
            pSplit = pOwnerDt->insert(clampedIntoBox(p));
            KIVO_ASSERT(pSplit != nullptr, "pSplit!=0");
            // Beside the edge, which then is none of ours any more. Before the children are inserted, which
            // takes all edges but constraints to be legal.
            if (!hasEnd(pSplit) && pOwnerDt->is2D()) pOwnerDt->legalizeEdge(pSrc, pTrg);
        }
        if (hasEnd(pSplit)) {
            reportWarning("ConstraintSegment2::insertAndSplit",
                          "Trying to split a Constraint segment at one of its endpoints");
            return nullptr;
        }
        splitAt(pSplit);
        insertChildren(mgr);
    } catch (...) {
        mgr.applyLater();
        throw;
    }
    if (pOwnerDt->is2D()) {
        pOwnerDt->legalizeEdge(pSrc, pTrg); // rounding may have put the vertex beside the edge
        pOwnerDt->legalizeAround(pSplit);
    }
    return pSplit;
}

bool ConstraintSegment2::splitAndRemovePrev(const Point2& p) {
    const Point2* const pSplit = insertAndSplit(p);
    if (pSplit == nullptr) return false;
    firstOwner.pGraph->mgr.host().removeInnerVertices(pSplit, *pSrc);
    return true;
}

void ConstraintSegment2::splitAt(Point2* pSplit) {
    ConstraintMgr& mgr = firstOwner.pGraph->mgr;
    mgr.reserveSplit(this, pSplit);
    // From here on nothing throws but failing conditions.
    ConstraintSegment2* const pKid0 = mgr.findOrMake(pSrc, pSplit, cis);
    ConstraintSegment2* const pKid1 = mgr.findOrMake(pTrg, pSplit, cis);
    becomeParentOf(pKid0, pKid1);
}

void ConstraintSegment2::becomeParentOf(ConstraintSegment2* pKid0, ConstraintSegment2* pKid1) {
    aChildren[0] = pKid0;
    aChildren[1] = pKid1;
    bAlive = false;
    for (Owner* p = &firstOwner; p != nullptr; p = p->pNext) {
        pKid0->addOwner(p->pGraph);
        pKid1->addOwner(p->pGraph);
    }
    for (Owner* p = &firstOwner; p != nullptr; p = p->pNext)
        p->pGraph->notifySplit(this, p == &firstOwner);
}

void ConstraintSegment2::insertChildren(ConstraintMgr& mgr) {
    // The one at the target first.
    mgr.applySegment(aChildren[1]);
    mgr.applySegment(aChildren[0]);
}

// --- descendants

void ConstraintSegment2::getChildrenRec(std::vector<ConstraintSegment2*>& vLeaves) {
    if (isWithdrawn()) return;
    KIVO_ASSERT(hasChildren(), "vChildren.size()==2");
    std::vector<ConstraintSegment2*> vStack{aChildren[1], aChildren[0]};
    while (!vStack.empty()) {
        ConstraintSegment2* const pCSeg = vStack.back();
        vStack.pop_back();
        if (pCSeg->hasChildren()) {
            vStack.push_back(pCSeg->aChildren[1]);
            vStack.push_back(pCSeg->aChildren[0]);
        } else if (pCSeg->isAlive()) {
            vLeaves.push_back(pCSeg);
        }
    }
}

void ConstraintSegment2::getChildrenAndSplitPoint(ConstraintSegment2*& pKid0, ConstraintSegment2*& pKid1,
                                                  Point2*& pSplit) const {
    if (isAlive()) {
        reportWarning("ConstraintSegment2::getChildrenAndSplitPoint()", "*this is still alive!");
        return;
    }
    KIVO_ASSERT(hasChildren(), "vChildren.size()==2");
    pKid0 = aChildren[0];
    pKid1 = aChildren[1];
    Point2* pSplitPoint = nullptr;
    if (pKid1->hasEnd(pKid0->pTrg)) {
        pSplitPoint = pKid0->pTrg;
    } else if (pKid1->hasEnd(pKid0->pSrc)) {
        pSplitPoint = pKid0->pSrc;
    }
    KIVO_ASSERT(pSplitPoint != nullptr, "pSplitPoint!=NULL");
    pSplit = pSplitPoint;
}

// --- printing

std::ostream& operator<<(std::ostream& stream, const ConstraintSegment2& segment) {
    return writeAsOneItem(stream, [&segment](std::ostream& text) {
        text << "ConstraintSegment2 label " << segment.label << ", " << static_cast<const void*>(&segment)
             << ": (" << static_cast<const void*>(segment.pSrc) << ","
             << static_cast<const void*>(segment.pTrg) << ")";
        if (segment.isAlive()) {
            text << " [alive]\n";
        } else {
            text << " [DEAD, numChildren=" << (segment.hasChildren() ? 2 : 0) << "]\n";
        }
        const double length =
            std::hypot(segment.pTrg->x() - segment.pSrc->x(), segment.pTrg->y() - segment.pSrc->y());
        text << *segment.pSrc << "\n" << *segment.pTrg << "\nlength=" << length;
    });
}

} // namespace TESK_KIVO2D
