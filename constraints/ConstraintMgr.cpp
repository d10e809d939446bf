#include "constraints/ConstraintMgr.h"

#include "kernel/assertion.h"
#include "kernel/messages.h"

#include <algorithm>
#include <functional>
#include <locale>
#include <new>
#include <sstream>
#include <type_traits>

namespace TESK_KIVO2D {

// The pool runs no destructors.
static_assert(std::is_trivially_destructible_v<ConstraintSegment2>);

ConstraintMgr::ConstraintMgr(ConstraintHost& triangulation) : dt(triangulation) {}

ConstraintMgr::~ConstraintMgr() = default;

// --- memory

void ConstraintMgr::considerFilter() {
    constexpr std::size_t minPoints = 10000;
    if (filter.exists() || dt.numberOfPoints() < minPoints) return;
    filter.build();
    segmentPool.forEach([this](const ConstraintSegment2* pCSeg) {
        filter.set(pCSeg->getSrc());
        filter.set(pCSeg->getTrg());
    });
}

void ConstraintMgr::reserveSegments(std::size_t num) {
    if (!ownerPool.isInitialized()) {
        vStack.reserve(64);
        // An earlier attempt may have failed after this one.
        if (!segmentPool.isInitialized())
            segmentPool.init(static_cast<std::int64_t>(std::max<std::size_t>(num, 256)));
        ownerPool.init(256);
    }
    segmentPool.reserve(num);
    segments.reserve(num);
}

void ConstraintMgr::reserveOwners(std::size_t num) {
    if (num > 0) ownerPool.reserve(num);
}

void ConstraintMgr::reserveSplits(std::size_t num) {
    considerFilter();
    sVertices.reserve(num + 1); // each split asks for one more than it uses
    reserveSegments(2 * num);
    reserveOwners(2 * num);
}

void ConstraintMgr::reserveSplit(ConstraintSegment2* pCSeg, Point2* pSplit) {
    considerFilter();
    sVertices.reserve(2);
    reserveSegments(2);
    std::size_t numOwners = 0;
    for (const Point2* pEnd : {pCSeg->pSrc, pCSeg->pTrg}) {
        ConstraintSegment2* const pKid = findStraight(pEnd, pSplit);
        for (Owner* p = &pCSeg->firstOwner; p != nullptr; p = p->pNext)
            numOwners += pKid == nullptr ? 1 : countNotOwned(pKid, p->pGraph);
    }
    reserveOwners(numOwners);
}

std::size_t ConstraintMgr::countNotOwned(ConstraintSegment2* pRoot, const ConstraintGraph2* pGraph) {
    std::size_t num = 0;
    forEachNotOwned(pRoot, pGraph, [&](const ConstraintSegment2*) { ++num; });
    return num;
}

// --- segments

ConstraintSegment2* ConstraintMgr::createConstraint(Point2* p0, Point2* p1, ConstraintInsertionStrategy cis) {
    considerFilter();
    sVertices.reserve(2);
    reserveSegments(1);
    return findOrMake(p0, p1, cis);
}

ConstraintSegment2* ConstraintMgr::findStraight(const Point2* p0, const Point2* p1) const {
    ConstraintSegment2* const pFound = segments.find(p0, p1);
    return pFound != nullptr && bEndsMove && pFound->hasChildren() ? nullptr : pFound;
}

ConstraintSegment2* ConstraintMgr::findOrMake(Point2* p0, Point2* p1, ConstraintInsertionStrategy cis) {
    if (std::less<>{}(p1, p0)) std::swap(p0, p1);
    KIVO_ASSERT(std::less<>{}(p0, p1), "p0<p1");
    if (ConstraintSegment2* const pFound = findStraight(p0, p1)) {
        if (pFound->isWithdrawn()) {
            pFound->bAlive = true;
            pFound->cis = cis; // it was no edge by the other one
        }
        return pFound;
    }
    ConstraintSegment2* const pCSeg = new (segmentPool.alloc()) ConstraintSegment2(p0, p1, cis);
    sVertices.insert(p0);
    sVertices.insert(p1);
    const bool bOK = segments.insert(pCSeg);
    KIVO_ASSERT(bOK || bEndsMove, "bOK");
    if (!bOK) segments.replace(pCSeg);
    if (filter.exists()) {
        filter.set(p0);
        filter.set(p1);
    }
    return pCSeg;
}

ConstraintSegment2* ConstraintMgr::findLiveOrMake(Point2* p0, Point2* p1, ConstraintInsertionStrategy cis) {
    ConstraintSegment2* const pFound = findOrMake(p0, p1, cis);
    if (pFound->isAlive()) return pFound;
    auto* const pCSeg = new (segmentPool.alloc()) ConstraintSegment2(pFound->pSrc, pFound->pTrg, cis);
    segments.replace(pCSeg);
    return pCSeg;
}

void ConstraintMgr::registerSplit(ConstraintSegment2* pParentCSeg, ConstraintSegment2* pCSeg0,
                                  ConstraintSegment2* pCSeg1) const {
    KIVO_ASSERT(!pParentCSeg->isAlive(), "!pParentCSeg->isAlive()");
    KIVO_ASSERT(pCSeg0 != pCSeg1, "pCSeg0!=pCSeg1");
    const std::pair<const Point2*, const Point2*> key0(pCSeg0->pSrc, pCSeg0->pTrg);
    const std::pair<const Point2*, const Point2*> key1(pCSeg1->pSrc, pCSeg1->pTrg);
    KIVO_ASSERT(std::less<>{}(key0.first, key0.second), "key0.first<key0.second");
    KIVO_ASSERT(std::less<>{}(key1.first, key1.second), "key1.first<key1.second");
    // The factory has entered them.
    const bool bOK =
        segments.find(key0.first, key0.second) == pCSeg0 && segments.find(key1.first, key1.second) == pCSeg1;
    KIVO_ASSERT(bOK, "bOK");
}

void ConstraintMgr::wasSplit(Point2* p, Point2* q, Point2* pSplit) {
    if (ConstraintSegment2* const pCSeg = getConstraintSegment(p, q)) pCSeg->split_combinatorialOnly(pSplit);
}

// --- graphs

ConstraintGraph2* ConstraintMgr::createConstraint(const std::vector<PointerPair>& vPairs,
                                                  ConstraintInsertionStrategy cis, bool bApplyNow) {
    return makeGraph(vPairs,
                     {cis, false, bApplyNow ? Application::NOW : Application::LATER,
                      "ConstraingMgr::createConstraint", // text kept as it is
                      "(0) Identical source and endpoint, a constraint segment has been skipped.", true});
}

ConstraintGraph2* ConstraintMgr::createConstraint(const std::vector<Segment2>& vSegments,
                                                  ConstraintInsertionStrategy cis) {
    return createConstraint(insertEnds(vSegments), cis, true);
}

ConstraintGraph2* ConstraintMgr::createConstraint_oriented(const std::vector<Segment2>& vSegments,
                                                           ConstraintInsertionStrategy cis) {
    return createConstraint_oriented(insertEnds(vSegments), cis);
}

ConstraintGraph2* ConstraintMgr::createConstraint_oriented(const std::vector<PointerPair>& vPairs,
                                                           ConstraintInsertionStrategy cis) {
    return makeGraph(vPairs,
                     {cis, true, Application::NOW,
                      "ConstraingMgr::createConstraint_oriented(vSegments,...)", // text kept as it is
                      "(2) Identical source and endpoint, a constraint segment has been skipped.", false});
}

ConstraintGraph2* ConstraintMgr::createConstraint_directed(const std::vector<PointerPair>& vPairs,
                                                           ConstraintInsertionStrategy cis) {
    return makeGraph(vPairs,
                     {cis, true, Application::NOT_NEEDED,
                      "ConstraingMgr::createConstraint()", // text kept as it is
                      "(1) Identical source and endpoint, a constraint segment has been skipped.", false});
}

// All ends before the first segment: an end may lie on another segment, which can't be split before it has
// an owner.
std::vector<PointerPair> ConstraintMgr::insertEnds(const std::vector<Segment2>& vSegments) {
    std::vector<Point2> vPoints;
    vPoints.reserve(2 * vSegments.size());
    for (const Segment2& segment : vSegments) {
        vPoints.push_back(segment.getSrc());
        vPoints.push_back(segment.getTrg());
    }
    std::vector<Point2*> vHandles(vPoints.size());
    KIVO_ASSERT(vPoints.size() == vHandles.size(), "vPoints.size()==vHandles.size()");
    if (!vPoints.empty()) dt.insertVector(vPoints.data(), vPoints.size(), vHandles.data());
    std::vector<PointerPair> vPairs;
    vPairs.reserve(vSegments.size());
    for (std::size_t i = 0; i < vHandles.size(); i += 2) {
        Point2 *const pHandle0 = vHandles[i], *const pHandle1 = vHandles[i + 1];
        KIVO_ASSERT(pHandle0 != nullptr && pHandle1 != nullptr, "pHandle0!=NULL && pHandle1!=NULL");
        vPairs.emplace_back(pHandle0, pHandle1);
    }
    return vPairs;
}

ConstraintGraph2* ConstraintMgr::makeGraph(const std::vector<PointerPair>& vPairs, const GraphOrder& order) {
    ProgressHub::Operation operation(dt.progressHub(), "establish constraints", 3 * vPairs.size());
    // Listeners hear of pairs before the first segment is made: between factory and graph nobody may insert.
    for (const auto& [p0, p1] : vPairs) {
        if (p0 == p1) {
            reportWarning(order.pSkipLocation, order.pSkipMessage);
            if (order.bPrintsPair) {
                std::ostringstream text;
                text.imbue(std::locale::classic());
                text << *p0 << " <-> " << *p1 << "\n";
                printText(text.str());
            }
        }
        if (order.application != Application::NOT_NEEDED) operation.advance(); // a listener might insert
    }
    const bool bApplyNow = order.application == Application::NOW && dt.is2D();
    if (bApplyNow && bPending) apply();
    std::vector<ConstraintSegment2*> vCSegs;
    ConstraintGraph2* const pGraph = establish(vPairs, order, vCSegs);
    if (bApplyNow) {
        applyGraph(pGraph, vCSegs, operation);
    } else if (order.application != Application::NOT_NEEDED) {
        bPending = bPending || !vCSegs.empty();
    }
    if (order.application != Application::NOT_NEEDED) operation.finish();
    return pGraph;
}

ConstraintGraph2* ConstraintMgr::establish(const std::vector<PointerPair>& vPairs, const GraphOrder& order,
                                           std::vector<ConstraintSegment2*>& vCSegs) {
    // So many segments ahead, the slot of one is fetched.
    constexpr std::size_t distance = 12;
    std::unique_ptr<ConstraintGraph2> pNewGraph(new ConstraintGraph2(*this, order.cis));
    vGraphs.push_back(std::move(pNewGraph));
    ConstraintGraph2* const pGraph = vGraphs.back().get();
    try {
        considerFilter();
        vCSegs.reserve(vPairs.size());
        for (const auto& [p0, p1] : vPairs) {
            if (p0 == p1) continue;
            sVertices.insert(p0);
            sVertices.insert(p1);
        }
        sVertices.reserve(1);
        reserveSegments(vPairs.size());
        for (std::size_t i = 0; i < vPairs.size(); ++i) {
            if (i + distance < vPairs.size())
                segments.prefetchSlot(vPairs[i + distance].first, vPairs[i + distance].second);
            if (vPairs[i].first == vPairs[i].second) continue;
            const auto& [p0, p1] = vPairs[i];
            const bool bEdges = order.application == Application::NOT_NEEDED;
            vCSegs.push_back(bEdges ? findLiveOrMake(p0, p1, order.cis) : findOrMake(p0, p1, order.cis));
        }
        pGraph->prepare(vCSegs);
    } catch (...) {
        // What has no owner can't be split, so it must not be alive.
        for (ConstraintSegment2* pCSeg : vCSegs) {
            if (pCSeg->firstOwner.pGraph == nullptr) pCSeg->bAlive = false;
        }
        vGraphs.pop_back();
        throw;
    }
    pGraph->commit(order.bOriented ? &vPairs : nullptr);
    return pGraph;
}

} // namespace TESK_KIVO2D
