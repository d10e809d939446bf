#pragma once

#include "Point2.h"
#include "Triangle2.h"
#include "core/HalfEdge.h"
#include "kernel/TeskTest.h"

namespace TESK_KIVO2D {

// What SegmentInserter asks of the triangulation in which it works.
class SegmentSite {
public:
    virtual ~SegmentSite() = default;

    virtual TeskTest& predicates() = 0;
    // The vertex at these coordinates, near a triangle; a new one if there is none.
    virtual Point2* insertNear(const Point2& p, Triangle2* pNear) = 0;
    // A vertex that is not in the triangulation yet; and its way in, which does not throw: it replaces the
    // edge by two edges to its ends. The four triangles that come out must be strictly counter-clockwise.
    virtual Point2* newVertex(const Point2& p) = 0;
    virtual void replaceEdge(HalfEdge edge, Point2* pVtx) = 0;
    // Legalises the edge, if it is there, which is no constraint any more, and what is flipped on the way.
    virtual void legalizeEdge(const Point2* p, const Point2* q) = 0;
};

} // namespace TESK_KIVO2D
