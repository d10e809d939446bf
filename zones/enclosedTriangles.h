#pragma once

#include "Point2.h"
#include "core/TriangleSet.h"
#include "zones/TriangleVisitor.h"
#include "zones/ZoneHost.h"
#include "zones/graphEdges.h"

#include <vector>

namespace TESK_KIVO2D {

// What segments enclose.
enum class InsideRule {
    PARITY,  // what has an odd number of them on the way out that crosses the fewest
    ENCLOSED // what has no way out that crosses none
};

// The triangles that the edges enclose by parity, whatever their directions. The visitor, unless null,
// sees them.
TriangleSet enclosedByParity(const MeshStore& store, const RecordNumbers<Triangle2>& numbers,
                             const std::vector<GraphEdge>& vEdges, TriangleVisitor* pVisitor);

// The triangles that the graphs' edges enclose, without the regions of the hole points. The triangulation is
// 2-D; the numbers are of its triangles.
TriangleSet enclosedTriangles(ZoneHost& dt, const RecordNumbers<Triangle2>& numbers,
                              const std::vector<ConstraintGraph2*>& vGraphs, InsideRule rule,
                              const std::vector<Point2>& vHolePoints);

} // namespace TESK_KIVO2D
