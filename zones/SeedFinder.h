#pragma once

#include "ConstraintGraph2.h"
#include "Triangle2.h"
#include "core/MeshStore.h"
#include "zones/graphEdges.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace TESK_KIVO2D {

// Finds where the fill of one side of oriented graphs begins.
class SeedFinder {
public:
    SeedFinder(const MeshStore& meshStore, const RecordNumbers<Triangle2>& triangleNumbers);

    // Appends the triangles beside the graph's edges that lie inside, or those that lie outside. Inside is
    // left of the edges; of a ring, what it encloses by parity: it may cross itself, and later constraints
    // that cross a ring thinner than a unit in the last place may have turned it round. An edge that the
    // graph lists twice, there and back or over and over, says nothing about its sides.
    void append(const ConstraintGraph2& graph, const std::vector<GraphEdge>& vEdges, bool bInside,
                std::vector<Triangle2*>& vSeeds);

private:
    void setPassed(const std::vector<GraphEdge>& vEdges, bool bPassed);
    bool isPassed(const Point2* pVtx) const { return vbPassed[vertexNumbers.numberOf(pVtx)]; }
    void appendByParity(const std::vector<GraphEdge>& vEdges, bool bInside, std::vector<Triangle2*>& vSeeds);
    void appendBySide(const std::vector<GraphEdge>& vEdges, bool bLeft, std::vector<Triangle2*>& vSeeds);
    std::uint8_t labelAround(const std::vector<GraphEdge>& vEdges);
    std::uint8_t& labelOf(const Triangle2* pT) { return vLabels[numbers.numberOf(pT)]; }
    std::pair<std::uint8_t&, int> countOf(HalfEdge edge);

    const RecordNumbers<Triangle2>& numbers;
    const RecordNumbers<Point2> vertexNumbers;
    std::vector<bool> vbPassed;        // a vertex each; false between calls
    std::vector<std::uint8_t> vCounts; // two bits an edge, on one side of it; 0 between calls
    std::vector<std::uint8_t> vLabels; // of triangles beside a ring, 1 or 2; 0 between calls
    std::vector<Triangle2*> vLabelled;
};

} // namespace TESK_KIVO2D
