#pragma once

#include "ConstraintSegment2.h"
#include "Point2.h"
#include "kernel/ProgressHub.h"
#include "kernel/TeskTest.h"

#include <cstddef>

namespace TESK_KIVO2D {

// What segments, graphs and their manager ask of the triangulation that they belong to.
class ConstraintHost {
public:
    virtual ~ConstraintHost() = default;

    virtual bool is2D() const = 0;
    virtual std::size_t numberOfPoints() const = 0;
    virtual TeskTest& predicates() = 0;
    virtual ProgressHub& progressHub() = 0;

    // The vertex at these finite coordinates, a new one if there is none.
    virtual Point2* insert(const Point2& p) = 0;
    virtual void insertVector(const Point2* aPoints, std::size_t numPoints, Point2** aHandles) = 0;

    // Makes the live segment, or its leaves if it has to be split, edges of the triangulation, which is 2-D,
    // by the strategy of each. Returns false when some had to be given up, which has been reported.
    virtual bool insertSegment(ConstraintSegment2* pCSeg) = 0;
    // Conforming segments may take so many Steiner points from now on, beyond a few of their own. While there
    // are any, segments that are edges already are divided as well until they are Delaunay. Returns how many
    // were left of the number before.
    virtual std::size_t allowSteinerPoints(std::size_t num) = 0;
    // True when the two vertices are joined by an edge.
    virtual bool isEdge(const Point2* p, const Point2* q) const = 0;
    // Flips around the vertex until no edge there is illegal.
    virtual void legalizeAround(Point2* pVtx) = 0;
    // Removes the vertices that refinements inserted and that are nearer to the vertex than the point is,
    // unless segments end there.
    virtual void removeInnerVertices(const Point2* pVtx, const Point2& rim) = 0;
    // Flips at one edge, if it is there, that is no constraint any more, and at what is flipped on the way,
    // until none is illegal.
    virtual void legalizeEdge(const Point2* p, const Point2* q) = 0;
};

} // namespace TESK_KIVO2D
