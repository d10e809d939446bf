#pragma once

#include "output/InputFile.h"

#include <optional>
#include <vector>

namespace TESK_KIVO2D {

// Reads numbers separated by white space, and accepts what formatted stream input in the classic locale
// accepts: a leading plus, but neither "nan" nor "inf", nor a number beyond the doubles. One below them is 0
// or subnormal.
class NumberScanner {
public:
    explicit NumberScanner(InputFile& file_) : file(file_) {}

    // The next number; nothing at the end of the file, and where something else comes next. Not to be called
    // again then.
    std::optional<double> next();

private:
    bool skipSpace();
    const char* findNumberEnd();
    bool refill();

    InputFile& file;
    std::vector<char> vBuffer;
    const char* pNext = nullptr;
    const char* pEnd = nullptr;
};

} // namespace TESK_KIVO2D
