#include "zones/StartAnchors.h"

#include "core/EdgeMarks.h"
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

StartAnchors::Anchor StartAnchors::anchorOf(Zone2* pZone) const {
    Anchor anchor{pZone, {}};
    const ZoneEvaluation evaluation(dt);
    const TriangleSet triangles = evaluation.setOf(*pZone);
    triangles.forEach([&](Triangle2* pT) {
        for (int i = 0; i < 3; ++i) {
            const HalfEdge edge{pT, i};
            if (triangles.contains(edge.opposite())) continue;
            ConstraintSegment2* const pCSeg =
                dt.constraints().getConstraintSegment(edge.source(), edge.target());
            if (pCSeg != nullptr) anchor.vSides.push_back({pCSeg, edge.source()});
        }
    });
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
    std::vector<Point2> vStarts = startPointsOf(region, dt.predicates());
    // A region without a border is all there is.
    if (!vStarts.empty()) anchor.pZone->vStartPoints = std::move(vStarts);
}

} // namespace TESK_KIVO2D
