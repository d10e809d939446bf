#pragma once

#include "Point2.h"
#include "Segment2.h"
#include "Vector2.h"

#include <cmath>

namespace TESK_KIVO2D {

// True when all coordinates are numbers, and none is infinite.
inline bool isFinite(const Point2& p) { return std::isfinite(p.x()) && std::isfinite(p.y()); }
inline bool isFinite(const Vector2& v) { return std::isfinite(v.x()) && std::isfinite(v.y()); }
inline bool isFinite(const Segment2& s) { return isFinite(s.getSrc()) && isFinite(s.getTrg()); }

} // namespace TESK_KIVO2D
