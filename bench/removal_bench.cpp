// Removal of vertices against the rival, of hubs, and of all there are again and again.
#include "bench/removal_bench.h"

#include "Kivo_2D.h"
#include "bench/counters.h"
#include "bench/inputs.h"
#include "bench/peakMemory.h"
#include "bench/rival.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

namespace bench {
namespace {

using TESK_KIVO2D::Kivo_2D;
using TESK_KIVO2D::Point2;

constexpr std::size_t million = 1000000;
constexpr std::size_t numGone = 100000; // the first ones, and points come in random order

void removeKivo(benchmark::State& state, const std::string& kind, std::size_t num) {
    const std::vector<Point2> vPoints = converted(input(kind, num));
    for (auto _ : state) {
        Kivo_2D kivo(static_cast<unsigned int>(num));
        std::vector<Point2*> vHandles;
        kivo.insert(vPoints, vHandles);
        measureOnce(state, [&] {
            for (std::size_t i = 0; i < numGone; ++i)
                kivo.remove(vHandles[i]);
        });
    }
}

void removeRival(benchmark::State& state, const std::string& kind, std::size_t num) {
    const Coordinates& points = input(kind, num);
    for (auto _ : state) {
        rival::Removal removal(points, numGone);
        measureOnce(state, [&] { removal.removeAll(); });
    }
}

// A vertex that is the neighbour of all others, in their middle or beyond an end of them.
void removeHub(benchmark::State& state, const std::string& kind, std::size_t num) {
    const double size = static_cast<double>(num);
    std::vector<Point2> vPoints;
    for (std::size_t i = 0; i < num; ++i) {
        const double t = static_cast<double>(i) / size, angle = 6.283185307179586 * t;
        if (kind == "circle") {
            vPoints.emplace_back(std::cos(angle), std::sin(angle));
        } else if (kind == "parabola") { // a fan over a convex chain, in nobody's circle
            vPoints.emplace_back(2 * t - 1, (2 * t - 1) * (2 * t - 1));
        } else {
            vPoints.emplace_back(t, 0);
        }
    }
    const Point2 hub = kind == "circle" ? Point2(0, 0) : Point2(0.5, kind == "parabola" ? -1e12 : 1e12);
    for (auto _ : state) {
        Kivo_2D kivo(static_cast<unsigned int>(num + 1));
        kivo.insert(vPoints);
        Point2* const pHub = kivo.insert(hub);
        std::vector<TESK_KIVO2D::Triangle2*> vStar;
        kivo.getIncidentTriangles(pHub, vStar);
        state.counters["degree"] = static_cast<double>(vStar.size());
        measureOnce(state, [&] { kivo.remove(pHub); });
    }
}

// Insertion of all points and removal of all vertices in random order, ten times in one triangulation.
void rounds(benchmark::State& state, const std::string& kind, std::size_t num) {
    const std::vector<Point2> vPoints = converted(input(kind, num));
    std::vector<Point2*> vHandles;
    const UserTime time(state);
    for (auto _ : state) {
        Kivo_2D kivo(static_cast<unsigned int>(num));
        for (int round = 1; round <= 10; ++round) {
            kivo.insert(vPoints, vHandles);
            std::shuffle(vHandles.begin(), vHandles.end(), std::mt19937_64(static_cast<unsigned>(round)));
            for (Point2* const pVtx : vHandles)
                kivo.remove(pVtx);
            const char* const name = round == 3 ? "MBafter3" : "MBafter10";
            if (round == 3 || round == 10) state.counters[name] = residentBytes() / 1e6;
        }
    }
}

benchmark::internal::Benchmark* add(const std::string& task, const std::string& kind, const std::string& who,
                                    void (*body)(benchmark::State&, const std::string&, std::size_t)) {
    const std::string name = task + "/" + kind + "/1000000/" + who;
    return benchmark::RegisterBenchmark(name.c_str(), body, kind, million)
        ->Unit(benchmark::kMillisecond)
        ->Iterations(1);
}

} // namespace

// The run script knows these names.
void addRemovalBenchmarks() {
    for (const char* kind : {"uniform", "clusters", "grid"}) {
        add("remove", kind, "kivo", removeKivo)->UseManualTime();
        add("remove", kind, "cgal", removeRival)->UseManualTime();
    }
    for (const char* kind : {"circle", "parabola", "line"})
        add("removeHub", kind, "kivo", removeHub)->UseManualTime();
    add("removalRounds", "uniform", "kivo", rounds)->UseRealTime()->Repetitions(1);
}

} // namespace bench
