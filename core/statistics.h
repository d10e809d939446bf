#pragma once

#include "core/MeshStore.h"

#include <cstddef>
#include <string>

namespace TESK_KIVO2D {

// Counts, extremes and a histogram of the interior angles in steps of 10 degrees.
std::string meshStatistics(const MeshStore& store, std::size_t numVertices, const std::string& name);

} // namespace TESK_KIVO2D
