#pragma once

#include "Point2.h"
#include "core/HC2.h"
#include "core/MeshStore.h"
#include "core/WorkerPool.h"
#include "core/hilbertOrder.h"

#include <cstddef>
#include <span>
#include <vector>

namespace TESK_KIVO2D {

// The vertices of a batch: one for all points with the same coordinates, with the custom index of the first
// of them, in the order of the curve; new records lie in memory in that order. Vertices that were there
// before may take part, and stand for new points at the same place.
class BatchVertices {
public:
    BatchVertices() = default; // none
    // Fewer than 2^32 points and vertices. aHandles is null or receives the vertex of each point, null for
    // one that is not finite. Uses memory that is reserved for triangles in passing.
    BatchVertices(std::span<const Point2> points, const std::vector<Point2*>& vOld, const HC2& hc,
                  MeshStore& store, WorkerPool& workers, Point2** aHandles);

    // In the order of the curve, the old ones among them.
    std::span<Point2* const> all() const { return vVertices; }

private:
    std::vector<Point2*> vVertices;
};

} // namespace TESK_KIVO2D
