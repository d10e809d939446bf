#include "meshing/GridFrame.h"

#include <algorithm>
#include <cmath>

namespace TESK_KIVO2D {

GridFrame::GridFrame(const Vector2& direction, double gridLength) : targetLength(gridLength) {
    // Near 1 first, where nothing overflows. A coordinate that underflows does not matter beside the other.
    const int exponent = std::ilogb(std::max(std::fabs(direction.x()), std::fabs(direction.y())));
    const double x = std::ldexp(direction.x(), -exponent), y = std::ldexp(direction.y(), -exponent);
    const double size = std::hypot(x, y);
    ux = x / size + 0.0;
    uy = y / size + 0.0;
}

} // namespace TESK_KIVO2D
