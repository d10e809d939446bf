#pragma once

#include "MeshGenParams.h"
#include "RefinementReport.h"
#include "Triangle2.h"
#include "meshing/GridFrame.h"
#include "meshing/InnerVtxMgr.h"
#include "meshing/MeshingHost.h"
#include "meshing/RowSweep.h"
#include "meshing/TriangleMarks.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace TESK_KIVO2D {

// Fills a zone with the points of a square grid before it is refined. They keep half the grid's length from
// vertices and constraint segments; so triangles between them are halves of squares, and what is left along
// the border is wide enough for good ones. Points that lie exactly on a segment of the zone which may be
// split are inserted too, where nothing else is near: a rectangle along the grid is filled up to its sides.
class GridMesher {
public:
    // Whether the parameters ask for a grid. What is not finite is reported.
    static bool isWanted(const MeshGenParams& params);

    // Adds to the report's grid points, and new vertices to the record. The box is that of the zone.
    GridMesher(MeshingHost& triangulation, const MeshGenParams& parameters, InnerVtxMgr& record,
               RefinementReport& refinementReport, const Bbox2& box);

    // Plans where the points come, none if a warning says that the grid is too fine. The marks are those of
    // the zone's triangles. Ends early when that is requested.
    void createStripes(const std::vector<Triangle2*>& vTriangles, TriangleMarks marks);
    // Inserts the next of them.
    void insertSome();

    // Of those planned.
    std::uint64_t numWaiting() const { return numPlanned - numDone; }
    // True when somebody else changed the triangulation since the plan was made: then it does not hold.
    bool isStale() const { return host.changeCount() != expectedChangeCount; }
    const GridFrame& gridFrame() const { return frame; }

private:
    // Neighbouring points of a row.
    struct Stripe {
        std::int64_t row;
        std::int64_t first;
        std::int64_t last;
    };
    // A point on the segment between two vertices, which may lie a little beside as doubles go.
    struct SegmentPoint {
        std::size_t idxSegment;
        double along; // from the first one
        Point2* pFrom;
        Point2* pTo;
        Point2 point;
    };

    struct Counter;

    std::vector<GridObstacle> findObstacles(const std::vector<Triangle2*>& vTriangles,
                                            TriangleMarks marks) const;
    bool maySplit(const Point2* p, const Point2* q) const;
    bool isTooLarge(const std::vector<GridObstacle>& vObstacles) const;
    void planRows(RowSweep& sweep);
    void checkStop(double freeBeyondEnd) const;
    void addStripe(std::int64_t row, double low, double high);
    void addPointsOn(const GridObstacle& segment, std::int64_t row, double low, double high);
    void addPointOn(const GridObstacle& segment, const Point2& p, double along);
    void append(std::int64_t row, std::int64_t first, std::int64_t last);
    void clearPlan();
    void leaveOut(const std::string& reason);
    void leaveOutTooMany();
    bool isStopRequested() const;
    void fillChunk();
    void insertChunk();
    void splitSegments();

    MeshingHost& host;
    const MeshGenParams& params;
    InnerVtxMgr& innerVertices;
    RefinementReport& report;
    const GridFrame frame;
    const double minPiece; // of split segments, in units of the grid

    // The plan, in the order in which it is carried out.
    std::vector<Point2> vOnSegments; // exactly
    std::vector<Stripe> vStripes;
    std::vector<SegmentPoint> vSplits; // by segment, and along it
    std::uint64_t numPlanned = 0, numDone = 0;
    std::uint64_t expectedChangeCount = 0;

    std::size_t idxStripe = 0;
    std::int64_t numDoneOfStripe = 0;
    Point2* pPieceFrom = nullptr; // where the last piece of the segment in work begins
    std::vector<Point2> vChunk;
    std::vector<Point2*> vHandles;
};

} // namespace TESK_KIVO2D
