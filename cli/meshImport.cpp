#include "cli/meshImport.h"

#include <algorithm>

namespace cli {

namespace {

using TESK_KIVO2D::Kivo_2D;
using TESK_KIVO2D::MeshArrays;
using TESK_KIVO2D::Point2;
using TESK_KIVO2D::Zone2;

// Of equal points the first one is the vertex, in whatever order the triangles name them.
void resolveDuplicates(Kivo_2D& triangulation, const PointTable& table, std::vector<Point2*>& vHandles) {
    std::vector<Point2*> vVertices;
    triangulation.getVertexPointers(vVertices);
    const auto isLess = [](const Point2* p, const Point2* q) { return *p < *q; };
    std::sort(vVertices.begin(), vVertices.end(), isLess);
    for (std::size_t i = 0; i < vHandles.size(); ++i) {
        if (vHandles[i] != nullptr) continue;
        vHandles[i] = *std::lower_bound(vVertices.begin(), vVertices.end(), &table.vPoints[i], isLess);
        const int position = static_cast<int>(i);
        if (position < vHandles[i]->getCustomIndex()) vHandles[i]->setCustomIndex(position);
    }
}

} // namespace

Zone2* importMesh(Kivo_2D& triangulation, const Input& input, Insertion& insertion, const std::string& name) {
    std::vector<Point2> vCorners;
    vCorners.reserve(3 * input.vTriangles.size());
    for (const auto& aCorners : input.vTriangles) {
        for (const std::uint32_t corner : aCorners)
            vCorners.push_back(input.table.vPoints[corner]);
    }
    const std::size_t numBefore = triangulation.numberOfPoints();
    Zone2* const pZone = triangulation.importTriangles(vCorners, false);
    if (pZone == nullptr) return nullptr;
    const std::size_t numNew = triangulation.numberOfPoints() - numBefore;
    const auto numGiven =
        static_cast<std::size_t>(std::count(insertion.vHandles.begin(), insertion.vHandles.end(), nullptr));
    if (numGiven > numNew) resolveDuplicates(triangulation, input.table, insertion.vHandles);
    insertion.numDuplicates += numGiven - numNew;
    warnOfLostData(input, insertion.vHandles, name);
    return pZone;
}

ImportReport measureImport(const Kivo_2D& triangulation, const Input& input, const Zone2& zone) {
    ImportReport report;
    const std::vector<Point2>& vPoints = input.table.vPoints;
    for (const auto& [a, b, c] : input.vTriangles) {
        if (triangulation.getOrientation(vPoints[a], vPoints[b], vPoints[c]) == TESK_KIVO2D::ORIENTATION2_CW)
            ++report.numTurned;
    }
    MeshArrays arrays;
    triangulation.getMeshArrays(arrays, &zone);
    report.numTriangles = arrays.vCorners.size() / 3;
    report.numCorners = arrays.vVertices.size();
    report.numBorderEdges = static_cast<std::size_t>(
        std::count(arrays.vNeighbours.begin(), arrays.vNeighbours.end(), MeshArrays::noTriangle));
    std::vector<TESK_KIVO2D::Triangle2*> vTriangles;
    zone.getTriangles(vTriangles);
    std::size_t numSides = 0;
    for (TESK_KIVO2D::Triangle2* pT : vTriangles) {
        for (int i = 0; i < 3; ++i)
            numSides += triangulation.isConstraint(pT, i) ? 1 : 0;
    }
    report.numInnerConstraintEdges = (numSides - report.numBorderEdges) / 2; // both sides are in the zone
    return report;
}

} // namespace cli
