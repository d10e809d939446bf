#pragma once

#include "ConstraintInsertionStrategy.h"
#include "export.h"
#include "fwd.h"

#include <cfloat>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <vector>

namespace TESK_KIVO2D {

/// An edge that the triangulation must keep, between two of its vertices.
///
/// A segment that has to be divided, where another one crosses it or a vertex is inserted on it, does not
/// change: it dies and gets exactly two children. So segments form trees whose live leaves are the edges that
/// are in the triangulation. There is one segment at most for a pair of vertices, however many graphs use it;
/// these are its owners, and they own all that descends from it.
///
/// Laws: the source has the lower address of the two, so the direction means nothing (what the user gave is
/// known by `ConstraintGraph2::isReverse`). Every split point lies in the closed coordinate box of its
/// segment and differs from both ends; hence children are smaller than their parent, and no segment descends
/// from itself.
///
/// Segments belong to their triangulation and live as long as it does, dead ones included.
class KIVO_API ConstraintSegment2 {
public:
    ConstraintSegment2(const ConstraintSegment2&) = delete;
    ConstraintSegment2& operator=(const ConstraintSegment2&) = delete;

    /// The end with the lower address.
    Point2* getSrc() const { return pSrc; }
    /// The end with the higher address.
    Point2* getTrg() const { return pTrg; }
    /// How it becomes an edge; children inherit it.
    ConstraintInsertionStrategy getCIS() const { return cis; }
    /// False once the segment has been split, and while a split is in progress.
    bool isAlive() const { return bAlive && aChildren[0] == nullptr; }
    /// Number of graphs that own this segment.
    std::size_t getNumberOfOwners() const;
    /// An area that the mesh generator keeps here; the largest double until it is set.
    double getAdjacentArea() const { return adjacentArea; }
    /// Keeps the area.
    void setAdjacentArea(double area) { adjacentArea = area; }

    /// Splits the segment at a vertex without touching the triangulation, in which the caller has put the
    /// vertex and the two edges already, or will. Returns true; false, with a warning and nothing changed,
    /// for a vertex outside the coordinate box of the segment. A dead segment, one of its ends or null is a
    /// programming error (`KivoException`).
    bool split_combinatorialOnly(Point2* pSplit);
    /// Inserts a point into the triangulation (moved into the coordinate box of this segment, if it lies
    /// outside), splits the segment there and inserts the pieces. Returns the vertex; null, with a warning
    /// and nothing changed, when it is an end of this segment.
    Point2* insertAndSplit(const Point2& p);
    /// The same, and removes the vertices around it that refinements inserted since their record was last
    /// cleared (`MeshGenParams::bClearInnerVertices`) and that are nearer to the point than the source of
    /// this segment is, unless constraint segments end there. False when `insertAndSplit` returns null.
    /// Called by a listener while an operation runs, it warns and removes nothing.
    bool splitAndRemovePrev(const Point2& p);

    /// Appends the live leaves below this dead segment, those of the first child before those of the second.
    void getChildrenRec(std::vector<ConstraintSegment2*>& vLeaves);
    /// The children of a dead segment, the one at the source first, and the vertex that they share. A warning
    /// and nothing set for a live one.
    void getChildrenAndSplitPoint(ConstraintSegment2*& pKid0, ConstraintSegment2*& pKid1,
                                  Point2*& pSplit) const;

    /// By the addresses of source and target.
    bool operator<(const ConstraintSegment2& other) const;

private:
    friend class ConstraintMgr;
    friend class ConstraintGraph2;
    friend class SegmentRelease;
    friend KIVO_API std::ostream& operator<<(std::ostream& stream, const ConstraintSegment2& segment);

    // An owner, and which way the user's edge runs for it. The direction is set once.
    struct Owner {
        ConstraintGraph2* pGraph;
        Owner* pNext;
        bool bDirectionKnown;
        bool bReverse; // from target to source
    };

    // Takes the next number of the process as its label. p0 must have the lower address.
    ConstraintSegment2(Point2* p0, Point2* p1, ConstraintInsertionStrategy strategy);
    static std::uint32_t takeLabel();

    bool hasChildren() const { return aChildren[0] != nullptr; }
    // Neither alive nor split: an insertion that failed has taken it out, or it is released at the moment, or
    // its ends have fallen together. In the first case a graph may want it again; in the last one nobody can
    // ask for it, since one of the ends is no vertex any more.
    bool isWithdrawn() const { return !bAlive && !hasChildren(); }
    bool hasEnd(const Point2* pVtx) const { return pVtx == pSrc || pVtx == pTrg; }
    Point2* otherEnd(const Point2* pEnd) const { return pEnd == pSrc ? pTrg : pSrc; }
    bool isInBox(const Point2& p) const;
    Point2 clampedIntoBox(const Point2& p) const;

    // The entry of this graph, or null.
    Owner* findOwner(const ConstraintGraph2* pGraph);
    // Enters the graph, which must be no owner yet, in this segment alone.
    void enterOwner(ConstraintGraph2* pGraph);
    // Makes the graph an owner of this segment and of all that descends from it.
    void addOwner(ConstraintGraph2* pGraph);
    // Makes the direction known to the graph, an owner. False when it was known: then nothing changes.
    bool enterDirection(const ConstraintGraph2* pGraph, bool bReverse);
    // Gives birth to the children, and tells all owners. When it throws nothing has changed.
    void splitAt(Point2* pSplit);
    // Dies in favour of these, which share the split point.
    void becomeParentOf(ConstraintSegment2* pKid0, ConstraintSegment2* pKid1);
    // Makes the children edges of the triangulation.
    void insertChildren(ConstraintMgr& mgr);

    Point2* pSrc;
    Point2* pTrg;
    ConstraintSegment2* aChildren[2] = {nullptr, nullptr};
    std::uint32_t label;
    bool bAlive = true;
    ConstraintInsertionStrategy cis;
    Owner firstOwner = {nullptr, nullptr, false, false}; // a list; the others are kept by the manager
    double adjacentArea = DBL_MAX;
};

/// Writes label, address and ends, then both points and the length, on four lines.
KIVO_API std::ostream& operator<<(std::ostream& stream, const ConstraintSegment2& segment);

} // namespace TESK_KIVO2D
