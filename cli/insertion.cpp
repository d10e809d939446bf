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

// Of equal points the first one becomes the vertex; what the others carry is lost, and that is said.
void warnOfLostData(const PointTable& table, const std::vector<Point2*>& vHandles, const std::string& name) {
    std::size_t numLost = 0;
    for (std::size_t i = 0; i < vHandles.size(); ++i) {
        if (!carryTheSame(table, i, positionOf(vHandles[i]))) ++numLost;
    }
    if (numLost == 0) return;
    std::fprintf(
        stderr,
        "kivo2d: %s: %zu points equal an earlier one but for their heights, attributes or markers, %s\n",
        name.c_str(), numLost, "which were dropped");
}

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
    if (!bCarries && input.domain.vSegments.empty() && input.vTriangles.empty()) {
        triangulation.insert(table.vPoints);
    } else if (!bWithEnds) {
        triangulation.insert(table.vPoints, insertion.vHandles);
    } else {
        const std::vector<Point2> vGiven(
            table.vPoints.begin(), table.vPoints.begin() + static_cast<std::ptrdiff_t>(input.numPoints));
        triangulation.insert(vGiven, insertion.vHandles);
    }
    if (bCarries) warnOfLostData(table, insertion.vHandles, name);
    insertion.numDuplicates = input.numPoints - triangulation.numberOfPoints();
    if (bWithEnds) insertEnds(triangulation, input, name, insertion);
    return insertion;
}

} // namespace cli
