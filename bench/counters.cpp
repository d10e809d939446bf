#include "bench/counters.h"

#include <sys/resource.h>

#include <algorithm>
#include <cstdint>
#include <utility>

namespace bench {
namespace {

double userMilliseconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec) * 1e3 +
           static_cast<double>(usage.ru_utime.tv_usec) * 1e-3;
}

} // namespace

UserTime::UserTime(benchmark::State& measured) : state(measured), start(userMilliseconds()) {}

UserTime::~UserTime() {
    state.counters["userMs"] =
        benchmark::Counter(userMilliseconds() - start, benchmark::Counter::kAvgIterations);
}

void Work::take(const TESK_KIVO2D::Kivo_2D& kivo) {
    work = kivo.getImpl()->workCounts();
    stages = kivo.getImpl()->stageCounts();
}

void Work::report(benchmark::State& state) const {
    const std::pair<const char*, std::uint64_t> totals[] = {
        {"walkSteps", work.walkSteps},
        {"flips", work.flips},
        {"orientationPastStatic", stages.orientationPastStatic},
        {"orientationDynamic", stages.orientationDynamic},
        {"orientationAxisParallel", stages.orientationAxisParallel},
        {"orientationExpansion", stages.orientationExpansion},
        {"orientationInterval", stages.orientationInterval},
        {"orientationExact", stages.orientationExact},
        {"inCirclePastStatic", stages.inCirclePastStatic},
        {"inCircleRectangle", stages.inCircleRectangle},
        {"inCircleLattice", stages.inCircleLattice},
        {"inCircleDoubleDouble", stages.inCircleDoubleDouble},
        {"inCircleExpansion", stages.inCircleExpansion},
        {"inCircleExact", stages.inCircleExact},
    };
    const auto numInsertions = static_cast<double>(std::max<std::uint64_t>(work.insertions, 1));
    for (const auto& [name, total] : totals)
        state.counters[name] = static_cast<double>(total) / numInsertions;
}

} // namespace bench
