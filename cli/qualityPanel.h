#pragma once

#include "cli/OutputFile.h"
#include "cli/measurement.h"

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace cli {

// By smallest angle, 5 degrees each, from bad to good. Apart also for eyes that do not tell red from green.
constexpr std::array<const char*, 12> QUALITY_COLORS{"#8e0026", "#b8132a", "#d93b30", "#ef6a45",
                                                     "#f99a5b", "#fdc47d", "#f3e3a0", "#d3e6c8",
                                                     "#a9d3dd", "#7cb5d2", "#5592c0", "#3a6cab"};
// Readable on light and dark pages.
constexpr const char* LINE_COLOR = "#475569";
constexpr const char* TEXT_COLOR = "#64748b";
constexpr const char* RING_COLOR = "#c026d3";

// So many triangles have each colour.
using ColorCounts = std::array<std::size_t, QUALITY_COLORS.size()>;

// Angles of halves of squares are in one class, on whichever side of 45 degrees rounding has put them.
std::size_t colorClassOf(double smallestAngle);

// What stands beside the mesh in a picture of quality: the colours as a histogram, all angles, and the ranges
// of the other measures.
class QualityPanel {
public:
    static constexpr double WIDTH = 400.0;
    static constexpr double HEIGHT = 640.0;

    QualityPanel(OutputFile& out_, const TESK_KIVO2D::ZoneQuality& figures_, const ColorCounts& aCounts_)
        : out(out_), figures(figures_), aCounts(aCounts_) {}

    void write(double left, const std::string& heading, const std::vector<WorstTriangle>& vRinged);

private:
    // With its lower left corner, or for an end or middle anchor that corner, at (x, y).
    void text(double x, double y, const std::string& content, const char* anchor = "start");
    void bar(double x, double y, double width, double height, const char* color);
    double writeSmallestAngles(double y);
    double writeAllAngles(double y);
    double writeRanges(double y);
    void writeRingLegend(double y, const std::vector<WorstTriangle>& vRinged);

    OutputFile& out;
    const TESK_KIVO2D::ZoneQuality& figures;
    const ColorCounts& aCounts;
};

} // namespace cli
