#pragma once

#include "Point2.h"
#include "constraints/SegmentTable.h"

#include <cstddef>
#include <vector>

namespace TESK_KIVO2D {

// The vertices that refinements inserted, on segments too, since the record was last cleared.
class InnerVtxMgr {
public:
    // Makes sure that the next so many calls of add need no memory.
    void reserve(std::size_t num = 1);
    void add(Point2* pVtx) {
        if (sInsertedInnerPoints.insert(pVtx)) vInOrder.push_back(pVtx);
    }
    bool contains(const Point2* pVtx) const { return sInsertedInnerPoints.contains(pVtx); }
    void clear();
    // In the order in which they were inserted.
    const std::vector<Point2*>& vertices() const { return vInOrder; }

private:
    VertexSet sInsertedInnerPoints;
    std::vector<Point2*> vInOrder; // nothing may walk through the set
};

} // namespace TESK_KIVO2D
