#pragma once

#include "fwd.h"

#include <cstdint>
#include <vector>

namespace TESK_KIVO2D {

/// Triangles as flat arrays of numbers, as solvers and renderers want them. Vertices are numbered from 0 in
/// the order in which the triangles name them, triangles in the order of their records.
struct MeshArrays {
    /// Stands for "no triangle" among the neighbours.
    static constexpr std::uint32_t noTriangle = 0xFFFFFFFFu;

    /// x and y of each vertex.
    std::vector<double> vCoordinates;
    /// Three vertex numbers a triangle, counter-clockwise.
    std::vector<std::uint32_t> vCorners;
    /// Three triangle numbers a triangle: number i is the neighbour across the edge opposite corner i. On the
    /// border of the listed triangles, `noTriangle`.
    std::vector<std::uint32_t> vNeighbours;
    /// The vertex record behind each vertex number.
    std::vector<Point2*> vVertices;
};

} // namespace TESK_KIVO2D
