#pragma once

#include "cli/Mesh.h"
#include "cli/OutputFile.h"

namespace cli {

// An unstructured grid in XML, as ParaView reads it: the vertices of the triangles, in the order of the
// table, with their attributes and markers, and the triangles with their smallest angles in degrees and the
// attributes of their regions.
void writeVtu(OutputFile& out, const Mesh& mesh);

} // namespace cli
