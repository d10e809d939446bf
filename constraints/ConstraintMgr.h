#pragma once

#include "ConstraintGraph2.h"
#include "ConstraintSegment2.h"
#include "Point2.h"
#include "Segment2.h"
#include "constraints/ConstraintHost.h"
#include "constraints/EndpointFilter.h"
#include "constraints/SegmentTable.h"
#include "core/EdgeGuard.h"
#include "core/SimplePool.h"

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace TESK_KIVO2D {

using PointerPair = std::pair<Point2*, Point2*>;

// Owns the constraint segments and graphs of a triangulation. The only maker of segments: an unordered pair
// of vertices has at most one.
class ConstraintMgr : public EdgeGuard {
public:
    explicit ConstraintMgr(ConstraintHost& triangulation);
    ~ConstraintMgr() override;

    // --- segments
    // The segment between two different vertices: the one that is there, dead or alive and of whatever
    // strategy, or a new one.
    ConstraintSegment2* createConstraint(Point2* p0, Point2* p1, ConstraintInsertionStrategy cis);
    // The live segment between the vertices, or null.
    ConstraintSegment2* getConstraintSegment(const Point2* p0, const Point2* p1) const;
    bool isConstraint(const Point2* p0, const Point2* p1) const {
        return getConstraintSegment(p0, p1) != nullptr;
    }
    // True for an end of any segment, dead ones included.
    bool isConstraint(const Point2* pVtx) const;

    // --- graphs; all of them return a graph of this manager, never null
    ConstraintGraph2* createConstraint(const std::vector<PointerPair>& vPairs,
                                       ConstraintInsertionStrategy cis, bool bApplyNow);
    ConstraintGraph2* createConstraint(const std::vector<Segment2>& vSegments,
                                       ConstraintInsertionStrategy cis);
    ConstraintGraph2* createConstraint_oriented(const std::vector<Segment2>& vSegments,
                                                ConstraintInsertionStrategy cis);
    // An oriented graph from directed edges between vertices.
    ConstraintGraph2* createConstraint_directed(const std::vector<PointerPair>& vPairs,
                                                ConstraintInsertionStrategy cis);

    // --- application
    // Makes all pending segments edges, in passes until one splits nothing.
    void apply();

    // --- files
    void writeConstraints(const std::string& prefix) const;
    void writeConstraintsBIN(const std::string& prefix) const;

    // Calls f with each live segment, in the order in which they were made.
    template<class F>
    void forEachLiveSegment(F f) const {
        segmentPool.forEach([&](ConstraintSegment2* pCSeg) {
            if (pCSeg->isAlive()) f(pCSeg);
        });
    }
    bool empty() const { return segmentPool.size() == 0; }
    ConstraintHost& host() const { return dt; }

    // --- EdgeGuard
    bool isFixed(const Point2* p, const Point2* q) const override { return isConstraint(p, q); }
    void wasSplit(Point2* p, Point2* q, Point2* pSplit) override;

private:
    friend class ConstraintSegment2;
    friend class ConstraintGraph2;

    ConstraintHost& dt;
    SimplePool<ConstraintSegment2> segmentPool;
    SimplePool<ConstraintSegment2::Owner> ownerPool;
    SegmentTable segments; // of all, by the pair of ends
    VertexSet sVertices;   // the ends of all
    EndpointFilter filter;
    std::vector<std::unique_ptr<ConstraintGraph2>> vGraphs;
};

} // namespace TESK_KIVO2D
