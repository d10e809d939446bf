// Constraints against the rival, and what they cost by themselves.
#include "bench/constraint_bench.h"

#include "Kivo_2D.h"
#include "bench/constraintInputs.h"
#include "bench/constraintRival.h"
#include "bench/counters.h"
#include "bench/inputs.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace bench {
namespace {

using TESK_KIVO2D::CIS_CONSTRAINED_DELAUNAY;
using TESK_KIVO2D::Kivo_2D;
using TESK_KIVO2D::Point2;
using TESK_KIVO2D::Segment2;
using TESK_KIVO2D::Triangle2;
using Segments = std::vector<Segment2>;

constexpr std::size_t million = 1000000;

// One vector for each polygon, or one for all.
std::vector<Segments> segmentsOf(const ConstraintInput& input, bool bByPolygon) {
    const std::vector<Point2> vCorners = converted(input.corners);
    std::vector<Segments> groups(1);
    std::size_t next = 0;
    for (const std::size_t end : input.groupEnds) {
        if (bByPolygon && next > 0) groups.emplace_back();
        for (; next < end; ++next) {
            const auto& [source, target] = input.segments[next];
            groups.back().emplace_back(vCorners[source], vCorners[target]);
        }
    }
    return groups;
}

void constrain(Kivo_2D& kivo, std::vector<Segments>& groups) {
    for (Segments& segments : groups)
        kivo.createConstraint(segments, CIS_CONSTRAINED_DELAUNAY, false);
}

// Vertices beyond those of the input are crossings.
void reportCrossings(benchmark::State& state, const ConstraintInput& input, std::size_t numVertices) {
    const auto numGiven = input.corners.size() + input.points.size();
    state.counters["crossings"] = static_cast<double>(numVertices) - static_cast<double>(numGiven);
}

// From construction to destruction, on both sides.
void constraintsKivo(benchmark::State& state, const std::string& kind, std::size_t num, bool bByPolygon) {
    const ConstraintInput input = makeConstraints(kind, num);
    const std::vector<Point2> vPoints = converted(input.points);
    std::vector<Segments> groups = segmentsOf(input, bByPolygon);
    std::size_t numVertices = 0;
    {
        const UserTime time(state);
        for (auto _ : state) {
            Kivo_2D kivo(static_cast<unsigned int>(input.points.size() + input.corners.size()));
            kivo.insert(vPoints);
            constrain(kivo, groups);
            numVertices = kivo.numberOfPoints();
        }
    }
    reportCrossings(state, input, numVertices);
}

void constraintsRival(benchmark::State& state, const std::string& kind, std::size_t num) {
    const ConstraintInput input = makeConstraints(kind, num);
    const rival::Constraints constraints(input);
    std::size_t numVertices = 0;
    {
        const UserTime time(state);
        for (auto _ : state)
            numVertices = constraints.triangulate(kind == "crossings");
    }
    reportCrossings(state, input, numVertices);
}

std::unique_ptr<Kivo_2D> triangulated(const ConstraintInput& input) {
    auto kivo = std::make_unique<Kivo_2D>(static_cast<unsigned int>(input.points.size()));
    kivo->insert(converted(input.points));
    kivo->insert(converted(input.corners));
    return kivo;
}

// Only the ends of the segment lie on the axis.
std::size_t edgesAcrossAxis(const Kivo_2D& kivo) {
    std::vector<Triangle2*> vTriangles;
    kivo.getTrianglePointers(vTriangles);
    const auto crossed = std::count_if(vTriangles.begin(), vTriangles.end(), [](const Triangle2* pT) {
        const auto [lowest, highest] =
            std::minmax({pT->getCorner(0)->y(), pT->getCorner(1)->y(), pT->getCorner(2)->y()});
        return lowest < 0 && highest > 0;
    });
    // A triangle at each end has one crossed edge, those between have two, each shared by two.
    return static_cast<std::size_t>(crossed - 1);
}

// One segment across so many edges that the time of a million shows.
void longSegmentKivo(benchmark::State& state, std::size_t num) {
    const ConstraintInput input = makeStrip(num);
    std::vector<Segments> groups = segmentsOf(input, false);
    for (auto _ : state) {
        std::vector<std::unique_ptr<Kivo_2D>> vKivos;
        while (vKivos.size() < million / num)
            vKivos.push_back(triangulated(input));
        const std::size_t numCrossed = edgesAcrossAxis(*vKivos.front()) * vKivos.size();
        measureOnce(state, [&] {
            for (const auto& pKivo : vKivos)
                constrain(*pKivo, groups);
        });
        state.counters["crossedEdges"] = static_cast<double>(numCrossed);
    }
}

// Points into a triangulation of the ring's corners, with its edges as constraints or without.
void insertIntoKivo(benchmark::State& state, std::size_t num, bool bConstrained, bool bBatch) {
    const ConstraintInput input = makeConstraints("ring", num);
    const std::vector<Point2> vPoints = converted(input.points);
    std::vector<Segments> groups = segmentsOf(input, false);
    for (auto _ : state) {
        Kivo_2D kivo(static_cast<unsigned int>(input.points.size() + input.corners.size()));
        kivo.insert(converted(input.corners));
        if (bConstrained) constrain(kivo, groups);
        measureOnce(state, [&] {
            if (bBatch) {
                kivo.insert(vPoints);
            } else {
                for (const Point2& p : vPoints)
                    kivo.insert(p);
            }
        });
    }
}

template<class Body, class... Arguments>
benchmark::internal::Benchmark* add(const std::string& name, Body body, Arguments... arguments) {
    return benchmark::RegisterBenchmark(name.c_str(), body, arguments...)
        ->Unit(benchmark::kMillisecond)
        ->Iterations(1);
}

} // namespace

// The run script knows these names.
void addConstraintBenchmarks() {
    const std::pair<std::string, std::size_t> inputs[] = {
        {"ring", million}, {"polygons", million}, {"crossings", 40000}};
    for (const auto& [kind, num] : inputs) {
        const std::string name = "constraints/" + kind + "/" + std::to_string(num);
        add(name + "/kivo", constraintsKivo, kind, num, false)->UseRealTime();
        add(name + "/cgal", constraintsRival, kind, num)->UseRealTime();
    }
    add("constraintByPolygon/polygons/1000000/kivo", constraintsKivo, "polygons", million, true)
        ->UseRealTime();
    for (std::size_t num = 1000; num <= million; num *= 10)
        add("longSegment/strip/" + std::to_string(num) + "/kivo", longSegmentKivo, num)->UseManualTime();
    for (const bool bConstrained : {false, true}) {
        const std::string base = bConstrained ? "ring" : "corners";
        add("batchInto/" + base + "/1000000/kivo", insertIntoKivo, million, bConstrained, true)
            ->UseManualTime();
        add("oneByOneInto/" + base + "/1000000/kivo", insertIntoKivo, million, bConstrained, false)
            ->UseManualTime();
    }
}

} // namespace bench
