#pragma once

#include <charconv>
#include <string>

namespace cli {

// As few digits as read back to the same value.
inline std::string shortest(double value) {
    char aText[40];
    const auto result = std::to_chars(aText, aText + sizeof aText, value);
    return std::string(aText, result.ptr);
}

// With so many digits after the point.
inline std::string rounded(double value, int numDigits) {
    char aText[400];
    const auto result =
        std::to_chars(aText, aText + sizeof aText, value, std::chars_format::fixed, numDigits);
    return std::string(aText, result.ptr);
}

// With so many digits that count, for people.
inline std::string withDigits(double value, int numDigits) {
    char aText[40];
    const auto result =
        std::to_chars(aText, aText + sizeof aText, value, std::chars_format::general, numDigits);
    return std::string(aText, result.ptr);
}
inline std::string sixDigits(double value) { return withDigits(value, 6); }

} // namespace cli
