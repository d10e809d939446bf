#pragma once

#include "cli/Mesh.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace cli {

// What hangs together by edges that are no barriers is one part.
struct Parts {
    std::size_t numParts = 0;
    std::vector<std::uint32_t> vPartOf; // by triangle, from 0 in the order of their first triangles
};

// Edges are named by their place in the array of neighbours. Linear.
Parts partsOf(const TESK_KIVO2D::MeshArrays& arrays,
              const std::function<bool(std::size_t edge)>& isBarrier);

// The pieces into which cuts divide the triangles.
Parts piecesOf(const Mesh& mesh);

// The number of a colour for each part, from 0, such that parts on both sides of an edge have different ones.
std::vector<std::size_t> colorsOf(const Parts& parts, const TESK_KIVO2D::MeshArrays& arrays);

} // namespace cli
