#pragma once

#include "Point2.h"

#include <unordered_map>
#include <utility>

namespace TESK_KIVO2D {

// Remembers which segment each vertex was put on that a refinement inserted into one, by the ends that the
// segment had before any of it. Kept from one refinement to the next, so that a mesh that is refined again is
// judged alike.
class SegmentOrigins {
public:
    // The vertex is about to split the segment ab. Throws only with nothing changed.
    void add(const Point2* pVtx, const Point2* a, const Point2* b);

    // True when the vertices lie on two segments that leave a common end at less than 60 degrees, at the same
    // distance from it. An edge between them is as short as the angle demands: to refine a triangle because
    // of it would only repeat the corner in smaller, for ever (Miller, Pav, Walkington 2003).
    bool spanSmallAngle(const Point2* p, const Point2* q) const;

private:
    using Ends = std::pair<const Point2*, const Point2*>;

    const Ends* find(const Point2* pVtx) const;

    std::unordered_map<const Point2*, Ends> mOrigins; // nothing walks through it
};

} // namespace TESK_KIVO2D
