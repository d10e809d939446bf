#pragma once

#include "cli/OutputFile.h"
#include "cli/checkFaults.h"
#include "cli/checkReport.h"

#include <array>
#include <cstddef>
#include <string>

namespace cli {

// How faults are marked; widths in hundredths of a unit.
struct FaultStyle {
    const char* name; // of the class, for style sheets
    const char* one;  // what it says in the picture
    const char* many;
    const char* color;
    int width;
};
// Readable on light and dark pages.
constexpr std::array<FaultStyle, NUM_FAULT_KINDS> FAULT_STYLES{{
    {"crossings", "crossing", "crossings", "#f59e0b", 500},
    {"touches", "touch", "touches", "#65a30d", 500},
    {"overlaps", "overlap", "overlaps", "#2563eb", 500},
    {"duplicates", "duplicate", "duplicates", "#06b6d4", 500},
    {"shared-ends", "shared end", "shared ends", "#0d9488", 300},
}};
constexpr const char* SEGMENT_COLOR = "#8294a8";
constexpr const char* AT_FAULT_COLOR = "#dc2626";
constexpr const char* PLACE_COLOR = "#c026d3";
constexpr const char* TEXT_COLOR = "#64748b";

constexpr double CHECK_PANEL_WIDTH = 330.0;
constexpr double CHECK_LEGEND_HEIGHT = 260.0;

// "12 segments, 3 at fault".
std::string titleOf(const CheckReport& report);

// Writes what the colours mean, with the counts. So many places have faults, and so many of them rings.
void writeLegend(OutputFile& out, const CheckReport& report, std::size_t numPlaces, std::size_t numRings);

} // namespace cli
