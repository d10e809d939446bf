// Insertion and location against the rival, in one run: for each input the two take turns.
#include "Kivo_2D.h"
#include "bench/checker_bench.h"
#include "bench/constraint_bench.h"
#include "bench/counters.h"
#include "bench/import_bench.h"
#include "bench/inputs.h"
#include "bench/mesh_bench.h"
#include "bench/peakMemory.h"
#include "bench/removal_bench.h"
#include "bench/rival.h"
#include "bench/zone_bench.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

using bench::converted;
using bench::input;
using bench::UserTime;
using TESK_KIVO2D::Kivo_2D;
using TESK_KIVO2D::Point2;

constexpr std::size_t million = 1000000;

unsigned int expected(std::size_t num) { return static_cast<unsigned int>(num); }

// insertAll(kivo) is measured, with the triangulation's making and end.
template<class InsertAll>
void measureKivo(benchmark::State& state, std::size_t num, InsertAll insertAll) {
    bench::Work work;
    {
        const UserTime time(state);
        for (auto _ : state) {
            Kivo_2D kivo(expected(num));
            insertAll(kivo);
            benchmark::DoNotOptimize(kivo.numberOfTriangles());
            work.take(kivo);
        }
    }
    work.report(state);
}

void batchKivo(benchmark::State& state, const std::string& kind, std::size_t num) {
    const std::vector<Point2> vPoints = converted(input(kind, num));
    measureKivo(state, num, [&](Kivo_2D& kivo) {
        std::vector<Point2*> vHandles;
        kivo.insert(vPoints, vHandles);
    });
}

void batchRival(benchmark::State& state, const std::string& kind, std::size_t num) {
    const bench::rival::Batch batch(input(kind, num));
    const UserTime time(state);
    for (auto _ : state)
        benchmark::DoNotOptimize(batch.triangulate());
}

// In wall clock: that is what the threads are for. Without any the batch is not triangulated by chunks.
template<int numThreads>
void threadsKivo(benchmark::State& state, const std::string& kind, std::size_t num) {
    const std::vector<Point2> vPoints = converted(input(kind, num));
    measureKivo(state, num, [&](Kivo_2D& kivo) {
        std::vector<Point2*> vHandles;
        kivo.setNumCPU(numThreads > 0 ? numThreads : 1);
        if (numThreads == 0) kivo.getImpl()->setBatchLimits(num + 1, num);
        kivo.insert(vPoints, vHandles);
    });
}

void oneByOneKivo(benchmark::State& state, const std::string& kind, std::size_t num) {
    const std::vector<Point2> vPoints = converted(input(kind, num));
    measureKivo(state, num, [&](Kivo_2D& kivo) {
        for (const Point2& p : vPoints)
            kivo.insert(p);
    });
}

void oneByOneRival(benchmark::State& state, const std::string& kind, std::size_t num) {
    const bench::Coordinates& points = input(kind, num);
    const UserTime time(state);
    for (auto _ : state) {
        bench::rival::Hierarchy hierarchy;
        for (const auto& [x, y] : points)
            hierarchy.insert(x, y);
    }
}

void locateKivo(benchmark::State& state, const std::string& kind, std::size_t num) {
    Kivo_2D kivo(expected(num));
    kivo.insert(converted(input(kind, num)));
    const std::vector<Point2> vQueries = converted(bench::queries(num));
    const UserTime time(state);
    for (auto _ : state) {
        for (const Point2& q : vQueries)
            benchmark::DoNotOptimize(kivo.locate(q));
    }
}

void locateRival(benchmark::State& state, const std::string& kind, std::size_t num) {
    bench::rival::Hierarchy hierarchy;
    hierarchy.insertAll(input(kind, num));
    const bench::Coordinates points = bench::queries(num);
    const UserTime time(state);
    for (auto _ : state) {
        for (const auto& [x, y] : points)
            benchmark::DoNotOptimize(hierarchy.locate(x, y));
    }
}

using Body = void (*)(benchmark::State&, const std::string&, std::size_t);

// One measurement is one iteration for a million points or more, and goes on for two million points below.
benchmark::internal::Benchmark* add(const std::string& task, const std::string& kind, std::size_t num,
                                    const std::string& who, Body body) {
    const std::string name = task + "/" + kind + "/" + std::to_string(num) + "/" + who;
    return benchmark::RegisterBenchmark(name.c_str(), body, kind, num)
        ->Unit(benchmark::kMillisecond)
        ->Iterations(num < million ? static_cast<benchmark::IterationCount>(2 * million / num) : 1)
        ->UseRealTime();
}

// The run script knows these names.
void addAll() {
    for (const char* kind : {"uniform", "clusters", "utm", "grid", "turnedGrid", "circle"}) {
        add("batch", kind, million, "kivo", batchKivo);
        add("batch", kind, million, "cgal", batchRival);
    }
    // The rival does not end within two minutes on this one.
    add("batch", "line", million, "kivo", batchKivo);
    for (const char* kind : {"uniform", "clusters"}) {
        add("threads", kind, 10 * million, "0", threadsKivo<0>);
        add("threads", kind, 10 * million, "1", threadsKivo<1>);
        add("threads", kind, 10 * million, "2", threadsKivo<2>);
    }
    add("oneByOne", "uniform", million, "kivo", oneByOneKivo);
    add("oneByOne", "uniform", million, "cgal", oneByOneRival);
    // Once, for the work they take.
    for (const char* kind : {"clusters", "utm", "grid", "turnedGrid", "circle", "line"})
        add("oneByOne", kind, million, "kivo", oneByOneKivo)->Repetitions(1);
    add("locate", "uniform", million, "kivo", locateKivo);
    add("locate", "uniform", million, "cgal", locateRival);
    for (const std::size_t num : {million / 100, million / 10, 10 * million}) {
        add("batch", "uniform", num, "kivo", batchKivo);
        add("batch", "uniform", num, "cgal", batchRival);
        auto* oneByOne = add("oneByOne", "uniform", num, "kivo", oneByOneKivo);
        if (num > million) oneByOne->Repetitions(1); // it takes half a minute
    }
}

} // namespace

int main(int argc, char** argv) {
    constexpr const char* peakOption = "--peak-memory=";
    if (argc == 2 && std::strncmp(argv[1], peakOption, std::strlen(peakOption)) == 0)
        return bench::printPeakMemory(argv[1] + std::strlen(peakOption));
    addAll();
    bench::addRemovalBenchmarks();
    bench::addConstraintBenchmarks();
    bench::addImportBenchmarks();
    bench::addZoneBenchmarks();
    bench::addMeshBenchmarks();
    bench::addCheckerBenchmarks();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return EXIT_FAILURE;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return EXIT_SUCCESS;
}
