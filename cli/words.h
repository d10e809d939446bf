#pragma once

#include <cstddef>
#include <string>

namespace cli {

// "1 edge", "0 edges".
inline std::string counted(std::size_t count, const char* noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

} // namespace cli
