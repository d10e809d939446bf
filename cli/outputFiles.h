#pragma once

#include <string>
#include <vector>

namespace cli {

// Throws `FileError` unless the file can be created or extended, or, for a name that says so, the folder
// created or used. Leaves nothing behind.
void checkWritable(const std::string& filename);

// Throws `UsageError` when the output is one of these files, under whatever name.
void checkNotInput(const std::string& output, const std::vector<std::string>& vInputs);

// Takes a file away whose writing failed. Only an ordinary one: not what a link leads to, and no device.
void removeUnfinished(const std::string& filename);

} // namespace cli
