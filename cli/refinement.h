#pragma once

#include "cli/Run.h"

namespace cli {

// Throws `UsageError` for limits that no mesh has.
void checkLimits(const MeshOptions& options);

// Refines the zone of the run and collects the new vertices, which get attributes interpolated between the
// points of the input. Stops at an interrupt from the keyboard.
MeshReport refine(Run& run, const MeshOptions& options);

} // namespace cli
