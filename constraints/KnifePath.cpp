#include "constraints/KnifePath.h"

#include "core/edgeSearch.h"
#include "kernel/intersection.h"
#include "kernel/tools.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace TESK_KIVO2D {

KnifeCut KnifePath::follow(const Segment2& knife, const WalkResult& start) {
    run(knife.getSrc(), knife.getTrg(), start);
    return KnifeCut(knife, vStops);
}

KnifeCut KnifePath::followBack(const Segment2& knife, const WalkResult& end) {
    run(knife.getTrg(), knife.getSrc(), end);
    std::reverse(vStops.begin(), vStops.end());
    return KnifeCut(knife, vStops);
}

void KnifePath::run(const Point2& from, const Point2& to, const WalkResult& start) {
    src = from;
    trg = to;
    vStops.clear();
    Position position = enter(start);
    for (;;) {
        if (position.pVtx != nullptr) {
            position = leaveVertex(position.pVtx);
            continue;
        }
        const HalfEdge& edge = position.edge;
        if (edge.pT == nullptr || edge.opposite() == nullptr) return;
        Triangle2* const pT = edge.opposite();
        position = passTriangle(pT, pT->getIntraTriangleIndex(edge.pT));
    }
}

KnifePath::Position KnifePath::enter(const WalkResult& start) {
    if (start.code == WalkResult::ON_CORNER) return stopAt(cornerAt(start, src));
    if (start.code == WalkResult::INSIDE && start.edge < 0) {
        add(src, start.pT->getCorner(0));
        return leaveTriangle(start.pT);
    }
    const HalfEdge edge{start.pT, start.code == WalkResult::INSIDE ? start.edge : start.code};
    if (sideOf(edge, src) == ORIENTATION2_CW) return enterFromOutside(edge);
    addOnEdge(src, edge.source(), edge.target());
    return enterFromEdge(edge);
}

// From inside an edge: along it, or into the triangle on one of its sides, if there is one.
KnifePath::Position KnifePath::enterFromEdge(HalfEdge edge) {
    switch (sideOf(edge, trg)) {
    case ORIENTATION2_COLLINEAR:
        return (src < trg) == (src < *edge.target()) ? reachAlong(edge.source(), edge.target())
                                                     : reachAlong(edge.target(), edge.source());
    case ORIENTATION2_CCW:
        return leaveTriangle(edge.pT);
    default:
        return edge.opposite() != nullptr ? leaveTriangle(edge.opposite()) : Position{};
    }
}

// From beyond a hull edge. The edges that are seen from there are one run around the hull, and the knife can
// only enter through one of these, or at an end of them.
KnifePath::Position KnifePath::enterFromOutside(HullEdge edge) {
    while (sideOf(edge, src) == ORIENTATION2_CW) {
        const Orientation2 ofSource = side(edge.source()), ofTarget = side(edge.target());
        if (ofSource == ORIENTATION2_CW) {
            if (ofTarget != ORIENTATION2_CW) return {}; // away from the hull
            edge = links.previous(edge);
        } else if (ofTarget == ORIENTATION2_CCW) {
            if (ofSource != ORIENTATION2_CCW) return {};
            edge = links.next(edge);
        } else if (ofSource == ORIENTATION2_COLLINEAR) {
            return reach(edge.source());
        } else if (ofTarget == ORIENTATION2_COLLINEAR) {
            return reach(edge.target());
        } else {
            return crossHull(edge);
        }
    }
    return {};
}

KnifePath::Position KnifePath::crossHull(HullEdge edge) {
    if (sideOf(edge, trg) != ORIENTATION2_CCW) return {};
    addCrossing(edge);
    return passTriangle(edge.pT, edge.ith);
}

// Around a vertex the knife leaves between two neighbours, the first to its right and the second to its left,
// or along the edge to one of them. On the other side of the line right and left are exchanged.
KnifePath::Position KnifePath::leaveVertex(Point2* pFrom) {
    if (*pFrom == trg) return {};
    Position next;
    forEachTriangleAround(pFrom, [&](Triangle2* pT, int i) {
        const HalfEdge edge{pT, i};
        const Orientation2 ofSource = side(edge.source()), ofTarget = side(edge.target());
        if (ofSource == ORIENTATION2_CCW || ofTarget == ORIENTATION2_CW) return true;
        if (ofSource == ORIENTATION2_COLLINEAR) {
            next = reachAlong(pFrom, edge.source());
        } else if (ofTarget == ORIENTATION2_COLLINEAR) {
            next = reachAlong(pFrom, edge.target());
        } else {
            next = reach(edge);
        }
        return false;
    });
    return next;
}

// From inside the triangle, or from one of its edges: around the triangle the knife leaves where its corners
// come from its right side to its left one.
KnifePath::Position KnifePath::leaveTriangle(Triangle2* pT) {
    for (int i = 0; i < 3; ++i) {
        const HalfEdge edge{pT, i};
        if (side(edge.source()) != ORIENTATION2_CW) continue;
        const Orientation2 ofTarget = side(edge.target());
        if (ofTarget == ORIENTATION2_CCW) return reach(edge);
        if (ofTarget == ORIENTATION2_COLLINEAR) return reach(edge.target());
    }
    return {};
}

// Across the edge opposite the apex.
KnifePath::Position KnifePath::passTriangle(Triangle2* pT, int apex) {
    switch (side(pT->getCorner(apex))) {
    case ORIENTATION2_COLLINEAR:
        return reach(pT->getCorner(apex));
    case ORIENTATION2_CCW:
        return reach(HalfEdge{pT, Triangle2::incIndexBy1(apex)});
    default:
        return reach(HalfEdge{pT, Triangle2::incIndexBy2(apex)});
    }
}

KnifePath::Position KnifePath::reach(Point2* pVtx) {
    if (*pVtx == trg || isBeforeTarget(*pVtx)) return stopAt(pVtx);
    if (!vStops.empty()) add(trg, pVtx);
    return {};
}

KnifePath::Position KnifePath::reachAlong(Point2* pFrom, Point2* pVtx) {
    if (*pVtx == trg || isBeforeTarget(*pVtx)) return stopAt(pVtx);
    addOnEdge(trg, pFrom, pVtx);
    return {};
}

KnifePath::Position KnifePath::reach(HalfEdge edge) {
    const Orientation2 ofTarget = sideOf(edge, trg);
    if (ofTarget == ORIENTATION2_CCW) add(trg, edge.source());
    if (ofTarget == ORIENTATION2_COLLINEAR) addOnEdge(trg, edge.source(), edge.target());
    if (ofTarget != ORIENTATION2_CW) return {};
    addCrossing(edge);
    return {nullptr, edge};
}

// Once the constraint has been split elsewhere, at a rounded point, it may run beside the end of the knife.
void KnifePath::addOnEdge(const Point2& point, Point2* p, Point2* q) {
    vStops.push_back({point, nullptr, mgr.getConstraintSegment(p, q), p});
}

KnifePath::Position KnifePath::stopAt(Point2* pVtx) {
    vStops.push_back({*pVtx, pVtx, nullptr, pVtx});
    return {pVtx, {nullptr, 0}};
}

void KnifePath::addCrossing(HalfEdge edge) {
    Point2 *const p = edge.source(), *const q = edge.target();
    Point2 crossing = getNearestIntersection(src, trg, *p, *q);
    const bool bHull = edge.opposite() == nullptr;
    if (bHull) crossing = roundedOutwards(edge, crossing);
    vStops.push_back({crossing, nullptr, mgr.getConstraintSegment(p, q), p, bHull});
}

// The point, or if it lies inside of the hull edge, one beside it that does not: a step of one unit in each
// coordinate makes up for any rounding. A coordinate for which it would leave the edge's box was rounded
// outwards already.
Point2 KnifePath::roundedOutwards(HullEdge edge, const Point2& p) {
    if (sideOf(edge, p) != ORIENTATION2_CCW) return p;
    const Point2 &source = *edge.source(), &target = *edge.target();
    constexpr double far = std::numeric_limits<double>::max();
    const double x = std::nextafter(p.x(), source.y() < target.y() ? far : -far);
    const double y = std::nextafter(p.y(), source.x() < target.x() ? -far : far);
    for (const Point2& beside : {Point2(x, p.y()), Point2(p.x(), y), Point2(x, y)}) {
        if (isInBox(beside, source, target) && sideOf(edge, beside) != ORIENTATION2_CCW) return beside;
    }
    return p;
}

} // namespace TESK_KIVO2D
