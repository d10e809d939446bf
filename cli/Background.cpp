#include "cli/Background.h"

#include "cli/interpolation.h"

#include <algorithm>
#include <cfloat>

namespace cli {

namespace {

using TESK_KIVO2D::Kivo_2D;
using TESK_KIVO2D::Point2;
using TESK_KIVO2D::Segment2;

// What a file says may be anything; -1 is often written for no limit.
bool isLimit(const std::optional<double>& maxArea) { return maxArea && *maxArea > 0.0; }

// The table has all vertices, the crossings too, so that the pieces only touch.
const Kivo_2D& fill(Kivo_2D& triangulation, const Input& input, const std::vector<ConstraintEdge>& vEdges) {
    const std::vector<Point2>& vPoints = input.table.vPoints;
    triangulation.insert(vPoints);
    std::vector<Segment2> vSegments;
    vSegments.reserve(vEdges.size());
    for (const ConstraintEdge& edge : vEdges)
        vSegments.emplace_back(vPoints[edge.source], vPoints[edge.target]);
    if (!vSegments.empty()) triangulation.createConstraint(vSegments);
    return triangulation;
}

} // namespace

Background::Background(const Input& input, const std::vector<ConstraintEdge>& vEdges)
    : regionMap(fill(triangulation, input, vEdges), vEdges, input.domain.vRegions) {}

double Background::maxAreaAt(const Point2& place) const {
    const TESK_KIVO2D::Triangle2* const pT = triangulation.locate(place);
    const Region* const pRegion = pT == nullptr ? nullptr : regionMap.regionOf(pT);
    return pRegion == nullptr || !isLimit(pRegion->maxArea) ? DBL_MAX : *pRegion->maxArea;
}

void Background::interpolateNewVertices(const Kivo_2D& meshed, PointTable& table) const {
    if (table.numAttributes == 0) return;
    for (std::size_t i = addNewVertices(meshed, table); i < table.vPoints.size(); ++i) {
        const TESK_KIVO2D::Triangle2* const pT = triangulation.locate(table.vPoints[i]);
        if (pT != nullptr) interpolateWithin(table, i, *pT);
    }
}

bool hasAreaLimits(const Domain& domain) {
    return std::any_of(domain.vRegions.begin(), domain.vRegions.end(),
                       [](const Region& region) { return isLimit(region.maxArea); });
}

} // namespace cli
