#pragma once

#include "cli/constraints.h"
#include "cli/regions.h"

#include <Kivo_2D.h>

namespace cli {

// A copy of the triangulation as it was before it was meshed or cut, which tells what holds at a place. The
// regions must stay where they are.
class Background {
public:
    Background(const TESK_KIVO2D::Kivo_2D& original, const std::vector<ConstraintEdge>& vEdges,
               const std::vector<Region>& vRegions);

    // The limit of the region that the place lies in; the largest double where there is none.
    double maxAreaAt(const TESK_KIVO2D::Point2& place) const;
    // Adds the vertices that the table does not have yet, with the attributes of their places.
    void interpolateNewVertices(const TESK_KIVO2D::Kivo_2D& meshed, PointTable& table) const;

private:
    TESK_KIVO2D::Kivo_2D triangulation;
    RegionMap regionMap;
};

// Whether some region has a limit.
bool hasAreaLimits(const Domain& domain);

} // namespace cli
