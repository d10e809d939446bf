#pragma once

#include "cli/Domain.h"

#include <string>

namespace cli {

// Reads the points and triangles of a .vtu file of one piece whose arrays are text. Throws `FileError`.
Input readVtu(const std::string& filename);

} // namespace cli
