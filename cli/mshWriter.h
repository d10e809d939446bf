#pragma once

#include "cli/Mesh.h"
#include "cli/OutputFile.h"

namespace cli {

// A Gmsh file of version 2.2, as text: the vertices of the triangles in the order of the table, the
// constraint edges on the triangles as lines, each with the triangle of its first mention on its left, and
// the triangles. Markers and attributes of regions become physical groups; those that are no positive whole
// numbers, which Gmsh wants, get one that is free, and their name tells them. Marker 0 and no region are no
// group.
void writeMsh(OutputFile& out, const Mesh& mesh);

} // namespace cli
