#include "cli/zone.h"

#include "cli/parts.h"

#include <algorithm>
#include <cmath>

namespace cli {

namespace {

using TESK_KIVO2D::ConstraintGraph2;
using TESK_KIVO2D::Kivo_2D;
using TESK_KIVO2D::MeshArrays;
using TESK_KIVO2D::Point2;
using TESK_KIVO2D::Zone2;

constexpr const char* INSIDE = "inside";
constexpr const char* ENCLOSED = "enclosed";

// Of round coordinates a round number, which the library's sum of areas by side lengths is not.
double areaOf(const MeshArrays& arrays) {
    double area = 0.0;
    for (std::size_t i = 0; i < arrays.vCorners.size(); i += 3) {
        const double* const p = &arrays.vCoordinates[std::size_t{2} * arrays.vCorners[i]];
        const double* const q = &arrays.vCoordinates[std::size_t{2} * arrays.vCorners[i + 1]];
        const double* const r = &arrays.vCoordinates[std::size_t{2} * arrays.vCorners[i + 2]];
        area += ((q[0] - p[0]) * (r[1] - p[1]) - (q[1] - p[1]) * (r[0] - p[0])) / 2.0;
    }
    return area;
}

} // namespace

const std::vector<std::string>& zoneKinds() {
    static const std::vector<std::string> vKinds{INSIDE, ENCLOSED};
    return vKinds;
}

Zone2* createZone(Kivo_2D& triangulation, const std::string& kind, ConstraintGraph2* pGraph,
                  const std::vector<Point2>& vHoles) {
    if (pGraph == nullptr || !triangulation.is2D()) return nullptr;
    return kind == INSIDE ? triangulation.createParityZone({pGraph}, vHoles, false)
                          : triangulation.createEnclosedZone({pGraph}, vHoles, false);
}

ZoneReport measureZone(const std::string& kind, const Zone2& zone, const MeshArrays& arrays) {
    ZoneReport report;
    report.kind = kind;
    report.numTriangles = arrays.vCorners.size() / 3;
    report.area = areaOf(arrays);
    if (!std::isfinite(report.area)) report.area = zone.getArea2D(); // scales its lengths first
    report.numBorderEdges = static_cast<std::size_t>(
        std::count(arrays.vNeighbours.begin(), arrays.vNeighbours.end(), MeshArrays::noTriangle));
    report.numParts = partsOf(arrays, [](std::size_t) { return false; }).numParts;
    return report;
}

} // namespace cli
