#pragma once

#include "cli/Domain.h"

#include <Kivo_2D.h>

#include <cstddef>
#include <vector>

namespace cli {

// A piece of a segment; its ends are positions in the table of points.
struct ConstraintEdge {
    std::size_t source = 0;
    std::size_t target = 0;
    int marker = 0;
};

// What became of the segments.
struct Constraints {
    TESK_KIVO2D::ConstraintGraph2* pGraph = nullptr; // none where all segments were skipped
    std::vector<ConstraintEdge> vEdges; // segment by segment, along each; a piece of several segments once
    std::size_t numSkipped = 0;         // segments whose ends are one vertex
    std::size_t numMissing = 0;         // pieces that are no edges of the triangulation
    std::size_t numSteinerPoints = 0;
    std::size_t numCrossings = 0; // Steiner points where more than two edges meet
    std::size_t firstSteiner = 0; // position in the table behind the given points and ends
};

// Makes the segments of the input edges of the triangulation. vHandles has the vertex of each point of the
// table. New vertices are added to the table, behind all others: such a Steiner point has the marker of its
// segment and attributes interpolated along it. A piece or a Steiner point of several segments belongs to the
// first of them whose marker is not 0, else to the first.
Constraints insertSegments(TESK_KIVO2D::Kivo_2D& triangulation, Input& input,
                           const std::vector<TESK_KIVO2D::Point2*>& vHandles,
                           TESK_KIVO2D::ConstraintInsertionStrategy strategy);

// Adds the vertices that the table does not have yet, with 0 for attributes and markers. Returns the position
// of the first.
std::size_t addNewVertices(const TESK_KIVO2D::Kivo_2D& triangulation, PointTable& table);

// Finds the edges anew, and what is missing, after vertices were added. New vertices on segments get the data
// that a Steiner point gets.
void collectSegments(const TESK_KIVO2D::Kivo_2D& triangulation, Input& input,
                     const std::vector<TESK_KIVO2D::Point2*>& vHandles, Constraints& constraints);

} // namespace cli
