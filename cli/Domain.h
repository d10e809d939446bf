#pragma once

#include "cli/PointTable.h"

#include <Point2.h>
#include <Segment2.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace cli {

// Ends are positions in the table of points.
struct InputSegment {
    std::size_t source = 0;
    std::size_t target = 0;
    int marker = 0;
};

struct Region {
    TESK_KIVO2D::Point2 point;
    double attribute = 0.0;
    std::optional<double> maxArea;
};

// What the input says beyond its points.
struct Domain {
    std::vector<InputSegment> vSegments;
    std::size_t firstNumber = 1; // of the first segment in formats that number them
    bool bWithMarkers = false;   // segments have markers
    std::vector<TESK_KIVO2D::Point2> vHoles;
    std::vector<Region> vRegions;
};

// All that a run reads. The table holds the points first, then the ends of segments from a file of their own.
struct Input {
    PointTable table;
    Domain domain;
    std::size_t numPoints = 0;                            // of the table, those that were given as points
    std::vector<std::array<std::uint32_t, 3>> vTriangles; // of a mesh file: positions in the table
    std::vector<TESK_KIVO2D::Segment2> vKnives;           // along which to cut
    std::vector<std::string> vFilenames;                  // what was read
};

} // namespace cli
