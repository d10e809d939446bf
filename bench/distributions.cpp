#include "bench/distributions.h"

#include "bench/RandomSource.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace bench {
namespace {

template<class Make>
Coordinates repeat(std::size_t num, Make make) {
    Coordinates points;
    points.reserve(num);
    for (std::size_t i = 0; i < num; ++i)
        points.push_back(make(i));
    return points;
}

// num points of a square grid, row by row.
template<class Make>
Coordinates onGrid(std::size_t num, Make make) {
    const auto width = static_cast<std::size_t>(std::sqrt(static_cast<double>(num)));
    return repeat(width * width, [&](std::size_t i) {
        return make(static_cast<double>(i % width), static_cast<double>(i / width));
    });
}

} // namespace

Coordinates makePoints(const std::string& kind, std::size_t num) {
    RandomSource source(20240229);
    Coordinates points;
    const auto square = [&](double width, double x0, double y0) {
        const double x = source.uniform(), y = source.uniform();
        return std::pair(x0 + width * x, y0 + width * y);
    };
    if (kind == "uniform") {
        points = repeat(num, [&](std::size_t) { return square(1, 0, 0); });
    } else if (kind == "utm") {
        points = repeat(num, [&](std::size_t) { return square(1000, 5e5, 5e6); });
    } else if (kind == "clusters") {
        const Coordinates centres = repeat(100, [&](std::size_t) { return square(1, 0, 0); });
        points = repeat(num, [&](std::size_t i) {
            const auto& [x, y] = centres[i % centres.size()];
            const double dx = source.gaussian(), dy = source.gaussian();
            return std::pair(x + 0.01 * dx, y + 0.01 * dy);
        });
    } else if (kind == "grid") {
        points = onGrid(num, [](double x, double y) { return std::pair(x, y); });
    } else if (kind == "turnedGrid") {
        const double c = std::cos(pi / 6), s = std::sin(pi / 6);
        points = onGrid(
            num, [&](double x, double y) { return std::pair(5e5 + c * x - s * y, 5e6 + s * x + c * y); });
    } else if (kind == "circle") {
        points = repeat(num, [&](std::size_t) {
            const double angle = 2 * pi * source.uniform();
            return std::pair(std::cos(angle), std::sin(angle));
        });
    } else if (kind == "line") {
        points = repeat(num, [&](std::size_t i) {
            return i + 1 < num ? std::pair(static_cast<double>(i), 0.0) : std::pair(0.5, 1.0);
        });
    } else {
        throw std::invalid_argument("unknown point set " + kind);
    }
    std::shuffle(points.begin(), points.end(), source.bits());
    return points;
}

} // namespace bench
