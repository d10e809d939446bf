#include "core/GridAxis.h"

#include <cfloat>
#include <cmath>

namespace TESK_KIVO2D {

void GridAxis::set(double minCoord, double maxCoord, double numCells) {
    // A box that was doubled beyond the largest double ends there.
    const double low = std::fmax(minCoord, -DBL_MAX), high = std::fmin(maxCoord, DBL_MAX);
    preScale = 1;
    if (!std::isfinite(high - low)) preScale = 0x1p-2;
    if (high - low < 1e-290) preScale = 0x1p+100;
    min = low * preScale;
    scale = numCells / (high * preScale - min);
    if (!std::isfinite(scale) || !std::isfinite(min)) {
        scale = 0;
        min = 0;
    }
}

} // namespace TESK_KIVO2D
