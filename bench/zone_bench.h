#pragma once

namespace bench {

// Registers the measurements of zones.
void addZoneBenchmarks();

} // namespace bench
