#pragma once

#include "ZoneQuality.h"
#include "core/MeshStore.h"

#include <cstddef>
#include <iosfwd>
#include <string>

namespace TESK_KIVO2D {

// A line for each bin: its limits, right-aligned to the width, its count and a bar; the longest has 50 stars.
void appendHistogram(std::ostream& stream, const QualityDistribution& distribution, int width);

// A line for the extremes of interior angles, and a histogram; nothing when there are none.
std::string angleText(const QualityDistribution& angles);

// Counts, extremes and a histogram of the interior angles in steps of 10 degrees.
std::string meshStatistics(const MeshStore& store, std::size_t numVertices, const std::string& name);

} // namespace TESK_KIVO2D
