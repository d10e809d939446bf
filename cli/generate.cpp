#include "cli/generate.h"

#include <cmath>
#include <random>
#include <utility>

namespace cli {

namespace {

constexpr double PI = 3.14159265358979323846;

struct Xy {
    double x, y;
};

// Of this command's own making, because the distributions of the standard library differ between its makers.
class RandomSource {
public:
    explicit RandomSource(std::uint64_t seed) : engine(seed) {}
    // In [0, 1), 53 bits.
    double uniform() { return static_cast<double>(engine() >> 11) * 0x1p-53; }
    // Two independent normal values, by the method of Box and Muller.
    Xy normal() {
        const double radius = std::sqrt(-2.0 * std::log(1.0 - uniform()));
        const double angle = 2.0 * PI * uniform();
        return {radius * std::cos(angle), radius * std::sin(angle)};
    }

private:
    std::mt19937_64 engine;
};

using Generator = std::vector<Xy> (*)(std::size_t count, RandomSource& random);

std::vector<Xy> uniform(std::size_t count, RandomSource& random) {
    std::vector<Xy> vPoints(count);
    for (Xy& point : vPoints) {
        point.x = random.uniform();
        point.y = random.uniform();
    }
    return vPoints;
}

std::vector<Xy> gaussian(std::size_t count, RandomSource& random) {
    std::vector<Xy> vPoints(count);
    for (Xy& point : vPoints) {
        const Xy normal = random.normal();
        point = {0.5 + normal.x / 8.0, 0.5 + normal.y / 8.0};
    }
    return vPoints;
}

std::vector<Xy> clusters(std::size_t count, RandomSource& random) {
    const auto numClusters = static_cast<std::size_t>(std::ceil(std::sqrt(static_cast<double>(count))));
    const std::vector<Xy> vCentres = uniform(numClusters, random);
    std::vector<Xy> vPoints(count);
    for (std::size_t i = 0; i < count; ++i) {
        const Xy& centre = vCentres[i % numClusters];
        const Xy normal = random.normal();
        vPoints[i] = {centre.x + normal.x / 200.0, centre.y + normal.y / 200.0};
    }
    return vPoints;
}

std::vector<Xy> grid(std::size_t count, RandomSource&) {
    const auto columns = static_cast<std::size_t>(std::ceil(std::sqrt(static_cast<double>(count))));
    std::vector<Xy> vPoints(count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t row = i / columns;
        const std::size_t column = i % columns;
        vPoints[i] = {static_cast<double>(column) / static_cast<double>(columns),
                      static_cast<double>(row) / static_cast<double>(columns)};
    }
    return vPoints;
}

std::vector<Xy> circle(std::size_t count, RandomSource&) {
    std::vector<Xy> vPoints(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double angle = 2.0 * PI * static_cast<double>(i) / static_cast<double>(count);
        vPoints[i] = {0.5 + 0.5 * std::cos(angle), 0.5 + 0.5 * std::sin(angle)};
    }
    return vPoints;
}

std::vector<Xy> line(std::size_t count, RandomSource& random) {
    std::vector<Xy> vPoints(count);
    for (Xy& point : vPoints) {
        point.x = random.uniform();
        point.y = point.x / 2.0;
    }
    return vPoints;
}

const std::vector<std::pair<std::string, Generator>>& generators() {
    static const std::vector<std::pair<std::string, Generator>> vGenerators{
        {"uniform", &uniform}, {"gaussian", &gaussian}, {"clusters", &clusters},
        {"grid", &grid},       {"circle", &circle},     {"line", &line}};
    return vGenerators;
}

std::vector<std::string> namesOfGenerators() {
    std::vector<std::string> vNames;
    for (const auto& [name, generator] : generators())
        vNames.push_back(name);
    return vNames;
}

} // namespace

const std::vector<std::string>& generatorKinds() {
    static const std::vector<std::string> vNames = namesOfGenerators();
    return vNames;
}

PointTable generatePoints(const GenerateOptions& options) {
    PointTable table;
    table.vPoints.reserve(options.count);
    RandomSource random(options.seed);
    for (const auto& [name, generator] : generators()) {
        if (name != options.kind) continue;
        for (const Xy& point : generator(options.count, random)) {
            table.vPoints.emplace_back(options.offsetX + options.size * point.x,
                                       options.offsetY + options.size * point.y);
            table.vPoints.back().setCustomIndex(static_cast<int>(table.vPoints.size() - 1));
        }
    }
    return table;
}

} // namespace cli
