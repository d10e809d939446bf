#include "cli/meshReport.h"

#include "cli/qualityReport.h"
#include "cli/words.h"

#include <array>

namespace cli {

namespace {

using TESK_KIVO2D::MeshObstacle;
using TESK_KIVO2D::MeshRule;
using TESK_KIVO2D::RefinementEnd;
using TESK_KIVO2D::RefinementReport;
using TESK_KIVO2D::ZoneQuality;
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

} // namespace

std::string meshLines(const MeshReport& report, const ZoneQuality& quality) {
    const RefinementReport& refinement = report.refinement;
    std::string points = counted(refinement.numInnerPoints, "point") + " inside and " +
                         std::to_string(refinement.numSegmentPoints) + " on segments";
    if (report.bGrid) points = counted(refinement.numGridPoints, "point") + " of the grid, " + points;
    std::string text = line("mesh", std::string(wordingOf(refinement.end).text) + ", " + points + " in " +
                                        std::to_string(refinement.numPasses) +
                                        (refinement.numPasses == 1 ? " pass" : " passes"));
    text += line("", std::to_string(quality.numVertices) + " vertices, " +
                         counted(quality.numTriangles, "triangle"));
    text += angleLines(quality) + areaLine(quality) + edgeLine(quality);
    text += line("limits", (refinement.numBadTriangles == 0
                                ? "all triangles meet them"
                                : "not met by " + counted(refinement.numBadTriangles, "triangle")) +
                               (report.bMovedAfterwards ? ", before --unify" : "") +
                               (refinement.numBadTriangles == 0 ? "" : ":"));
    forEachUnmet(refinement, [&text](const Wording& rule, const Wording& obstacle, std::uint64_t num) {
        text += line("", std::to_string(num) + " with " + rule.text + ", " + obstacle.text);
    });
    return text;
}

Json meshToJson(const MeshReport& report, const ZoneQuality& quality) {
    const RefinementReport& refinement = report.refinement;
    Json unmet = Json::array();
    forEachUnmet(refinement, [&unmet](const Wording& rule, const Wording& obstacle, std::uint64_t num) {
        unmet.push_back({{"limit", rule.name}, {"reason", obstacle.name}, {"triangles", num}});
    });
    return {{"end", wordingOf(refinement.end).name},
            {"passes", refinement.numPasses},
            {"gridPoints", refinement.numGridPoints},
            {"innerPoints", refinement.numInnerPoints},
            {"segmentPoints", refinement.numSegmentPoints},
            {"minAngle", report.minAngle},
            {"minEdge", report.minEdge},
            {"vertices", quality.numVertices},
            {"triangles", quality.numTriangles},
            {"smallestAngle", quality.angles.smallest},
            {"largestAngle", quality.angles.largest},
            {"smallestAngles", smallestAnglesToJson(quality)},
            {"areas", extremesToJson(quality.areas)},
            {"edges", extremesToJson(quality.edgeLengths)},
            {"badTriangles", refinement.numBadTriangles},
            {"unmet", unmet}};
}

} // namespace cli
