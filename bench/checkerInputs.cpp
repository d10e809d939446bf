#include "bench/checkerInputs.h"

#include "bench/RandomSource.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <functional>
#include <map>
#include <stdexcept>

namespace bench {
namespace {

using TESK_KIVO2D::Point2;
using TESK_KIVO2D::Segment2;

Point2 onCircle(double radius, double angle) {
    return Point2(radius * std::cos(angle), radius * std::sin(angle));
}

Segment2 shortOne(RandomSource& random, double length) {
    const double x = random.uniform(), y = random.uniform();
    const Point2 step = onCircle(length, 2 * pi * random.uniform());
    return Segment2(Point2(x, y), Point2(x + step.x(), y + step.y()));
}

// Corners of the box are apart by a ten millionth of its sides from one to the next.
Segment2 diagonal(double i) { return Segment2(Point2(1e-7 * i, 0), Point2(1 + 1e-7 * i, 1)); }

Segment2 turnedDiagonal(double i) {
    constexpr double angle = 0.6;
    const Point2 half = onCircle(0.5, angle), middle = onCircle(1e-7 * i, angle + pi / 2);
    return Segment2(Point2(middle.x() - half.x(), middle.y() - half.y()),
                    Point2(middle.x() + half.x(), middle.y() + half.y()));
}

// Rows do not meet, as each stays in the lower half of its strip at both ends.
Segment2 hatch(RandomSource& random, double row, double size) {
    const double left = (row + random.uniform() / 2) / size, right = (row + random.uniform() / 2) / size;
    return Segment2(Point2(0, left), Point2(1, 0.7 + right));
}

Segment2 chord(RandomSource& random) {
    const double angle = pi * random.uniform(), opening = 1e-3 * random.uniform();
    return Segment2(onCircle(1, angle), onCircle(1, angle + pi + opening));
}

// Products of small integers: the ends lie on the line as they are.
Segment2 overlap(RandomSource& random, double slope) {
    const double from = std::floor(0x1p40 * random.uniform());
    const double to = from + 1 + std::floor(0x1p36 * random.uniform());
    return Segment2(Point2(3 * from, slope * from), Point2(3 * to, slope * to));
}

// In cells of the size 1, and above or below the middle of a cell on the diagonal.
Segment2 latticeOne(std::size_t i, std::size_t numColumns) {
    const auto x = static_cast<double>(i % numColumns), y = static_cast<double>(i / numColumns);
    return Segment2(Point2(x + 0.1, y + 0.75), Point2(x + 0.6, y + 0.75));
}

} // namespace

Segments makeSegments(const std::string& kind, std::size_t numSegments) {
    RandomSource random(29);
    const auto size = static_cast<double>(numSegments);
    const auto numColumns = static_cast<std::size_t>(std::sqrt(size));
    const double shortLength = 1.5 / std::sqrt(size);
    const std::map<std::string, std::function<Segment2(std::size_t)>> recipes = {
        {"random", [&](std::size_t) { return shortOne(random, shortLength); }},
        {"diagonals", [](std::size_t i) { return diagonal(static_cast<double>(i)); }},
        {"turnedDiagonals", [](std::size_t i) { return turnedDiagonal(static_cast<double>(i)); }},
        {"star", [&](std::size_t) { return Segment2(Point2(0, 0), onCircle(1, 2 * pi * random.uniform())); }},
        {"fan",
         [&](std::size_t) {
             const double angle = 2 * pi * random.uniform();
             return Segment2(onCircle(1e-6, angle), onCircle(1, angle));
         }},
        {"hatching", [&](std::size_t i) { return hatch(random, static_cast<double>(i), size); }},
        {"crossing", [&](std::size_t) { return chord(random); }},
        {"overlapLevel", [&](std::size_t) { return overlap(random, 0); }},
        {"overlapSlanted", [&](std::size_t) { return overlap(random, 7); }},
        {"longOverRandom", [&](std::size_t) { return shortOne(random, shortLength); }},
        {"longOverLattice", [&](std::size_t i) { return latticeOne(i, numColumns); }},
    };
    const auto& recipe = recipes.at(kind);
    Segments segments;
    segments.reserve(numSegments + 1);
    for (std::size_t i = 0; i < numSegments; ++i)
        segments.push_back(recipe(i));
    if (kind.rfind("longOver", 0) == 0) {
        const double far = kind == "longOverRandom" ? 1 : static_cast<double>(numColumns);
        segments.emplace_back(Point2(0, 0), Point2(far, far));
    }
    std::shuffle(segments.begin(), segments.end(), random.bits());
    return segments;
}

Segments readSegments(const std::string& name) {
    std::ifstream file(std::string(KIVO2D_BENCH_DATA) + "/" + name + ".seg");
    Segments segments;
    for (double x1 = 0, y1 = 0, x2 = 0, y2 = 0; file >> x1 >> y1 >> x2 >> y2;)
        segments.emplace_back(Point2(x1, y1), Point2(x2, y2));
    if (segments.empty()) throw std::runtime_error("no segments of " + name);
    return segments;
}

} // namespace bench
