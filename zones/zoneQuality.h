#pragma once

#include "Zone2.h"
#include "ZoneQuality.h"
#include "zones/ZoneHost.h"

#include <string>

namespace TESK_KIVO2D {

// Measures the zone's triangles, prints the figures, and draws the border and the worst triangles into the
// PostScript file name + "_quality.ps" unless the name is empty. The triangulation is 2-D.
ZoneQuality checkZoneQuality(ZoneHost& triangulation, const Zone2& zone, const std::string& name);

} // namespace TESK_KIVO2D
