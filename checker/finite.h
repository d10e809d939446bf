#pragma once

#include "Segment2.h"

#include <cmath>

namespace TESK_KIVO2D {

inline bool isFinite(const Segment2& segment) {
    const Point2 src = segment.getSrc(), trg = segment.getTrg();
    return std::isfinite(src.x()) && std::isfinite(src.y()) && std::isfinite(trg.x()) &&
           std::isfinite(trg.y());
}

} // namespace TESK_KIVO2D
