#include "zones/SeedFinder.h"

#include <algorithm>

namespace TESK_KIVO2D {

SeedFinder::SeedFinder(const MeshStore& meshStore, const RecordNumbers<Triangle2>& triangleNumbers)
    : numbers(triangleNumbers), vertexNumbers(meshStore.vertexNumbers()), vbPassed(vertexNumbers.size()),
      vCounts(numbers.size()) {}

void SeedFinder::append(const ConstraintGraph2& graph, const std::vector<GraphEdge>& vEdges, bool bInside,
                        std::vector<Triangle2*>& vSeeds) {
    if (vEdges.empty()) return;
    if (graph.isPolygon()) {
        appendByParity(vEdges, bInside, vSeeds);
    } else {
        appendBySide(vEdges, bInside, vSeeds);
    }
}

void SeedFinder::setPassed(const std::vector<GraphEdge>& vEdges, bool bPassed) {
    for (const GraphEdge& e : vEdges) {
        for (const Point2* pEnd : {e.edge.source(), e.edge.target()})
            vbPassed[vertexNumbers.numberOf(pEnd)] = bPassed;
    }
}

void SeedFinder::appendByParity(const std::vector<GraphEdge>& vEdges, bool bInside,
                                std::vector<Triangle2*>& vSeeds) {
    if (vLabels.empty()) vLabels.resize(numbers.size());
    setPassed(vEdges, true);
    for (const GraphEdge& e : vEdges) {
        const auto [counts, shift] = countOf(e.edge);
        counts = static_cast<std::uint8_t>(counts ^ 1U << shift);
    }
    const std::uint8_t outside = labelAround(vEdges);
    for (const GraphEdge& e : vEdges) {
        for (Triangle2* pT : {e.pLeft, e.pRight}) {
            if (pT != nullptr && labelOf(pT) != 0 && (labelOf(pT) != outside) == bInside)
                vSeeds.push_back(pT);
        }
        countOf(e.edge).first = 0;
    }
    for (const Triangle2* pT : vLabelled)
        labelOf(pT) = 0;
    setPassed(vEdges, false);
}

// Goes round the vertices of the ring, and so along it, and gives the triangles there labels that change
// where an edge is crossed that the ring has an odd number of times. Returns the label of the outside: below
// the ring's lowest vertex, that is with the smallest x and then y, there is nothing of the ring.
std::uint8_t SeedFinder::labelAround(const std::vector<GraphEdge>& vEdges) {
    const Point2* pLowest = vEdges.front().pStart;
    for (const GraphEdge& e : vEdges) {
        for (const Point2* pEnd : {e.edge.source(), e.edge.target()})
            if (*pEnd < *pLowest) pLowest = pEnd;
    }
    std::uint8_t outside = 1;
    vLabelled.assign(1, vEdges.front().edge.pT);
    labelOf(vLabelled.front()) = 1;
    for (std::size_t next = 0; next < vLabelled.size(); ++next) {
        Triangle2* const pT = vLabelled[next];
        const std::uint8_t label = labelOf(pT);
        for (int i = 0; i < 3; ++i) {
            const HalfEdge edge{pT, i};
            const Point2 *const p = edge.source(), *const q = edge.target();
            if (!isPassed(p) && !isPassed(q)) continue;
            const auto [counts, shift] = countOf(edge);
            const auto beyond = static_cast<std::uint8_t>((counts >> shift & 1U) != 0 ? 3 - label : label);
            Triangle2* const pN = edge.opposite();
            if ((p == pLowest || q == pLowest) && (pN == nullptr || *p < *pLowest || *q < *pLowest))
                outside = beyond;
            if (pN == nullptr || labelOf(pN) != 0) continue;
            labelOf(pN) = beyond;
            vLabelled.push_back(pN);
        }
    }
    return outside;
}

void SeedFinder::appendBySide(const std::vector<GraphEdge>& vEdges, bool bLeft,
                              std::vector<Triangle2*>& vSeeds) {
    for (const GraphEdge& e : vEdges) {
        const auto [counts, shift] = countOf(e.edge);
        const unsigned num = std::min(counts >> shift & 3U, 1U) + 1;
        counts = static_cast<std::uint8_t>((counts & ~(3U << shift)) | num << shift);
    }
    for (const GraphEdge& e : vEdges) {
        const auto [counts, shift] = countOf(e.edge);
        Triangle2* const pSeed = bLeft ? e.pLeft : e.pRight;
        if ((counts >> shift & 3U) == 1 && pSeed != nullptr) vSeeds.push_back(pSeed);
    }
    for (const GraphEdge& e : vEdges)
        countOf(e.edge).first = 0;
}

// The counts of the triangle by which the edge is named, and the place of the edge in them.
std::pair<std::uint8_t&, int> SeedFinder::countOf(HalfEdge edge) {
    const Triangle2* const pN = edge.opposite();
    if (pN == nullptr || numbers.numberOf(edge.pT) < numbers.numberOf(pN))
        return {vCounts[numbers.numberOf(edge.pT)], 2 * edge.ith};
    return {vCounts[numbers.numberOf(pN)], 2 * pN->getIntraTriangleIndex(edge.pT)};
}

} // namespace TESK_KIVO2D
