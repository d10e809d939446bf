#pragma once

#include <string>

namespace bench {

// Prints the bytes a point that a batch of ten million uniform points takes at its peak, beyond the caller's
// points and handles. who is kivo or cgal. For a fresh process: memory that was used before would hide what
// is used now. Returns the process's exit code.
int printPeakMemory(const std::string& who);

// What the process holds now.
double residentBytes();

} // namespace bench
