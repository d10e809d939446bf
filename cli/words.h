#pragma once

#include <cstddef>
#include <string>

namespace cli {

// "1 edge", "0 edges".
inline std::string counted(std::size_t count, const char* noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

inline std::string counted(std::size_t count, const char* noun, const char* plural) {
    return std::to_string(count) + " " + (count == 1 ? noun : plural);
}

// A line of a report.
inline std::string line(std::string label, const std::string& value) {
    label.resize(15, ' ');
    return "  " + label + value + "\n";
}

} // namespace cli
