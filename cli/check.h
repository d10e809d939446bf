#pragma once

#include "cli/errors.h"

#include <cstdint>
#include <string>
#include <vector>

namespace cli {

struct CheckOptions {
    std::string input;
    std::vector<std::string> vOutputs;
    std::uint64_t maxPairs = 10000000; // counting and listing end there
    bool bEndPoints = false;           // shared ends are faults
    bool bList = false;
    bool bJson = false;
    bool bProgress = false; // also where nobody looks
    bool bFlipY = false;    // in pictures y points downwards
};

// Reads segments, writes the report, a list of the pairs that meet included where it is asked for, and draws
// pictures. Returns EXIT_CODE_FAULTS when there are such pairs, else EXIT_CODE_OK. Throws `FileError` or
// `UsageError`.
ExitCode runCheck(const CheckOptions& options);

} // namespace cli
