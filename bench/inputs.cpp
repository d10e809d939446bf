#include "bench/inputs.h"

namespace bench {

std::vector<TESK_KIVO2D::Point2> converted(const Coordinates& points) {
    std::vector<TESK_KIVO2D::Point2> result;
    result.reserve(points.size());
    for (const auto& [x, y] : points)
        result.emplace_back(x, y);
    return result;
}

const Coordinates& input(const std::string& kind, std::size_t num) {
    static std::string lastKind;
    static std::size_t lastNum = 0;
    static Coordinates points;
    if (kind != lastKind || num != lastNum) points = makePoints(kind, num);
    lastKind = kind;
    lastNum = num;
    return points;
}

Coordinates queries(std::size_t num) {
    Coordinates points = makePoints("uniform", 2 * num);
    points.erase(points.begin(), points.begin() + static_cast<std::ptrdiff_t>(num));
    return points;
}

} // namespace bench
