#include "cli/Mesh.h"

namespace cli {

namespace {

using TESK_KIVO2D::Kivo_2D;
using TESK_KIVO2D::Point2;

constexpr std::size_t NO_NUMBER = static_cast<std::size_t>(-1);

} // namespace

Mesh meshOfPoints(const PointTable& table) {
    Mesh mesh;
    mesh.pTable = &table;
    mesh.vVertices.reserve(table.vPoints.size());
    for (const Point2& point : table.vPoints)
        mesh.vVertices.push_back(&point);
    return mesh;
}

Mesh meshOf(const Kivo_2D& triangulation, const Input& input) {
    std::vector<Point2*> vVertices;
    triangulation.getVertexPointers(vVertices);
    std::vector<const Point2*> vByPosition(input.table.vPoints.size(), nullptr);
    for (const Point2* pVertex : vVertices)
        vByPosition.at(static_cast<std::size_t>(pVertex->getCustomIndex())) = pVertex;
    Mesh mesh;
    mesh.pTable = &input.table;
    mesh.pDomain = &input.domain;
    mesh.vVertices.reserve(vVertices.size());
    mesh.vNumberOf.assign(vByPosition.size(), NO_NUMBER);
    for (std::size_t position = 0; position < vByPosition.size(); ++position) {
        if (vByPosition[position] == nullptr) continue; // equal to an earlier point
        mesh.vNumberOf[position] = mesh.vVertices.size() + input.table.firstIndex;
        mesh.vVertices.push_back(vByPosition[position]);
    }
    return mesh;
}

} // namespace cli
