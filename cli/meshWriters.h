#pragma once

#include "cli/Mesh.h"
#include "cli/OutputFile.h"

namespace cli {

// The formats that number their points.

void writeNode(OutputFile& out, const Mesh& mesh);
// Triangles, with the attributes of their regions where the input has regions.
void writeEle(OutputFile& out, const Mesh& mesh);
// Points, constraint edges, holes and regions: the input again, with its segments as they lie in the
// triangulation.
void writePoly(OutputFile& out, const Mesh& mesh);
// All edges. The marker is that of the constraint; of other edges, or where it is 0, it is 1 on the border
// and 0 inside.
void writeEdge(OutputFile& out, const Mesh& mesh);

} // namespace cli
