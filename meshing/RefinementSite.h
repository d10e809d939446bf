#pragma once

#include "RefinementReport.h"
#include "meshing/InnerVtxMgr.h"
#include "meshing/MeshLimits.h"
#include "meshing/MeshingHost.h"
#include "meshing/SegmentOrigins.h"
#include "meshing/TriangleMarks.h"

namespace TESK_KIVO2D {

// What the parts of one refinement work on.
struct RefinementSite {
    MeshingHost& host;
    MeshStore& store;
    TeskTest& tests;
    ConstraintMgr& mgr;
    const MeshLimits& limits;
    TriangleMarks& marks;
    SegmentOrigins& origins;
    InnerVtxMgr& innerVertices;
    RefinementReport& report;

    // No further vertex may be inserted.
    bool isSpent() const {
        return report.numGridPoints + report.numInnerPoints + report.numSegmentPoints >=
               limits.parameters().maxInsertedPoints;
    }
};

} // namespace TESK_KIVO2D
