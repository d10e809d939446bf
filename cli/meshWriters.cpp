#include "cli/meshWriters.h"

#include "cli/meshEdges.h"

namespace cli {

namespace {

using TESK_KIVO2D::Point2;

void writeConstraintEdges(OutputFile& out, const Mesh& mesh) {
    const bool bWithMarkers = mesh.pDomain->bWithMarkers;
    out << mesh.vEdges.size() << (bWithMarkers ? " 1\n" : " 0\n");
    std::size_t number = mesh.pTable->firstIndex;
    for (const ConstraintEdge& edge : mesh.vEdges) {
        out << number++ << " " << mesh.vNumberOf[edge.source] << " " << mesh.vNumberOf[edge.target];
        if (bWithMarkers) out << " " << edge.marker;
        out << "\n";
    }
}

void writeHolesAndRegions(OutputFile& out, const Mesh& mesh) {
    const Domain& domain = *mesh.pDomain;
    out << domain.vHoles.size() << "\n";
    std::size_t number = mesh.pTable->firstIndex;
    for (const Point2& hole : domain.vHoles)
        out << number++ << " " << hole.x() << " " << hole.y() << "\n";
    if (domain.vRegions.empty()) return;
    out << domain.vRegions.size() << "\n";
    number = mesh.pTable->firstIndex;
    for (const Region& region : domain.vRegions) {
        out << number++ << " " << region.point.x() << " " << region.point.y() << " " << region.attribute;
        if (region.maxArea) out << " " << *region.maxArea;
        out << "\n";
    }
}

} // namespace

void writeNode(OutputFile& out, const Mesh& mesh) {
    const PointTable& table = *mesh.pTable;
    out << mesh.vVertices.size() << " 2 " << table.numAttributes << (table.bWithMarkers ? " 1\n" : " 0\n");
    std::size_t number = table.firstIndex;
    for (const Point2* pVertex : mesh.vVertices) {
        out << number++ << " " << pVertex->x() << " " << pVertex->y();
        const auto position = static_cast<std::size_t>(pVertex->getCustomIndex());
        for (std::size_t i = 0; i < table.numAttributes; ++i)
            out << " " << table.getAttributes(position)[i];
        if (table.bWithMarkers) out << " " << table.vMarkers[position];
        out << "\n";
    }
}

void writeEle(OutputFile& out, const Mesh& mesh) {
    const bool bWithRegions = mesh.pDomain != nullptr && !mesh.pDomain->vRegions.empty();
    out << mesh.numTriangles() << (bWithRegions ? " 3 1\n" : " 3 0\n");
    for (std::size_t k = 0; k < mesh.numTriangles(); ++k) {
        out << mesh.pTable->firstIndex + k;
        for (std::size_t i = 0; i < 3; ++i)
            out << " " << mesh.getCornerNumber(k, i);
        if (bWithRegions) out << " " << mesh.vTriangleAttributes[k];
        out << "\n";
    }
}

void writePoly(OutputFile& out, const Mesh& mesh) {
    writeNode(out, mesh);
    writeConstraintEdges(out, mesh);
    writeHolesAndRegions(out, mesh);
}

void writeEdge(OutputFile& out, const Mesh& mesh) {
    std::size_t numEdges = 0;
    forEachEdge(mesh, [&numEdges](const MeshEdge&) { ++numEdges; });
    out << numEdges << " 1\n";
    const ConstraintLookup constraints(mesh);
    std::size_t number = mesh.pTable->firstIndex;
    forEachEdge(mesh, [&](const MeshEdge& edge) {
        const std::size_t constraint = constraints.find(edge);
        int marker = constraint == NO_CONSTRAINT ? 0 : mesh.vEdges[constraint].marker;
        if (marker == 0 && edge.bBorder) marker = 1;
        out << number++ << " " << mesh.getCornerNumber(edge.triangle, (edge.ith + 1) % 3) << " "
            << mesh.getCornerNumber(edge.triangle, (edge.ith + 2) % 3) << " " << marker << "\n";
    });
}

} // namespace cli
