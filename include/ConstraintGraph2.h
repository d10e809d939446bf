#pragma once

#include "ConstraintInsertionStrategy.h"
#include "export.h"
#include "fwd.h"

#include <array>
#include <string>
#include <utility>
#include <vector>

namespace TESK_KIVO2D {

/// The constraint segments of one call, with the directions in which the user gave them.
///
/// When the segments form one closed ring the graph is a polygon: they are then kept in ring order, counter-
/// clockwise from the vertex with the smallest x (of those, the smallest y), whatever directions were given.
///
/// Graphs belong to their triangulation and live as long as it does. They share segments: a segment that two
/// graphs use is one object, and each graph keeps its own direction of it. When a segment is split its
/// children take its place in all of them.
class KIVO_API ConstraintGraph2 {
public:
    ConstraintGraph2(const ConstraintGraph2&) = delete;
    ConstraintGraph2& operator=(const ConstraintGraph2&) = delete;

    /// How its segments were made edges.
    ConstraintInsertionStrategy getInsertionStrategy() const { return cis; }
    /// True when the segments form one closed ring.
    bool isPolygon() const { return bPolygon; }
    /// True for a polygon, and for every graph that was created with oriented segments.
    bool isOriented() const { return bOriented; }

    /// Replaces the content by the segments as they were created for this graph, dead ones included: in ring
    /// order for a polygon, else in input order.
    void getOriginalConstraintSegments(std::vector<ConstraintSegment2*>& vSegments) const;
    /// Appends the live leaves: the edges that are in the triangulation for this graph. They come in the
    /// order of the original segments, but in no order along a segment that was split.
    void getChildConstraintSegments(std::vector<ConstraintSegment2*>& vSegments) const;
    /// Appends two vertices for each live leaf, its start and its end in the user's direction, in order along
    /// each original segment; so for a polygon the end of a pair is the start of the next.
    void getPolygonVertices(std::vector<Point2*>& vVertices) const;

    /// True for a live segment of this graph.
    bool isConstraint(ConstraintSegment2* pCSeg) const;
    /// True when a live segment of this graph joins the two vertices. Takes one label of the process-wide
    /// counter of segments.
    bool isConstraint(Point2* p0, Point2* p1) const;
    /// True when the user's direction of this segment runs from its target to its source. A segment that is
    /// not of this graph is a programming error (`KivoException`).
    bool isReverse(ConstraintSegment2* pCSeg) const;
    /// The children of a dead segment of this graph in the user's direction; null twice for a live one.
    void getDirectChildren(ConstraintSegment2* pParent, ConstraintSegment2*& pChild0,
                           ConstraintSegment2*& pChild1) const;

    /// Writes a PostScript drawing of the live leaves.
    void show(const std::string& postscriptFilename) const;
    /// Adds the live leaves to a drawing of the caller's.
    void show(Visualizer2* pVis, const Color& color) const;

private:
    friend class ConstraintMgr;
    friend class ConstraintSegment2;

    // Without segments, until `prepare` and `commit`.
    ConstraintGraph2(ConstraintMgr& manager, ConstraintInsertionStrategy strategy)
        : mgr(manager), cis(strategy) {}

    // Takes the segments and finds out whether they are a polygon; gets all the memory that `commit` needs.
    // When it throws, the segments are as they were.
    void prepare(const std::vector<ConstraintSegment2*>& vCSegs);
    // Becomes an owner of the segments, and enters their directions: for a polygon along the ring, otherwise
    // as pDirected has them, which holds the same edges from start to end and pairs of equal vertices to be
    // left out, and without it from source to target.
    void commit(const std::vector<std::pair<Point2*, Point2*>>* pDirected);
    void enterRingDirections();
    void enterUserDirections(const std::vector<std::pair<Point2*, Point2*>>& vDirected);

    // The segments as one ring from the leftmost, lowest vertex, counter-clockwise, and that vertex; null
    // when they are no ring.
    Point2* checkAndSortPolygon(const std::vector<ConstraintSegment2*>& vCSegs,
                                std::vector<ConstraintSegment2*>& vSorted) const;

    // Enters the directions of what descends from a dead segment: they run along it, or, with bAlong false,
    // all from source to target. What has a direction keeps it.
    void enterDescendants(ConstraintSegment2* pRoot, bool bAlong);
    std::array<bool, 2> directionsAlong(ConstraintSegment2* pParent, ConstraintSegment2* pChild0,
                                        ConstraintSegment2* pChild1) const;
    // The segment has just been split. The first of its owners tells the manager.
    void notifySplit(ConstraintSegment2* pParentCSeg, bool bFirst);
    // Appends the live leaves in the user's direction.
    void getOrderedLiveSegments(std::vector<ConstraintSegment2*>& vCSegs) const;

    ConstraintMgr& mgr;
    ConstraintInsertionStrategy cis;
    std::vector<ConstraintSegment2*> vCSegParents;
    Point2* pRingStart = nullptr; // of a polygon
    bool bPolygon = false;
    bool bOriented = false;
    bool bAbandoned = false; // its application failed, and the caller never got it
};

} // namespace TESK_KIVO2D
