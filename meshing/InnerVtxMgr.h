#pragma once

#include "Point2.h"
#include "constraints/SegmentTable.h"

#include <cstddef>
#include <vector>

namespace TESK_KIVO2D {

// The vertices that refinements inserted, on segments too, since the record was last cleared.
class InnerVtxMgr {
public:
    // Makes sure that the next num calls of add need no memory.
    void reserve(std::size_t num = 1) { sInsertedInnerPoints.reserve(num); }
    void add(const Point2* pVtx) { sInsertedInnerPoints.insert(pVtx); }
    bool contains(const Point2* pVtx) const { return sInsertedInnerPoints.contains(pVtx); }
    // The vertex leaves the triangulation, whether it is recorded or not.
    void remove(const Point2* pVtx) { sInsertedInnerPoints.erase(pVtx); }
    void clear() { sInsertedInnerPoints = {}; }

    // The recorded vertices that are nearer to a vertex of the triangulation than the point is, in the order
    // of their records. Takes time proportional to the number of triangles that touch this disk.
    std::vector<Point2*> findAround(const Point2* pCenter, const Point2& rim) const;

private:
    VertexSet sInsertedInnerPoints; // nothing may walk through it
};

} // namespace TESK_KIVO2D
