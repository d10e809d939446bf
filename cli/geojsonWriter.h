#pragma once

#include "cli/Mesh.h"
#include "cli/OutputFile.h"

namespace cli {

// A collection of features: one polygon a triangle, counter-clockwise, with its number and the attribute of
// its region; the constraint edges as one feature of lines. Without triangles the points are a feature
// instead. Positions have heights where the points do.
void writeGeoJson(OutputFile& out, const Mesh& mesh);

} // namespace cli
