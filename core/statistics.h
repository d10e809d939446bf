#pragma once

#include "Triangle2.h"
#include "core/MeshStore.h"

#include <array>
#include <cstddef>
#include <string>

namespace TESK_KIVO2D {

// The interior angles of triangles: extremes and a histogram in steps of 10 degrees.
class AngleHistogram {
public:
    void add(const Triangle2& triangle);
    // A line for the extremes and one for each step; nothing when no triangle was added.
    std::string toText() const;

private:
    static constexpr int binWidth = 10, numBins = 180 / binWidth;
    std::array<std::size_t, numBins> aBins{};
    double minAngle = 180, maxAngle = 0;
};

// Counts, extremes and a histogram of the interior angles in steps of 10 degrees.
std::string meshStatistics(const MeshStore& store, std::size_t numVertices, const std::string& name);

} // namespace TESK_KIVO2D
