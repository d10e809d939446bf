#pragma once

namespace bench {

// Registers the measurements of removal.
void addRemovalBenchmarks();

} // namespace bench
