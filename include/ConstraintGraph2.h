#pragma once

#include "ConstraintInsertionStrategy.h"
#include "export.h"
#include "fwd.h"

#include <string>
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

    // The segments, and for each of them whether its source is the user's end.
    ConstraintGraph2(ConstraintMgr& manager, ConstraintInsertionStrategy strategy);

    ConstraintMgr& mgr;
    ConstraintInsertionStrategy cis;
    std::vector<ConstraintSegment2*> vCSegParents;
    bool bPolygon = false;
    bool bOriented = false;
};

} // namespace TESK_KIVO2D
