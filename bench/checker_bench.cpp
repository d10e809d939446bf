// The segment checker against the rivals, and on sets that boxes are no help for.
#include "bench/checker_bench.h"

#include "SegmentChecker.h"
#include "bench/checkerInputs.h"
#include "bench/checkerRival.h"
#include "bench/counters.h"

#include <benchmark/benchmark.h>

#include <string>
#include <utility>
#include <vector>

namespace bench {
namespace {

using rival::Tuning;
using TESK_KIVO2D::Segment2;
using TESK_KIVO2D::SegmentChecker;
using Numbers = std::vector<std::size_t>;

constexpr std::size_t million = 1000000;

std::vector<Segment2*> pointersTo(Segments& segments) {
    std::vector<Segment2*> vPointers;
    for (Segment2& segment : segments)
        vPointers.push_back(&segment);
    return vPointers;
}

// Whoever comes first says which; others who find anything else fail.
void compare(benchmark::State& state, const Numbers& found) {
    static Numbers expected;
    if (expected.empty()) expected = found;
    if (found.empty() || found != expected) state.SkipWithError("Not the segments that another one found");
    state.counters["illegal"] = static_cast<double>(found.size());
}

// The index and all that belongs to it are made within the measured time.
void illegalKivo(benchmark::State& state, Segments& segments, bool bCompared) {
    const std::vector<Segment2*> vPointers = pointersTo(segments);
    for (auto _ : state) {
        std::vector<Segment2*> vIllegal;
        measureOnce(state, [&] {
            const SegmentChecker checker(vPointers);
            checker.getIllegalSegments(false, vIllegal);
        });
        Numbers found;
        for (const Segment2* const pSegment : vIllegal)
            found.push_back(static_cast<std::size_t>(pSegment - segments.data()));
        state.counters["segments"] = static_cast<double>(segments.size());
        state.counters["illegal"] = static_cast<double>(found.size());
        if (bCompared) compare(state, found);
    }
}

void randomKivo(benchmark::State& state) {
    Segments segments = makeSegments("random", million);
    illegalKivo(state, segments, true);
}

void randomRival(benchmark::State& state, Numbers (*illegalBy)(const Segments&, Tuning), Tuning tuning) {
    const Segments segments = makeSegments("random", million);
    for (auto _ : state) {
        Numbers found;
        measureOnce(state, [&] { found = illegalBy(segments, tuning); });
        compare(state, found);
    }
}

void worstKivo(benchmark::State& state, const std::string& kind, std::size_t num) {
    Segments segments = makeSegments(kind, num);
    illegalKivo(state, segments, false);
}

void realKivo(benchmark::State& state, const std::string& name) {
    Segments segments = readSegments(name);
    illegalKivo(state, segments, false);
}

// All queries of a checker that has its index.
void intersectorsKivo(benchmark::State& state) {
    Segments segments = makeSegments("random", million);
    const SegmentChecker checker(pointersTo(segments));
    std::vector<std::pair<Segment2*, TESK_KIVO2D::SegmentIntersectionType>> vIntersectors;
    checker.getIntersectors(&segments.front(), false, vIntersectors);
    for (auto _ : state) {
        std::size_t numReported = 0;
        measureOnce(state, [&] {
            for (const Segment2& segment : segments) {
                vIntersectors.clear();
                checker.getIntersectors(&segment, false, vIntersectors);
                numReported += vIntersectors.size();
            }
        });
        state.counters["pairs"] = static_cast<double>(numReported) / 2;
    }
}

template<class Body, class... Arguments>
void add(const std::string& name, Body body, Arguments... arguments) {
    benchmark::RegisterBenchmark(name.c_str(), body, arguments...)
        ->Unit(benchmark::kMillisecond)
        ->Iterations(1)
        ->UseManualTime();
}

} // namespace

// The run script knows these names.
void addCheckerBenchmarks() {
    add("checker/random/1000000/kivo", randomKivo);
    add("checker/random/1000000/boost", randomRival, rival::illegalByBoost, Tuning::none);
    add("checker/random/1000000/boostTuned", randomRival, rival::illegalByBoost, Tuning::best);
    add("checker/random/1000000/cgal", randomRival, rival::illegalByCgal, Tuning::none);
    add("checker/random/1000000/cgalTuned", randomRival, rival::illegalByCgal, Tuning::best);
    for (const char* kind : {"diagonals", "turnedDiagonals", "crossing", "overlapLevel", "overlapSlanted"})
        add("checkerWorst/" + std::string(kind) + "/100000/kivo", worstKivo, kind, million / 10);
    for (const char* kind : {"longOverRandom", "longOverLattice"})
        add("checkerWorst/" + std::string(kind) + "/1000000/kivo", worstKivo, kind, million);
    for (const char* kind : {"star", "fan", "hatching"})
        add("checkerOther/" + std::string(kind) + "/100000/kivo", worstKivo, kind, million / 10);
    add("checkerOther/coast/9551/kivo", realKivo, "co_iceland_h");
    add("checkerIntersectors/random/1000000/kivo", intersectorsKivo);
}

} // namespace bench
