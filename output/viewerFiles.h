#pragma once

#include <array>
#include <string_view>

namespace TESK_KIVO2D {

// A file of the web page that shows a mesh.
struct ViewerFile {
    std::string_view name;
    std::string_view content;
};

// The files in the folder output/viewer, taken into the library when it is built.
extern const std::array<ViewerFile, 4> aViewerFiles;

} // namespace TESK_KIVO2D
