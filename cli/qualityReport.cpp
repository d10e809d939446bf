#include "cli/qualityReport.h"

#include "cli/numbers.h"
#include "cli/words.h"

#include <algorithm>
#include <limits>

namespace cli {

namespace {

using TESK_KIVO2D::Point2;
using TESK_KIVO2D::QualityDistribution;
using TESK_KIVO2D::ZoneQuality;
using Json = nlohmann::ordered_json;

std::string padded(const std::string& text, std::size_t width) {
    return std::string(width - std::min(width, text.size()), ' ') + text;
}

// The bins between the first and the last that hold any: from first to before end.
struct BinRange {
    std::size_t first, end;
};

BinRange usedBins(const QualityDistribution& distribution) {
    const auto& vCounts = distribution.vCounts;
    BinRange range{0, vCounts.size()};
    while (range.first < range.end && vCounts[range.first] == 0)
        ++range.first;
    while (range.end > range.first && vCounts[range.end - 1] == 0)
        --range.end;
    return range;
}

std::string limitText(double limit) {
    return limit == std::numeric_limits<double>::max() ? "more" : sixDigits(limit);
}

// One line a bin. A histogram of many bins leaves out those that are empty.
std::string histogramLines(const QualityDistribution& distribution) {
    constexpr std::size_t LONGEST_BAR = 40, MANY = 20;
    const BinRange range = usedBins(distribution);
    if (range.first == range.end) return {};
    const std::uint64_t most = *std::max_element(distribution.vCounts.begin(), distribution.vCounts.end());
    std::size_t limitWidth = 0;
    for (std::size_t i = range.first; i <= range.end; ++i)
        limitWidth = std::max(limitWidth, limitText(distribution.vLimits[i]).size());
    const std::size_t width = std::to_string(most).size();
    std::string text;
    for (std::size_t i = range.first; i < range.end; ++i) {
        const std::uint64_t num = distribution.vCounts[i];
        if (num == 0 && range.end - range.first > MANY) continue;
        const auto barLength = static_cast<std::size_t>( // one, however few there are
            (static_cast<double>(num) * LONGEST_BAR + static_cast<double>(most) - 1.0) /
            static_cast<double>(most));
        text += line("", padded(limitText(distribution.vLimits[i]), limitWidth) + " to " +
                             padded(limitText(distribution.vLimits[i + 1]), limitWidth) +
                             padded(std::to_string(num), width + 2) + "  " + std::string(barLength, '#'));
    }
    return text;
}

std::string extremes(const QualityDistribution& distribution) {
    return sixDigits(distribution.smallest) + " to " + sixDigits(distribution.largest);
}

std::string extremesAndMean(const QualityDistribution& distribution) {
    return extremes(distribution) + ", mean " + sixDigits(distribution.mean);
}

Json binsToJson(const QualityDistribution& distribution, const char* counted) {
    Json bins = Json::array();
    for (std::size_t i = 0; i < distribution.vCounts.size(); ++i)
        bins.push_back({{"from", distribution.vLimits[i]},
                        {"to", distribution.vLimits[i + 1]},
                        {counted, distribution.vCounts[i]}});
    return bins;
}

// What was cut off at the end of the doubles is null.
Json numberToJson(double value) {
    return value == std::numeric_limits<double>::max() ? Json(nullptr) : Json(value);
}

Json distributionToJson(const QualityDistribution& distribution) {
    return {{"count", distribution.count},
            {"min", numberToJson(distribution.smallest)},
            {"max", numberToJson(distribution.largest)},
            {"mean", numberToJson(distribution.mean)},
            {"bins", binsToJson(distribution, "count")}};
}

Json worstToJson(const std::vector<WorstTriangle>& vWorst) {
    Json worst = Json::array();
    for (const WorstTriangle& triangle : vWorst) {
        Json corners = Json::array();
        for (const Point2& corner : triangle.aCorners)
            corners.push_back({corner.x(), corner.y()});
        worst.push_back({{"smallestAngle", triangle.smallestAngle}, {"corners", corners}});
    }
    return worst;
}

std::string worstLines(const std::vector<WorstTriangle>& vWorst) {
    constexpr std::size_t MAX_SHOWN = 5;
    std::string text;
    for (std::size_t i = 0; i < std::min(MAX_SHOWN, vWorst.size()); ++i) {
        const Point2& corner = vWorst[i].aCorners[0];
        text += line(i == 0 ? "worst" : "", rounded(vWorst[i].smallestAngle, 4) + " degrees at (" +
                                                shortest(corner.x()) + ", " + shortest(corner.y()) + ")");
    }
    return text;
}

} // namespace

std::string angleLines(const ZoneQuality& quality) {
    return line("angles", rounded(quality.angles.smallest, 4) + " to " + rounded(quality.angles.largest, 4) +
                              " degrees; triangles by their smallest angle:") +
           histogramLines(quality.smallestAngles);
}

std::string areaLine(const ZoneQuality& quality) { return line("areas", extremes(quality.areas)); }

std::string edgeLine(const ZoneQuality& quality) { return line("edges", extremes(quality.edgeLengths)); }

Json smallestAnglesToJson(const ZoneQuality& quality) {
    return binsToJson(quality.smallestAngles, "triangles");
}

Json extremesToJson(const QualityDistribution& distribution) {
    return {{"min", numberToJson(distribution.smallest)}, {"max", numberToJson(distribution.largest)}};
}

std::string qualityLines(const Measurement& measurement) {
    const ZoneQuality& quality = measurement.figures;
    return line("quality", counted(quality.numTriangles, "triangle") + ", " +
                               std::to_string(quality.numVertices) + " vertices, " +
                               counted(quality.numEdges, "edge") + ", area " + sixDigits(quality.totalArea)) +
           angleLines(quality) + line("all angles", "mean " + rounded(quality.angles.mean, 4) + " degrees") +
           histogramLines(quality.angles) + line("areas", extremesAndMean(quality.areas)) +
           histogramLines(quality.areas) + line("edges", extremesAndMean(quality.edgeLengths)) +
           histogramLines(quality.edgeLengths) +
           line("aspect ratios", extremesAndMean(quality.aspectRatios)) +
           histogramLines(quality.aspectRatios) + worstLines(measurement.vWorst);
}

Json qualityToJson(const Measurement& measurement) {
    const ZoneQuality& quality = measurement.figures;
    return {{"vertices", quality.numVertices},
            {"triangles", quality.numTriangles},
            {"area", numberToJson(quality.totalArea)},
            {"angles", distributionToJson(quality.angles)},
            {"smallestAngles", distributionToJson(quality.smallestAngles)},
            {"areas", distributionToJson(quality.areas)},
            {"edges", distributionToJson(quality.edgeLengths)},
            {"aspectRatios", distributionToJson(quality.aspectRatios)},
            {"worst", worstToJson(measurement.vWorst)}};
}

} // namespace cli
