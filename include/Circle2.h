#pragma once

#include "Point2.h"
#include "export.h"

#include <cmath>
#include <iosfwd>

namespace TESK_KIVO2D {

/// A circle: centre and squared radius.
class KIVO_API Circle2 {
public:
    /// From the centre's coordinates and the radius squared.
    Circle2(double x, double y, double sqRadius_) : center(x, y), sqRadius(sqRadius_) {}
    /// Copies coordinates and custom index of the centre.
    Circle2(const Point2& center_, double sqRadius_) : center(center_), sqRadius(sqRadius_) {}

    /// The centre, with the custom index that it was given.
    Point2 getCenter() const { return center; }
    /// The radius squared, as it was given.
    double getSqRadius() const { return sqRadius; }
    /// The radius: the root of the squared one.
    double getRadius() const { return std::sqrt(sqRadius); }

private:
    friend KIVO_API std::ostream& operator<<(std::ostream& stream, const Circle2& circ);

    Point2 center;
    double sqRadius;
};

/// Writes "Circle2: ", the centre in the format of `Point2`, ", r=" and the radius.
KIVO_API std::ostream& operator<<(std::ostream& stream, const Circle2& circ);

} // namespace TESK_KIVO2D
