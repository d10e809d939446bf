#include "cli/writers.h"

#include "cli/errors.h"

#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>

namespace cli {

namespace {

using TESK_KIVO2D::Kivo_2D;
using TESK_KIVO2D::Point2;
using TESK_KIVO2D::Triangle2;

constexpr std::size_t NO_NUMBER = static_cast<std::size_t>(-1);

std::size_t positionOf(const Point2* pVertex) { return static_cast<std::size_t>(pVertex->getCustomIndex()); }

// A buffered file that reports every failure, that of closing included: a full disk may show only there.
class OutputFile {
public:
    explicit OutputFile(const std::string& filename_)
        : filename(filename_), pFile(std::fopen(filename_.c_str(), "wb")) {
        if (pFile == nullptr) fail();
        buffer.reserve(BUFFER_SIZE + 1024);
    }
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile() {
        if (pFile != nullptr) std::fclose(pFile);
    }

    OutputFile& operator<<(std::string_view text) {
        buffer += text;
        if (buffer.size() > BUFFER_SIZE) flush();
        return *this;
    }
    OutputFile& operator<<(double value) { return addNumber(value); }
    OutputFile& operator<<(std::size_t value) { return addNumber(value); }
    OutputFile& operator<<(int value) { return addNumber(value); }
    template<class Value>
    void raw(Value value) {
        *this << std::string_view(reinterpret_cast<const char*>(&value), sizeof value);
    }

    void close() {
        flush();
        std::FILE* const pClosing = pFile;
        pFile = nullptr;
        if (std::fclose(pClosing) != 0) fail();
    }

private:
    static constexpr std::size_t BUFFER_SIZE = 1 << 20;

    template<class Value>
    OutputFile& addNumber(Value value) {
        char aText[40];
        const auto result = std::to_chars(aText, aText + sizeof aText, value);
        return *this << std::string_view(aText, static_cast<std::size_t>(result.ptr - aText));
    }
    void flush() {
        if (std::fwrite(buffer.data(), 1, buffer.size(), pFile) != buffer.size()) fail();
        buffer.clear();
    }
    [[noreturn]] void fail() const {
        throw FileError(filename, "can't be written: " + std::string(std::strerror(errno)));
    }

    const std::string& filename;
    std::FILE* pFile;
    std::string buffer;
};

void writeXy(OutputFile& out, const Mesh& mesh) {
    for (const Point2* pVertex : mesh.vVertices)
        out << pVertex->x() << " " << pVertex->y() << "\n";
}

void writeXyz(OutputFile& out, const Mesh& mesh, const PointTable& table) {
    for (const Point2* pVertex : mesh.vVertices) {
        const double height = table.getAttributes(positionOf(pVertex))[0];
        out << pVertex->x() << " " << pVertex->y() << " " << height << "\n";
    }
}

// The library's own writer knows no heights; both write the same bytes where there are none.
void writeBinary(OutputFile& out, const Mesh& mesh, const PointTable& table) {
    const bool bHeights = table.numAttributes > 0;
    out.raw(static_cast<std::int32_t>(bHeights ? 30 : 20));
    out.raw(static_cast<std::uint64_t>(mesh.vVertices.size()));
    for (const Point2* pVertex : mesh.vVertices) {
        out.raw(pVertex->x());
        out.raw(pVertex->y());
        if (bHeights) out.raw(table.getAttributes(positionOf(pVertex))[0]);
    }
}

void writeNode(OutputFile& out, const Mesh& mesh, const PointTable& table) {
    out << mesh.vVertices.size() << " 2 " << table.numAttributes << (table.bWithMarkers ? " 1\n" : " 0\n");
    std::size_t number = table.firstIndex;
    for (const Point2* pVertex : mesh.vVertices) {
        out << number++ << " " << pVertex->x() << " " << pVertex->y();
        const std::size_t position = positionOf(pVertex);
        for (std::size_t i = 0; i < table.numAttributes; ++i)
            out << " " << table.getAttributes(position)[i];
        if (table.bWithMarkers) out << " " << table.vMarkers[position];
        out << "\n";
    }
}

void writeEle(OutputFile& out, const Mesh& mesh, const PointTable& table) {
    out << mesh.vTriangles.size() << " 3 0\n";
    std::size_t number = table.firstIndex;
    for (const Triangle2* pTriangle : mesh.vTriangles) {
        out << number++;
        for (int i = 0; i < 3; ++i) {
            out << " " << mesh.vNumberOf[positionOf(pTriangle->getCorner(i))] + table.firstIndex;
        }
        out << "\n";
    }
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

Mesh meshOfPoints(const PointTable& table) {
    Mesh mesh;
    mesh.vVertices.reserve(table.vPoints.size());
    for (const Point2& point : table.vPoints)
        mesh.vVertices.push_back(&point);
    return mesh;
}

Mesh meshOf(const Kivo_2D& triangulation, const PointTable& table) {
    std::vector<Point2*> vVertices;
    triangulation.getVertexPointers(vVertices);
    std::vector<const Point2*> vByPosition(table.vPoints.size(), nullptr);
    for (const Point2* pVertex : vVertices)
        vByPosition.at(positionOf(pVertex)) = pVertex;
    Mesh mesh;
    mesh.vVertices.reserve(vVertices.size());
    mesh.vNumberOf.assign(vByPosition.size(), NO_NUMBER);
    for (std::size_t position = 0; position < vByPosition.size(); ++position) {
        if (vByPosition[position] == nullptr) continue; // equal to an earlier point
        mesh.vNumberOf[position] = mesh.vVertices.size();
        mesh.vVertices.push_back(vByPosition[position]);
    }
    triangulation.getTrianglePointers(mesh.vTriangles);
    return mesh;
}

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

void writeMesh(const std::string& filename, const Mesh& mesh, const PointTable& table) {
    OutputFile out(filename);
    switch (formatOf(filename)) {
    case FORMAT_XY:
        writeXy(out, mesh);
        break;
    case FORMAT_XYZ:
        writeXyz(out, mesh, table);
        break;
    case FORMAT_BIN:
        writeBinary(out, mesh, table);
        break;
    case FORMAT_NODE:
        writeNode(out, mesh, table);
        break;
    case FORMAT_ELE:
        writeEle(out, mesh, table);
        break;
    case FORMAT_PS:
        throw UsageError(filename + ": points alone are not drawn");
    }
    out.close();
}

void writeDrawing(const std::string& filename, const Kivo_2D& triangulation) {
    if (!triangulation.is2D()) throw FileError(filename, "is not written: all points lie on one line");
    triangulation.show(filename);
    if (!endsWith(filename, "%%Trailer\n")) throw FileError(filename, "can't be written completely");
}

} // namespace cli
