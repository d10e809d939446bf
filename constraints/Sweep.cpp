#include "constraints/Sweep.h"

#include "core/HalfEdge.h"
#include "kernel/tools.h"

#include <algorithm>

namespace TESK_KIVO2D {

bool Sweep::isClear(const MovingStar& star) {
    if (star.vFarEnds.empty()) return isAreaClear(star, nullptr);
    return std::all_of(star.vFarEnds.begin(), star.vFarEnds.end(),
                       [&](const Point2* pFarEnd) { return isAreaClear(star, pFarEnd); });
}

// Goes through the triangles that touch the area, which hang together with those around the vertex.
bool Sweep::isAreaClear(const MovingStar& star, const Point2* pFarEnd) {
    const Area area{*star.pVtx, star.target, pFarEnd != nullptr ? *pFarEnd : star.target};
    vMet = star.vTriangles;
    for (std::size_t num = 0; num < vMet.size(); ++num) {
        Triangle2* const pT = vMet[num];
        for (int i = 0; i < 3; ++i) {
            const Point2* const pCorner = pT->getCorner(i);
            const bool bMayBeThere = pFarEnd == nullptr || pCorner == star.pVtx || pCorner == pFarEnd ||
                                     pCorner == star.pAtTarget;
            if (!bMayBeThere && isIn(*pCorner, area)) return false;
            const HalfEdge edge{pT, i};
            const Point2 *const x = edge.source(), *const y = edge.target();
            if (x == star.pVtx || y == star.pVtx || !doesTouch(*x, *y, area)) continue;
            if (mgr.isConstraint(x, y) && isInTheWay(star, x, y)) return false;
            Triangle2* const pN = edge.opposite();
            if (pN != nullptr && std::find(vMet.begin(), vMet.end(), pN) == vMet.end()) vMet.push_back(pN);
        }
    }
    return true;
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
        const bool bOwn =
            std::find(star.vFarEnds.begin(), star.vFarEnds.end(), pEnd) != star.vFarEnds.end();
        if (bOwn) return true;
    }
    return false;
}

bool Sweep::isOn(const Point2& p, const Point2& a, const Point2& b) const {
    return isInBox(p, a, b) && tests.orientation(a, b, p) == ORIENTATION2_COLLINEAR;
}

// Closed segments, which may be points.
bool Sweep::doTouch(const Point2& a, const Point2& b, const Point2& c, const Point2& d) const {
    if (isOn(a, c, d) || isOn(b, c, d) || isOn(c, a, b) || isOn(d, a, b)) return true;
    const auto areApart = [this](const Point2& p, const Point2& q, const Point2& r, const Point2& s) {
        const Orientation2 onR = tests.orientation(p, q, r), onS = tests.orientation(p, q, s);
        return onR != ORIENTATION2_COLLINEAR && onS != ORIENTATION2_COLLINEAR && onR != onS;
    };
    return areApart(a, b, c, d) && areApart(c, d, a, b);
}

bool Sweep::isIn(const Point2& p, const Area& area) const {
    const Point2 &a = area.from, &b = area.to, &c = area.far;
    const Orientation2 turn = tests.orientation(a, b, c);
    if (turn == ORIENTATION2_COLLINEAR) return isOn(p, a, b) || isOn(p, b, c) || isOn(p, c, a);
    const auto isOutside = [&](const Point2& q, const Point2& r) {
        const Orientation2 side = tests.orientation(q, r, p);
        return side != turn && side != ORIENTATION2_COLLINEAR;
    };
    return !isOutside(a, b) && !isOutside(b, c) && !isOutside(c, a);
}

bool Sweep::doesTouch(const Point2& a, const Point2& b, const Area& area) const {
    return isIn(a, area) || doTouch(a, b, area.from, area.to) || doTouch(a, b, area.to, area.far) ||
           doTouch(a, b, area.far, area.from);
}

} // namespace TESK_KIVO2D
