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
    ConstraintSegment2* pCSeg; // the constraint edge that the knife crosses there, or null
    Point2* pNear;             // a vertex near
};

// The part of a knife that cuts, from stop to stop. The order of points along a knife is that of their
// coordinates: rounding to nearest keeps it in each of them.
class KnifeCut {
public:
    KnifeCut(const Segment2& itsKnife, std::vector<KnifeStop> vItsStops);

    // True when there is nothing to cut.
    bool isPoint() const { return vStops.size() < 2; }
    const Segment2& getKnife() const { return knife; }
    // The first and the last of them bound the cut.
    const std::vector<KnifeStop>& stops() const { return vStops; }
    // More stops: those of these points of the knife that lie within the cut.
    void add(const std::vector<Point2>& vPoints);

private:
    bool isBefore(const Point2& p, const Point2& q) const { return bAscending ? p < q : q < p; }
    // In order, and one of several at the same place.
    void sort();

    Segment2 knife;
    bool bAscending;
    std::vector<KnifeStop> vStops;
};

// Makes the stops of all cuts vertices: crossings with constraints split these. Returns the pieces between
// them, in the order of the knives.
std::vector<PointerPair> placeStops(const std::vector<KnifeCut>& vCuts, SegmentSite& site,
                                    SegmentInserter& inserter);

} // namespace TESK_KIVO2D
