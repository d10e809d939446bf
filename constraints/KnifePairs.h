#pragma once

#include "constraints/KnifeCut.h"

#include <vector>

namespace TESK_KIVO2D {

// Gives knives that meet the same stops there: the point where two cross, the ends of what they have in
// common, an end of one that lies on the other; a common end is a stop of both anyway. Each pair is looked at
// once, so that no place is rounded in two ways. Knives that meet no other ones cost O(log n).
void addSharedStops(std::vector<KnifeCut>& vCuts);

} // namespace TESK_KIVO2D
