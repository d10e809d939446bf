#pragma once

#include "Point2.h"
#include "constraints/EndpointFilter.h"
#include "core/EdgeGuard.h"

#include <unordered_map>

namespace TESK_KIVO2D {

// A constraint segment as it was before any refinement, and whether another one left an end at less than 60
// degrees from it when it was first split.
struct WholeSegment {
    const Point2* a;
    const Point2* b;
    bool bAcuteAtA;
    bool bAcuteAtB;

    bool hasEnd(const Point2* p) const { return a == p || b == p; }
    bool isSame(const WholeSegment& other) const { return a == other.a && b == other.b; }
};

// Remembers of which segment each vertex is part that a refinement put on one. Kept from one refinement to
// the next, so that a mesh that is refined again is judged alike.
//
// Addresses of vertices are kept for good: who removes vertices must see to them.
//
// Segments that meet at a small angle must be split at equal distances from where they meet. Else a vertex of
// one is too close to a piece of the other, which is split, and its vertex is too close to a piece of the
// first, and so on. So from such an apex vertices are put at distances that are as round numbers as can be,
// in binary: powers of two first, as Ruppert (1995) has it, then halves between them, and so on, whatever the
// lengths of the segments are.
class SegmentOrigins {
public:
    // The segment that its piece pq was part of.
    WholeSegment wholeOf(const Point2* p, const Point2* q, const EdgeGuard& guard) const;
    // The vertex is about to split a piece of the segment. Throws only with nothing changed.
    void add(const Point2* pVtx, const WholeSegment& whole);
    // It did not.
    void remove(const Point2* pVtx) { mOrigins.erase(pVtx); }

    // True when the vertices lie on two segments that leave a common end at less than 45 degrees, at the same
    // distance from it. An edge between them is as short as the angle demands: to refine a triangle because
    // of it would only repeat the corner in smaller, for ever. (Miller, Pav, Walkington 2003, who take 60
    // degrees; between the two, corners have not been seen to repeat, and more triangles are mended.)
    bool spanSmallAngle(const Point2* p, const Point2* q) const;

private:
    const WholeSegment* find(const Point2* pVtx) const;

    std::unordered_map<const Point2*, WholeSegment> mOrigins; // nothing walks through it
    EndpointFilter filter; // of its keys: most questions are about other vertices
};

// Where to split the piece pq of the segment: between a quarter and three quarters of it, and not so that a
// part becomes shorter than minLength unless the middle does.
Point2 roundSplitPointOf(const Point2& p, const Point2& q, const WholeSegment& whole, double minLength);

} // namespace TESK_KIVO2D
