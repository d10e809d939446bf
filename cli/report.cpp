#include "cli/report.h"

#include "cli/meshReport.h"
#include "cli/numbers.h"
#include "cli/qualityReport.h"
#include "cli/reportParts.h"
#include "cli/words.h"

#include <nlohmann/json.hpp>

#include <array>
#include <utility>

namespace cli {

namespace {

using Json = nlohmann::ordered_json;

using NamedTime = std::pair<const char*, std::optional<double>>;
std::array<NamedTime, 11> namedTimes(const Report& report) {
    return {{{"read", report.readTime},
             {"triangulate", report.triangulateTime},
             {"segments", report.segmentsTime},
             {"import", report.importTime},
             {"cut", report.cutTime},
             {"zone", report.zoneTime},
             {"mesh", report.meshTime},
             {"unify", report.unifyTime},
             {"quality", report.qualityTime},
             {"check", report.checkTime},
             {"write", report.writeTime}}};
}

std::string hullText(const Report& report) {
    if (report.bIs2D) return std::to_string(report.numHullVertices) + " vertices";
    return report.numVertices == 0 ? "none" : "none, all points lie on one line";
}

std::string triangulationLines(const Report& report) {
    std::string text = line("duplicates", std::to_string(report.numDuplicates));
    text += line("vertices", std::to_string(report.numVertices));
    text += line("triangles", std::to_string(report.numTriangles));
    text += line("hull", hullText(report));
    return text;
}

std::string segmentLines(const SegmentReport& segments) {
    std::string text =
        std::to_string(segments.numRead) + " read, " + std::to_string(segments.numSkipped) + " skipped";
    if (segments.numNewEnds > 0) text += ", " + counted(segments.numNewEnds, "new end");
    text = line("segments", text);
    std::string edges = counted(segments.numEdges, "edge") + ", " +
                        counted(segments.numSteinerPoints, "Steiner point") + ", " +
                        counted(segments.numCrossings, "crossing");
    if (segments.numMissing > 0) edges += ", " + std::to_string(segments.numMissing) + " MISSING";
    text += line("constraints", edges);
    if (segments.numHoles + segments.numRegions == 0) return text;
    return text +
           line("domain", counted(segments.numHoles, "hole") + ", " + counted(segments.numRegions, "region"));
}

Json segmentsToJson(const SegmentReport& segments) {
    return {{"read", segments.numRead},           {"skipped", segments.numSkipped},
            {"newEnds", segments.numNewEnds},     {"edges", segments.numEdges},
            {"missing", segments.numMissing},     {"steinerPoints", segments.numSteinerPoints},
            {"crossings", segments.numCrossings}, {"holes", segments.numHoles},
            {"regions", segments.numRegions}};
}

std::string importLines(const ImportReport& import) {
    return line("imported", counted(import.numTriangles, "triangle") + " with " +
                                counted(import.numCorners, "corner") + ", " +
                                std::to_string(import.numTurned) + " turned round") +
           line("", counted(import.numBorderEdges, "border edge") + ", " +
                        counted(import.numInnerConstraintEdges, "inner constraint edge"));
}

Json importToJson(const ImportReport& import) {
    return {{"triangles", import.numTriangles},
            {"corners", import.numCorners},
            {"turnedRound", import.numTurned},
            {"borderEdges", import.numBorderEdges},
            {"innerConstraintEdges", import.numInnerConstraintEdges}};
}

std::string cutLines(const CutReport& cut) {
    return line("cuts", counted(cut.numKnives, "knife", "knives") + ", " + counted(cut.numEdges, "edge") +
                            ", " + counted(cut.numNewVertices, "new vertex", "new vertices") + ", " +
                            counted(cut.numSplit, "constraint edge") + " split, " +
                            counted(cut.numPieces, "piece"));
}

Json cutToJson(const CutReport& cut) {
    return {{"knives", cut.numKnives},
            {"edges", cut.numEdges},
            {"newVertices", cut.numNewVertices},
            {"splitConstraintEdges", cut.numSplit},
            {"pieces", cut.numPieces}};
}

std::string zoneLine(const ZoneReport& zone) {
    return line("zone", zone.kind + ", " + counted(zone.numTriangles, "triangle") + ", area " +
                            shortest(zone.area) + ", " + counted(zone.numBorderEdges, "border edge") + ", " +
                            counted(zone.numParts, "part"));
}

// An area beyond the doubles becomes null.
Json zoneToJson(const ZoneReport& zone) {
    return {{"kind", zone.kind},
            {"triangles", zone.numTriangles},
            {"area", zone.area},
            {"borderEdges", zone.numBorderEdges},
            {"parts", zone.numParts}};
}

std::string unifyLine(const UnifyReport& unify) {
    return line("grid", "width " + shortest(unify.width) + ", " + std::to_string(unify.numMerged) +
                            " vertices fell together with another, " + std::to_string(unify.numBeside) +
                            " stayed beside it");
}

Json unifyToJson(const UnifyReport& unify) {
    return {{"width", unify.width}, {"merged", unify.numMerged}, {"beside", unify.numBeside}};
}

} // namespace

std::string toText(const Report& report) {
    std::string text = (report.input.empty() ? report.kind : report.input) + "\n";
    text += line("points", std::to_string(report.numPoints));
    if (report.bTriangulated)
        text += triangulationLines(report);
    else if (report.quality)
        text += line("duplicates", std::to_string(report.numDuplicates));
    if (report.segments) text += segmentLines(*report.segments);
    if (report.import) text += importLines(*report.import);
    if (report.cut) text += cutLines(*report.cut);
    if (report.zone) text += zoneLine(*report.zone);
    if (report.unify) text += unifyLine(*report.unify);
    if (report.mesh)
        text += meshLines(*report.mesh, report.quality->figures);
    else if (report.quality)
        text += qualityLines(*report.quality);
    if (report.boundingBox) text += line("bounding box", toText(*report.boundingBox));
    if (report.bTriangulated) text += line("threads", std::to_string(report.numThreads));
    if (report.bValid) text += line("valid", *report.bValid ? "yes" : "NO");
    std::string times;
    for (const auto& [name, time] : namedTimes(report)) {
        if (time) times += (times.empty() ? "" : ", ") + std::string(name) + " " + milliseconds(*time);
    }
    text += line("times", times);
    for (const std::string& output : report.vOutputs)
        text += line("written", output);
    return text;
}

std::string toJson(const Report& report) {
    Json json;
    json["command"] = report.command;
    json["version"] = KIVO2D_COMMAND_VERSION;
    if (report.input.empty())
        json["kind"] = report.kind;
    else
        json["input"] = report.input;
    json["points"] = report.numPoints;
    if (report.bTriangulated || report.quality) json["duplicates"] = report.numDuplicates;
    if (report.bTriangulated) {
        json["vertices"] = report.numVertices;
        json["triangles"] = report.numTriangles;
        json["hullVertices"] = report.numHullVertices;
        json["is2D"] = report.bIs2D;
    }
    if (report.segments) json["segments"] = segmentsToJson(*report.segments);
    if (report.import) json["import"] = importToJson(*report.import);
    if (report.cut) json["cut"] = cutToJson(*report.cut);
    if (report.zone) json["zone"] = zoneToJson(*report.zone);
    if (report.unify) json["unify"] = unifyToJson(*report.unify);
    if (report.mesh)
        json["mesh"] = meshToJson(*report.mesh, report.quality->figures);
    else if (report.quality)
        json["quality"] = qualityToJson(*report.quality);
    json["boundingBox"] = report.boundingBox ? toJson(*report.boundingBox) : Json(nullptr);
    if (report.bTriangulated) json["threads"] = report.numThreads;
    if (report.bValid) json["valid"] = *report.bValid;
    json["times"] = Json::object();
    for (const auto& [name, time] : namedTimes(report)) {
        if (time) json["times"][name] = *time;
    }
    json["outputs"] = report.vOutputs;
    return dump(json, 2) + "\n";
}

} // namespace cli
