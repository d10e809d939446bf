#include "cli/Background.h"

#include "cli/interpolation.h"

#include <algorithm>
#include <cfloat>

namespace cli {

namespace {

using TESK_KIVO2D::Kivo_2D;
using TESK_KIVO2D::Point2;
using TESK_KIVO2D::Triangle2;

// What a file says may be anything; -1 is often written for no limit.
bool isLimit(const std::optional<double>& maxArea) { return maxArea && *maxArea > 0.0; }

// Triangle by triangle: of points on one circle there are several triangulations, which differ between the
// points.
const Kivo_2D& makeCopy(Kivo_2D& copy, const Kivo_2D& original) {
    std::vector<Triangle2*> vTriangles;
    original.getTrianglePointers(vTriangles);
    std::vector<Point2> vCorners;
    vCorners.reserve(3 * vTriangles.size());
    for (const Triangle2* pT : vTriangles) {
        for (int i = 0; i < 3; ++i)
            vCorners.push_back(*pT->getCorner(i));
    }
    copy.importTriangles(vCorners, false);
    return copy;
}

} // namespace

Background::Background(const Kivo_2D& original, const std::vector<ConstraintEdge>& vEdges,
                       const std::vector<Region>& vRegions)
    : regionMap(makeCopy(triangulation, original), vEdges, vRegions) {}

double Background::maxAreaAt(const Point2& place) const {
    const Triangle2* const pT = triangulation.locate(place);
    const Region* const pRegion = pT == nullptr ? nullptr : regionMap.regionOf(pT);
    return pRegion == nullptr || !isLimit(pRegion->maxArea) ? DBL_MAX : *pRegion->maxArea;
}

void Background::interpolateNewVertices(const Kivo_2D& meshed, PointTable& table) const {
    if (table.numAttributes == 0) return;
    for (std::size_t i = addNewVertices(meshed, table); i < table.vPoints.size(); ++i) {
        const Triangle2* const pT = triangulation.locate(table.vPoints[i]);
        if (pT != nullptr) interpolateWithin(table, i, *pT);
    }
}

bool hasAreaLimits(const Domain& domain) {
    return std::any_of(domain.vRegions.begin(), domain.vRegions.end(),
                       [](const Region& region) { return isLimit(region.maxArea); });
}

} // namespace cli
