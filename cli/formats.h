#pragma once

#include <string>

namespace cli {

enum FileFormat { FORMAT_XY, FORMAT_XYZ, FORMAT_BIN, FORMAT_NODE, FORMAT_ELE, FORMAT_PS };

// The format that a file's extension names, in either case. Throws `UsageError` for an unknown one.
FileFormat formatOf(const std::string& filename);

bool isReadable(FileFormat format);

} // namespace cli
