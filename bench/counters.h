#pragma once

#include "Kivo_2D.h"
#include "core/Dt2.h"

#include <benchmark/benchmark.h>

#include <chrono>

namespace bench {

// Reports the milliseconds of user time an iteration from construction to destruction. Memory that the
// system has to provide on first touch shows in the wall clock but not here.
class UserTime {
public:
    explicit UserTime(benchmark::State& state);
    ~UserTime();
    UserTime(const UserTime&) = delete;
    UserTime& operator=(const UserTime&) = delete;

private:
    benchmark::State& state;
    double start;
};

// What the insertions into a triangulation took besides time.
class Work {
public:
    void take(const TESK_KIVO2D::Kivo_2D& kivo);
    // Walk steps, flips, and the questions past the inlined stage with those who answered them: all per
    // insertion.
    void report(benchmark::State& state) const;

private:
    TESK_KIVO2D::WorkCounts work;
    TESK_KIVO2D::TeskTest::StageCounts stages;
};

// Measures the act alone, without what was made for it.
template<class Act>
void measureOnce(benchmark::State& state, Act act) {
    const UserTime time(state);
    const auto start = std::chrono::steady_clock::now();
    act();
    state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
}

} // namespace bench
