#include "functions.h"

#include <filesystem>
#include <system_error>
#include <vector>

namespace TESK_KIVO2D {
namespace {

// No error when the directory exists already.
std::error_code makeDirectory(const std::string& path) {
    std::error_code error;
    std::filesystem::create_directory(path, error);
    return error;
}

// Length of the parent's name; npos without a parent. A path that holds any slash is split at slashes only,
// even if a backslash follows the last one.
std::size_t getParentLength(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash != std::string::npos ? slash : path.rfind('\\');
}

} // namespace

bool createDirectory(const std::string& path) {
    // The system would take what precedes a null character for the whole name.
    if (path.find('\0') != std::string::npos) return false;
    std::vector<std::size_t> vMissingLengths; // innermost first
    std::string current = path;
    while (const std::error_code error = makeDirectory(current)) {
        const std::size_t parentLength = getParentLength(current);
        if (error != std::errc::no_such_file_or_directory || parentLength == std::string::npos) return false;
        vMissingLengths.push_back(current.size());
        current.resize(parentLength);
    }
    for (; !vMissingLengths.empty(); vMissingLengths.pop_back()) {
        if (makeDirectory(path.substr(0, vMissingLengths.back()))) return false;
    }
    return true;
}

} // namespace TESK_KIVO2D
