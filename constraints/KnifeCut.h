#pragma once

#include "ConstraintSegment2.h"
#include "Point2.h"
#include "Segment2.h"
#include "constraints/ConstraintMgr.h"
#include "constraints/SegmentInserter.h"
#include "constraints/SegmentSite.h"

#include <vector>

namespace TESK_KIVO2D {

// Where a knife needs a vertex.
struct KnifeStop {
    Point2 point;
    Point2* pVtx;              // the one that is there, or null
    ConstraintSegment2* pCSeg; // the constraint edge inside which it lies, or null
    Point2* pNear;             // a vertex near
    bool bLeavesHull = false;  // or enters it, through the inside of an edge
};

// The part of a knife that cuts, from stop to stop. Several stops may be at the same place: all of the
// constraints that the knife crosses there have to be split.
class KnifeCut {
public:
    // The stops are in the order in which the knife meets them.
    KnifeCut(const Segment2& itsKnife, const std::vector<KnifeStop>& vItsStops)
        : knife(itsKnife), vStops(vItsStops) {}

    // True when there is nothing to cut.
    bool isPoint() const { return vStops.empty() || vStops.front().point == vStops.back().point; }
    const Segment2& getKnife() const { return knife; }
    const std::vector<KnifeStop>& stops() const { return vStops; }
    // The point where the knife leaves or enters the hull, if this one is no more than a unit in each
    // coordinate away from there: else the two were one place rounded in two ways.
    Point2 toHull(const Point2& p) const;
    // Makes all stops vertices, which they know afterwards.
    void place(SegmentSite& site, SegmentInserter& inserter);
    // More stops: those of these points of the knife that lie between the first one and the last one.
    void add(std::vector<Point2> vPoints);

private:
    Segment2 knife;
    std::vector<KnifeStop> vStops;
};

// Makes the stops of all cuts vertices: crossings with constraints split these. Returns the pieces between
// them, in the order of the knives.
std::vector<PointerPair> placeStops(std::vector<KnifeCut>& vCuts, SegmentSite& site,
                                    SegmentInserter& inserter);

} // namespace TESK_KIVO2D
