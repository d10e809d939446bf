#pragma once

namespace bench {

// Registers the measurements of constraints.
void addConstraintBenchmarks();

} // namespace bench
