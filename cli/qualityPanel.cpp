#include "cli/qualityPanel.h"

#include "cli/numbers.h"
#include "cli/svgText.h"
#include "cli/words.h"

#include <algorithm>

namespace cli {

namespace {

using TESK_KIVO2D::QualityDistribution;

constexpr int CLASS_WIDTH = 60 / static_cast<int>(QUALITY_COLORS.size());

template<class Counts>
double largestOf(const Counts& counts) {
    return static_cast<double>(std::max<std::uint64_t>(1, *std::max_element(counts.begin(), counts.end())));
}

std::string rangeOf(const QualityDistribution& distribution) {
    constexpr int DIGITS = 4;
    return withDigits(distribution.smallest, DIGITS) + " to " + withDigits(distribution.largest, DIGITS) +
           ", mean " + withDigits(distribution.mean, DIGITS);
}

} // namespace

std::size_t colorClassOf(double smallestAngle) {
    constexpr double ROUNDING = 1e-9;
    return std::min(static_cast<std::size_t>((smallestAngle + ROUNDING) / CLASS_WIDTH),
                    QUALITY_COLORS.size() - 1);
}

void QualityPanel::text(double x, double y, const std::string& content, const char* anchor) {
    out << "<text x=\"" << x << "\" y=\"" << y << "\" text-anchor=\"" << anchor << "\">" << escaped(content)
        << "</text>\n";
}

void QualityPanel::bar(double x, double y, double width, double height, const char* color) {
    out << "<rect x=\"" << x << "\" y=\"" << y << "\" width=\"" << width << "\" height=\"" << height
        << "\" fill=\"" << color << "\"/>\n";
}

void QualityPanel::write(double left, const std::string& heading, const std::vector<WorstTriangle>& vRinged) {
    out << "<g class=\"panel\" transform=\"translate(" << left << " 15)\" fill=\"" << TEXT_COLOR
        << "\" font-family=\"sans-serif\" font-size=\"15\">\n";
    out << "<g font-size=\"20\" font-weight=\"bold\">";
    text(0.0, 22.0, heading);
    out << "</g>\n";
    text(0.0, 46.0,
         grouped(figures.numTriangles) + " triangles, " + grouped(figures.numVertices) + " vertices");
    const double belowSmallest = writeSmallestAngles(84.0);
    const double belowAll = writeAllAngles(belowSmallest + 36.0);
    writeRingLegend(writeRanges(belowAll + 30.0), vRinged);
    out << "</g>\n";
}

// Bars to the right, in the colours of the triangles. Returns where it ends.
double QualityPanel::writeSmallestAngles(double y) {
    constexpr double ROW = 20.0, LABEL = 66.0, LONGEST = 170.0;
    text(0.0, y, "Smallest angle of each triangle");
    const double most = largestOf(aCounts), total = static_cast<double>(figures.numTriangles);
    for (std::size_t i = 0; i < aCounts.size(); ++i) {
        const double top = y + 10.0 + ROW * static_cast<double>(i);
        const auto from = static_cast<int>(i) * CLASS_WIDTH;
        text(LABEL - 8.0, top + 14.0, std::to_string(from) + " to " + std::to_string(from + CLASS_WIDTH),
             "end");
        const auto num = static_cast<double>(aCounts[i]);
        const double length = std::max(3.0, num / most * LONGEST); // a swatch, also where there are none
        bar(LABEL, top + 2.0, length, ROW - 4.0, QUALITY_COLORS[i]);
        if (aCounts[i] == 0) continue;
        text(LABEL + length + 8.0, top + 14.0,
             grouped(aCounts[i]) + " (" + rounded(num / total * 100.0, 1) + " %)");
    }
    return y + 10.0 + ROW * static_cast<double>(aCounts.size());
}

// Bars upwards over an axis.
double QualityPanel::writeAllAngles(double y) {
    constexpr double HEIGHT_OF_BARS = 90.0, COLUMN = 18.0;
    text(0.0, y, "All angles");
    const std::vector<std::uint64_t>& vCounts = figures.angles.vCounts;
    const double most = largestOf(vCounts), axis = y + 14.0 + HEIGHT_OF_BARS;
    for (std::size_t i = 0; i < vCounts.size(); ++i) {
        if (vCounts[i] == 0) continue;
        const double height = std::max(1.0, static_cast<double>(vCounts[i]) / most * HEIGHT_OF_BARS);
        bar(COLUMN * static_cast<double>(i) + 1.0, axis - height, COLUMN - 2.0, height, TEXT_COLOR);
    }
    bar(0.0, axis, COLUMN * static_cast<double>(vCounts.size()), 1.0, TEXT_COLOR);
    for (std::size_t i = 0; i <= vCounts.size(); i += 3)
        text(COLUMN * static_cast<double>(i), axis + 18.0, sixDigits(figures.angles.vLimits[i]), "middle");
    return axis + 18.0;
}

double QualityPanel::writeRanges(double y) {
    constexpr double ROW = 22.0, VALUE = 62.0;
    const auto row = [this, &y](const char* label, const std::string& value) {
        text(0.0, y, label);
        text(VALUE, y, value);
        y += ROW;
    };
    row("Angles",
        rounded(figures.angles.smallest, 3) + " to " + rounded(figures.angles.largest, 3) + " degrees");
    row("Edges", rangeOf(figures.edgeLengths));
    row("Areas", rangeOf(figures.areas));
    row("Aspect", rangeOf(figures.aspectRatios));
    return y;
}

void QualityPanel::writeRingLegend(double y, const std::vector<WorstTriangle>& vRinged) {
    if (vRinged.empty()) return;
    out << "<circle cx=\"10\" cy=\"" << y - 5.0 << "\" r=\"8\" fill=\"none\" stroke=\"" << RING_COLOR
        << "\" stroke-width=\"2\"/>\n";
    text(28.0, y,
         "the " + std::to_string(vRinged.size()) + " smallest angles, up to " +
             rounded(vRinged.back().smallestAngle, 3) + " degrees");
}

} // namespace cli
