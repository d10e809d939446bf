#pragma once

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <optional>
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

// Nothing for a text that is not so many finite numbers with commas between them.
template<std::size_t N>
std::optional<std::array<double, N>> numberList(const std::string& text) {
    std::array<double, N> aNumbers{};
    const char* p = text.data();
    const char* const pEnd = p + text.size();
    for (std::size_t i = 0; i < N; ++i) {
        if (i > 0 && (p == pEnd || *p++ != ',')) return std::nullopt;
        const auto [pNext, error] = std::from_chars(p, pEnd, aNumbers[i]);
        if (error != std::errc() || !std::isfinite(aNumbers[i])) return std::nullopt;
        p = pNext;
    }
    return p == pEnd ? std::optional(aNumbers) : std::nullopt;
}

} // namespace cli
