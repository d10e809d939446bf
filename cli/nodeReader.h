#pragma once

#include "cli/PointTable.h"
#include "cli/textLines.h"

#include <cstddef>
#include <string>

namespace cli {

// Fails at the current line unless it has so many fields.
void expectFields(const TextLines& lines, std::size_t expected);

void addPoint(PointTable& table, double x, double y);

// Reads a header line "count [2 [attributes [markers]]]" and as many lines "number x y attributes...
// [marker]". Points are numbered from 0 or 1 without a gap. Throws `FileError`.
PointTable readNumberedPoints(TextLines& lines, const std::string& filename);

// The same, and nothing may follow.
PointTable readNode(const std::string& filename);

} // namespace cli
