#pragma once

#include "Point2.h"
#include "kernel/TeskTest.h"

#include <cstddef>
#include <span>

namespace TESK_KIVO2D {

// The search for three vertices of a list that do not lie on one line. The list may grow between calls, and
// have gaps, which are null: each vertex is looked at once over all calls.
class FirstTriangleSearch {
public:
    // The first two vertices, which differ, and the first one that is not on their line, counter-clockwise,
    // or false.
    bool find(std::span<Point2* const> vertices, TeskTest& tests, Point2* (&corners)[3]);

private:
    std::size_t first = 0, second = 0; // the line
    std::size_t numCollinear = 0;      // known to lie on it, gaps included
};

} // namespace TESK_KIVO2D
