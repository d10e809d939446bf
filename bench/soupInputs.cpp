#include "bench/soupInputs.h"

#include "Kivo_2D.h"
#include "bench/RandomSource.h"
#include "bench/inputs.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>
#include <unordered_map>

namespace bench {
namespace {

using TESK_KIVO2D::Kivo_2D;
using TESK_KIVO2D::Point2;
using TESK_KIVO2D::Segment2;
using TESK_KIVO2D::Triangle2;

SoupInput trianglesOf(const Kivo_2D& kivo) {
    SoupInput soup;
    std::vector<Point2*> vVertices;
    std::vector<Triangle2*> vTriangles;
    kivo.getVertexPointers(vVertices);
    kivo.getTrianglePointers(vTriangles);
    std::unordered_map<const Point2*, std::size_t> numbers;
    for (const Point2* pVtx : vVertices) {
        numbers.emplace(pVtx, soup.points.size());
        soup.points.emplace_back(pVtx->x(), pVtx->y());
    }
    for (const Triangle2* pT : vTriangles)
        soup.triangles.push_back(
            {numbers[pT->getCorner(0)], numbers[pT->getCorner(1)], numbers[pT->getCorner(2)]});
    return soup;
}

SoupInput makeUniform(std::size_t numTriangles) {
    Kivo_2D kivo;
    kivo.insert(converted(makePoints("uniform", numTriangles / 2)));
    return trianglesOf(kivo);
}

SoupInput makeGrid(std::size_t numTriangles, RandomSource& source) {
    SoupInput soup;
    const auto width = static_cast<std::size_t>(std::sqrt(static_cast<double>(numTriangles) / 2));
    for (std::size_t i = 0; i < (width + 1) * (width + 1); ++i)
        soup.points.emplace_back(i % (width + 1), i / (width + 1));
    for (std::size_t i = 0; i < width * width; ++i) {
        const std::size_t a = i / width * (width + 1) + i % width, b = a + 1, d = a + width + 1, c = d + 1;
        const bool bRising = source.uniform() < 0.5;
        soup.triangles.push_back({a, b, bRising ? c : d});
        soup.triangles.push_back({c, d, bRising ? a : b});
    }
    return soup;
}

// A square field of copies.
SoupInput makeCoast(std::size_t numTriangles) {
    constexpr double trianglesEach = 19000;
    std::ifstream file(KIVO2D_BENCH_DATA "/co_iceland_h.seg");
    std::vector<Segment2> vCoast, vAll;
    for (double x = 0, y = 0, toX = 0, toY = 0; file >> x >> y >> toX >> toY;)
        vCoast.emplace_back(Point2(x, y), Point2(toX, toY));
    if (vCoast.empty()) throw std::runtime_error("no coast");
    TESK_KIVO2D::Bbox2 box;
    for (const Segment2& s : vCoast)
        box.add(s.getSrc());
    const double width = 1.1 * (box.get_maxX() - box.get_minX()),
                 height = 1.1 * (box.get_maxY() - box.get_minY());
    const int side =
        std::max(1, static_cast<int>(std::sqrt(static_cast<double>(numTriangles) / trianglesEach)));
    for (int i = 0; i < side * side; ++i) {
        const double dx = i % side * width, dy = i / side * height;
        for (const Segment2& s : vCoast)
            vAll.emplace_back(Point2(s.getSrc().x() + dx, s.getSrc().y() + dy),
                              Point2(s.getTrg().x() + dx, s.getTrg().y() + dy));
    }
    Kivo_2D kivo;
    kivo.createConstraint(vAll);
    return trianglesOf(kivo);
}

} // namespace

std::vector<std::pair<std::size_t, std::size_t>> SoupInput::edges() const {
    std::vector<std::pair<std::size_t, std::size_t>> result;
    result.reserve(3 * triangles.size());
    for (const auto& [a, b, c] : triangles)
        for (const auto& [p, q] : {std::minmax(a, b), std::minmax(b, c), std::minmax(c, a)})
            result.emplace_back(p, q);
    std::sort(result.begin(), result.end());
    result.erase(std::unique(result.begin(), result.end()), result.end());
    return result;
}

SoupInput makeSoup(const std::string& kind, std::size_t numTriangles) {
    RandomSource source(20240305);
    SoupInput soup;
    if (kind == "uniform") {
        soup = makeUniform(numTriangles);
    } else if (kind == "grid") {
        soup = makeGrid(numTriangles, source);
    } else if (kind == "coast") {
        soup = makeCoast(numTriangles);
    } else {
        throw std::invalid_argument("unknown soup " + kind);
    }
    for (std::size_t i = soup.triangles.size(); i > 1; --i) {
        std::swap(soup.triangles[i - 1], soup.triangles[source.bits()() % i]);
        auto& corners = soup.triangles[i - 1];
        std::rotate(corners.begin(), corners.begin() + source.bits()() % 3, corners.end());
    }
    return soup;
}

Coordinates makeKnives(const std::string& kind) {
    if (kind == "long") return {{0.01, 0.37}, {0.99, 0.61}};
    RandomSource source(20240306);
    Coordinates ends(2 * std::stoul(kind));
    for (auto& [x, y] : ends) {
        x = source.uniform();
        y = source.uniform();
    }
    return ends;
}

} // namespace bench
