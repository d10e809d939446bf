#pragma once

namespace bench {

// Registers the measurements of meshing.
void addMeshBenchmarks();

} // namespace bench
