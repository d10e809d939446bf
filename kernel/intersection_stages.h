#pragma once

#include "Point2.h"

#include <optional>

namespace TESK_KIVO2D::stages {

struct Coordinates {
    double x, y;
};

// To nearest means to a double that the exact value is off by at most 5/8 of a unit in the last place, and
// beyond no other double: what lies between two doubles still does.
enum Rounding { TOWARDS_ZERO, TO_NEAREST };

// Where the lines p1p2 and p3p4 meet, each coordinate rounded once. Nothing where that is not certain: next
// to parallel lines and for coordinates of extreme size. Clients call getIntersectionCoords and
// getNearestIntersection; tests set this stage against others.
std::optional<Coordinates> intersectionDoubleDouble(const Point2& p1, const Point2& p2, const Point2& p3,
                                                    const Point2& p4, Rounding rounding = TOWARDS_ZERO);

} // namespace TESK_KIVO2D::stages
