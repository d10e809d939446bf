#pragma once

#include "MeshGenParams.h"
#include "RefinementReport.h"
#include "Triangle2.h"
#include "kernel/ProgressHub.h"
#include "meshing/GridFrame.h"
#include "meshing/InnerVtxMgr.h"
#include "meshing/MeshingHost.h"
#include "meshing/RefinementPass.h"
#include "meshing/SegmentOrigins.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace TESK_KIVO2D {

// What refinements of one triangulation leave for later.
struct RefinementMemory {
    InnerVtxMgr innerVertices;
    SegmentOrigins origins;
    RefinementReport report; // of the latest run
};

class GridMesher;

// One refinement of a zone: checks the parameters, then makes passes over the zone's triangles until one has
// nothing to do.
//
// Whatever ends it early, be it an exception of the client's or memory, ends it between two vertices, so the
// triangulation is valid.
class RefinementDriver {
public:
    RefinementDriver(MeshingHost& triangulation, RefinementMemory& refinementMemory,
                     const MeshGenParams& parameters)
        : host(triangulation), memory(refinementMemory), params(parameters), report(memory.report) {}

    // Parameters that make no sense are reported and throw KivoException. Fills the report.
    void run();

private:
    struct Round;

    void checkParameters() const;
    void mesh();
    void fillWithGrid(std::vector<Triangle2*>& vTriangles, ProgressHub::Operation& progress);
    void insertGrid(GridMesher& grid, ProgressHub::Operation& progress);
    void makePasses(std::vector<Triangle2*> vTriangles, ProgressHub::Operation& progress);
    void endWithoutMemory();
    // Returns true when the mesh has changed.
    bool makePass(const MeshLimits& limits, std::vector<Triangle2*> vZone, ProgressHub::Operation& progress);
    bool collect(const std::vector<Triangle2*>& vTriangles, RefinementPass& pass);
    void work(const RefinementSite& site, RefinementPass& pass, ProgressHub::Operation& progress);
    void tell(ProgressHub::Operation& progress, std::size_t numDone, std::size_t numWaiting);
    void tellSteps(ProgressHub::Operation& progress, std::size_t num);
    bool mustEnd();
    std::vector<Triangle2*> zoneTriangles();
    TriangleMarks markTriangles(const std::vector<Triangle2*>& vTriangles) const;
    void countWhatIsLeft(const MeshLimits& limits);
    RefinementSite siteFor(const MeshLimits& limits, TriangleMarks& marks) const;

    MeshingHost& host;
    RefinementMemory& memory;
    const MeshGenParams& params;
    RefinementReport& report;
    std::size_t numTold = 0;          // of the progress
    std::optional<GridFrame> newGrid; // whose diagonals are to be turned before the next pass
};

} // namespace TESK_KIVO2D
