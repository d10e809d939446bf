#include "constraints/Sweep.h"

#include "core/edgeSearch.h"
#include "kernel/tools.h"

#include <algorithm>

namespace TESK_KIVO2D {
namespace {

bool doBoxesTouch(const Point2& a, const Point2& b, const Point2& c, const Point2& d) {
    return std::max(a.x(), b.x()) >= std::min(c.x(), d.x()) &&
           std::max(c.x(), d.x()) >= std::min(a.x(), b.x()) &&
           std::max(a.y(), b.y()) >= std::min(c.y(), d.y()) &&
           std::max(c.y(), d.y()) >= std::min(a.y(), b.y());
}

} // namespace

bool Sweep::isClear(const MovingStar& star) {
    return std::all_of(star.vFarEnds.begin(), star.vFarEnds.end(),
                       [&](const Point2* pFarEnd) { return isAreaClear(star, pFarEnd); });
}

// Where the way goes next: on from a vertex, out of a triangle across an edge that it meets in its interior,
// or nowhere, because it ends in this triangle.
struct Sweep::Step {
    const Point2* pVtx;
    HalfEdge across;
    Triangle2* pEnd;
};

Triangle2* Sweep::followWay(const MovingStar& star) {
    const Point2 &from = *star.pVtx, &to = star.target;
    for (Step step = leave(star.pVtx, to);;) {
        if (step.pEnd != nullptr) return step.pEnd;
        if (step.pVtx != nullptr) {
            if (hasConstraint(step.pVtx)) return nullptr;
            step = leave(step.pVtx, to);
        } else {
            if (mgr.isConstraint(step.across.source(), step.across.target())) return nullptr;
            step = cross(step.across, from, to);
        }
    }
}

// From a vertex that lies on the way.
Sweep::Step Sweep::leave(const Point2* pVtx, const Point2& to) const {
    Step step{nullptr, {}, nullptr};
    bool bFound = false;
    forEachTriangleAround(pVtx, [&](Triangle2* pT, int i) {
        step.pEnd = pT; // stays, if the way leads out of the hull
        const HalfEdge out{pT, i};
        for (const Point2* pCorner : {out.source(), out.target()}) {
            if (isOn(to, *pVtx, *pCorner)) {
                bFound = true;
            } else if (!bFound && isOn(*pCorner, *pVtx, to)) {
                step = {pCorner, {}, nullptr};
                bFound = true;
            }
        }
        if (bFound) return false;
        bFound = tests.orientation(*pVtx, *out.source(), to) == ORIENTATION2_CCW &&
                 tests.orientation(*pVtx, *out.target(), to) == ORIENTATION2_CW;
        if (bFound && tests.orientation(*out.source(), *out.target(), to) == ORIENTATION2_CW)
            step = {nullptr, out, nullptr};
        return !bFound;
    });
    return step;
}

// Across the edge, beyond which the way goes on.
Sweep::Step Sweep::cross(HalfEdge edge, const Point2& from, const Point2& to) const {
    Triangle2* const pN = edge.opposite();
    if (pN == nullptr) return {nullptr, {}, edge.pT};
    const int j = pN->getIntraTriangleIndex(edge.pT);
    const Point2* const pApex = pN->getCorner(j);
    const Orientation2 side = tests.orientation(from, to, *pApex);
    if (side == ORIENTATION2_COLLINEAR) {
        const bool bBehind = isInBox(*pApex, from, to) && *pApex != to;
        return bBehind ? Step{pApex, {}, nullptr} : Step{nullptr, {}, pN};
    }
    // Corner j + 1 is to the left of the way, corner j + 2 to the right.
    const HalfEdge out{pN, side == ORIENTATION2_CCW ? Triangle2::incIndexBy1(j) : Triangle2::incIndexBy2(j)};
    const bool bOut = tests.orientation(*out.source(), *out.target(), to) == ORIENTATION2_CW;
    return bOut ? Step{nullptr, out, nullptr} : Step{nullptr, {}, pN};
}

bool Sweep::hasConstraint(const Point2* pVtx) const {
    if (!mgr.isConstraint(pVtx)) return false;
    bool bAny = false;
    forEachSpoke(pVtx, [&](const Point2* pFar) {
        bAny = mgr.isConstraint(pVtx, pFar);
        return !bAny;
    });
    return bAny;
}

// Goes through the triangles that the area overlaps, which hang together with those around the vertex.
bool Sweep::isAreaClear(const MovingStar& star, const Point2* pFarEnd) {
    const Point2 &from = *star.pVtx, &to = star.target;
    if (pFarEnd != star.pAtTarget && isOn(*pFarEnd, from, to)) return false;
    const Area area{from, to, *pFarEnd, tests.orientation(from, to, *pFarEnd)};
    stamps.begin();
    vMet = star.vTriangles;
    for (const Triangle2* const pT : vMet)
        stamps.meet(pT);
    for (std::size_t num = 0; num < vMet.size(); ++num) {
        Triangle2* const pT = vMet[num];
        for (int i = 0; i < 3; ++i) {
            const Point2* const pCorner = pT->getCorner(i);
            const bool bMayBeThere = pCorner == star.pVtx || pCorner == pFarEnd || pCorner == star.pAtTarget;
            if (!bMayBeThere && isIn(*pCorner, area)) return false;
            const HalfEdge edge{pT, i};
            const Point2 *const x = edge.source(), *const y = edge.target();
            if (x == star.pVtx || y == star.pVtx || !doesTouch(star, area, x, y)) continue;
            if (mgr.isConstraint(x, y) && isInTheWay(star, x, y)) return false;
            Triangle2* const pN = edge.opposite();
            if (pN != nullptr && stamps.meet(pN)) vMet.push_back(pN);
        }
    }
    return true;
}

// Whether the area goes on beyond the edge, or may; ends of the edge in the area are not looked for here. At
// the area's corners only what lies between its sides counts: else every triangle there would be met, and a
// hub has many.
bool Sweep::doesTouch(const MovingStar& star, const Area& area, const Point2* x, const Point2* y) const {
    const auto isBetween = [&](const Point2& corner, const Point2& right, const Point2& left,
                               const Point2& p) {
        const bool bTurned = area.turn == ORIENTATION2_CW;
        return area.turn != ORIENTATION2_COLLINEAR &&
               tests.orientation(corner, bTurned ? left : right, p) != ORIENTATION2_CW &&
               tests.orientation(corner, bTurned ? right : left, p) != ORIENTATION2_CCW;
    };
    if (x == &area.far || y == &area.far)
        return isBetween(area.far, area.from, area.to, x == &area.far ? *y : *x);
    if (x == star.pAtTarget || y == star.pAtTarget)
        return isBetween(area.to, area.far, area.from, x == star.pAtTarget ? *y : *x);
    return doTouch(*x, *y, area.from, area.to) || doTouch(*x, *y, area.to, area.far) ||
           doTouch(*x, *y, area.far, area.from);
}

// Whether a constraint, none of the vertex's own, hinders it. It may end at the target. It may pass through
// there, if then it does not lie on one of the vertex's own.
bool Sweep::isInTheWay(const MovingStar& star, const Point2* x, const Point2* y) const {
    const Point2 &from = *star.pVtx, &to = star.target;
    if (!doTouch(*x, *y, from, to)) return false;
    if (!isOn(to, *x, *y)) return true;
    for (const Point2* pEnd : {x, y}) {
        if (pEnd == star.pAtTarget) continue;
        if (isOn(*pEnd, from, to)) return true;
        const bool bOwn = std::find(star.vFarEnds.begin(), star.vFarEnds.end(), pEnd) != star.vFarEnds.end();
        if (bOwn) return true;
    }
    return false;
}

bool Sweep::isOn(const Point2& p, const Point2& a, const Point2& b) const {
    return isInBox(p, a, b) && tests.orientation(a, b, p) == ORIENTATION2_COLLINEAR;
}

// Closed segments; the second one may be a point.
bool Sweep::doTouch(const Point2& a, const Point2& b, const Point2& c, const Point2& d) const {
    if (c == d) return isOn(c, a, b);
    if (!doBoxesTouch(a, b, c, d)) return false;
    const Orientation2 aSide = tests.orientation(c, d, a), bSide = tests.orientation(c, d, b);
    if (aSide == bSide) return aSide == ORIENTATION2_COLLINEAR; // then the boxes tell
    const Orientation2 cSide = tests.orientation(a, b, c);
    return cSide == ORIENTATION2_COLLINEAR || cSide != tests.orientation(a, b, d);
}

bool Sweep::isIn(const Point2& p, const Area& area) const {
    const Point2 &a = area.from, &b = area.to, &c = area.far;
    if (area.turn == ORIENTATION2_COLLINEAR) return isOn(p, a, b) || isOn(p, b, c) || isOn(p, c, a);
    const auto isOutside = [&](const Point2& q, const Point2& r) {
        const Orientation2 side = tests.orientation(q, r, p);
        return side != area.turn && side != ORIENTATION2_COLLINEAR;
    };
    return !isOutside(a, b) && !isOutside(b, c) && !isOutside(c, a);
}

} // namespace TESK_KIVO2D
