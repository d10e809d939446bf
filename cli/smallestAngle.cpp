#include "cli/smallestAngle.h"

#include <algorithm>
#include <array>
#include <cfloat>
#include <cmath>
#include <numbers>

namespace cli {

namespace {

struct Xy {
    double x, y;
};

using Corners = std::array<Xy, 3>;

// The edges, counter-clockwise, edge i opposite corner i, divided by a power of two: the longest is about 1
// then, so products neither overflow nor vanish, and nothing is rounded.
std::array<Xy, 3> edgesOf(const Corners& aCorners) {
    constexpr int DOWN = -2; // the difference of two quarters is finite
    double largest = 0.0;
    for (const Xy& p : aCorners)
        largest = std::max({largest, std::fabs(p.x), std::fabs(p.y)});
    const double factor = largest > std::ldexp(DBL_MAX, DOWN) ? std::ldexp(1.0, DOWN) : 1.0;
    std::array<Xy, 3> aEdges{};
    double longest = 0.0;
    for (std::size_t i = 0; i < 3; ++i) {
        const Xy& from = aCorners[(i + 1) % 3];
        const Xy& to = aCorners[(i + 2) % 3];
        aEdges[i] = {to.x * factor - from.x * factor, to.y * factor - from.y * factor};
        longest = std::max({longest, std::fabs(aEdges[i].x), std::fabs(aEdges[i].y)});
    }
    int exponent = 0;
    std::frexp(longest, &exponent);
    for (Xy& edge : aEdges)
        edge = {std::ldexp(edge.x, -exponent), std::ldexp(edge.y, -exponent)};
    return aEdges;
}

double smallestAngle(const Corners& aCorners) {
    const std::array<Xy, 3> aEdges = edgesOf(aCorners);
    double smallest = std::numbers::pi;
    for (std::size_t i = 0; i < 3; ++i) {
        const Xy& in = aEdges[(i + 2) % 3];
        const Xy& out = aEdges[(i + 1) % 3];
        const double cross = std::fabs(in.x * out.y - in.y * out.x);
        smallest = std::min(smallest, std::atan2(cross, -(in.x * out.x + in.y * out.y)));
    }
    return smallest * (180.0 / std::numbers::pi);
}

} // namespace

double smallestAngleOf(const TESK_KIVO2D::Triangle2& triangle) {
    Corners aCorners{};
    for (int i = 0; i < 3; ++i)
        aCorners[static_cast<std::size_t>(i)] = {triangle.getCorner(i)->x(), triangle.getCorner(i)->y()};
    return smallestAngle(aCorners);
}

double smallestAngleOf(const TESK_KIVO2D::MeshArrays& arrays, std::size_t triangle) {
    Corners aCorners{};
    for (std::size_t i = 0; i < 3; ++i) {
        const double* const p = &arrays.vCoordinates[std::size_t{2} * arrays.vCorners[3 * triangle + i]];
        aCorners[i] = {p[0], p[1]};
    }
    return smallestAngle(aCorners);
}

} // namespace cli
