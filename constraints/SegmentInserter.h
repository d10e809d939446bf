#pragma once

#include "ConstraintSegment2.h"
#include "Point2.h"
#include "constraints/ConstraintMgr.h"
#include "constraints/CzRetriangulation.h"
#include "constraints/CzTraversal.h"
#include "constraints/SegmentSite.h"
#include "core/HalfEdge.h"
#include "kernel/TeskTest.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace TESK_KIVO2D {

// Puts constraint segments into a triangulation, one at a time with all that comes of it: its pieces, and
// those of segments that it crosses.
//
// A crossing is a point that rounding has moved, and no decision relies on where to. The new vertex replaces
// the crossed edge if the four triangles that come out are found counter-clockwise; else it is inserted as
// any other point, and the pieces of both segments are inserted like new segments, which may cross others
// than before.
//
// It ends: a crossing kills a segment, and the pieces lie in smaller coordinate boxes. How long that may take
// is bounded by a budget, far beyond what real inputs need.
class SegmentInserter {
public:
    SegmentInserter(SegmentSite& triangulation, ConstraintMgr& manager)
        : site(triangulation), mgr(manager), tests(triangulation.predicates()), retriangulation(tests) {}

    // The segment is alive. Returns false, after a warning, when the budget ran out before all pieces were
    // edges.
    bool insert(ConstraintSegment2* pCSeg);

    // Splits what lives of the segment, at the point, which lies on it but for rounding and is no end of it.
    // Returns the vertex there.
    Point2* splitAt(ConstraintSegment2* pCSeg, const Point2& p);

    // The segment is alive, and neither a vertex nor a constraint is in its way. It becomes an edge, of
    // whatever strategy it is.
    void force(ConstraintSegment2* pCSeg);

    // Returns how many were left.
    std::size_t allowSteinerPoints(std::size_t num) { return std::exchange(numSteinerPointsLeft, num); }
    // How many pieces the insertion of one segment may take.
    void setBudget(std::uint64_t num) { budget = num; }

private:
    bool insertPieces();
    void insertPiece(ConstraintSegment2* pCSeg);
    bool takeSteinerPoint();
    bool splitInTheMiddle(ConstraintSegment2* pCSeg);
    bool isLocallyDelaunay(const ConstraintSegment2* pCSeg) const;

    void cross(ConstraintSegment2* pCSeg, HalfEdge edge);
    bool splitAtEnd(ConstraintSegment2* pCSeg, const ConstraintSegment2& other, const Point2& crossing);
    Point2* splitInPlace(ConstraintSegment2* pCSeg, HalfEdge edge, const Point2& p,
                         ConstraintSegment2* pCrossing);
    Point2* insertReleased(const Point2& p, Triangle2* pNear, ConstraintSegment2* pReleased);
    bool isStarShaped(HalfEdge edge, const Point2& p) const;
    void pushPieces(ConstraintSegment2* pCSeg);

    SegmentSite& site;
    ConstraintMgr& mgr;
    TeskTest& tests;
    CzRetriangulation retriangulation;
    ConstraintZone zone;
    std::vector<ConstraintSegment2*> vStack; // the last one pushed is next
    std::size_t numSteinerPointsLeft = 0;    // of the call
    std::uint64_t budget = 20000000;
    std::size_t numOwnLeft = 0; // Steiner points of the segment that is being inserted
};

} // namespace TESK_KIVO2D
