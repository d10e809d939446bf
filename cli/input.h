#pragma once

#include "cli/Domain.h"
#include "cli/commands.h"

namespace cli {

// Reads a file of points or a .poly file, or a mesh file where it is to be measured, and, unless its name is
// empty, the file of segments. With bFlipY every y changes its sign. Throws `FileError` or `UsageError`.
Input readInput(const TriangulateOptions& options);

} // namespace cli
