#pragma once

#include "cli/Mesh.h"

#include <cstddef>
#include <functional>
#include <vector>

namespace cli {

// Edges are named by their place in the array of neighbours. Linear.
Parts partsOf(const TESK_KIVO2D::MeshArrays& arrays, const std::function<bool(std::size_t edge)>& isBarrier);

// The pieces into which cuts divide the triangles.
Parts piecesOf(const Mesh& mesh);

// The number of a colour for each part, from 0. Parts on both sides of an edge have different ones, unless
// too many parts meet at one.
std::vector<std::size_t> colorsOf(const Parts& parts, const TESK_KIVO2D::MeshArrays& arrays,
                                  std::size_t numColors);

} // namespace cli
