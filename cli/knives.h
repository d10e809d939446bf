#pragma once

#include "cli/Domain.h"

#include <string>
#include <vector>

namespace cli {

// Appends the knives that texts ask for: "x0,y0,x1,y1" is one, anything else the name of a file of segments
// (see `readSegmentsToCheck`). Throws `FileError` or `UsageError`.
void readKnives(const std::vector<std::string>& vTexts, Input& input);

} // namespace cli
