#pragma once

#include "cli/Domain.h"

#include <Kivo_2D.h>

#include <cstddef>
#include <string>
#include <vector>

namespace cli {

struct Insertion {
    std::vector<TESK_KIVO2D::Point2*>
        vHandles;                  // a vertex for each point of the table; empty where not needed
    std::size_t numDuplicates = 0; // given points that equal an earlier one
    std::size_t numNewEnds = 0;    // different ends of segments that are no given points
};

// Inserts the points of the table. Ends of segments that are no given points get their attributes from the
// triangle of points in which they lie. What is lost on the way is told on standard error, under the name.
Insertion insertPoints(TESK_KIVO2D::Kivo_2D& triangulation, Input& input, const std::string& name);

} // namespace cli
