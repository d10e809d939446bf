#include "constraints/SoupPlacement.h"

#include "core/edgeSearch.h"

#include <algorithm>
#include <random>

namespace TESK_KIVO2D {

std::vector<TriangleSoup::Edge> SoupPlacement::missingEdges() const {
    std::vector<TriangleSoup::Edge> vMissing;
    soup.forEachEdge([&](const TriangleSoup::Edge& edge) {
        if (findEdge(vVertices[edge.p], vVertices[edge.q]).pT == nullptr) vMissing.push_back(edge);
    });
    std::mt19937_64 random; // the same order in every run
    std::shuffle(vMissing.begin(), vMissing.end(), random);
    return vMissing;
}

bool SoupPlacement::isFixed(const Point2* p, const Point2* q) const {
    const TriangleSoup::Index source = soup.find(*p), target = soup.find(*q);
    return source != TriangleSoup::none && target != TriangleSoup::none && soup.isEdge(source, target);
}

Triangle2* SoupPlacement::find(const TriangleSoup::Triangle& triangle) const {
    const auto& [a, b, c] = triangle.aPoints;
    return findTriangle(vVertices[a], vVertices[b], vVertices[c]);
}

} // namespace TESK_KIVO2D
