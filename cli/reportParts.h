#pragma once

#include "cli/numbers.h"
#include "cli/report.h"

#include <nlohmann/json.hpp>

#include <string>

namespace cli {

// What several reports tell in the same way.

inline std::string milliseconds(double seconds) { return rounded(seconds * 1000.0, 1) + " ms"; }

inline std::string toText(const Box& box) {
    return "[" + shortest(box.minX) + ", " + shortest(box.maxX) + "] x [" + shortest(box.minY) + ", " +
           shortest(box.maxY) + "]";
}

inline nlohmann::ordered_json toJson(const Box& box) {
    return {{"minX", box.minX}, {"minY", box.minY}, {"maxX", box.maxX}, {"maxY", box.maxY}};
}

// A file name need not be UTF-8; JSON must.
inline std::string dump(const nlohmann::ordered_json& json, int indentation) {
    return json.dump(indentation, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

} // namespace cli
