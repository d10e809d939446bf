#pragma once

#include <Segment2.h>

#include <cstddef>
#include <string>
#include <vector>

namespace cli {

// The segments of one file, all of them: repeated ones and those of no length keep their places.
struct CheckInput {
    std::vector<TESK_KIVO2D::Segment2> vSegments;
    std::size_t firstNumber = 1;         // of the first segment, in the file's own numbering
    std::vector<std::string> vFilenames; // what was read
};

// Reads a .poly file or a file of segments (see `readSegments`). Throws `FileError` or `UsageError`.
CheckInput readSegmentsToCheck(const std::string& filename);

} // namespace cli
