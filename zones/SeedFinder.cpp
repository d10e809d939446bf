#include "zones/SeedFinder.h"

#include "zones/enclosedTriangles.h"

#include <algorithm>

namespace TESK_KIVO2D {

SeedFinder::SeedFinder(const MeshStore& meshStore, const RecordNumbers<Triangle2>& triangleNumbers)
    : store(meshStore), numbers(triangleNumbers), vertexNumbers(meshStore.vertexNumbers()),
      vbPassed(vertexNumbers.size()), vCounts(numbers.size()) {}

void SeedFinder::append(const ConstraintGraph2& graph, const std::vector<GraphEdge>& vEdges, bool bInside,
                        std::vector<Triangle2*>& vSeeds) {
    if (graph.isPolygon() && passesVertexTwice(vEdges)) {
        appendByParity(vEdges, bInside, vSeeds);
    } else {
        appendBySide(vEdges, bInside, vSeeds);
    }
}

bool SeedFinder::passesVertexTwice(const std::vector<GraphEdge>& vEdges) {
    bool bTwice = false;
    for (const GraphEdge& e : vEdges) {
        const auto passed = vbPassed.begin() + static_cast<std::ptrdiff_t>(vertexNumbers.numberOf(e.pStart));
        bTwice = bTwice || *passed;
        *passed = true;
    }
    for (const GraphEdge& e : vEdges)
        vbPassed[vertexNumbers.numberOf(e.pStart)] = false;
    return bTwice;
}

void SeedFinder::appendByParity(const std::vector<GraphEdge>& vEdges, bool bInside,
                                std::vector<Triangle2*>& vSeeds) {
    const TriangleSet inside = enclosedByParity(store, numbers, vEdges);
    for (const GraphEdge& e : vEdges) {
        for (Triangle2* pT : {e.pLeft, e.pRight}) {
            if (pT != nullptr && inside.contains(pT) == bInside) vSeeds.push_back(pT);
        }
    }
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
