#include "zones/StartAnchors.h"

#include "core/flood.h"
#include "core/queries.h"
#include "zones/ZoneEvaluation.h"
#include "zones/ZoneRegistry.h"
#include "zones/graphEdges.h"
#include "zones/zoneStarts.h"

#include <utility>

namespace TESK_KIVO2D {

StartAnchors::StartAnchors(ZoneHost& triangulation) : dt(triangulation) {
    for (Zone2* const pZone : dt.zoneRegistry().growingZones())
        vAnchors.push_back(anchorOf(pZone));
}

// A segment inside a region counts on both sides: if others close up with it, it will lie between two parts.
StartAnchors::Anchor StartAnchors::anchorOf(Zone2* pZone) const {
    Anchor anchor{pZone, {}};
    const ZoneEvaluation evaluation(dt);
    const TriangleSet triangles = evaluation.setOf(*pZone);
    for (const ConstraintGraph2* pGraph : pZone->vConstraintGraphs) {
        for (const GraphEdge& e : edgesOf(*pGraph)) {
            Point2 *const p = e.edge.source(), *const q = e.edge.target();
            ConstraintSegment2* const pCSeg = dt.constraints().getConstraintSegment(p, q);
            if (triangles.contains(e.edge.pT)) anchor.vSides.push_back({pCSeg, p});
            const Triangle2* const pN = e.edge.opposite();
            if (pN != nullptr && triangles.contains(pN)) anchor.vSides.push_back({pCSeg, q});
        }
    }
    return anchor;
}

void StartAnchors::restore() const {
    for (const Anchor& anchor : vAnchors)
        restore(anchor);
}

void StartAnchors::restore(const Anchor& anchor) const {
    const RecordNumbers<Triangle2> numbers = dt.meshStore().triangleNumbers();
    EdgeMarks closed(numbers);
    for (const ConstraintGraph2* pGraph : anchor.pZone->vConstraintGraphs) {
        for (const GraphEdge& e : edgesOf(*pGraph))
            closed.set(e.edge);
    }
    std::vector<PointerPair> vBorder;
    for (const auto& [pCSeg, pFrom] : anchor.vSides)
        ConstraintMgr::appendLiveEdges(pCSeg, pFrom, vBorder);
    TriangleSet region(numbers);
    std::vector<Triangle2*> vFront;
    for (const auto& [pFrom, pTo] : vBorder) {
        Triangle2* const pLeft = getAdjacentTriangle(pFrom, pTo);
        if (pLeft != nullptr && region.insert(pLeft)) vFront.push_back(pLeft);
    }
    flood(vFront, closed, region, [](const Triangle2*) {});
    if (region.empty() || doReach(anchor.pZone->vStartPoints, closed, region)) return;
    std::vector<Point2> vStarts =
        startPointsOf(region, closed, dt.predicates(), DegenerateParts::ARE_LEFT_OUT);
    if (!vStarts.empty()) anchor.pZone->vStartPoints = std::move(vStarts);
}

// True when all of the region, and nothing else, can be reached from the points.
bool StartAnchors::doReach(const std::vector<Point2>& vStarts, const EdgeMarks& closed,
                           const TriangleSet& region) const {
    TriangleSet reached(region.numbers());
    std::vector<Triangle2*> vFront;
    for (const Point2& start : vStarts) {
        Triangle2* const pT = dt.locateNear(start, nullptr);
        if (pT == nullptr || !region.contains(pT)) return false;
        if (reached.insert(pT)) vFront.push_back(pT);
    }
    flood(vFront, closed, reached, [](const Triangle2*) {});
    bool bAll = true;
    region.forEach([&](const Triangle2* pT) { bAll = bAll && reached.contains(pT); });
    return bAll;
}

} // namespace TESK_KIVO2D
