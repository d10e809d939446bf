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

GridFrame::GridFrame(const Vector2& direction, double gridLength, const Bbox2& box)
    : targetLength(gridLength), unit(unitVector(direction)), step(unit * gridLength), atMiddle(0, 0) {
    const double largest = std::max(box.getMinPoint().getMaxAbs(), box.getMaxPoint().getMaxAbs());
    const double unitOfDoubles = std::nextafter(largest, std::numeric_limits<double>::infinity()) - largest;
    // Beyond 2^1022 steps along both axes, together, might overflow.
    bExactEnough = targetLength >= minUnitsPerLength * unitOfDoubles && largest <= 0x1p1022;
    const bool bAxisParallel = unit.x() == 0 || unit.y() == 0; // rectangles in any case
    if (!bAxisParallel && bExactEnough && targetLength <= largest) makeExact(box, 2 * unitOfDoubles);
}

void GridFrame::makeExact(const Bbox2& box, double rounding) {
    if (rounding > maxShareOfRounding * targetLength) return;
    const auto rounded = [rounding](double value) { return std::round(value / rounding) * rounding; };
    const Point2 low = box.getMinPoint(), high = box.getMaxPoint();
    const GridSpot center = spotOf(Point2(low.x() / 2 + high.x() / 2, low.y() / 2 + high.y() / 2));
    const GridSpot nearest{std::round(center.s), std::round(center.t)};
    atMiddle = Point2(rounded(nearest.s * step.x() - nearest.t * step.y()),
                      rounded(nearest.s * step.y() + nearest.t * step.x()));
    middle = nearest;
    step = Vector2(rounded(step.x()), rounded(step.y()));
    targetLength = step.length();
    unit = step / targetLength;
}

} // namespace TESK_KIVO2D
