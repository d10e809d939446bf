#include "constraints/SoupPlacement.h"

#include "core/edgeSearch.h"

namespace TESK_KIVO2D {

bool SoupPlacement::isThere(TriangleSoup::Index p, TriangleSoup::Index q) const {
    return findEdge(vVertices[p], vVertices[q]).pT != nullptr;
}

bool SoupPlacement::isFixed(const Point2* p, const Point2* q) const {
    const TriangleSoup::Index source = soup.find(*p), target = soup.find(*q);
    return source != TriangleSoup::none && target != TriangleSoup::none && soup.isEdge(source, target);
}

Triangle2* SoupPlacement::find(const TriangleSoup::Triangle& triangle) const {
    const auto& [a, b, c] = triangle.aPoints;
    const HalfEdge edge = findEdge(vVertices[a], vVertices[b]);
    if (edge.pT == nullptr) return nullptr;
    Triangle2* const pLeft = edge.source() == vVertices[a] ? edge.pT : edge.opposite();
    return pLeft != nullptr && pLeft->hasVertex(vVertices[c]) ? pLeft : nullptr;
}

} // namespace TESK_KIVO2D
