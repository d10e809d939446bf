#include "constraints/SoupPlacement.h"

#include "core/edgeSearch.h"
#include "core/flip.h"

#include <algorithm>
#include <cstddef>
#include <random>
#include <utility>

namespace TESK_KIVO2D {

void SoupPlacement::findTriangles() {
    vTriangles.resize(soup.triangles().size(), nullptr);
    for (std::size_t i = 0; i < vTriangles.size(); ++i) {
        if (vTriangles[i] != nullptr) continue;
        const auto& [a, b, c] = soup.triangles()[i].aPoints;
        vTriangles[i] = findTriangle(vVertices[a], vVertices[b], vVertices[c]);
    }
}

// Only triangles that are not there have any.
std::vector<TriangleSoup::Edge> SoupPlacement::missingEdges() const {
    std::vector<std::pair<TriangleSoup::Index, TriangleSoup::Index>> vPairs;
    for (std::size_t i = 0; i < vTriangles.size(); ++i) {
        if (vTriangles[i] != nullptr) continue;
        const auto& [a, b, c] = soup.triangles()[i].aPoints;
        for (const auto& [p, q] : {std::minmax(a, b), std::minmax(b, c), std::minmax(c, a)})
            vPairs.emplace_back(p, q);
    }
    std::sort(vPairs.begin(), vPairs.end());
    vPairs.erase(std::unique(vPairs.begin(), vPairs.end()), vPairs.end());
    std::vector<TriangleSoup::Edge> vMissing;
    for (const auto& [p, q] : vPairs) {
        if (findEdge(vVertices[p], vVertices[q]).pT == nullptr)
            vMissing.push_back({p, q, soup.halvesBetween(p, q)});
    }
    return vMissing;
}

std::vector<TriangleSoup::Edge> SoupPlacement::edgesToForce() {
    std::vector<TriangleSoup::Edge> vEdges = missingEdges();
    std::erase_if(vEdges, [this](const TriangleSoup::Edge& edge) { return flipIn(edge); });
    std::mt19937_64 random; // the same order in every run
    std::shuffle(vEdges.begin(), vEdges.end(), random);
    return vEdges;
}

// False when the edge crosses more than one other, or one of the soup, or runs into a vertex.
bool SoupPlacement::flipIn(const TriangleSoup::Edge& edge) {
    Point2 *const a = vVertices[edge.p], *const b = vVertices[edge.q];
    const Departure departure = findDeparture(a, b, tests);
    if (departure.kind == Departure::ALONG_EDGE) return false;
    const HalfEdge& across = departure.across;
    const bool bOnlyOne = across.opposite()->hasVertex(departure.bFromTarget ? a : b);
    if (!bOnlyOne || isFixed(across.source(), across.target())) return false;
    flip(across.pT, across.ith);
    return true;
}

bool SoupPlacement::isFixed(const Point2* p, const Point2* q) const {
    const TriangleSoup::Index source = soup.find(*p), target = soup.find(*q);
    return source != TriangleSoup::none && target != TriangleSoup::none && soup.isEdge(source, target);
}

} // namespace TESK_KIVO2D
