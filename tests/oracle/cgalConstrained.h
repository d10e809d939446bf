#pragma once

#include "tests/oracle/cgalDelaunay.h"

// A second opinion on constrained Delaunay triangulations of segments that do not cross. This header names no
// type of ours or of the other library, so that it can be read next to both.
namespace oracle {

using XyPair = std::pair<Xy, Xy>; // the smaller one first

struct ConstrainedFacts {
    std::size_t numVertices = 0;
    std::size_t numTriangles = 0;
    std::vector<XyPair> vEdges;       // sorted
    std::vector<XyPair> vConstraints; // those of them that are pieces of the segments, sorted
};

// Segments may touch and overlap. Throws when two cross.
ConstrainedFacts cgalConstrained(const std::vector<Xy>& vPoints, const std::vector<XyPair>& vSegments);

} // namespace oracle
