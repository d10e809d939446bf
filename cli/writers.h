#pragma once

#include "cli/Mesh.h"

#include <string>

namespace cli {

// Throws `FileError` when the format asks for heights and the input had none.
void checkHolds(const std::string& filename, const PointTable& table);

// Writes a file of the kind that its extension names; numbers are the shortest that read back to the same
// double. Throws `FileError` unless every byte arrived. Not for what the library itself writes.
void writeMesh(const std::string& filename, const Mesh& mesh);

} // namespace cli
