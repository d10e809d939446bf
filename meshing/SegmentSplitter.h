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

// Splits constraint segments at Steiner points, in place: only what the new vertex's triangles replace
// changes, and that is known.
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
    // What a split point on the edge makes of its surroundings.
    enum class Place {
        NONE,            // triangles that are not counter-clockwise
        BETWEEN,         // four proper triangles
        ON_HULL,         // two, and two hull edges
        WITHIN_HULL_EDGE // three: rounding has put it beside the hull edge, which stays
    };

    Place placeOf(HalfEdge edge, const Point2& p) const;
    Place placeAtHull(HalfEdge edge, const Point2& p) const;
    Place choose(HalfEdge edge, Point2& p) const;
    void link(HalfEdge edge, Place place, Point2* pVtx, ConstraintSegment2* pCSeg);
    void growCavity(HalfEdge edge, Place place, const Point2& p);
    void legalizeSpokes();
    void reportTooShort(HalfEdge edge);
    void reportNoPoint();

    RefinementSite& site;
    Cavity& cavity;
    std::size_t numOnFirstSide = 0; // of the border of the cavity
    std::vector<Triangle2*> vChanged;
    std::vector<HalfEdge> vCheckEdges;
    bool bReportedTooShort = false, bReportedNoPoint = false;
};

} // namespace TESK_KIVO2D
