#pragma once

#include <MeshArrays.h>

#include <array>
#include <cstddef>

namespace cli {

// Figures of a mesh. Angles are in degrees.
struct MeshQuality {
    static constexpr int binWidth = 5;
    static constexpr std::size_t numBins = 60 / binWidth;

    std::size_t numVertices = 0; // of the triangles
    std::size_t numTriangles = 0;
    double smallestAngle = 0.0;
    double largestAngle = 0.0;
    std::array<std::size_t, numBins> aHistogram = {}; // triangles by their smallest angle
    double minArea = 0.0;
    double maxArea = 0.0;
    double shortestEdge = 0.0;
    double longestEdge = 0.0;
};

// All zero where there are no triangles. Linear.
MeshQuality measureQuality(const TESK_KIVO2D::MeshArrays& arrays);

double smallestAngleOf(const TESK_KIVO2D::MeshArrays& arrays, std::size_t triangle);

} // namespace cli
