// Triangles that come from elsewhere, and knives.
#include "core/Dt2.h"

namespace TESK_KIVO2D {

Zone2* Dt2::importTriangles(const std::vector<Point2>& /*vCorners*/, bool /*bVerbose*/) { return nullptr; }

ConstraintGraph2* Dt2::cutTriangles(const std::vector<Segment2>& /*vKnives*/) { return nullptr; }

} // namespace TESK_KIVO2D
