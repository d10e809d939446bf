#include "cli/meshReport.h"

#include "cli/numbers.h"
#include "cli/words.h"

#include <algorithm>
#include <array>

namespace cli {

namespace {

using TESK_KIVO2D::MeshObstacle;
using TESK_KIVO2D::MeshRule;
using TESK_KIVO2D::RefinementEnd;
using TESK_KIVO2D::RefinementReport;
using Json = nlohmann::ordered_json;

// A name for programs and words for people.
struct Wording {
    const char* name;
    const char* text;
};

// In the order of `MeshRule`.
constexpr std::array<Wording, RefinementReport::numRules> RULES{{
    {"minAngle", "an angle below the limit"},
    {"maxEdge", "an edge above --max-edge"},
    {"maxArea", "an area above the limit"},
    {"grow", "a larger neighbour than --grow allows"},
}};

// In the order of `MeshObstacle`.
constexpr std::array<Wording, RefinementReport::numObstacles> OBSTACLES{{
    {"smallInputAngle", "beside segments that meet at a small angle"},
    {"minEdge", "beside a segment that --min-edge keeps from being split"},
    {"noSplit", "beside a segment that --no-split keeps from being split"},
    {"arithmetic", "where doubles leave no room for another point"},
    {"openBorder", "beside an edge of the border that is no segment"},
    {"notReached", "not treated before the end"},
}};

Wording wordingOf(RefinementEnd end) {
    switch (end) {
    case RefinementEnd::COMPLETE:
        return {"complete", "complete"};
    case RefinementEnd::PASS_LIMIT:
        return {"passLimit", "INCOMPLETE, ended by the limit of passes"};
    case RefinementEnd::POINT_LIMIT:
        return {"pointLimit", "INCOMPLETE, ended by --max-points"};
    case RefinementEnd::OUT_OF_MEMORY:
        return {"outOfMemory", "INCOMPLETE, memory ran out"};
    case RefinementEnd::STOPPED:
        return {"interrupted", "INCOMPLETE, interrupted"};
    case RefinementEnd::ABANDONED:
        break;
    }
    return {"abandoned", "INCOMPLETE, abandoned"};
}

template<class Visit>
void forEachUnmet(const RefinementReport& refinement, const Visit& visit) {
    for (std::size_t rule = 0; rule < RULES.size(); ++rule) {
        for (std::size_t obstacle = 0; obstacle < OBSTACLES.size(); ++obstacle) {
            const std::uint64_t num = refinement.aBad[rule][obstacle];
            if (num > 0) visit(RULES[rule], OBSTACLES[obstacle], num);
        }
    }
}

std::string padded(const std::string& text, std::size_t width) {
    return std::string(width - std::min(width, text.size()), ' ') + text;
}

// One line for each bin between the first and the last that hold any.
std::string histogramLines(const MeshQuality& quality) {
    constexpr std::size_t LONGEST_BAR = 40;
    const std::size_t most = *std::max_element(quality.aHistogram.begin(), quality.aHistogram.end());
    const std::size_t width = std::to_string(most).size();
    std::string text;
    std::size_t numLeft = quality.numTriangles;
    for (std::size_t bin = 0; bin < MeshQuality::numBins && numLeft > 0; ++bin) {
        const std::size_t num = quality.aHistogram[bin];
        if (num == 0 && numLeft == quality.numTriangles) continue;
        numLeft -= num;
        const std::size_t from = bin * MeshQuality::binWidth;
        const std::size_t barLength = (num * LONGEST_BAR + most - 1) / most; // one, however few there are
        const std::string label = padded(std::to_string(from), 2) + " to " +
                                  padded(std::to_string(from + MeshQuality::binWidth), 2);
        text += line("", label + padded(std::to_string(num), width + 2) + "  " + std::string(barLength, '#'));
    }
    return text;
}

std::string extremes(const std::string& least, const std::string& most) { return least + " to " + most; }

} // namespace

std::string meshLines(const MeshReport& report) {
    const RefinementReport& refinement = report.refinement;
    const MeshQuality& quality = report.quality;
    std::string text = line("mesh", std::string(wordingOf(refinement.end).text) + ", " +
                                        counted(refinement.numInnerPoints, "point") + " inside and " +
                                        std::to_string(refinement.numSegmentPoints) + " on segments in " +
                                        std::to_string(refinement.numPasses) +
                                        (refinement.numPasses == 1 ? " pass" : " passes"));
    text += line("", std::to_string(quality.numVertices) + " vertices, " +
                         counted(quality.numTriangles, "triangle"));
    text += line("angles", extremes(rounded(quality.smallestAngle, 4), rounded(quality.largestAngle, 4)) +
                               " degrees; triangles by their smallest angle:");
    text += histogramLines(quality);
    text += line("areas", extremes(sixDigits(quality.minArea), sixDigits(quality.maxArea)));
    text += line("edges", extremes(sixDigits(quality.shortestEdge), sixDigits(quality.longestEdge)));
    text += line("limits", refinement.numBadTriangles == 0
                               ? "all triangles meet them"
                               : "not met by " + counted(refinement.numBadTriangles, "triangle") + ":");
    forEachUnmet(refinement, [&text](const Wording& rule, const Wording& obstacle, std::uint64_t num) {
        text += line("", std::to_string(num) + " with " + rule.text + ", " + obstacle.text);
    });
    return text;
}

Json meshToJson(const MeshReport& report) {
    const RefinementReport& refinement = report.refinement;
    const MeshQuality& quality = report.quality;
    Json histogram = Json::array();
    for (std::size_t bin = 0; bin < MeshQuality::numBins; ++bin) {
        const std::size_t from = bin * MeshQuality::binWidth;
        histogram.push_back(
            {{"from", from}, {"to", from + MeshQuality::binWidth}, {"triangles", quality.aHistogram[bin]}});
    }
    Json unmet = Json::array();
    forEachUnmet(refinement, [&unmet](const Wording& rule, const Wording& obstacle, std::uint64_t num) {
        unmet.push_back({{"limit", rule.name}, {"reason", obstacle.name}, {"triangles", num}});
    });
    return {{"end", wordingOf(refinement.end).name},
            {"passes", refinement.numPasses},
            {"innerPoints", refinement.numInnerPoints},
            {"segmentPoints", refinement.numSegmentPoints},
            {"minAngle", report.minAngle},
            {"minEdge", report.minEdge},
            {"vertices", quality.numVertices},
            {"triangles", quality.numTriangles},
            {"smallestAngle", quality.smallestAngle},
            {"largestAngle", quality.largestAngle},
            {"smallestAngles", histogram},
            {"areas", {{"min", quality.minArea}, {"max", quality.maxArea}}},
            {"edges", {{"min", quality.shortestEdge}, {"max", quality.longestEdge}}},
            {"badTriangles", refinement.numBadTriangles},
            {"unmet", unmet}};
}

} // namespace cli
