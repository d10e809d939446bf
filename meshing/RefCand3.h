#pragma once

#include "MeshGenParams.h"
#include "Point2.h"
#include "RefinementReport.h"
#include "Triangle2.h"
#include "core/HalfEdge.h"
#include "meshing/MeshLimits.h"
#include "meshing/RefinementSite.h"
#include "meshing/Sight.h"
#include "meshing/TriangleShape.h"

namespace TESK_KIVO2D {

// A triangle of the zone, for as long as it is being looked at: is it bad, and where must a point be put to
// mend it.
class RefCand3 {
public:
    // Values of the split index besides 0, 1 and 2, which name the edge of the start triangle opposite that
    // corner, to be split.
    static constexpr int insertInside = -1; // insert the point
    static constexpr int leave = 4;         // nothing can be done

    RefCand3(Triangle2* pTriangle, RefinementSite& refinementSite)
        : site(refinementSite), pT(pTriangle), shape(*pTriangle, site.limits.scale()) {}

    Triangle2* getTriangle() const { return pT; }

    // The rules that the triangle breaks; none if it is good. Asks the client's functions.
    RuleSet needRefinement() const { return site.limits.brokenRules(pT, shape, site.marks); }
    // True when no point could enlarge its smallest angle: that lies between two constraints, or its shortest
    // edge between two that meet at a small angle. Meant for triangles that break the angle rule.
    bool isExemptFromAngle() const;

    // True when it breaks the rule of growth only because of corners between constraints.
    bool isExemptFromGrowth() const { return site.limits.growsInCornerOnly(*pT, shape, site.marks); }
    // What the queue orders by: the square of the shortest edge, in the zone's unit.
    double getKey() const;

    // Computes the point, looks where it lies, and decides.
    void update();
    // After update.
    int getSplitIndex() const { return splitIndex; }
    // Where the view of the point ends; the split index refers to its triangle.
    const Sight& getSight() const { return sight; }
    const Point2& getPoint() const { return point; }
    // True when rounding alone may have made its angles what they are, and what is to be done would only make
    // more of its kind: a split of the segment beside which it is hardly higher than rounding can make it, or
    // a point at an edge that is hardly longer.
    bool isOfRounding() const;
    // Why the split index is `leave`.
    MeshObstacle getObstacle() const { return obstacle; }

    // Prints the reason for its refinement, and draws it into a picture with this number.
    void debug(RuleSet rules, int number) const;

private:
    Point2 computePoint() const;

    RefinementSite& site;
    Triangle2* pT;
    TriangleShape shape;
    Point2 point;
    Sight sight{};
    int splitIndex = leave;
    MeshObstacle obstacle = MeshObstacle::ARITHMETIC;
};

} // namespace TESK_KIVO2D
