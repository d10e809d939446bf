#pragma once

#include "cli/generate.h"
#include "cli/report.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace cli {

struct TriangulateOptions {
    std::string input;
    std::string segments; // a file of segments beside the points; empty for none
    std::string points;   // a file of points beside a mesh; empty for none
    std::string zone;     // one of zoneKinds(); empty for all triangles
    std::vector<std::string> vOutputs;
    std::vector<std::string> vCuts; // knives: "x0,y0,x1,y1", or a file of segments
    bool bMesh = false;             // the triangulation is the start of a mesh
    bool bMeasure = false;    // the quality of triangles is asked for: mesh files are read, and .svg drawn
    bool bImport = false;     // the input is a mesh file, whose triangles stay as they are
    bool bFlipY = false;      // the input's y axis points downwards
    bool bConforming = false; // segments are divided until the triangulation is Delaunay
    bool bCheck = false;
    bool bProgress = false;           // also where nobody looks
    int numThreads = 1;               // 0: as many as the hardware has
    std::optional<double> unifyWidth; // of the grid to which vertices move
};

// Limits that are not set do not hold.
struct MeshOptions {
    TriangulateOptions triangulate; // with a zone
    double minAngle = 20.0;
    std::optional<double> maxArea;
    std::optional<double> maxEdge;
    std::optional<double> minEdge; // a small part of the zone's size where it is not set
    std::optional<double> growFactor;
    std::optional<std::int64_t> maxPoints;
    bool bNoSplit = false;
    std::string grid; // "length,dx,dy"; empty for none
};

// Reads, triangulates, cuts, unifies and checks when asked, and writes every output. A failed check is told
// by the report, and the outputs are written all the same. Throws `FileError` or `UsageError`.
Report runTriangulate(const TriangulateOptions& options);

// The same, and refines the zone before it unifies, checks and writes. An interrupt from the keyboard ends
// the refinement; what was reached is written, and the report says so.
Report runMesh(const MeshOptions& options);

// The same for a mesh file, whose triangles become part of the triangulation of what is beside them.
Report runImport(const TriangulateOptions& options);

// Measures the triangles of a mesh file, or those of a triangulation, and draws pictures of their quality.
// Throws `FileError` or `UsageError`.
Report runQuality(const TriangulateOptions& options);

// Generates points and writes them. Throws `FileError` or `UsageError`.
Report runGenerate(const GenerateOptions& options, const std::string& output);

} // namespace cli
