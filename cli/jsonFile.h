#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace cli {

// Reads a whole file of JSON, nested as deeply as memory allows. Throws `FileError`, with the line for what
// is no JSON or a number beyond the doubles.
nlohmann::json readJson(const std::string& filename);

} // namespace cli
