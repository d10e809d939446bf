#include "bench/constraintInputs.h"

#include "bench/RandomSource.h"

#include <stdexcept>

namespace bench {
namespace {

// radius(angle) is the distance of a corner from the centre.
template<class Radius>
void addPolygon(ConstraintInput& input, std::size_t numEdges, double centerX, double centerY, Radius radius) {
    const std::size_t first = input.corners.size();
    for (std::size_t i = 0; i < numEdges; ++i) {
        const double angle = 2 * pi * static_cast<double>(i) / static_cast<double>(numEdges);
        const double r = radius(angle);
        input.corners.emplace_back(centerX + r * std::cos(angle), centerY + r * std::sin(angle));
        input.segments.emplace_back(first + i, first + (i + 1) % numEdges);
    }
    input.groupEnds.push_back(input.segments.size());
}

// Three lobes and seven smaller ones, with noise that makes the edges much longer than their distance.
void addRing(ConstraintInput& input) {
    RandomSource source(20240301);
    addPolygon(input, 100000, 0.5, 0.5, [&](double angle) {
        const double noise = 0.001 * (2 * source.uniform() - 1);
        return 0.35 + 0.06 * std::sin(3 * angle) + 0.03 * std::sin(7 * angle) + noise;
    });
}

void addPolygons(ConstraintInput& input) {
    RandomSource source(20240302);
    constexpr int perSide = 100;
    for (int i = 0; i < perSide * perSide; ++i) {
        const std::size_t numEdges = 10 + source.bits()() % 41;
        const double size = 0.2 + 0.28 * source.uniform(); // of a cell
        addPolygon(input, numEdges, (i % perSide + 0.5) / perSide, (i / perSide + 0.5) / perSide,
                   [&](double) { return size * (1 - 0.5 * source.uniform()) / perSide; });
    }
}

void addCrossings(ConstraintInput& input, std::size_t numSegments) {
    RandomSource source(20240303);
    constexpr double halfLength = 0.04;
    for (std::size_t i = 0; i < numSegments; ++i) {
        const double x = source.uniform(), y = source.uniform(), angle = pi * source.uniform();
        const double dx = halfLength * std::cos(angle), dy = halfLength * std::sin(angle);
        input.corners.emplace_back(x - dx, y - dy);
        input.corners.emplace_back(x + dx, y + dy);
        input.segments.emplace_back(2 * i, 2 * i + 1);
    }
    input.groupEnds.push_back(numSegments);
}

} // namespace

ConstraintInput makeConstraints(const std::string& kind, std::size_t numPoints) {
    ConstraintInput input;
    if (kind == "crossings") {
        addCrossings(input, numPoints / 2);
        return input;
    }
    if (kind == "ring") {
        addRing(input);
    } else if (kind == "polygons") {
        addPolygons(input);
    } else {
        throw std::invalid_argument("unknown constraint set " + kind);
    }
    input.points = makePoints("uniform", numPoints);
    return input;
}

ConstraintInput makeStrip(std::size_t numPoints) {
    RandomSource source(20240304);
    ConstraintInput input;
    const double length = static_cast<double>(numPoints);
    for (std::size_t i = 0; i < numPoints; ++i) {
        const double x = length * source.uniform();
        input.points.emplace_back(x, source.uniform() - 0.5);
    }
    input.corners = {{-1, 0}, {length + 1, 0}};
    input.segments = {{0, 1}};
    input.groupEnds = {1};
    return input;
}

} // namespace bench
