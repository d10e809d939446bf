#pragma once

#include "cli/Mesh.h"
#include "cli/measurement.h"

#include <string>

namespace cli {

// Draws the triangles of the mesh coloured by their smallest angles, rings around the worst, and histograms
// beside them, into an .svg file. The name is the heading. Throws `FileError` unless every byte arrived.
void drawQuality(const std::string& filename, const Mesh& mesh, const Measurement& measurement,
                 const std::string& name);

} // namespace cli
