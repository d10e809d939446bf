#pragma once

#include "Bbox2.h"
#include "Point2.h"
#include "Vector2.h"

#include <cstdint>

namespace TESK_KIVO2D {

// A place in the frame of a grid, in units of its length: along its direction, and to the left of that, from
// the origin of coordinates.
struct GridSpot {
    double s;
    double t;
};

// The square grid through the origin of coordinates with a given direction and length.
//
// Where doubles are fine enough, a direction across the axes is rounded so that all points of the grid are
// doubles: then its cells are squares exactly, and which diagonal they get is no matter of rounding. Both
// coordinates of a step along the grid become multiples of a unit that is two units in the last place of the
// largest coordinate. Such a grid is laid out from the middle of the zone, where it has the phase of the one
// through the origin, so that rounded steps do not add up on the way.
class GridFrame {
public:
    // The direction is finite and not (0, 0), and may be of any length. The length is positive, and the box
    // that of the zone.
    GridFrame(const Vector2& direction, double gridLength, const Bbox2& box);

    double length() const { return targetLength; }
    // False where the rounding of coordinates could be seen in the grid.
    bool isExactEnough() const { return bExactEnough; }

    // The grid point of a column and a row. The only place that computes one: so the next run finds the same
    // doubles. The zero turns -0 into 0.
    Point2 pointAt(std::int64_t column, std::int64_t row) const {
        const double i = static_cast<double>(column) - middle.s, j = static_cast<double>(row) - middle.t;
        return Point2(atMiddle.x() + (i * step.x() - j * step.y()) + 0.0,
                      atMiddle.y() + (i * step.y() + j * step.x()) + 0.0);
    }
    // Off by some units in the last place of the largest coordinate.
    GridSpot spotOf(const Point2& p) const {
        const double x = (p.x() - atMiddle.x()) / targetLength, y = (p.y() - atMiddle.y()) / targetLength;
        return {x * unit.x() + y * unit.y() + middle.s, y * unit.x() - x * unit.y() + middle.t};
    }

private:
    void makeExact(const Bbox2& box, double rounding);

    double targetLength;
    bool bExactEnough;
    Vector2 unit; // of length 1; its zeros and ones are exact
    Vector2 step; // along the grid
    GridSpot middle{0, 0};
    Point2 atMiddle; // the grid point there
};

} // namespace TESK_KIVO2D
