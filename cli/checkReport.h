#pragma once

#include "cli/StandardOutput.h"
#include "cli/checkFaults.h"
#include "cli/report.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace cli {

// What the command `check` tells. Times are seconds.
struct CheckReport {
    std::string input;
    std::size_t numSegments = 0;
    std::size_t numZeroLength = 0;
    std::size_t firstNumber = 1;    // of the segments in the list
    std::optional<Box> boundingBox; // none without segments
    bool bEndPoints = false;        // shared ends are faults
    std::size_t numAtFault = 0;     // segments
    FaultCounts aCounts{};
    bool bComplete = true; // false when counting ended before all pairs were found
    double readTime = 0.0;
    double checkTime = 0.0;
    std::optional<double> writeTime;
    std::vector<std::string> vOutputs;

    std::uint64_t numPairs() const;
};

// Writes a report as text or JSON, with a list of pairs that may be longer than memory: begin, then add for
// each pair of the list, then end.
class CheckReportWriter {
public:
    CheckReportWriter(const CheckReport& report_, bool bJson_, bool bList_)
        : report(report_), bJson(bJson_), bList(bList_) {}

    void begin();
    void add(const Fault& fault, const FaultPlace& place);
    void end();

private:
    const CheckReport& report;
    bool bJson;
    bool bList;
    bool bFirst = true;
    StandardOutput out;
};

} // namespace cli
