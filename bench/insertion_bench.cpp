// Insertion and location against the rival, in one run: for each input the two take turns.
#include "Kivo_2D.h"
#include "bench/distributions.h"
#include "bench/rival.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace {

using TESK_KIVO2D::Kivo_2D;
using TESK_KIVO2D::Point2;

std::vector<Point2> converted(const bench::Coordinates& points) {
    std::vector<Point2> result;
    result.reserve(points.size());
    for (const auto& [x, y] : points)
        result.emplace_back(x, y);
    return result;
}

unsigned int expected(std::size_t num) { return static_cast<unsigned int>(num); }

// The inputs are made once, when first used; the last one is kept.
const bench::Coordinates& input(const std::string& kind, std::size_t num) {
    static std::string lastKind;
    static std::size_t lastNum = 0;
    static bench::Coordinates points;
    if (kind != lastKind || num != lastNum) points = bench::makePoints(kind, num);
    lastKind = kind;
    lastNum = num;
    return points;
}

void batchKivo(benchmark::State& state, const std::string& kind, std::size_t num) {
    const std::vector<Point2> vPoints = converted(input(kind, num));
    for (auto _ : state) {
        Kivo_2D kivo(expected(num));
        std::vector<Point2*> vHandles;
        kivo.insert(vPoints, vHandles);
        benchmark::DoNotOptimize(kivo.numberOfTriangles());
    }
}

void batchRival(benchmark::State& state, const std::string& kind, std::size_t num) {
    const bench::Coordinates& points = input(kind, num);
    for (auto _ : state)
        benchmark::DoNotOptimize(bench::rival::triangulate(points));
}

void oneByOneKivo(benchmark::State& state, const std::string& kind, std::size_t num) {
    const std::vector<Point2> vPoints = converted(input(kind, num));
    for (auto _ : state) {
        Kivo_2D kivo(expected(num));
        for (const Point2& p : vPoints)
            kivo.insert(p);
        benchmark::DoNotOptimize(kivo.numberOfTriangles());
    }
}

void oneByOneRival(benchmark::State& state, const std::string& kind, std::size_t num) {
    const bench::Coordinates& points = input(kind, num);
    for (auto _ : state) {
        bench::rival::Hierarchy hierarchy;
        for (const auto& [x, y] : points)
            hierarchy.insert(x, y);
    }
}

bench::Coordinates queries(std::size_t num) {
    bench::Coordinates points = bench::makePoints("uniform", 2 * num);
    points.erase(points.begin(), points.begin() + static_cast<std::ptrdiff_t>(num));
    return points;
}

void locateKivo(benchmark::State& state, const std::string& kind, std::size_t num) {
    Kivo_2D kivo(expected(num));
    kivo.insert(converted(input(kind, num)));
    const std::vector<Point2> vQueries = converted(queries(num));
    for (auto _ : state) {
        for (const Point2& q : vQueries)
            benchmark::DoNotOptimize(kivo.locate(q));
    }
}

void locateRival(benchmark::State& state, const std::string& kind, std::size_t num) {
    bench::rival::Hierarchy hierarchy;
    hierarchy.insertAll(input(kind, num));
    const bench::Coordinates points = queries(num);
    for (auto _ : state) {
        for (const auto& [x, y] : points)
            benchmark::DoNotOptimize(hierarchy.locate(x, y));
    }
}

using Body = void (*)(benchmark::State&, const std::string&, std::size_t);

void add(const std::string& task, const std::string& kind, std::size_t num, Body kivo, Body rival) {
    const std::string name = task + "/" + kind + "/" + std::to_string(num) + "/";
    const auto registered = [&](const std::string& who, Body body) {
        benchmark::RegisterBenchmark((name + who).c_str(), body, kind, num)
            ->Unit(benchmark::kMillisecond)
            ->Iterations(1)
            ->UseRealTime();
    };
    registered("kivo", kivo);
    if (rival != nullptr) registered("cgal", rival);
}

} // namespace

int main(int argc, char** argv) {
    constexpr std::size_t million = 1000000;
    for (const char* kind : {"uniform", "clusters", "utm", "grid", "turnedGrid", "circle"}) {
        add("batch", kind, million, batchKivo, batchRival);
    }
    // The rival does not end within two minutes on this one.
    add("batch", "line", million, batchKivo, nullptr);
    add("oneByOne", "uniform", million, oneByOneKivo, oneByOneRival);
    add("locate", "uniform", million, locateKivo, locateRival);
    add("batch", "uniform", 10 * million, batchKivo, batchRival);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return EXIT_FAILURE;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return EXIT_SUCCESS;
}
