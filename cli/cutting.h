#pragma once

#include "cli/Run.h"

namespace cli {

// Cuts the triangulation of the run along the knives of its input, and collects the new vertices: they get
// attributes interpolated between the points. The caller adds the numbers of edges and pieces to the report,
// which later work may change.
CutReport cut(Run& run);

} // namespace cli
