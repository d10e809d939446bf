#pragma once

#include "Point2.h"
#include "Triangle2.h"
#include "constraints/ConstraintMgr.h"
#include "constraints/VertexMover.h"
#include "core/MeshStore.h"
#include "kernel/TeskTest.h"

#include <vector>

namespace TESK_KIVO2D {

// What zones ask of the triangulation that they belong to.
class ZoneHost {
public:
    virtual ~ZoneHost() = default;

    virtual Dt2* implementation() = 0;
    virtual ZoneRegistry& zoneRegistry() const = 0;
    virtual bool is2D() const = 0;
    virtual const MeshStore& meshStore() const = 0;
    virtual const ConstraintMgr& constraints() const = 0;
    virtual TeskTest& predicates() = 0;
    // A triangle at the finite point, or null outside the hull. The hint is null or a triangle that may be
    // near.
    virtual Triangle2* locateNear(const Point2& q, Triangle2* pHint) = 0;
    virtual void applyConstraintsAndZones() = 0;
    // Makes edges of the triangulation, named from start to end, constraints, as an oriented graph. Changes
    // no triangle.
    virtual ConstraintGraph2* fixEdges(const std::vector<PointerPair>& vEdges) = 0;
    // False, after a message, while an operation runs that relies on the vertices that there are.
    virtual bool mayRemove(const char* location) const = 0;
    // For moves of vertices, and what has to be called before and after them.
    virtual VertexMover& vertexMover() = 0;
    virtual void beginMoves() = 0;
    virtual void endMoves(bool bSegmentsHaveMoved) = 0;
    virtual void show(Visualizer2* pVisualizer, bool bWithConstraints) const = 0;
};

} // namespace TESK_KIVO2D
