#pragma once

#include <Segment2.h>

#include <string>
#include <vector>

namespace cli {

// Reads a file of segments of the kind that its extension names:
//   .seg  four numbers a line: x and y of one end, x and y of the other
//   .bin  the library's segment files of type 21, or 31 whose heights are passed over
//   .geojson  lines and rings; points and heights are passed over
// Throws `FileError` for a file that is not exactly that, names the line where there are lines, and never
// returns a part. Throws `UsageError` when the extension is none of these.
std::vector<TESK_KIVO2D::Segment2> readSegments(const std::string& filename);

} // namespace cli
