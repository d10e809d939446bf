#include "constraints/VertexMover.h"

#include "core/edgeSearch.h"

#include <algorithm>

namespace TESK_KIVO2D {

VertexMover::Result VertexMover::move(Point2* pVtx, const Point2& target) {
    site.coverPoint(target);
    lookAround(pVtx, target);
    if (!bOnHull && staysAmongNeighbours()) {
        site.shift(pVtx, target, star.vTriangles);
        if (!star.vFixed.empty()) ++numSegmentMoves;
        return Result::MOVED;
    }
    const bool bPlain = star.vFixed.empty();
    Triangle2* const pNear = bPlain ? sweep.followWay(star) : star.vTriangles.front();
    if (pNear == nullptr) return Result::BLOCKED;
    const WalkResult found = site.find(target, pNear);
    Point2* const pThere = found.code == WalkResult::ON_CORNER ? cornerAt(found, target) : nullptr;
    star.pAtTarget = pThere;
    if (!bPlain && !sweep.isClear(star)) return Result::LEFT_OUT;
    return pThere != nullptr ? merge(pVtx, pThere) : place(pVtx);
}

void VertexMover::lookAround(Point2* pVtx, const Point2& target) {
    star.pVtx = pVtx;
    star.target = target;
    star.pAtTarget = nullptr;
    star.vTriangles.clear();
    star.vFixed.clear();
    star.vFarEnds.clear();
    const bool bMayHaveSegments = mgr.isConstraint(pVtx);
    const auto enter = [&](const Point2* pFar) {
        ConstraintSegment2* const pCSeg = bMayHaveSegments ? mgr.getConstraintSegment(pVtx, pFar) : nullptr;
        if (pCSeg == nullptr) return;
        star.vFixed.push_back(pCSeg);
        star.vFarEnds.push_back(pFar);
    };
    bOnHull = false;
    forEachTriangleAround(pVtx, [&](Triangle2* pT, int i) {
        star.vTriangles.push_back(pT);
        enter(pT->getCorner(Triangle2::incIndexBy1(i)));
        if (pT->getOppositeTriangle(Triangle2::incIndexBy1(i)) != nullptr) return true;
        bOnHull = true;
        enter(pT->getCorner(Triangle2::incIndexBy2(i))); // no triangle begins there
        return true;
    });
}

bool VertexMover::staysAmongNeighbours() const {
    return std::all_of(star.vTriangles.begin(), star.vTriangles.end(), [this](const Triangle2* pT) {
        const int i = pT->getIntraTriangleIndex(star.pVtx);
        return site.predicates().orientation(star.target, *pT->getCorner(Triangle2::incIndexBy1(i)),
                                             *pT->getCorner(Triangle2::incIndexBy2(i))) == ORIENTATION2_CCW;
    });
}

VertexMover::Result VertexMover::place(Point2* pVtx) {
    mgr.reserveSplits(1); // it may come to lie on a constraint
    site.prepareToPutIn(star.target);
    const Point2* const pNear = site.takeOut(pVtx);
    if (pNear == nullptr) return Result::LEFT_OUT;
    site.putIn(pVtx, star.target, pNear);
    restoreSegments();
    return Result::MOVED;
}

VertexMover::Result VertexMover::merge(Point2* pVtx, Point2* pThere) {
    if (wouldCoincide(pThere)) return Result::LEFT_OUT;
    const bool bMoverIsPlain = star.vFixed.empty();
    const bool bOtherIsPlain = !mgr.isConstraint(pThere);
    if (!bMoverIsPlain && !bOtherIsPlain) mgr.reserveMerge(star.vFixed);
    if (site.takeOut(pVtx) == nullptr) return Result::LEFT_OUT;
    if (!bMoverIsPlain && bOtherIsPlain) {
        site.substitute(pVtx, pThere);
        site.wasRemoved(pThere, true);
    } else {
        if (!bMoverIsPlain) mgr.mergeEnds(star.vFixed, pVtx, pThere);
        site.wasRemoved(pVtx, !mgr.isConstraint(pVtx));
    }
    restoreSegments();
    return Result::MERGED;
}

// True when one of the vertex's segments would fall onto one that is there already.
bool VertexMover::wouldCoincide(const Point2* pThere) const {
    return std::any_of(star.vFarEnds.begin(), star.vFarEnds.end(), [&](const Point2* pFarEnd) {
        return pFarEnd != pThere && mgr.isConstraint(pFarEnd, pThere);
    });
}

// The segments of the vertex, or what has come out of them, become edges again. Nothing is in their way.
void VertexMover::restoreSegments() {
    if (star.vFixed.empty()) return;
    ++numSegmentMoves;
    try {
        std::vector<ConstraintSegment2*> vLeaves;
        for (ConstraintSegment2* const pCSeg : star.vFixed) {
            if (pCSeg->isAlive()) {
                vLeaves.push_back(pCSeg);
            } else {
                pCSeg->getChildrenRec(vLeaves);
            }
        }
        for (ConstraintSegment2* const pLeaf : vLeaves)
            site.forceSegment(pLeaf);
    } catch (...) {
        mgr.applyLater();
        throw;
    }
}

} // namespace TESK_KIVO2D
