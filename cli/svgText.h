#pragma once

#include <cstdint>
#include <string>

namespace cli {

// Printable ASCII alone: the name of a file need not be UTF-8.
inline std::string escaped(const std::string& text) {
    std::string safe;
    for (const char c : text) {
        if (c == '&')
            safe += "&amp;";
        else if (c == '<')
            safe += "&lt;";
        else
            safe += c >= ' ' && c <= '~' ? c : '?';
    }
    return safe;
}

// With a comma between thousands.
inline std::string grouped(std::uint64_t number) {
    std::string digits = std::to_string(number);
    for (std::size_t at = digits.size(); at > 3; at -= 3)
        digits.insert(at - 3, 1, ',');
    return digits;
}

} // namespace cli
