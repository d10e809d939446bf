#include "cli/vtuWriter.h"

#include "cli/UsedVertices.h"
#include "cli/smallestAngle.h"

namespace cli {

namespace {

using TESK_KIVO2D::Point2;

// Calls write(i) for each value; so many a line.
template<class Write>
void writeArray(OutputFile& out, const std::string& head, std::size_t count, const Write& write) {
    constexpr std::size_t NUM_A_LINE = 16;
    out << "<DataArray " << head << " format=\"ascii\">\n";
    for (std::size_t i = 0; i < count; ++i) {
        write(i);
        out << ((i + 1) % NUM_A_LINE == 0 || i + 1 == count ? "\n" : " ");
    }
    out << "</DataArray>\n";
}

std::string headOf(const std::string& type, const std::string& name) {
    return "type=\"" + type + "\" Name=\"" + name + "\"";
}

void writePoints(OutputFile& out, const UsedVertices& vertices) {
    out << "<Points>\n";
    writeArray(out, headOf("Float64", "Points") + " NumberOfComponents=\"3\"", vertices.size(),
               [&](std::size_t i) { out << vertices[i].x() << " " << vertices[i].y() << " 0"; });
    out << "</Points>\n";
}

void writePointData(OutputFile& out, const Mesh& mesh, const UsedVertices& vertices) {
    const PointTable& table = *mesh.pTable;
    out << "<PointData>\n";
    for (std::size_t k = 0; k < table.numAttributes; ++k) {
        writeArray(out, headOf("Float64", "attribute" + std::to_string(k + 1)), vertices.size(),
                   [&](std::size_t i) { out << table.getAttributes(vertices.positionOf(i))[k]; });
    }
    if (table.bWithMarkers) {
        writeArray(out, headOf("Int32", "marker"), vertices.size(),
                   [&](std::size_t i) { out << table.vMarkers[vertices.positionOf(i)]; });
    }
    out << "</PointData>\n";
}

void writeCellData(OutputFile& out, const Mesh& mesh) {
    out << "<CellData>\n";
    writeArray(out, headOf("Float64", "smallestAngle"), mesh.numTriangles(),
               [&](std::size_t k) { out << smallestAngleOf(mesh.triangles, k); });
    if (!mesh.vTriangleAttributes.empty()) {
        writeArray(out, headOf("Float64", "region"), mesh.numTriangles(),
                   [&](std::size_t k) { out << mesh.vTriangleAttributes[k]; });
    }
    if (mesh.pieces.numParts > 0) {
        writeArray(out, headOf("Int64", "piece"), mesh.numTriangles(),
                   [&](std::size_t k) { out << mesh.pieces.vPartOf[k] + std::size_t{1}; });
    }
    out << "</CellData>\n";
}

void writeCells(OutputFile& out, const Mesh& mesh, const UsedVertices& vertices) {
    constexpr int VTK_TRIANGLE = 5;
    const std::size_t count = mesh.numTriangles();
    out << "<Cells>\n";
    writeArray(out, headOf("Int64", "connectivity"), 3 * count,
               [&](std::size_t i) { out << vertices.numberOf(mesh.triangles.vCorners[i]); });
    writeArray(out, headOf("Int64", "offsets"), count, [&](std::size_t k) { out << 3 * (k + 1); });
    writeArray(out, headOf("UInt8", "types"), count, [&](std::size_t) { out << VTK_TRIANGLE; });
    out << "</Cells>\n";
}

} // namespace

void writeVtu(OutputFile& out, const Mesh& mesh) {
    const UsedVertices vertices(mesh);
    out << "<?xml version=\"1.0\"?>\n"
           "<VTKFile type=\"UnstructuredGrid\" version=\"0.1\" byte_order=\"LittleEndian\">\n"
           "<UnstructuredGrid>\n"
           "<Piece NumberOfPoints=\""
        << vertices.size() << "\" NumberOfCells=\"" << mesh.numTriangles() << "\">\n";
    writePointData(out, mesh, vertices);
    writeCellData(out, mesh);
    writePoints(out, vertices);
    writeCells(out, mesh, vertices);
    out << "</Piece>\n</UnstructuredGrid>\n</VTKFile>\n";
}

} // namespace cli
