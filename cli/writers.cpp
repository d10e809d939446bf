#include "cli/writers.h"

#include "cli/errors.h"
#include "cli/formats.h"
#include "cli/meshWriters.h"

#include <cstdint>
#include <memory>

namespace cli {

namespace {

using TESK_KIVO2D::Kivo_2D;
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
    case FORMAT_PS:
        break;
    }
    return nullptr;
}

// Only the end is read: drawings are large.
bool endsWith(const std::string& filename, std::string_view text) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(filename.c_str(), "rb"),
                                                               &std::fclose);
    if (!file || std::fseek(file.get(), -static_cast<long>(text.size()), SEEK_END) != 0) return false;
    std::string end(text.size(), ' ');
    return std::fread(end.data(), 1, end.size(), file.get()) == end.size() && end == text;
}

} // namespace

void checkWritable(const std::string& filename) {
    std::FILE* const pFile = std::fopen(filename.c_str(), "ab");
    if (pFile == nullptr) throw FileError(filename, "can't be written: " + std::string(std::strerror(errno)));
    std::fclose(pFile);
}

void checkHolds(const std::string& filename, const PointTable& table) {
    if (formatOf(filename) == FORMAT_XYZ && table.numAttributes == 0) {
        throw FileError(filename, "can't be written: the input has no heights");
    }
}

void writeMesh(const std::string& filename, const Mesh& mesh) {
    const Writer write = writerOf(formatOf(filename));
    if (write == nullptr) throw UsageError(filename + ": points alone are not drawn");
    OutputFile out(filename);
    write(out, mesh);
    out.close();
}

void writeDrawing(const std::string& filename, const Kivo_2D& triangulation) {
    if (!triangulation.is2D()) throw FileError(filename, "is not written: all points lie on one line");
    triangulation.show(filename);
    if (!endsWith(filename, "%%Trailer\n")) throw FileError(filename, "can't be written completely");
}

} // namespace cli
