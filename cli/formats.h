#pragma once

#include <string>

namespace cli {

enum FileFormat {
    FORMAT_XY,
    FORMAT_XYZ,
    FORMAT_BIN,
    FORMAT_NODE,
    FORMAT_POLY,
    FORMAT_SEG,
    FORMAT_ELE,
    FORMAT_EDGE,
    FORMAT_PS
};

// The format that a file's extension names, in either case. Throws `UsageError` for an unknown one.
FileFormat formatOf(const std::string& filename);

// True when a file of this kind can hold bare points and nothing else.
bool holdsBarePoints(FileFormat format);

} // namespace cli
