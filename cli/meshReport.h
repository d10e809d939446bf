#pragma once

#include "cli/report.h"

#include <nlohmann/json.hpp>

#include <string>

namespace cli {

// The part of a report that tells of a mesh: how it ended, its quality, and which triangles break which rule
// for what reason.
std::string meshLines(const MeshReport& report, const TESK_KIVO2D::ZoneQuality& quality);
nlohmann::ordered_json meshToJson(const MeshReport& report, const TESK_KIVO2D::ZoneQuality& quality);

} // namespace cli
