#include "meshing/MeshLimits.h"

#include "kernel/messages.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <limits>
#include <numbers>
#include <string>

namespace TESK_KIVO2D {
namespace {

// An angle that misses its limit by less has been rounded.
constexpr double angleSlack = 1e-9; // degrees

// Off-centres stand a little nearer to their edge than the limit asks: their triangles meet it by a margin,
// and later vertices spoil fewer of them.
constexpr double offCentreShare = 0.485;

double radians(double degrees) { return degrees * (std::numbers::pi / 180); }

bool isPositive(double value) { return value > 0; }

// A limit that is no positive number is said to be off, and is.
std::string namesOfUnusable(const MeshGenParams& params) {
    std::string names;
    const auto check = [&names](bool bUsable, const char* name) {
        if (!bUsable) names += (names.empty() ? "" : ", ") + std::string(name);
    };
    check(isPositive(params.minAngleDegree), "minAngleDegree");
    check(params.minEdgeLength >= 0, "minEdgeLength");
    check(isPositive(params.maxEdgeLength), "maxEdgeLength");
    check(isPositive(params.maxTriangleArea), "maxTriangleArea");
    check(params.growFactor > 1, "growFactor");
    check(params.growFactorMinArea >= 0, "growFactorMinArea");
    check(isPositive(params.capAspectLimit), "capAspectLimit");
    return names;
}

} // namespace

MeshLimits::MeshLimits(const MeshGenParams& parameters, double maxAbsCoord) : params(parameters) {
    const std::string names = namesOfUnusable(params);
    if (!names.empty()) {
        reportWarning("Dt2::refineMain2()",
                      "limits that are no positive numbers, or a growth factor that is not above 1, "
                      "count as switched off: " +
                          names);
    }
    if (maxAbsCoord > 0) unitScale = std::ldexp(1.0, std::clamp(-1 - std::ilogb(maxAbsCoord), -1022, 1022));
    setAngle();
    if (params.minEdgeLength > 0) {
        const double length = 2 * params.minEdgeLength * unitScale;
        sqMinSplitLength = length * length;
    }
    bGrowth = params.growFactor > 1 && params.growFactor < DBL_MAX;
    growFactor = params.growFactor;
    if (params.growFactorMinArea > 0) growFactorMinArea = params.growFactorMinArea * unitScale * unitScale;
}

void MeshLimits::setAngle() {
    if (!(params.minAngleDegree > angleSlack)) {
        heightOfOffCentre = std::numeric_limits<double>::infinity();
        sqCosLens = 1; // only what lies on a segment
        return;
    }
    const double cosMin = std::cos(radians(params.minAngleDegree));
    const double cosWithSlack = std::cos(radians(params.minAngleDegree - angleSlack));
    sqCosMinAngle = cosWithSlack * cosWithSlack;
    const double cosLens = 2 * cosMin * cosMin - 1;
    sqCosLens = cosLens * cosLens;
    heightOfOffCentre = offCentreShare * std::sqrt((1 + cosMin) / (1 - cosMin));
    // A cap whose angles are not too small is less than two cotangents of the smallest one as long as high.
    const double widest = 2 * cosMin / std::sqrt(1 - cosMin * cosMin);
    bCaps = isPositive(params.capAspectLimit) && params.capAspectLimit < widest;
}

bool MeshLimits::isSeenWider(const Point2& a, const Point2& b, const Point2& q, double sqCos) const {
    double ax = (a.x() - q.x()) * unitScale, ay = (a.y() - q.y()) * unitScale;
    double bx = (b.x() - q.x()) * unitScale, by = (b.y() - q.y()) * unitScale;
    const double extent = std::max({std::fabs(ax), std::fabs(ay), std::fabs(bx), std::fabs(by)});
    constexpr double tiny = 0x1p-100; // else fourth powers would underflow
    if (extent < tiny && extent > 0) {
        const double factor = std::ldexp(1.0, std::min(-std::ilogb(extent), 1022));
        ax *= factor, ay *= factor, bx *= factor, by *= factor;
    }
    const double dot = ax * bx + ay * by;
    return dot < 0 && dot * dot >= sqCos * ((ax * ax + ay * ay) * (bx * bx + by * by));
}

bool MeshLimits::isBadCap(const TriangleShape& shape) const {
    constexpr double sqCosOfCaps = 0.75; // of 150 degrees
    // Longest edge by height is its square by twice the area.
    return shape.hasLargerAngle(sqCosOfCaps) && shape.sqLongest() > params.capAspectLimit * 2 * shape.area;
}

bool MeshLimits::needRefinementDueToGrowth(const Triangle2& t, const TriangleShape& shape,
                                           const TriangleMarks& marks, bool bIgnoreCorners) const {
    const bool bInCorner = marks.numberOfClosed(&t) >= 2;
    for (int i = 0; i < 3; ++i) {
        const Triangle2* const pN = t.getOppositeTriangle(i);
        if (pN == nullptr || !marks.isInZone(pN)) continue;
        if (bIgnoreCorners && marks.isClosed(&t, i) && (bInCorner || marks.numberOfClosed(pN) >= 2)) continue;
        const TriangleShape neighbour(*pN, unitScale);
        const double inZoneUnit = unitScale / neighbour.scale, inUnitOfT = shape.scale / neighbour.scale;
        const double area = neighbour.area * inZoneUnit * inZoneUnit;
        if (area > 0 && area >= growFactorMinArea &&
            shape.area > growFactor * (neighbour.area * inUnitOfT * inUnitOfT))
            return true;
    }
    return false;
}

} // namespace TESK_KIVO2D
