#include "meshing/SegmentSplitter.h"

#include "core/flip.h"
#include "kernel/assertion.h"
#include "kernel/messages.h"
#include "kernel/tools.h"
#include "meshing/TriangleShape.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <locale>
#include <sstream>

namespace TESK_KIVO2D {
namespace {

// A unit in the last place of the larger coordinate to the left of the line ab, along the axis that is more
// across it. So one or two steps make up for rounding, whichever coordinate was rounded.
Point2 stepLeft(const Point2& p, const Point2& a, const Point2& b) {
    const double size = p.getMaxAbs();
    const double unit = std::nextafter(size, std::numeric_limits<double>::infinity()) - size;
    const double dx = b.x() - a.x(), dy = b.y() - a.y();
    return std::fabs(dy) > std::fabs(dx) ? Point2(p.x() + (dy > 0 ? -unit : unit), p.y())
                                         : Point2(p.x(), p.y() + (dx > 0 ? unit : -unit));
}

bool isBelowResolution(const Point2& a, const Point2& b) {
    return std::max(std::fabs(a.x() - b.x()), std::fabs(a.y() - b.y())) <
           resolutionAt(std::max(a.getMaxAbs(), b.getMaxAbs()));
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
    const WholeSegment whole = site.origins.wholeOf(p1, p2, site.mgr);
    Point2 point = roundSplitPointOf(*p1, *p2, whole, site.limits.parameters().minEdgeLength);
    if (point == *p1 || point == *p2 || isBelowResolution(*p1, *p2)) {
        reportTooShort(edge);
        return nullptr;
    }
    const Spot spot = choose(edge, point);
    if (spot.edge.pT == nullptr) {
        reportNoPoint();
        return nullptr;
    }
    // Memory first: from the split of the segment on nothing may fail.
    site.mgr.reserveSplits(1);
    site.innerVertices.reserve();
    Point2* const pVtx = site.host.newVertex(point);
    try {
        site.marks.follow();
        growCavity(spot, point);
        site.origins.add(pVtx, whole);
        link(spot, pVtx, pCSeg);
    } catch (...) {
        if (pVtx->getIncidentTriangle() == nullptr) {
            site.origins.remove(pVtx);
            site.store.recycleVertex(pVtx);
        }
        throw;
    }
    return pVtx;
}

void SegmentSplitter::growCavity(const Spot& spot, const Point2& p) {
    const HalfEdge edge = spot.edge;
    Triangle2* const pN = edge.opposite();
    const auto isClosed = [this](HalfEdge e) { return site.marks.isClosed(e); };
    cavity.clear();
    cavity.startBeside(edge, p, site.tests, isClosed);
    numOnLeft = cavity.border().size();
    if (!spot.bOnEdge) {
        // The edge is no constraint any more.
        cavity.growAcross(edge, p, site.tests,
                          [&](HalfEdge e) { return !(e == edge) && site.marks.isClosed(e); });
    } else if (pN != nullptr) {
        cavity.startBeside({pN, pN->getIntraTriangleIndex(edge.pT)}, p, site.tests, isClosed);
    }
    cavity.reserve();
    constexpr std::size_t roomForFlips = 256;
    vChanged.reserve(cavity.border().size() + roomForFlips);
    vCheckEdges.reserve(cavity.border().size() + roomForFlips);
}

void SegmentSplitter::link(const Spot& spot, Point2* pVtx, ConstraintSegment2* pCSeg) {
    const HalfEdge edge = spot.edge;
    Point2 *const p1 = edge.source(), *const p2 = edge.target();
    Triangle2* const pN = edge.opposite();
    const unsigned zoneOnLeft = site.marks.of(edge.pT) & TriangleMarks::inZone;
    const unsigned zoneOnRight = pN != nullptr ? site.marks.of(pN) & TriangleMarks::inZone : 0;
    const bool bOpenFan = spot.bOnEdge && pN == nullptr;
    const std::size_t num = cavity.border().size();
    const bool bOK = pCSeg->split_combinatorialOnly(pVtx);
    KIVO_ASSERT(bOK, "bOK");
    // Beside the edge, that one is open from now on, if it stays at all.
    if (!spot.bOnEdge && pN != nullptr) site.marks.open({pN, pN->getIntraTriangleIndex(edge.pT)});
    cavity.fill(pVtx, bOpenFan, site.store, [&](Triangle2* pT, std::size_t i) {
        // The two pieces of the segment are spokes of the fan: between the sides of the segment.
        const bool bAfterPiece = i == 0 || i == numOnLeft;
        const bool bBeforePiece = i + 1 == numOnLeft || i + 1 == num;
        site.marks.set(pT, (i < numOnLeft ? zoneOnLeft : zoneOnRight) |
                               (cavity.border()[i].bClosed ? 1U : 0U) | (bBeforePiece ? 2U : 0U) |
                               (bAfterPiece ? 4U : 0U));
    });
    if (bOpenFan) site.host.hullBorder().inserted(p1, pVtx, p2);
    site.host.wasLinked(pVtx);
    site.innerVertices.add(pVtx);
    ++site.report.numSegmentPoints;
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

// Rounding may have put the point beyond the hull or beyond a triangle that is hardly wider than a unit in
// the last place. Then there is room a few units to a side.
SegmentSplitter::Spot SegmentSplitter::choose(HalfEdge edge, Point2& p) const {
    constexpr int maxSteps = 8;
    const Point2 &r = *edge.source(), &l = *edge.target();
    for (const Point2& wanted : {Point2(p), centerWithShift(r, l)}) {
        for (const bool bLeft : {true, false}) {
            p = wanted;
            for (int i = 0; i <= maxSteps; ++i) {
                const Spot spot = locate(edge, p);
                if (spot.edge.pT != nullptr) return spot;
                p = bLeft ? stepLeft(p, r, l) : stepLeft(p, l, r);
            }
        }
    }
    return {{nullptr, 0}, false};
}

SegmentSplitter::Spot SegmentSplitter::locate(HalfEdge edge, const Point2& p) const {
    constexpr Spot nowhere{{nullptr, 0}, false};
    if (p == *edge.source() || p == *edge.target() || !isInBox(p, *edge.source(), *edge.target()))
        return nowhere;
    const Orientation2 side = site.tests.orientation(*edge.source(), *edge.target(), p);
    if (side == ORIENTATION2_COLLINEAR) return {edge, true};
    if (side == ORIENTATION2_CW) {
        Triangle2* const pN = edge.opposite();
        if (pN == nullptr) return nowhere;
        edge = {pN, pN->getIntraTriangleIndex(edge.pT)};
    }
    const Point2& apex = *edge.pT->getCorner(edge.ith);
    const bool bInside = site.tests.orientation(apex, *edge.source(), p) == ORIENTATION2_CCW &&
                         site.tests.orientation(*edge.target(), apex, p) == ORIENTATION2_CCW;
    return bInside ? Spot{edge, false} : nowhere;
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
