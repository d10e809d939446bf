#pragma once

#include "cli/PointTable.h"

#include <Triangle2.h>

#include <cstddef>

namespace cli {

// Gives a point of the table, by its position, the attributes of a place on the line from one to another.
void interpolateAlong(PointTable& table, std::size_t position, std::size_t source, std::size_t target);

// The same for a place inside a triangle whose corners are points of the table.
void interpolateWithin(PointTable& table, std::size_t position, const TESK_KIVO2D::Triangle2& triangle);

} // namespace cli
