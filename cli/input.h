#pragma once

#include "cli/Domain.h"

#include <string>

namespace cli {

// Reads a file of points or a .poly file and, unless its name is empty, a file of segments. With bFlipY every
// y changes its sign. Throws `FileError` or `UsageError`.
Input readInput(const std::string& filename, const std::string& segmentsFilename, bool bFlipY);

} // namespace cli
