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
    ConstraintSegment2* getConstraintSegment(const Point2* p0, const Point2* p1) const {
        if (segments.empty() || filter.excludes(p0) || filter.excludes(p1)) return nullptr;
        ConstraintSegment2* const pCSeg = segments.find(p0, p1);
        return pCSeg != nullptr && pCSeg->isAlive() ? pCSeg : nullptr;
    }
    bool isConstraint(const Point2* p0, const Point2* p1) const {
        return getConstraintSegment(p0, p1) != nullptr;
    }
    // True for an end of any segment, dead ones included.
    bool isConstraint(const Point2* pVtx) const { return sVertices.contains(pVtx); }
    // Gets memory for so many splits at new vertices, so that these need none.
    void reserveSplits(std::size_t num);
    // Fetches what a split at this vertex will look at. Best called as soon as the vertex is known.
    void prefetchSplit(const ConstraintSegment2* pCSeg, const Point2* pSplit) const {
        segments.prefetchSlot(pCSeg->pSrc, pSplit);
        segments.prefetchSlot(pCSeg->pTrg, pSplit);
    }

    // --- ends that move
    // Gets memory for `mergeEnds` of these segments.
    void reserveMerge(const std::vector<ConstraintSegment2*>& vCSegs);
    // The live segments end at the vertex pGone, which has come to lie where pThere is: each is split there,
    // into nothing and a segment from pThere, which must not be one yet. The segment between the two vertices
    // vanishes. In the bookkeeping only.
    void mergeEnds(const std::vector<ConstraintSegment2*>& vCSegs, Point2* pGone, Point2* pThere);
    // Vertices are about to move, and have moved, if any has. What was split is not straight any more then:
    // from the beginning on it is known to its graphs and ancestors only, and whoever asks for a segment
    // between its ends gets another one.
    void beginMoves() { bEndsMove = true; }
    void endMoves(bool bMoved);
    // Appends what lives of the segment by now, as edges in order from this end of it.
    static void appendLiveEdges(ConstraintSegment2* pCSeg, Point2* pFrom, std::vector<PointerPair>& vEdges);

    // --- graphs; all of them return a graph of this manager, never null
    ConstraintGraph2* createConstraint(const std::vector<PointerPair>& vPairs,
                                       ConstraintInsertionStrategy cis, bool bApplyNow);
    ConstraintGraph2* createConstraint(const std::vector<Segment2>& vSegments,
                                       ConstraintInsertionStrategy cis);
    ConstraintGraph2* createConstraint_oriented(const std::vector<Segment2>& vSegments,
                                                ConstraintInsertionStrategy cis);
    ConstraintGraph2* createConstraint_oriented(const std::vector<PointerPair>& vPairs,
                                                ConstraintInsertionStrategy cis);
    // An oriented graph from directed edges of the triangulation, which stays as it is. Where such an edge
    // once was a segment that has been split, beside its line as rounding has it, it gets a new segment.
    ConstraintGraph2* createConstraint_directed(const std::vector<PointerPair>& vPairs,
                                                ConstraintInsertionStrategy cis);
    bool isOwn(const ConstraintGraph2* pGraph) const { return &pGraph->mgr == this; }

    // --- application
    // Makes all pending segments edges, in passes until one splits nothing.
    void apply();
    // Makes the live segment, or the live leaves of the dead one, edges, if the triangulation is 2-D.
    void applySegment(ConstraintSegment2* pCSeg);
    // True while live segments wait to become edges: for a triangulation that is 2-D, or for an `apply` after
    // an insertion that was cut short.
    bool hasPending() const { return bPending; }
    // An edge may be missing now.
    void applyLater() { bPending = true; }

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
    // Of all segments ever made.
    std::size_t numberOfSegments() const { return segmentPool.size(); }
    ConstraintHost& host() const { return dt; }

    // --- EdgeGuard
    bool isFixed(const Point2* p, const Point2* q) const override { return isConstraint(p, q); }
    void wasSplit(Point2* p, Point2* q, Point2* pSplit) override;

private:
    friend class ConstraintSegment2;
    friend class ConstraintGraph2;

    using Owner = ConstraintSegment2::Owner;
    enum class Application { NOW, LATER, NOT_NEEDED };
    // How a graph is made, and what is said of a pair of equal vertices.
    struct GraphOrder {
        ConstraintInsertionStrategy cis;
        bool bOriented;
        Application application;
        const char* pSkipLocation;
        const char* pSkipMessage;
        bool bPrintsPair;
    };

    // --- segments: memory first, then changes that do not throw
    // Builds the filter when the triangulation has become large enough for it.
    void considerFilter();
    void reserveSegments(std::size_t num);
    // The segment between the ends, whose bent ones do not count while vertices move; or null.
    ConstraintSegment2* findStraight(const Point2* p0, const Point2* p1) const;
    // Both need a reserved segment and two reserved vertices. The second one makes a new segment in place of
    // one that has been split, which only its graphs and ancestors know from then on.
    ConstraintSegment2* findOrMake(Point2* p0, Point2* p1, ConstraintInsertionStrategy cis);
    ConstraintSegment2* findLiveOrMake(Point2* p0, Point2* p1, ConstraintInsertionStrategy cis);
    void reserveSplit(ConstraintSegment2* pCSeg, Point2* pSplit);
    void reserveOwners(std::size_t num);
    // One owner graph of each split calls this.
    void registerSplit(ConstraintSegment2* pParentCSeg, ConstraintSegment2* pCSeg0,
                       ConstraintSegment2* pCSeg1) const;
    // Calls f with the segment and its descendants, leaving out what the graph owns, which is known to go all
    // the way down. f may enter the graph. A second walk, or one over fewer segments, takes no memory.
    template<class F>
    void forEachNotOwned(ConstraintSegment2* pRoot, const ConstraintGraph2* pGraph, F f) {
        vStack.assign({nullptr, pRoot}); // one place more, for whoever starts at a parent
        while (vStack.size() > 1) {
            ConstraintSegment2* const pCSeg = vStack.back();
            vStack.pop_back();
            if (pCSeg->findOwner(pGraph) != nullptr) continue;
            f(pCSeg);
            if (pCSeg->hasChildren()) vStack.insert(vStack.end(), {pCSeg->aChildren[1], pCSeg->aChildren[0]});
        }
    }
    std::size_t countNotOwned(ConstraintSegment2* pRoot, const ConstraintGraph2* pGraph);

    // --- graphs
    ConstraintGraph2* makeGraph(const std::vector<PointerPair>& vPairs, const GraphOrder& order);
    ConstraintGraph2* establish(const std::vector<PointerPair>& vPairs, const GraphOrder& order,
                                std::vector<ConstraintSegment2*>& vCSegs);
    std::vector<PointerPair> insertEnds(const std::vector<Segment2>& vSegments);
    void applyGraph(ConstraintGraph2* pGraph, const std::vector<ConstraintSegment2*>& vCSegs,
                    ProgressHub::Operation& operation);
    void makeDelaunay(const std::vector<ConstraintSegment2*>& vCSegs);
    void retreat(ConstraintGraph2* pGraph);
    bool applyPass(const std::vector<ConstraintSegment2*>& vWork, std::vector<ConstraintSegment2*>& vNext,
                   ProgressHub::Operation& operation);

    ConstraintHost& dt;
    bool bPending = false;
    bool bEndsMove = false;
    std::size_t numSteinerPointsMade = 0; // because of vertices in circles, so far
    SimplePool<ConstraintSegment2> segmentPool;
    SimplePool<Owner> ownerPool;
    SegmentTable segments; // of all, by the pair of ends
    VertexSet sVertices;   // the ends of all
    EndpointFilter filter;
    std::vector<std::unique_ptr<ConstraintGraph2>> vGraphs;
    std::vector<ConstraintSegment2*> vStack; // of a walk through descendants; kept for its memory
};

} // namespace TESK_KIVO2D
