#pragma once

#include "cli/measurement.h"

#include <nlohmann/json.hpp>

#include <string>

namespace cli {

// Lines of a report: the range of angles and the histogram of the smallest ones; areas; edges.
std::string angleLines(const TESK_KIVO2D::ZoneQuality& quality);
std::string areaLine(const TESK_KIVO2D::ZoneQuality& quality);
std::string edgeLine(const TESK_KIVO2D::ZoneQuality& quality);
// The bins of smallest angles: their limits and numbers of triangles.
nlohmann::ordered_json smallestAnglesToJson(const TESK_KIVO2D::ZoneQuality& quality);
// The smallest and the largest value; null for those beyond the doubles.
nlohmann::ordered_json extremesToJson(const TESK_KIVO2D::QualityDistribution& distribution);

// All figures.
std::string qualityLines(const Measurement& measurement);
nlohmann::ordered_json qualityToJson(const Measurement& measurement);

} // namespace cli
