#include "output/objExport.h"

#include "output/OutputFile.h"
#include "output/elementFiles.h"

namespace TESK_KIVO2D {
namespace {

// More than tell doubles apart: readers that keep more than a double get the value itself, as far as 20
// digits go.
constexpr int significantDigits = 20;

void writeVertices(OutputFile& file, const std::vector<double>& vCoordinates) {
    for (std::size_t i = 0; i + 1 < vCoordinates.size(); i += 2) {
        file.text("v ");
        file.number(vCoordinates[i], significantDigits);
        file.character(' ');
        file.number(vCoordinates[i + 1], significantDigits);
        file.text(" 0 \n");
    }
}

void writeTriangles(OutputFile& file, const std::vector<std::uint32_t>& vCorners) {
    for (std::size_t i = 0; i + 2 < vCorners.size(); i += 3) {
        file.character('f');
        for (std::size_t corner = i; corner < i + 3; ++corner) {
            file.character(' ');
            file.integer(static_cast<long long>(vCorners[corner]) + 1);
        }
        file.character('\n');
    }
}

} // namespace

bool writeObjFile(const std::string& filename, const MeshArrays& mesh) {
    OutputFile file(filename);
    if (file.isOpen()) {
        writeVertices(file, mesh.vCoordinates);
        writeTriangles(file, mesh.vCorners);
    }
    return file.close() || complainAboutFile(filename.c_str(), " can't be written");
}

} // namespace TESK_KIVO2D
