#include "cli/checkReport.h"

#include "cli/numbers.h"
#include "cli/words.h"

#include <nlohmann/json.hpp>

#include <numeric>

namespace cli {

namespace {

using Json = nlohmann::ordered_json;
using TESK_KIVO2D::Point2;

struct KindNames {
    const char* one;    // in lists
    const char* many;   // in the text
    const char* member; // of JSON
};
constexpr std::array<KindNames, NUM_FAULT_KINDS> KIND_NAMES{{
    {"crossing", "crossings", "crossings"},
    {"touch", "touches", "touches"},
    {"overlap", "overlaps", "overlaps"},
    {"duplicate", "duplicates", "duplicates"},
    {"shared-end", "shared ends", "sharedEnds"},
}};

bool isExtended(FaultKind kind) { return kind == FAULT_OVERLAP || kind == FAULT_DUPLICATE; }

std::string textOf(const Point2& point) { return shortest(point.x()) + " " + shortest(point.y()); }

Json toJson(const Point2& point) { return {point.x(), point.y()}; }

std::string textOf(const Fault& fault, const FaultPlace& place, std::size_t firstNumber) {
    const std::string text = std::to_string(fault.first + firstNumber) + " " +
                             std::to_string(fault.second + firstNumber) + " " + KIND_NAMES[fault.kind].one;
    if (isExtended(fault.kind)) return text + " from " + textOf(place.from) + " to " + textOf(place.to);
    return text + " at " + textOf(place.from);
}

Json toJson(const Fault& fault, const FaultPlace& place, std::size_t firstNumber) {
    Json json;
    json["segments"] = {fault.first + firstNumber, fault.second + firstNumber};
    json["kind"] = KIND_NAMES[fault.kind].one;
    if (isExtended(fault.kind)) {
        json["from"] = toJson(place.from);
        json["to"] = toJson(place.to);
    } else {
        json["at"] = toJson(place.from);
    }
    return json;
}

std::string countLines(const CheckReport& report) {
    std::string text;
    const char* const bound = report.bComplete ? "" : "at least ";
    for (int kind = 0; kind < NUM_FAULT_KINDS; ++kind) {
        if (kind == FAULT_SHARED_END && !report.bEndPoints) continue;
        const auto k = static_cast<std::size_t>(kind);
        text += line(KIND_NAMES[k].many, bound + std::to_string(report.aCounts[k]));
    }
    return text;
}

std::string faultLine(const CheckReport& report) {
    if (report.numAtFault == 0) return line("at fault", "none");
    const std::string pairs = counted(report.numPairs(), "pair");
    return line("at fault", counted(report.numAtFault, "segment") + ", in " +
                                (report.bComplete ? pairs : "more than " + pairs + ", where counting ended"));
}

std::string toText(const CheckReport& report) {
    std::string text = report.input + "\n";
    text += line("segments", std::to_string(report.numSegments));
    text += line("zero length", std::to_string(report.numZeroLength));
    text += countLines(report) + faultLine(report);
    if (report.boundingBox) text += line("bounding box", toText(*report.boundingBox));
    std::string times = "read " + milliseconds(report.readTime) + ", check " + milliseconds(report.checkTime);
    if (report.writeTime) times += ", write " + milliseconds(*report.writeTime);
    text += line("times", times);
    for (const std::string& output : report.vOutputs)
        text += line("written", output);
    return text;
}

// What is known before the pairs are.
Json headToJson(const CheckReport& report) {
    return {{"command", "check"},
            {"version", KIVO2D_COMMAND_VERSION},
            {"input", report.input},
            {"segments", report.numSegments},
            {"firstNumber", report.firstNumber},
            {"zeroLength", report.numZeroLength},
            {"boundingBox", report.boundingBox ? toJson(*report.boundingBox) : Json(nullptr)},
            {"segmentsAtFault", report.numAtFault}};
}

Json tailToJson(const CheckReport& report) {
    Json json;
    json["pairs"] = {{"total", report.numPairs()}, {"complete", report.bComplete}};
    for (int kind = 0; kind < NUM_FAULT_KINDS; ++kind) {
        if (kind == FAULT_SHARED_END && !report.bEndPoints) continue;
        const auto k = static_cast<std::size_t>(kind);
        json["pairs"][KIND_NAMES[k].member] = report.aCounts[k];
    }
    json["times"] = {{"read", report.readTime}, {"check", report.checkTime}};
    if (report.writeTime) json["times"]["write"] = *report.writeTime;
    json["outputs"] = report.vOutputs;
    return json;
}

// A file name need not be UTF-8; JSON must.
std::string dump(const Json& json, int indentation) {
    return json.dump(indentation, ' ', false, Json::error_handler_t::replace);
}

// Of an object, without its braces: more members may follow.
std::string membersOf(const Json& json) {
    const std::string text = dump(json, 2);
    return text.substr(2, text.size() - 4);
}

} // namespace

std::uint64_t CheckReport::numPairs() const {
    return std::accumulate(aCounts.begin(), aCounts.end(), std::uint64_t{0});
}

void CheckReportWriter::begin() {
    if (!bJson) return;
    out << "{\n" << membersOf(headToJson(report)) << ",\n";
    if (bList) out << "  \"list\": [";
}

void CheckReportWriter::add(const Fault& fault, const FaultPlace& place) {
    if (!bJson) {
        out << textOf(fault, place, report.firstNumber) << "\n";
        return;
    }
    out << (bFirst ? "\n    " : ",\n    ") << dump(toJson(fault, place, report.firstNumber), -1);
    bFirst = false;
}

void CheckReportWriter::end() {
    if (bJson) {
        if (bList) out << (bFirst ? "],\n" : "\n  ],\n");
        out << membersOf(tailToJson(report)) << "\n}\n";
    } else {
        out << toText(report);
    }
    out.flush();
}

} // namespace cli
