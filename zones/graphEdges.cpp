#include "zones/graphEdges.h"

#include "core/edgeSearch.h"

namespace TESK_KIVO2D {

std::vector<GraphEdge> edgesOf(const ConstraintGraph2& graph) {
    std::vector<Point2*> vPairs;
    graph.getPolygonVertices(vPairs);
    std::vector<GraphEdge> vEdges;
    vEdges.reserve(vPairs.size() / 2);
    for (std::size_t i = 0; i + 1 < vPairs.size(); i += 2) {
        const Point2 *const p0 = vPairs[i], *const p1 = vPairs[i + 1];
        if (p0->getIncidentTriangle() == nullptr || p1->getIncidentTriangle() == nullptr) continue;
        const HalfEdge edge = findEdge(p0, p1);
        if (edge.pT == nullptr) continue;
        const bool bAlong = edge.source() == p0;
        vEdges.push_back({edge, p0, bAlong ? edge.pT : edge.opposite(), bAlong ? edge.opposite() : edge.pT});
    }
    return vEdges;
}

} // namespace TESK_KIVO2D
