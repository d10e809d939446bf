#pragma once

#include "Point2.h"
#include "core/EdgeGuard.h"

namespace TESK_KIVO2D {

// True when another fixed edge leaves the apex at less than 60 degrees from its fixed edge to the other
// vertex.
bool isAcute(const Point2* pApex, const Point2* pOther, const EdgeGuard& guard);

// Where to split the fixed edge ab, if it has to be split anywhere.
//
// The middle; but from an apex with a small angle a power of two away. Segments that leave it are then split
// at equal distances, and do not put vertices into each other's circles again and again (Ruppert 1995).
Point2 splitPointOf(const Point2* a, const Point2* b, const EdgeGuard& guard);

} // namespace TESK_KIVO2D
