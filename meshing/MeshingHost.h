#pragma once

#include "Point2.h"
#include "Zone2.h"
#include "constraints/ConstraintMgr.h"
#include "core/MeshStore.h"
#include "core/hull.h"
#include "kernel/ProgressHub.h"
#include "kernel/TeskTest.h"

#include <cstddef>
#include <cstdint>

namespace TESK_KIVO2D {

// What refinement asks of the triangulation in which it works. It links vertices in by itself.
class MeshingHost {
public:
    virtual ~MeshingHost() = default;

    virtual bool is2D() const = 0;
    virtual std::size_t numberOfPoints() const = 0;
    virtual MeshStore& records() = 0;
    virtual TeskTest& predicates() = 0;
    virtual ConstraintMgr& constraintMgr() const = 0;
    virtual HullLinks& hullBorder() = 0;
    virtual ProgressHub& progressHub() = 0;
    virtual void applyConstraintsAndZones() = 0;
    // True for a zone of this triangulation that has not been deleted; anything else is reported.
    virtual bool isOwn(const Zone2* pZone, const char* location) const = 0;

    // A vertex within the box of the others that is not in the triangulation yet, and two triangles in
    // reserve.
    virtual Point2* newVertex(const Point2& p) = 0;
    // The vertex has been linked in.
    virtual void wasLinked(Point2* pVtx) = 0;
    // Inserts points as the client does: on constraint segments too, which are split there. aHandles receives
    // a vertex a point, null for those that are left out when memory runs out or a listener throws.
    virtual void insertVector(const Point2* aPoints, std::size_t numPoints, Point2** aHandles) = 0;
    // Changes with every vertex, flip and constraint segment.
    virtual std::uint64_t changeCount() const = 0;
};

} // namespace TESK_KIVO2D
