#pragma once

#include "cli/Domain.h"

#include <Kivo_2D.h>

#include <string>
#include <vector>

namespace cli {

// The attribute of each of the triangles wanted: that of the region point from which it can be reached
// without crossing a constraint, 0 where there is none. Of several points in one region the first counts.
// Points that count for nothing are told on standard error, under the name. Linear.
std::vector<double> attributesOfTriangles(const TESK_KIVO2D::Kivo_2D& triangulation,
                                          const std::vector<TESK_KIVO2D::Triangle2*>& vWanted,
                                          const std::vector<Region>& vRegions, const std::string& name);

} // namespace cli
