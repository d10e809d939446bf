#pragma once

#include "cli/Domain.h"

#include <Kivo_2D.h>

#include <cstddef>
#include <string>
#include <vector>

namespace cli {

struct Insertion {
    // A vertex for each point of the table; null for corners that come with the triangles of a mesh. Empty
    // where not needed.
    std::vector<TESK_KIVO2D::Point2*> vHandles;
    std::size_t numDuplicates = 0; // given points that equal an earlier one
    std::size_t numNewEnds = 0;    // different ends of segments that are no given points
};

// Inserts the points of the table, but for corners of a mesh that equal none of the others: these come with
// its triangles. Ends of segments that are no given points get their attributes from the
// triangle of points in which they lie. What is lost on the way is told on standard error, under the name.
Insertion insertPoints(TESK_KIVO2D::Kivo_2D& triangulation, Input& input, const std::string& name);

// Of equal points the first one becomes the vertex; what the others carry is lost, and that is said.
void warnOfLostData(const Input& input, const std::vector<TESK_KIVO2D::Point2*>& vHandles,
                    const std::string& name);

} // namespace cli
