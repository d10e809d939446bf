#pragma once

#include "Point2.h"

namespace TESK_KIVO2D {

// What insertion asks and tells of edges that must stay. A null guard means that no edge is fixed.
class EdgeGuard {
public:
    virtual ~EdgeGuard() = default;
    // True when the edge pq must not be flipped away.
    virtual bool isFixed(const Point2* p, const Point2* q) const = 0;
    // The edge pq, which is fixed, is split at the vertex. Throws only with nothing changed.
    virtual void wasSplit(Point2* p, Point2* q, Point2* pSplit) = 0;
};

} // namespace TESK_KIVO2D
