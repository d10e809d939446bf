#pragma once

#include "cli/Domain.h"

#include <string>

namespace cli {

// Reads a GeoJSON file (RFC 7946): all geometries, alone or in features and collections. Points stay points;
// lines and rings become segments. A third coordinate is the height, kept where all positions have one;
// otherwise their loss is told on standard error. Throws `FileError` with the line for a file that is no
// JSON, with the place in the document for one that is no GeoJSON, and never returns a part.
Input readGeoJson(const std::string& filename);

} // namespace cli
