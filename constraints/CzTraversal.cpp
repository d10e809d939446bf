#include "constraints/CzTraversal.h"

#include "core/edgeSearch.h"

#include <utility>

namespace TESK_KIVO2D {
namespace {

// Ends the walk's polygon side with the edge of pT opposite corner ith, which starts at pFrom.
void addBorder(std::vector<Border>& polygon, Point2* pFrom, const Triangle2* pT, int ith) {
    Triangle2* const pOuter = pT->getOppositeTriangle(ith);
    polygon.push_back({pFrom, pOuter, pOuter != nullptr ? pOuter->getIntraTriangleIndex(pT) : 0});
}

} // namespace

CzResult traverse(Point2* a, Point2* b, TeskTest& tests, const EdgeGuard* pGuard, ConstraintZone& zone) {
    zone.clear();
    const Departure departure = findDeparture(a, b, tests);
    if (departure.bFromTarget) std::swap(a, b);
    if (departure.kind == Departure::ALONG_EDGE) {
        return {departure.pVtx == b ? CzResult::IS_EDGE : CzResult::MET_VERTEX, departure.pVtx, {}};
    }
    zone.pStart = a;
    zone.pStop = b;
    HalfEdge crossed = departure.across; // its source lies to the right of the segment
    Triangle2* pT = crossed.pT;
    zone.vTriangles.push_back(pT);
    addBorder(zone.rPolygon, a, pT, Triangle2::incIndexBy2(crossed.ith));
    addBorder(zone.lPolygon, a, pT, Triangle2::incIndexBy1(crossed.ith));
    for (;;) {
        Point2 *const r = crossed.source(), *const l = crossed.target();
        if (pGuard != nullptr && pGuard->isFixed(r, l)) return {CzResult::MET_FIXED, nullptr, crossed};
        pT = crossed.opposite();
        zone.vTriangles.push_back(pT);
        const int j = pT->getIntraTriangleIndex(crossed.pT);
        const int ofL = Triangle2::incIndexBy1(j), ofR = Triangle2::incIndexBy2(j);
        Point2* const v = pT->getCorner(j);
        if (v == b) {
            addBorder(zone.lPolygon, l, pT, ofR);
            addBorder(zone.rPolygon, r, pT, ofL);
            zone.lPolygon.push_back({b, nullptr, 0});
            zone.rPolygon.push_back({b, nullptr, 0});
            return {CzResult::REACHED, nullptr, {}};
        }
        const Orientation2 side = tests.orientation(*a, *b, *v);
        if (side == ORIENTATION2_COLLINEAR) return {CzResult::MET_VERTEX, v, {}};
        if (side == ORIENTATION2_CCW) {
            addBorder(zone.lPolygon, l, pT, ofR);
            crossed = {pT, ofL};
        } else {
            addBorder(zone.rPolygon, r, pT, ofL);
            crossed = {pT, ofR};
        }
    }
}

} // namespace TESK_KIVO2D
