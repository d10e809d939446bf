#pragma once

#include <string>

namespace cli {

// Throws `FileError` unless the file can be created or extended, or, for a name that says so, the folder
// created or used. Leaves nothing behind.
void checkWritable(const std::string& filename);

// Takes a file away whose writing failed. Only an ordinary one: not what a link leads to, and no device.
void removeUnfinished(const std::string& filename);

} // namespace cli
