#include "functions.h"

#include "output/OutputFile.h"
#include "output/elementFiles.h"
#include "output/viewerFiles.h"

#include <algorithm>

namespace TESK_KIVO2D {

bool fileReplicate(const std::string& name, const std::string& directory) {
    const auto pFile = std::find_if(aViewerFiles.begin(), aViewerFiles.end(),
                                    [&](const ViewerFile& viewerFile) { return viewerFile.name == name; });
    if (pFile == aViewerFiles.end()) return complainAboutFile(name.c_str(), " is no file of a web scene");
    const std::string path = directory + "/" + name;
    OutputFile file(path);
    file.text(pFile->content);
    return file.close() || complainAboutFile(path.c_str(), " can't be written");
}

} // namespace TESK_KIVO2D
