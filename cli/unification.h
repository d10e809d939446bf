#pragma once

#include "cli/constraints.h"
#include "cli/report.h"

#include <Kivo_2D.h>

namespace cli {

// Moves the vertices of the zone, or all where it is null, to the grid of that width, and carries the table
// and the constraint edges along. What of the table fell together with another point has no vertex
// afterwards.
UnifyReport unifyGrid(TESK_KIVO2D::Kivo_2D& triangulation, TESK_KIVO2D::Zone2* pZone, double width,
                      PointTable& table, Constraints& constraints);

} // namespace cli
