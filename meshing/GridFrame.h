#pragma once

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
class GridFrame {
public:
    // The direction is finite and not (0, 0), and may be of any length.
    GridFrame(const Vector2& direction, double gridLength);

    double length() const { return targetLength; }
    // The grid point of a column and a row. The only place that computes one: so the next run finds the same
    // doubles. The zero turns -0 into 0.
    Point2 pointAt(std::int64_t column, std::int64_t row) const {
        const double i = static_cast<double>(column), j = static_cast<double>(row);
        return Point2(targetLength * (i * ux - j * uy) + 0.0, targetLength * (i * uy + j * ux) + 0.0);
    }
    // Off by some units in the last place of the largest coordinate of the point.
    GridSpot spotOf(const Point2& p) const {
        const double x = p.x() / targetLength, y = p.y() / targetLength;
        return {x * ux + y * uy, y * ux - x * uy};
    }

private:
    double targetLength;
    double ux = 0, uy = 0; // the unit vector; its zeros and ones are exact
};

} // namespace TESK_KIVO2D
