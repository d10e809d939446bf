#include "cli/meshWriters.h"

#include <algorithm>
#include <array>

namespace cli {

namespace {

using TESK_KIVO2D::Point2;
using TESK_KIVO2D::Triangle2;

// Numbers of vertices in files, the lower one first.
struct MarkedEdge {
    std::size_t low, high;
    int marker;

    bool operator<(const MarkedEdge& other) const {
        return low < other.low || (low == other.low && high < other.high);
    }
};

MarkedEdge markedEdge(std::size_t p, std::size_t q, int marker) {
    return {std::min(p, q), std::max(p, q), marker};
}

std::vector<MarkedEdge> sortedConstraints(const Mesh& mesh) {
    std::vector<MarkedEdge> vMarked;
    vMarked.reserve(mesh.vEdges.size());
    for (const ConstraintEdge& edge : mesh.vEdges)
        vMarked.push_back(markedEdge(mesh.vNumberOf[edge.source], mesh.vNumberOf[edge.target], edge.marker));
    std::sort(vMarked.begin(), vMarked.end());
    return vMarked;
}

int markerOf(std::size_t p, std::size_t q, bool bBorder, const std::vector<MarkedEdge>& vConstraints) {
    const MarkedEdge wanted = markedEdge(p, q, 0);
    const auto it = std::lower_bound(vConstraints.begin(), vConstraints.end(), wanted);
    const bool bFound = it != vConstraints.end() && !(wanted < *it);
    if (bFound && it->marker != 0) return it->marker;
    return bBorder ? 1 : 0;
}

// Each edge once: of two triangles, that with the lower corner opposite names it. Two such corners are never
// the same vertex.
bool namesEdge(const Mesh& mesh, const Triangle2* pT, int ith) {
    const Triangle2* const pOpp = pT->getOppositeTriangle(ith);
    if (pOpp == nullptr) return true;
    const Point2* const pFar = pOpp->getCorner(pOpp->getIntraTriangleIndex(pT));
    return mesh.getNumberOf(pT->getCorner(ith)) < mesh.getNumberOf(pFar);
}

std::array<std::size_t, 2> endsOf(const Mesh& mesh, const Triangle2* pT, int ith) {
    return {mesh.getNumberOf(pT->getCorner(Triangle2::incIndexBy1(ith))),
            mesh.getNumberOf(pT->getCorner(Triangle2::incIndexBy2(ith)))};
}

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
    out << mesh.vTriangles.size() << (bWithRegions ? " 3 1\n" : " 3 0\n");
    for (std::size_t k = 0; k < mesh.vTriangles.size(); ++k) {
        out << mesh.pTable->firstIndex + k;
        for (int i = 0; i < 3; ++i)
            out << " " << mesh.getNumberOf(mesh.vTriangles[k]->getCorner(i));
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
    const std::vector<MarkedEdge> vConstraints = sortedConstraints(mesh);
    std::size_t numBorder = 0;
    for (const Triangle2* pT : mesh.vTriangles) {
        for (int i = 0; i < 3; ++i) {
            if (pT->getOppositeTriangle(i) == nullptr) ++numBorder;
        }
    }
    out << (3 * mesh.vTriangles.size() + numBorder) / 2 << " 1\n";
    std::size_t number = mesh.pTable->firstIndex;
    for (const Triangle2* pT : mesh.vTriangles) {
        for (int i = 0; i < 3; ++i) {
            if (!namesEdge(mesh, pT, i)) continue;
            const auto [p, q] = endsOf(mesh, pT, i);
            const bool bBorder = pT->getOppositeTriangle(i) == nullptr;
            out << number++ << " " << p << " " << q << " " << markerOf(p, q, bBorder, vConstraints) << "\n";
        }
    }
}

} // namespace cli
