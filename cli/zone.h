#pragma once

#include "cli/constraints.h"
#include "cli/report.h"

#include <Kivo_2D.h>

#include <string>
#include <vector>

namespace cli {

// The kinds of zones:
//   inside    what the segments enclose by parity: areas may have holes, drawn in either direction
//   enclosed  all from which no way leads out without crossing a segment: areas may share borders
const std::vector<std::string>& zoneKinds();

// The zone of that kind, without the regions of the hole points. Null when nothing is left.
TESK_KIVO2D::Zone2* createZone(TESK_KIVO2D::Kivo_2D& triangulation, const std::string& kind,
                               TESK_KIVO2D::ConstraintGraph2* pGraph,
                               const std::vector<TESK_KIVO2D::Point2>& vHoles);

// Needs the arrays of the zone's triangles. Linear.
ZoneReport measureZone(const std::string& kind, const TESK_KIVO2D::Zone2& zone,
                       const TESK_KIVO2D::MeshArrays& arrays);

} // namespace cli
