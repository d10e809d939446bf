#pragma once

#include "MeshGenParams.h"
#include "RefinementReport.h"
#include "Triangle2.h"
#include "meshing/TriangleMarks.h"
#include "meshing/TriangleShape.h"

#include <algorithm>
#include <cfloat>

namespace TESK_KIVO2D {

// A set of rules, a bit each.
using RuleSet = unsigned;
constexpr RuleSet ruleBit(MeshRule rule) { return 1U << static_cast<unsigned>(rule); }

// The limits of the client's parameters, ready to be compared with shapes: limits that can't be kept are
// switched off, angles are cosines, and lengths are in the zone's own unit.
class MeshLimits {
public:
    // Names limits that count as switched off in one warning. The parameters must outlive this. The largest
    // absolute coordinate of the zone sets the unit.
    MeshLimits(const MeshGenParams& parameters, double maxAbsCoord);

    const MeshGenParams& parameters() const { return params; }
    double scale() const { return unitScale; }

    // Which rules the triangle breaks. Asks the client's functions. Neighbours count if they are in the zone.
    RuleSet brokenRules(Triangle2* pT, const TriangleShape& shape, const TriangleMarks& marks) const {
        RuleSet rules = 0;
        if (shape.hasSmallerAngle(sqCosMinAngle) || (bCaps && isBadCap(shape)))
            rules |= ruleBit(MeshRule::MIN_ANGLE);
        // Before the client's functions, after which the marks may be out of date.
        if (bGrowth && needRefinementDueToGrowth(*pT, shape, marks, false))
            rules |= ruleBit(MeshRule::GROWTH);
        const double maxLength = params.getMaxEdgeLength(pT), maxArea = params.getMaxTriangleArea(pT);
        if (isLimit(maxLength) && shape.sqLongest() > squareOfLength(maxLength, shape.scale))
            rules |= ruleBit(MeshRule::EDGE_LENGTH);
        if (isLimit(maxArea) && shape.area > scaledArea(maxArea, shape.scale))
            rules |= ruleBit(MeshRule::AREA);
        return rules;
    }
    // A triangle that comes into being may make its neighbours break this one.
    bool limitsGrowth() const { return bGrowth; }

    // True when constraint segments of this squared length, in the zone's unit, must not be split.
    bool isTooShort(double sqLength) const { return sqMinSplitLength > sqLength; }

    // Relative to the shortest edge of a triangle: the height above its middle of the point from which it is
    // seen under an angle a little larger than the smallest one allowed.
    double offCentreHeight() const { return heightOfOffCentre; }
    // True when the segment ab is seen from q under so large an angle that a triangle on it would be bad.
    bool encroaches(const Point2& a, const Point2& b, const Point2& q) const {
        return isSeenWider(a, b, q, sqCosLens);
    }
    // True when q lies on the segment ab but for a degree, so to speak: it sees it under more than 179.
    bool isAlmostOn(const Point2& a, const Point2& b, const Point2& q) const {
        constexpr double sqCosOf179 = 0.9996954135095479;
        return isSeenWider(a, b, q, sqCosOf179);
    }

    // True when the triangle breaks the rule of growth only against neighbours across a constraint, where one
    // of the two lies in a corner between constraints. There, the ratio of their areas depends on angles that
    // refinement does not change.
    bool growsInCornerOnly(const Triangle2& t, const TriangleShape& shape, const TriangleMarks& marks) const {
        return !needRefinementDueToGrowth(t, shape, marks, true);
    }

private:
    static bool isLimit(double value) { return value > 0 && value < DBL_MAX; }
    // A size that misses its limit by less has been rounded: a grid's triangles may be just as large as
    // allowed.
    static constexpr double sizeSlack = 1 + 1e-10;
    // Not 0.
    static double squareOfLength(double length, double scale) {
        return std::max(length * scale * (length * scale) * sizeSlack, DBL_TRUE_MIN);
    }
    static double scaledArea(double area, double scale) {
        return std::max(area * scale * scale * sizeSlack, DBL_TRUE_MIN);
    }
    void setAngle();
    bool isBadCap(const TriangleShape& shape) const;
    bool needRefinementDueToGrowth(const Triangle2& t, const TriangleShape& shape, const TriangleMarks& marks,
                                   bool bIgnoreCorners) const;
    bool isSeenWider(const Point2& a, const Point2& b, const Point2& q, double sqCos) const;

    const MeshGenParams& params;
    double unitScale = 1;
    double sqCosMinAngle = 2; // no angle is below
    double sqCosLens = 0;
    double heightOfOffCentre = 0;
    double sqMinSplitLength = 0;
    double growFactorMinArea = 0; // in the zone's unit
    double growFactor = 0;
    bool bGrowth = false;
    bool bCaps = false;
};

} // namespace TESK_KIVO2D
