#pragma once

#include "cli/Mesh.h"
#include "cli/commands.h"
#include "cli/insertion.h"
#include "cli/progress.h"
#include "cli/soupFaults.h"

#include <Kivo_2D.h>

#include <chrono>

namespace cli {

class StopWatch {
public:
    double seconds() const {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }

private:
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
};

// Of points that are not none.
Box boxOf(const std::vector<TESK_KIVO2D::Point2>& vPoints);

// Everything about the options that can be refused is refused before the work, which may be long. Throws
// `UsageError`.
void checkUsage(const TriangulateOptions& options);

// A run of a command that triangulates a file. The steps, which enter what they find in the report, are
// called in the order in which they stand here; those that a command does not need are left out. All throw
// `FileError` or `UsageError`.
class Run {
public:
    // Reads. The options must outlive the run.
    Run(const std::string& command, const TriangulateOptions& options_);
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;
    ~Run();

    // Points and segments.
    void insert();
    // The triangles of a mesh file, which are the zone, if the input is one.
    void importMesh();
    // Refuses pictures of what has no triangles.
    void checkPictures() const;
    // Along the knives of the input, if it has some.
    void cut();
    // The zone that the options ask for, if they do.
    void createZone();
    // Moves the vertices to a grid, if the options ask for it.
    void unify();
    // After vertices or constraints were added to the triangulation: enters them in the table of points, and
    // finds anew what became of the segments.
    void collectNewVertices();
    void countTriangulation();
    // Only if the options ask for it. A failure stands in the report, and the run goes on.
    void check();
    // The quality of the zone's triangles, or of all.
    void measure();
    // Makes the mesh for the outputs, and measures the zone.
    void collectMesh();
    void write();

    const TriangulateOptions& options;
    Report report;
    Input input;
    TESK_KIVO2D::Kivo_2D triangulation;
    Insertion insertion;
    Constraints constraints;
    TESK_KIVO2D::Zone2* pZone = nullptr; // null: all triangles
    Mesh mesh;

private:
    // For the report: edges that are pieces of segments.
    void countSegmentEdges();
    // Draws pictures of the faults, if the outputs ask for some, and throws.
    [[noreturn]] void refuseMesh(const SoupFaults& faults);
    bool isZoneGiven() const { return !input.vTriangles.empty(); }
    std::vector<double> attributesOfMesh() const;

    ProgressBar progressBar;
    double collectTime = 0.0;
};

} // namespace cli
