#pragma once

#include "Point2.h"
#include "constraints/ConstraintMgr.h"
#include "constraints/MovingSite.h"
#include "constraints/Sweep.h"

#include <cstddef>

namespace TESK_KIVO2D {

// Moves vertices of a triangulation with constraints. The constraint segments that end at a vertex go with
// it, as straight as they were.
//
// A vertex that stays among its neighbours only gets other coordinates. Any other one is taken out, put in at
// the target and joined to the far ends of its segments again, once Sweep has found nothing in the way.
class VertexMover {
public:
    enum class Result {
        MOVED,
        MERGED, // another vertex lay there: one of the two was removed
        LEFT_OUT,
        BLOCKED // left out, and will be again until a segment moves
    };

    VertexMover(MovingSite& triangulation, ConstraintMgr& manager)
        : site(triangulation), mgr(manager),
          sweep(triangulation.records(), triangulation.predicates(), manager) {}

    // Moves the vertex, which is part of a triangle, to another place. It may come to lie on a constraint,
    // which it splits, or fall together with another vertex. Left out, and nothing has changed: a move across
    // a constraint, or of a segment across a vertex, or of one segment onto another, or which would leave no
    // triangle.
    Result move(Point2* pVtx, const Point2& target);

    // How many vertices with segments have moved.
    std::size_t numberOfSegmentMoves() const { return numSegmentMoves; }
    // Gives memory back that the next move needs again.
    void release() { sweep.release(); }

private:
    void lookAround(Point2* pVtx, const Point2& target);
    bool staysAmongNeighbours() const;
    Result place(Point2* pVtx);
    Result merge(Point2* pVtx, Point2* pThere);
    bool wouldCoincide(const Point2* pThere) const;
    void restoreSegments();

    MovingSite& site;
    ConstraintMgr& mgr;
    Sweep sweep;
    MovingStar star;
    bool bOnHull = false;
    std::size_t numSegmentMoves = 0;
};

} // namespace TESK_KIVO2D
