#include "cli/formats.h"

#include "cli/errors.h"

#include <array>
#include <filesystem>
#include <utility>

namespace cli {

namespace {

constexpr std::array<std::pair<const char*, FileFormat>, 15> EXTENSIONS{{
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
    {".svg", FORMAT_SVG},
    {".obj", FORMAT_OBJ},
    {".geojson", FORMAT_GEOJSON},
    {".vtu", FORMAT_VTU},
    {".msh", FORMAT_MSH},
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
    if (filename.size() > 1 && filename.back() == '/') return FORMAT_SCENE;
    const std::string extension = lowerCaseExtension(filename);
    std::string known;
    for (const auto& [name, format] : EXTENSIONS) {
        if (extension == name) return format;
        known += known.empty() ? name : std::string(" ") + name;
    }
    std::error_code notThere;
    if (std::filesystem::is_directory(filename, notThere)) return FORMAT_SCENE;
    throw UsageError(filename + ": unknown kind of file; the extension decides: " + known +
                     ", or a slash at the end for a folder");
}

bool holdsBarePoints(FileFormat format) {
    return format == FORMAT_XY || format == FORMAT_BIN || format == FORMAT_NODE || format == FORMAT_GEOJSON;
}

bool canHoldSegments(FileFormat format) { return format == FORMAT_POLY || format == FORMAT_GEOJSON; }

bool isPicture(FileFormat format) {
    return format == FORMAT_PS || format == FORMAT_SVG || format == FORMAT_OBJ || format == FORMAT_SCENE ||
           format == FORMAT_VTU || format == FORMAT_MSH;
}

bool needsTriangles(FileFormat format) {
    return format == FORMAT_ELE || format == FORMAT_EDGE || format == FORMAT_SVG ||
           format == FORMAT_GEOJSON || format == FORMAT_VTU || format == FORMAT_MSH;
}

} // namespace cli
