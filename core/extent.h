#pragma once

#include "Bbox2.h"
#include "Point2.h"

#include <cstddef>

namespace TESK_KIVO2D {

class WorkerPool;

// The finite points of an array.
struct Extent {
    Bbox2 box; // empty if there are none
    std::size_t numFinite = 0;
};

// O(n). The same, to the signs of zeros, for every number of threads.
Extent scanExtent(const Point2* aPoints, std::size_t num, WorkerPool& pool);

} // namespace TESK_KIVO2D
