#pragma once

#include "cli/Domain.h"

#include <Kivo_2D.h>

#include <cstddef>
#include <utility>
#include <vector>

namespace cli {

// An edge of the triangulation that is a constraint; its ends are positions in the table of points.
struct ConstraintEdge {
    std::size_t source = 0;
    std::size_t target = 0;
    int marker = 0;
    bool bOfSegment = true; // else only of a cut, or of a mesh that was imported
    bool bCut = false;
};

// Two positions, the lower one first.
using PositionPair = std::pair<std::size_t, std::size_t>;
PositionPair pairOf(const TESK_KIVO2D::Point2* p, const TESK_KIVO2D::Point2* q);
PositionPair pairOf(const ConstraintEdge& edge);

// What became of the segments, and of the knives along which was cut.
struct Constraints {
    TESK_KIVO2D::ConstraintGraph2* pGraph = nullptr; // none where all segments were skipped
    TESK_KIVO2D::ConstraintGraph2* pCuts = nullptr;  // none where nothing was cut
    // Segment by segment, along each; a piece of several segments once. Behind them cuts, then all others.
    std::vector<ConstraintEdge> vEdges;
    std::size_t numSkipped = 0; // segments whose ends are one vertex
    std::size_t numMissing = 0; // pieces that are no edges of the triangulation
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

// Ascending.
std::vector<PositionPair> listConstraintEdges(const TESK_KIVO2D::Kivo_2D& triangulation);

// Finds the edges anew, and what is missing, after vertices or constraints were added. New vertices on
// segments get the data that a Steiner point gets.
void collectSegments(const TESK_KIVO2D::Kivo_2D& triangulation, Input& input,
                     const std::vector<TESK_KIVO2D::Point2*>& vHandles, Constraints& constraints);

} // namespace cli
