#pragma once

#include "cli/Domain.h"

#include <string>

namespace cli {

// Reads a .poly file:
//   points    as in a .node file; a count of 0 means that they are in the .node file of the same name
//   segments  "count [markers]", then "number point point [marker]"
//   holes     "count", then "number x y"
//   regions   may be left out: "count", then "number x y attribute [largest area]"
// Every list is numbered from 0 or 1 without a gap, and '#' starts a comment. Throws `FileError` for files
// that are not exactly that, with the line, and never returns a part.
Input readPoly(const std::string& filename);

} // namespace cli
