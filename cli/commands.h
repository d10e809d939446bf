#pragma once

#include "cli/generate.h"
#include "cli/report.h"

#include <string>
#include <vector>

namespace cli {

struct TriangulateOptions {
    std::string input;
    std::string segments; // a file of segments beside the points; empty for none
    std::string zone;     // one of zoneKinds(); empty for all triangles
    std::vector<std::string> vOutputs;
    bool bFlipY = false;      // the input's y axis points downwards
    bool bConforming = false; // segments are divided until the triangulation is Delaunay
    bool bCheck = false;
    bool bProgress = false; // also where nobody looks
    int numThreads = 1;     // 0: as many as the hardware has
};

// Reads, triangulates, checks when asked, and writes every output. A failed check is told by the report, and
// the outputs are written all the same. Throws `FileError` or `UsageError`.
Report runTriangulate(const TriangulateOptions& options);

// Generates points and writes them. Throws `FileError` or `UsageError`.
Report runGenerate(const GenerateOptions& options, const std::string& output);

} // namespace cli
