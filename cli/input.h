#pragma once

#include "cli/Domain.h"
#include "cli/commands.h"

namespace cli {

// Whether the triangles of the input file are wanted.
bool isMeshFile(const TriangulateOptions& options);

// Reads a file of points or a .poly file, or a mesh file where its triangles are wanted, and, unless their
// names are empty, the files of points beside it and of segments, and the knives. With bFlipY every y changes
// its sign. Throws `FileError` or `UsageError`.
Input readInput(const TriangulateOptions& options);

} // namespace cli
