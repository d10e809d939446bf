#pragma once

#include "cli/Domain.h"
#include "cli/soupFaults.h"

#include <string>

namespace cli {

// Writes an .svg file: the triangles of a mesh file, those at fault in red, with edges and corners, and a
// ring around each fault. Throws `FileError` unless every byte arrived.
void drawFaults(const std::string& filename, Input& input, const SoupFaults& faults);

} // namespace cli
