#pragma once

#include <MeshArrays.h>
#include <Triangle2.h>

#include <cstddef>

namespace cli {

// In degrees, to a few units in the last place, for all finite coordinates.
double smallestAngleOf(const TESK_KIVO2D::Triangle2& triangle);
double smallestAngleOf(const TESK_KIVO2D::MeshArrays& arrays, std::size_t triangle);

} // namespace cli
