#pragma once

#include "ConstraintSegment2.h"
#include "Point2.h"
#include "Triangle2.h"
#include "core/MeshStore.h"
#include "core/walk.h"
#include "kernel/TeskTest.h"

#include <vector>

namespace TESK_KIVO2D {

// What VertexMover asks of the triangulation in which it works. All of these leave every edge legal that is
// no constraint; but the segments of a vertex that was taken out are no edges until they are forced in again.
class MovingSite {
public:
    virtual ~MovingSite() = default;

    virtual MeshStore& records() = 0;
    virtual TeskTest& predicates() = 0;
    // Makes the point one that predicates and walks may be asked about.
    virtual void coverPoint(const Point2& p) = 0;
    // Where the point lies, seen from a triangle.
    virtual WalkResult find(const Point2& p, Triangle2* pNear) = 0;

    // Gives the vertex other coordinates, by which all these triangles around it stay counter-clockwise and
    // the hull stays where it is.
    virtual void shift(Point2* pVtx, const Point2& to, const std::vector<Triangle2*>& vStar) = 0;
    // Takes the vertex out, whatever edges it has, and returns one that was its neighbour. Null, and nothing
    // has changed, when no triangle would be left.
    virtual Point2* takeOut(Point2* pVtx) = 0;
    // Gets memory for putting one in at this place: to be called before it is taken out.
    virtual void prepareToPutIn(const Point2& at) = 0;
    // Puts a vertex that was taken out in at another place, where no vertex lies.
    virtual void putIn(Point2* pVtx, const Point2& at, const Point2* pNear) = 0;
    // Puts a vertex that was taken out in the place of another one, which is taken out.
    virtual void substitute(Point2* pVtx, Point2* pOther) = 0;
    // The vertex, which was taken out, does not come back. With bReuse its record serves the next one.
    virtual void wasRemoved(Point2* pVtx, bool bReuse) = 0;
    // Makes the live segment an edge, of whatever strategy it is. No vertex and no other one is in its way.
    virtual void forceSegment(ConstraintSegment2* pCSeg) = 0;
};

} // namespace TESK_KIVO2D
