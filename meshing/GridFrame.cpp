#include "meshing/GridFrame.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace TESK_KIVO2D {
namespace {

// Points of the grid are off by some units in the last place of the largest coordinate. The grid's length
// holds this many of them at least.
constexpr double minUnitsPerLength = 128;
// A step along the grid may be rounded by this share of its length.
constexpr double maxShareOfRounding = 1e-9;

Vector2 unitVector(const Vector2& direction) {
    // Near 1 first, where nothing overflows. A coordinate that underflows does not matter beside the other.
    const int exponent = std::ilogb(std::max(std::fabs(direction.x()), std::fabs(direction.y())));
    const double x = std::ldexp(direction.x(), -exponent), y = std::ldexp(direction.y(), -exponent);
    const double size = std::hypot(x, y);
    return Vector2(x / size, y / size);
}

} // namespace

GridFrame::GridFrame(const Vector2& direction, double gridLength, double maxAbsCoord)
    : targetLength(gridLength), unit(unitVector(direction)) {
    const double unitOfDoubles =
        std::nextafter(maxAbsCoord, std::numeric_limits<double>::infinity()) - maxAbsCoord;
    // Beyond 2^1022 steps along both axes, together, might overflow.
    bExactEnough = targetLength >= minUnitsPerLength * unitOfDoubles && maxAbsCoord <= 0x1p1022;
    step = unit * targetLength;
    const double rounding = 2 * unitOfDoubles;
    const bool bAxisParallel = unit.x() == 0 || unit.y() == 0; // rectangles in any case
    if (bAxisParallel || !bExactEnough || targetLength > maxAbsCoord) return;
    if (rounding > maxShareOfRounding * targetLength) return;
    step = Vector2(std::round(step.x() / rounding) * rounding, std::round(step.y() / rounding) * rounding);
    targetLength = step.length();
    unit = step / targetLength;
}

} // namespace TESK_KIVO2D
