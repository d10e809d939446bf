#pragma once

#include "cli/Domain.h"
#include "cli/formats.h"

#include <string>

namespace cli {

// True for the kinds of files that hold triangles which the command reads: .obj .msh .vtu .ele
bool holdsTriangles(FileFormat format);

// Reads the vertices and triangles of a mesh file:
//   .obj  vertices in the plane z = 0 and faces; normals, textures, groups, lines and materials are passed
//   over .msh  version 2.2, as text; points and lines are passed over .vtu  with its arrays as text; vertices
//   and lines are passed over .ele  beside the .node file of the same name
// Throws `FileError` for a file that is not that, for cells that are no triangles, and where there are none.
Input readMeshFile(const std::string& filename);

} // namespace cli
