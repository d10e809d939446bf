#pragma once

#include "cli/Mesh.h"
#include "cli/OutputFile.h"

namespace cli {

// A picture for a page, 1000 units long or high: the area of the triangles (class "area", or "zone" when
// it is one), the edges inside ("mesh"), those on the border ("hull") and, of both, those that are
// constraints
// ("constraints"). The colours stand as attributes, so that a page's style sheet can change them, and are
// readable on light and on dark ground. The mesh must have
// triangles.
void writeSvg(OutputFile& out, const Mesh& mesh);

} // namespace cli
