#include "cli/formats.h"

#include "cli/errors.h"

#include <array>
#include <filesystem>
#include <utility>

namespace cli {

namespace {

constexpr std::array<std::pair<const char*, FileFormat>, 10> EXTENSIONS{{
    {".xy", FORMAT_XY},
    {".txt", FORMAT_XY},
    {".xyz", FORMAT_XYZ},
    {".bin", FORMAT_BIN},
    {".node", FORMAT_NODE},
    {".poly", FORMAT_POLY},
    {".seg", FORMAT_SEG},
    {".ele", FORMAT_ELE},
    {".edge", FORMAT_EDGE},
    {".ps", FORMAT_PS},
}};

std::string lowerCaseExtension(const std::string& filename) {
    std::string extension = std::filesystem::path(filename).extension().string();
    for (char& c : extension) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return extension;
}

} // namespace

FileFormat formatOf(const std::string& filename) {
    const std::string extension = lowerCaseExtension(filename);
    std::string known;
    for (const auto& [name, format] : EXTENSIONS) {
        if (extension == name) return format;
        known += known.empty() ? name : std::string(" ") + name;
    }
    throw UsageError(filename + ": unknown kind of file; the extension decides: " + known);
}

bool holdsBarePoints(FileFormat format) {
    return format == FORMAT_XY || format == FORMAT_BIN || format == FORMAT_NODE;
}

} // namespace cli
