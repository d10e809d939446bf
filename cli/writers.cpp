#include "cli/writers.h"

#include "cli/errors.h"
#include "cli/formats.h"
#include "cli/geojsonWriter.h"
#include "cli/meshWriters.h"
#include "cli/mshWriter.h"
#include "cli/svgWriter.h"
#include "cli/vtuWriter.h"

#include <cstdint>

namespace cli {

namespace {

using TESK_KIVO2D::Point2;

double heightOf(const Mesh& mesh, const Point2* pVertex) {
    return mesh.pTable->getAttributes(static_cast<std::size_t>(pVertex->getCustomIndex()))[0];
}

void writeXy(OutputFile& out, const Mesh& mesh) {
    for (const Point2* pVertex : mesh.vVertices)
        out << pVertex->x() << " " << pVertex->y() << "\n";
}

void writeXyz(OutputFile& out, const Mesh& mesh) {
    for (const Point2* pVertex : mesh.vVertices)
        out << pVertex->x() << " " << pVertex->y() << " " << heightOf(mesh, pVertex) << "\n";
}

void writeSeg(OutputFile& out, const Mesh& mesh) {
    for (const ConstraintEdge& edge : mesh.vEdges) {
        const Point2& source = mesh.pTable->vPoints[edge.source];
        const Point2& target = mesh.pTable->vPoints[edge.target];
        out << source.x() << " " << source.y() << " " << target.x() << " " << target.y() << "\n";
    }
}

// The library's own writer knows no heights; both write the same bytes where there are none.
void writeBinary(OutputFile& out, const Mesh& mesh) {
    const bool bHeights = mesh.pTable->numAttributes > 0;
    out.raw(static_cast<std::int32_t>(bHeights ? 30 : 20));
    out.raw(static_cast<std::uint64_t>(mesh.vVertices.size()));
    for (const Point2* pVertex : mesh.vVertices) {
        out.raw(pVertex->x());
        out.raw(pVertex->y());
        if (bHeights) out.raw(heightOf(mesh, pVertex));
    }
}

using Writer = void (*)(OutputFile& out, const Mesh& mesh);

Writer writerOf(FileFormat format) {
    switch (format) {
    case FORMAT_XY:
        return &writeXy;
    case FORMAT_XYZ:
        return &writeXyz;
    case FORMAT_BIN:
        return &writeBinary;
    case FORMAT_NODE:
        return &writeNode;
    case FORMAT_POLY:
        return &writePoly;
    case FORMAT_SEG:
        return &writeSeg;
    case FORMAT_ELE:
        return &writeEle;
    case FORMAT_EDGE:
        return &writeEdge;
    case FORMAT_SVG:
        return &writeSvg;
    case FORMAT_GEOJSON:
        return &writeGeoJson;
    case FORMAT_VTU:
        return &writeVtu;
    case FORMAT_MSH:
        return &writeMsh;
    default:
        return nullptr;
    }
}

} // namespace

void checkHolds(const std::string& filename, const PointTable& table) {
    if (formatOf(filename) == FORMAT_XYZ && table.numAttributes == 0) {
        throw FileError(filename, "can't be written: the input has no heights");
    }
}

void writeMesh(const std::string& filename, const Mesh& mesh) {
    const Writer write = writerOf(formatOf(filename));
    if (write == nullptr) throw UsageError(filename + ": this kind of file is not written from points alone");
    OutputFile out(filename);
    write(out, mesh);
    out.close();
}

} // namespace cli
