#pragma once

#include "ConstraintSegment2.h"
#include "Point2.h"
#include "RefinementReport.h"
#include "core/Cavity.h"
#include "core/HalfEdge.h"
#include "meshing/RefinementSite.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace TESK_KIVO2D {

// Splits constraint segments at Steiner points. The point is inserted like any other, across the segment's
// edge if need be; rounding mostly puts it a little beside. Its edges to the ends of the segment, which are
// corners of the triangle that it lies in, become the pieces. So only what its triangles replace changes, and
// that is known.
class SegmentSplitter {
public:
    SegmentSplitter(RefinementSite& refinementSite, Cavity& workingCavity)
        : site(refinementSite), cavity(workingCavity) {}

    // Why the limits forbid to split the closed edge; nothing if they don't.
    static std::optional<MeshObstacle> obstacleAt(HalfEdge edge, const RefinementSite& site);

    // Splits the segment on the edge, which the limits allow. Returns the new vertex, whose triangles are
    // known to the marks, or null where doubles leave no room, which is reported once.
    Point2* split(HalfEdge edge);
    // The triangles that the latest split made or changed; some maybe twice.
    const std::vector<Triangle2*>& changedTriangles() const { return vChanged; }

private:
    // Where a split point lies: on the edge, or in the triangle to the left of it.
    struct Spot {
        HalfEdge edge; // without a triangle: nowhere of use
        bool bOnEdge;
    };

    Spot locate(HalfEdge edge, const Point2& p) const;
    Spot choose(HalfEdge edge, Point2& p) const;
    void growCavity(const Spot& spot, const Point2& p);
    void link(const Spot& spot, Point2* pVtx, ConstraintSegment2* pCSeg);
    void legalizeSpokes();
    void reportTooShort(HalfEdge edge);
    void reportNoPoint();

    RefinementSite& site;
    Cavity& cavity;
    std::size_t numOnLeft = 0; // of the border of the cavity
    std::vector<Triangle2*> vChanged;
    std::vector<HalfEdge> vCheckEdges;
    bool bReportedTooShort = false, bReportedNoPoint = false;
};

} // namespace TESK_KIVO2D
