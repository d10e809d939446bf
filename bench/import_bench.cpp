// Import of triangles and cutting against what the rival has in their place.
#include "bench/import_bench.h"

#include "Kivo_2D.h"
#include "bench/counters.h"
#include "bench/inputs.h"
#include "bench/soupInputs.h"
#include "bench/soupRival.h"

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

namespace bench {
namespace {

using TESK_KIVO2D::Kivo_2D;
using TESK_KIVO2D::Point2;
using TESK_KIVO2D::Segment2;

// Its edges fill the hull, so nothing is between them but the triangles that were given.
void checkTriangles(benchmark::State& state, const SoupInput& soup, std::size_t numTriangles) {
    state.counters["triangles"] = static_cast<double>(soup.triangles.size());
    if (numTriangles != soup.triangles.size()) state.SkipWithError("other triangles than were given");
}

// From construction to destruction, on both sides.
void importKivo(benchmark::State& state, const std::string& kind, std::size_t num) {
    const SoupInput soup = makeSoup(kind, num);
    const std::vector<Point2> vPoints = converted(soup.points);
    std::vector<Point2> vCorners;
    for (const auto& corners : soup.triangles)
        for (const std::size_t i : corners)
            vCorners.push_back(vPoints[i]);
    std::size_t numTriangles = 0;
    {
        const UserTime time(state);
        for (auto _ : state) {
            Kivo_2D kivo;
            numTriangles = kivo.importTriangles(vCorners, false) == nullptr ? 0 : kivo.numberOfTriangles();
        }
    }
    checkTriangles(state, soup, numTriangles);
}

// The rival is spared the search for equal corners.
void importRival(benchmark::State& state, const std::string& kind, std::size_t num) {
    const SoupInput soup = makeSoup(kind, num);
    const rival::Import import(soup);
    std::size_t numTriangles = 0;
    {
        const UserTime time(state);
        for (auto _ : state)
            numTriangles = import.triangulate();
    }
    checkTriangles(state, soup, numTriangles);
}

// What clients had to do before: all edges as constraints.
void importAsConstraints(benchmark::State& state, const std::string& kind, std::size_t num) {
    const SoupInput soup = makeSoup(kind, num);
    const std::vector<Point2> vPoints = converted(soup.points);
    std::vector<Segment2> vEdges;
    for (const auto& [p, q] : soup.edges())
        vEdges.emplace_back(vPoints[p], vPoints[q]);
    std::size_t numTriangles = 0;
    {
        const UserTime time(state);
        for (auto _ : state) {
            Kivo_2D kivo;
            kivo.insert(vPoints);
            kivo.createConstraint(vEdges);
            numTriangles = kivo.numberOfTriangles();
        }
    }
    checkTriangles(state, soup, numTriangles);
}

void cutKivo(benchmark::State& state, const std::string& kind, std::size_t num) {
    const Coordinates ends = makeKnives(kind);
    std::vector<Segment2> vKnives;
    for (std::size_t i = 0; i < ends.size(); i += 2)
        vKnives.emplace_back(Point2(ends[i].first, ends[i].second),
                             Point2(ends[i + 1].first, ends[i + 1].second));
    for (auto _ : state) {
        Kivo_2D kivo;
        kivo.insert(converted(input("uniform", num)));
        measureOnce(state, [&] { kivo.cutTriangles(vKnives); });
        state.counters["newVertices"] = static_cast<double>(kivo.numberOfPoints() - num);
    }
}

void cutRival(benchmark::State& state, const std::string& kind, std::size_t num) {
    for (auto _ : state) {
        rival::Cutting cutting(input("uniform", num), makeKnives(kind));
        std::size_t numNew = 0;
        measureOnce(state, [&] { numNew = cutting.cut(); });
        state.counters["newVertices"] = static_cast<double>(numNew);
    }
}

using Body = void (*)(benchmark::State&, const std::string&, std::size_t);

benchmark::internal::Benchmark* add(const std::string& task, const std::string& kind, std::size_t num,
                                    const std::string& who, Body body) {
    const std::string name = task + "/" + kind + "/" + std::to_string(num) + "/" + who;
    return benchmark::RegisterBenchmark(name.c_str(), body, kind, num)
        ->Unit(benchmark::kMillisecond)
        ->Iterations(1);
}

} // namespace

// The run script knows these names.
void addImportBenchmarks() {
    constexpr std::size_t million = 1000000;
    const auto addImport = [](const char* kind, std::size_t num) {
        add("import", kind, num, "kivo", importKivo)->UseRealTime();
        add("import", kind, num, "cgal", importRival)->UseRealTime();
    };
    for (const std::size_t num : {million / 100, million / 10, million})
        addImport("uniform", num);
    for (const char* kind : {"grid", "coast"})
        addImport(kind, million);
    add("import", "uniform", million, "constraints", importAsConstraints)->UseRealTime();
    for (const char* kind : {"long", "100", "1000"}) {
        add("cut", kind, million / 10, "kivo", cutKivo)->UseManualTime();
        add("cut", kind, million / 10, "cgal", cutRival)->UseManualTime();
    }
}

} // namespace bench
