#include "meshing/SegmentSplitter.h"

#include "constraints/splitPoint.h"
#include "core/flip.h"
#include "kernel/assertion.h"
#include "kernel/messages.h"
#include "kernel/tools.h"

#include <algorithm>
#include <cmath>
#include <locale>
#include <sstream>

namespace TESK_KIVO2D {
namespace {

bool isInBox(const Point2& p, const Point2& a, const Point2& b) {
    return std::min(a.x(), b.x()) <= p.x() && p.x() <= std::max(a.x(), b.x()) &&
           std::min(a.y(), b.y()) <= p.y() && p.y() <= std::max(a.y(), b.y());
}

// The next double from the point towards the target, along the axis on which that is further away.
Point2 stepTowards(const Point2& p, const Point2& target) {
    const double dx = std::fabs(target.x() - p.x()), dy = std::fabs(target.y() - p.y());
    return dx > dy ? Point2(std::nextafter(p.x(), target.x()), p.y())
                   : Point2(p.x(), std::nextafter(p.y(), target.y()));
}

} // namespace

std::optional<MeshObstacle> SegmentSplitter::obstacleAt(HalfEdge edge, const RefinementSite& site) {
    const Point2 &a = *edge.source(), &b = *edge.target();
    if (!site.mgr.isConstraint(&a, &b)) return MeshObstacle::OPEN_BORDER;
    if (!site.limits.parameters().bAllowConstraintSplitting) return MeshObstacle::SPLITTING_FORBIDDEN;
    const double scale = site.limits.scale();
    const double dx = (b.x() - a.x()) * scale, dy = (b.y() - a.y()) * scale;
    if (site.limits.isTooShort(dx * dx + dy * dy)) return MeshObstacle::MIN_EDGE_LENGTH;
    return std::nullopt;
}

Point2* SegmentSplitter::split(HalfEdge edge) {
    Point2 *const p1 = edge.source(), *const p2 = edge.target();
    ConstraintSegment2* const pCSeg = site.mgr.getConstraintSegment(p1, p2);
    KIVO_ASSERT(pCSeg != nullptr, "pCSeg!=0");
    KIVO_ASSERT(
        (pCSeg->getSrc() == p1 && pCSeg->getTrg() == p2) || (pCSeg->getSrc() == p2 && pCSeg->getTrg() == p1),
        "(pCSeg->getSrc()==p1 && pCSeg->getTrg()==p2) || (pCSeg->getSrc()==p2 && pCSeg->getTrg()==p1)");
    Point2 point = splitPointOf(p1, p2, site.mgr);
    if (point == *p1 || point == *p2) {
        reportTooShort(edge);
        return nullptr;
    }
    const Place place = choose(edge, point);
    if (place == Place::NONE) {
        reportNoPoint();
        return nullptr;
    }
    // Memory first: from the split of the segment on nothing may fail.
    site.mgr.reserveSplits(1);
    site.innerVertices.reserve();
    Point2* const pVtx = site.host.newVertex(point);
    try {
        site.marks.follow();
        growCavity(edge, place, point);
        site.origins.add(pVtx, p1, p2);
        link(edge, place, pVtx, pCSeg);
    } catch (...) {
        if (pVtx->getIncidentTriangle() == nullptr) site.store.recycleVertex(pVtx);
        throw;
    }
    return pVtx;
}

void SegmentSplitter::growCavity(HalfEdge edge, Place place, const Point2& p) {
    const auto isClosed = [this](HalfEdge e) { return site.marks.isClosed(e); };
    cavity.clear();
    cavity.startBeside(edge, p, site.tests, isClosed);
    numOnFirstSide = cavity.border().size();
    if (place == Place::BETWEEN) {
        Triangle2* const pN = edge.opposite();
        cavity.startBeside({pN, pN->getIntraTriangleIndex(edge.pT)}, p, site.tests, isClosed);
    } else if (place == Place::WITHIN_HULL_EDGE) {
        cavity.addHullEdge(edge);
    }
    cavity.reserve();
    vChanged.reserve(cavity.border().size());
}

void SegmentSplitter::link(HalfEdge edge, Place place, Point2* pVtx, ConstraintSegment2* pCSeg) {
    Point2 *const p1 = edge.source(), *const p2 = edge.target();
    const unsigned zoneHere = site.marks.of(edge.pT) & TriangleMarks::inZone;
    const unsigned zoneBeyond =
        place == Place::BETWEEN ? site.marks.of(edge.opposite()) & TriangleMarks::inZone : 0;
    const std::size_t num = cavity.border().size();
    const bool bOK = pCSeg->split_combinatorialOnly(pVtx);
    KIVO_ASSERT(bOK, "bOK");
    cavity.fill(pVtx, place == Place::ON_HULL, site.store, [&](Triangle2* pT, std::size_t i) {
        // The two pieces of the segment are spokes of the fan: between the sides of the segment.
        const bool bAfterPiece = i == 0 || i == numOnFirstSide;
        const bool bBeforePiece = i + 1 == numOnFirstSide || i + 1 == num;
        site.marks.set(pT, (i < numOnFirstSide ? zoneHere : zoneBeyond) |
                               (cavity.border()[i].bClosed ? 1U : 0U) | (bBeforePiece ? 2U : 0U) |
                               (bAfterPiece ? 4U : 0U));
    });
    if (place == Place::ON_HULL) site.host.hullBorder().inserted(p1, pVtx, p2);
    site.host.wasLinked(pVtx);
    site.innerVertices.add(pVtx);
    vChanged.assign(cavity.fan().begin(), cavity.fan().end());
    legalizeSpokes();
}

// The spokes of a vertex on the segment are legal. But rounding puts it a little beside.
void SegmentSplitter::legalizeSpokes() {
    for (Triangle2* const pT : cavity.fan())
        vCheckEdges.push_back({pT, 1});
    while (!vCheckEdges.empty()) {
        const HalfEdge edge = vCheckEdges.back();
        vCheckEdges.pop_back();
        Triangle2 *const pT = edge.pT, *const pN = edge.opposite();
        if (pN == nullptr || site.marks.isClosed(edge)) continue;
        const int j = pN->getIntraTriangleIndex(pT);
        if (site.tests.inCircle(*pT, *pN->getCorner(j)) != CINC2_INCIRCLE) continue;
        site.marks.flip(edge);
        flip(pT, edge.ith);
        for (const HalfEdge& around : {HalfEdge{pT, 0}, HalfEdge{pT, 2}, HalfEdge{pN, 0}, HalfEdge{pN, 1}})
            vCheckEdges.push_back(around);
        vChanged.insert(vChanged.end(), {pT, pN});
    }
}

// Rounding may have put the point where it makes triangles that are none, most often because one of them is
// hardly wider than a unit in the last place. Then a few units to either side there may be room. Not beyond a
// hull edge, where the point could make the hull reflex at an end.
SegmentSplitter::Place SegmentSplitter::choose(HalfEdge edge, Point2& p) const {
    constexpr int maxSteps = 8;
    const Point2 &r = *edge.source(), &l = *edge.target();
    const Triangle2* const pN = edge.opposite();
    const Point2* const apexes[] = {edge.pT->getCorner(edge.ith),
                                    pN ? pN->getCorner(pN->getIntraTriangleIndex(edge.pT)) : nullptr};
    for (const Point2& wanted : {Point2(p), centerWithShift(r, l)}) {
        for (const Point2* pApex : apexes) {
            p = wanted;
            for (int i = 0; pApex != nullptr && i <= maxSteps && p != r && p != l; ++i) {
                const Place place = placeOf(edge, p);
                if (place != Place::NONE) return place;
                p = stepTowards(p, *pApex);
            }
        }
    }
    return Place::NONE;
}

SegmentSplitter::Place SegmentSplitter::placeOf(HalfEdge edge, const Point2& p) const {
    const Point2 &r = *edge.source(), &l = *edge.target(), &apex = *edge.pT->getCorner(edge.ith);
    const auto isLeft = [this](const Point2& a, const Point2& b, const Point2& c) {
        return site.tests.orientation(a, b, c) == ORIENTATION2_CCW;
    };
    if (!isInBox(p, r, l) || !isLeft(apex, r, p) || !isLeft(l, apex, p)) return Place::NONE;
    const Triangle2* const pN = edge.opposite();
    if (pN == nullptr) return placeAtHull(edge, p);
    const Point2& beyond = *pN->getCorner(pN->getIntraTriangleIndex(edge.pT));
    return isLeft(beyond, l, p) && isLeft(r, beyond, p) ? Place::BETWEEN : Place::NONE;
}

SegmentSplitter::Place SegmentSplitter::placeAtHull(HalfEdge edge, const Point2& p) const {
    switch (site.tests.orientation(*edge.source(), *edge.target(), p)) {
    case ORIENTATION2_COLLINEAR:
        return Place::ON_HULL;
    case ORIENTATION2_CCW:
        return Place::WITHIN_HULL_EDGE;
    default:
        return Place::NONE;
    }
}

void SegmentSplitter::reportTooShort(HalfEdge edge) {
    if (bReportedTooShort) return;
    bReportedTooShort = true;
    reportWarning("Dt2::refineMain3()",
                  "Double precision arithmetic does not allow to split a segment further, giving up");
    std::ostringstream text;
    text.imbue(std::locale::classic());
    for (int i = 0; i < 3; ++i)
        text << "EdgeLen2D(" << i << "): " << std::sqrt(edge.pT->getSquaredEdgeLength(i)) << "\n";
    printText(text.str());
}

void SegmentSplitter::reportNoPoint() {
    if (bReportedNoPoint) return;
    bReportedNoPoint = true;
    reportWarning("Dt2::refineMain3()",
                  "no appropriate splitPoint in double precision arithmetic for a triangle");
}

} // namespace TESK_KIVO2D
