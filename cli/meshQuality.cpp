#include "cli/meshQuality.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <limits>
#include <numbers>

namespace cli {

namespace {

using TESK_KIVO2D::MeshArrays;

struct Xy {
    double x, y;
};

// The edges of a triangle, counter-clockwise, edge i opposite corner i, in units of 2 to the power of the
// exponent: the longest is about 1 then, so products neither overflow nor vanish, and nothing is rounded.
struct Edges {
    std::array<Xy, 3> aEdges = {};
    int exponent = 0;

    double area() const {
        const double twice = aEdges[0].x * aEdges[1].y - aEdges[0].y * aEdges[1].x;
        return std::ldexp(twice, 2 * exponent - 1);
    }
    double length(std::size_t i) const { return std::ldexp(std::hypot(aEdges[i].x, aEdges[i].y), exponent); }
    double angle(std::size_t i) const {
        const Xy& in = aEdges[(i + 2) % 3];
        const Xy& out = aEdges[(i + 1) % 3];
        const double radians =
            std::atan2(std::fabs(in.x * out.y - in.y * out.x), -(in.x * out.x + in.y * out.y));
        return radians * (180.0 / std::numbers::pi);
    }
};

Edges edgesOf(const MeshArrays& arrays, std::size_t triangle) {
    constexpr int DOWN = 2; // the difference of two quarters is finite
    std::array<Xy, 3> aCorners;
    double largest = 0.0;
    for (std::size_t i = 0; i < 3; ++i) {
        const double* const p = &arrays.vCoordinates[std::size_t{2} * arrays.vCorners[3 * triangle + i]];
        aCorners[i] = {p[0], p[1]};
        largest = std::max({largest, std::fabs(p[0]), std::fabs(p[1])});
    }
    const int down = largest > std::ldexp(DBL_MAX, -DOWN) ? DOWN : 0;
    Edges edges;
    double longest = 0.0;
    for (std::size_t i = 0; i < 3; ++i) {
        const Xy& from = aCorners[(i + 1) % 3];
        const Xy& to = aCorners[(i + 2) % 3];
        Xy& edge = edges.aEdges[i];
        edge = {std::ldexp(to.x, -down) - std::ldexp(from.x, -down),
                std::ldexp(to.y, -down) - std::ldexp(from.y, -down)};
        longest = std::max({longest, std::fabs(edge.x), std::fabs(edge.y)});
    }
    int exponent = 0;
    std::frexp(longest, &exponent);
    for (Xy& edge : edges.aEdges)
        edge = {std::ldexp(edge.x, -exponent), std::ldexp(edge.y, -exponent)};
    edges.exponent = exponent + down;
    return edges;
}

void add(MeshQuality& quality, const Edges& edges) {
    double smallest = 180.0;
    for (std::size_t i = 0; i < 3; ++i) {
        smallest = std::min(smallest, edges.angle(i));
        quality.largestAngle = std::max(quality.largestAngle, edges.angle(i));
        quality.shortestEdge = std::min(quality.shortestEdge, edges.length(i));
        quality.longestEdge = std::max(quality.longestEdge, edges.length(i));
    }
    quality.smallestAngle = std::min(quality.smallestAngle, smallest);
    const auto bin = static_cast<std::size_t>(smallest / MeshQuality::binWidth);
    ++quality.aHistogram[std::min(bin, MeshQuality::numBins - 1)]; // rounding may lift 60 degrees
    quality.minArea = std::min(quality.minArea, edges.area());
    quality.maxArea = std::max(quality.maxArea, edges.area());
}

} // namespace

MeshQuality measureQuality(const MeshArrays& arrays) {
    MeshQuality quality;
    quality.numVertices = arrays.vVertices.size();
    quality.numTriangles = arrays.vCorners.size() / 3;
    if (quality.numTriangles == 0) return quality;
    quality.smallestAngle = 180.0;
    quality.minArea = quality.shortestEdge = std::numeric_limits<double>::infinity();
    for (std::size_t triangle = 0; triangle < quality.numTriangles; ++triangle)
        add(quality, edgesOf(arrays, triangle));
    return quality;
}

double smallestAngleOf(const MeshArrays& arrays, std::size_t triangle) {
    const Edges edges = edgesOf(arrays, triangle);
    return std::min({edges.angle(0), edges.angle(1), edges.angle(2)});
}

} // namespace cli
