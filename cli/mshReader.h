#pragma once

#include "cli/Domain.h"

#include <string>

namespace cli {

// Reads the nodes and triangles of a .msh file of version 2.2 in text. Throws `FileError`.
Input readMsh(const std::string& filename);

} // namespace cli
