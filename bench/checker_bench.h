#pragma once

namespace bench {

// Registers the measurements of the segment checker.
void addCheckerBenchmarks();

} // namespace bench
