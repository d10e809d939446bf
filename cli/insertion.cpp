#include "cli/insertion.h"

#include "cli/interpolation.h"

#include <algorithm>
#include <cstdio>

namespace cli {

namespace {

using TESK_KIVO2D::Kivo_2D;
using TESK_KIVO2D::Point2;
using TESK_KIVO2D::Triangle2;

bool carryTheSame(const PointTable& table, std::size_t a, std::size_t b) {
    const double* const pA = table.getAttributes(a);
    if (!std::equal(pA, pA + table.numAttributes, table.getAttributes(b))) return false;
    return !table.bWithMarkers || table.vMarkers[a] == table.vMarkers[b];
}

std::size_t positionOf(const Point2* pVertex) { return static_cast<std::size_t>(pVertex->getCustomIndex()); }

// Must come before the ends are inserted: it asks for the triangles of the points alone. Returns which ends
// lie in one.
std::vector<bool> interpolateEnds(const Kivo_2D& triangulation, PointTable& table, std::size_t firstEnd) {
    std::vector<bool> vInside(table.vPoints.size() - firstEnd, true);
    if (table.numAttributes == 0) return vInside;
    for (std::size_t i = firstEnd; i < table.vPoints.size(); ++i) {
        const Triangle2* const pT = triangulation.locate(table.vPoints[i]);
        vInside[i - firstEnd] = pT != nullptr;
        if (pT != nullptr) interpolateWithin(table, i, *pT);
    }
    return vInside;
}

// Corners of a mesh that equal another point or the end of a segment are among them, so that of equal points
// the first one is the vertex.
void insertAllButCorners(Kivo_2D& triangulation, const Input& input, Insertion& insertion) {
    const std::vector<Point2>& vPoints = input.table.vPoints;
    std::vector<bool> vWanted(vPoints.size(), true);
    for (const auto& aCorners : input.vTriangles) {
        for (const std::uint32_t corner : aCorners)
            vWanted[corner] = false;
    }
    std::vector<Point2> vOthers;
    for (std::size_t i = 0; i < vPoints.size(); ++i) {
        if (vWanted[i]) vOthers.push_back(vPoints[i]);
    }
    std::sort(vOthers.begin(), vOthers.end());
    std::vector<std::size_t> vPositions;
    std::vector<Point2> vInserted;
    for (std::size_t i = 0; i < input.numPoints; ++i) {
        if (!vWanted[i] && !std::binary_search(vOthers.begin(), vOthers.end(), vPoints[i])) continue;
        vPositions.push_back(i);
        vInserted.push_back(vPoints[i]);
    }
    std::vector<Point2*> vVertices;
    triangulation.insert(vInserted, vVertices);
    insertion.vHandles.assign(input.numPoints, nullptr);
    for (std::size_t i = 0; i < vPositions.size(); ++i)
        insertion.vHandles[vPositions[i]] = vVertices[i];
}

void insertEnds(Kivo_2D& triangulation, Input& input, const std::string& name, Insertion& insertion) {
    PointTable& table = input.table;
    const std::size_t firstEnd = input.numPoints;
    const std::vector<bool> vInside = interpolateEnds(triangulation, table, firstEnd);
    const std::vector<Point2> vEnds(table.vPoints.begin() + static_cast<std::ptrdiff_t>(firstEnd),
                                    table.vPoints.end());
    std::vector<Point2*> vEndHandles;
    triangulation.insert(vEnds, vEndHandles);
    std::size_t numOutside = 0;
    for (std::size_t i = 0; i < vEndHandles.size(); ++i) {
        if (positionOf(vEndHandles[i]) != firstEnd + i) continue;
        ++insertion.numNewEnds;
        if (!vInside[i]) ++numOutside;
    }
    insertion.vHandles.insert(insertion.vHandles.end(), vEndHandles.begin(), vEndHandles.end());
    if (numOutside == 0) return;
    std::fprintf(stderr, "kivo2d: %s: %zu ends of segments lie beyond all points; %s\n", name.c_str(),
                 numOutside, "their heights or attributes are 0");
}

} // namespace

Insertion insertPoints(Kivo_2D& triangulation, Input& input, const std::string& name) {
    const PointTable& table = input.table;
    Insertion insertion;
    const bool bWithEnds = table.vPoints.size() != input.numPoints;
    const bool bCarries = table.numAttributes > 0 || table.bWithMarkers;
    if (!input.vTriangles.empty()) {
        insertAllButCorners(triangulation, input, insertion);
    } else if (!bCarries && input.domain.vSegments.empty()) {
        triangulation.insert(table.vPoints);
    } else if (!bWithEnds) {
        triangulation.insert(table.vPoints, insertion.vHandles);
    } else {
        const std::vector<Point2> vGiven(
            table.vPoints.begin(), table.vPoints.begin() + static_cast<std::ptrdiff_t>(input.numPoints));
        triangulation.insert(vGiven, insertion.vHandles);
    }
    if (bCarries && input.vTriangles.empty()) warnOfLostData(input, insertion.vHandles, name);
    const auto numLeft =
        static_cast<std::size_t>(std::count(insertion.vHandles.begin(), insertion.vHandles.end(), nullptr));
    insertion.numDuplicates = input.numPoints - numLeft - triangulation.numberOfPoints();
    if (bWithEnds) insertEnds(triangulation, input, name, insertion);
    return insertion;
}

void warnOfLostData(const Input& input, const std::vector<Point2*>& vHandles, const std::string& name) {
    std::size_t numLost = 0;
    for (std::size_t i = 0; i < input.numPoints; ++i) {
        if (vHandles[i] != nullptr && !carryTheSame(input.table, i, positionOf(vHandles[i]))) ++numLost;
    }
    if (numLost == 0) return;
    std::fprintf(
        stderr,
        "kivo2d: %s: %zu points equal an earlier one but for their heights, attributes or markers, %s\n",
        name.c_str(), numLost, "which were dropped");
}

} // namespace cli
