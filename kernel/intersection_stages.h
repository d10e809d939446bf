#pragma once

#include "Point2.h"

#include <optional>

namespace TESK_KIVO2D::stages {

struct Coordinates {
    double x, y;
};

// Where the lines p1p2 and p3p4 meet, each coordinate rounded towards zero once. Nothing where that is not
// certain: next to parallel lines and for coordinates of extreme size. Clients call getIntersectionCoords;
// tests set this stage against others.
std::optional<Coordinates> intersectionDoubleDouble(const Point2& p1, const Point2& p2, const Point2& p3,
                                                    const Point2& p4);

} // namespace TESK_KIVO2D::stages
