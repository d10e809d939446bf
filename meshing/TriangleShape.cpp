#include "meshing/TriangleShape.h"

namespace TESK_KIVO2D {

// The corners of so small a triangle lie near the origin, so their coordinates stay moderate.
void TriangleShape::enlarge(const Triangle2& t) {
    double extent = 0;
    for (int i = 0; i < 3; ++i)
        extent = std::max(extent, t.getCorner(i)->getMaxAbs());
    if (!(extent > 0)) return;
    scale = std::ldexp(1.0, std::clamp(-std::ilogb(extent), -1022, 1022));
    measure(t);
}

} // namespace TESK_KIVO2D
