#pragma once

#include "cli/PointTable.h"

#include <string>

namespace cli {

// Reads a point file of the kind that its extension names:
//   .xy .txt  two numbers a line
//   .xyz      three numbers a line; the third is kept as attribute 0
//   .bin      the library's point files of type 20, or 30 with the height as attribute 0
//   .node     header "count 2 attributes markers", then "number x y attributes... [marker]"; '#' starts a
//   comment
// Throws `FileError` for a file that is not exactly that, names the line where there are lines, and never
// returns a part. Throws `UsageError` when the extension is not one of these.
PointTable readPoints(const std::string& filename);

} // namespace cli
