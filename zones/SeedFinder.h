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
    // left of the edges; of a ring that crosses itself, some of whose edges have the outside on their left,
    // what it encloses by parity. An edge that the graph lists twice, there and back or over and over, says
    // nothing about its sides.
    void append(const ConstraintGraph2& graph, const std::vector<GraphEdge>& vEdges, bool bInside,
                std::vector<Triangle2*>& vSeeds);

private:
    bool passesVertexTwice(const std::vector<GraphEdge>& vEdges);
    void appendByParity(const std::vector<GraphEdge>& vEdges, bool bInside, std::vector<Triangle2*>& vSeeds);
    void appendBySide(const std::vector<GraphEdge>& vEdges, bool bLeft, std::vector<Triangle2*>& vSeeds);
    std::pair<std::uint8_t&, int> countOf(HalfEdge edge);

    const MeshStore& store;
    const RecordNumbers<Triangle2>& numbers;
    const RecordNumbers<Point2> vertexNumbers;
    std::vector<bool> vbPassed;        // a vertex each; false between calls
    std::vector<std::uint8_t> vCounts; // two bits an edge, on one side of it; 0 between calls
};

} // namespace TESK_KIVO2D
