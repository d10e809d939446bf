#pragma once

#include "Bbox2.h"
#include "ConstraintInsertionStrategy.h"
#include "MsgBase.h"
#include "Point2.h"
#include "Segment2.h"
#include "Triangle2.h"
#include "ZoneQuality.h"
#include "constraints/ConstraintHost.h"
#include "constraints/MovingSite.h"
#include "constraints/SegmentSite.h"
#include "core/EdgeGuard.h"
#include "core/HC2.h"
#include "core/MeshStore.h"
#include "core/VertexRemover.h"
#include "core/VertexVault.h"
#include "core/WorkCounts.h"
#include "core/hull.h"
#include "core/linkIn.h"
#include "core/walk.h"
#include "kernel/ProgressHub.h"
#include "kernel/TeskTest.h"
#include "meshing/MeshingHost.h"
#include "zones/ZoneHost.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace TESK_KIVO2D {

class SegmentInserter;
class SoupFaults;
class SoupPlacement;
class TriangleSoup;
class KnifeCut;
class KnifePath;
struct RefinementMemory;
class VertexMover;
class Visualizer2;

// The triangulation behind the facade. It owns the parts and lets them work: records (MeshStore), vertices
// (VertexVault), predicates, constraints, keys and messages; walking, splitting, flipping and the queries are
// free functions on these.
//
// Between calls: the stack vCheckT is empty, no duplicate is registered, and the static bound of the
// predicates covers the box, which covers every vertex.
class Dt2 : public ConstraintHost,
            public SegmentSite,
            public MovingSite,
            public ZoneHost,
            public MeshingHost {
public:
    explicit Dt2(unsigned int numExpectedVertices);
    ~Dt2() override;
    Dt2(const Dt2&) = delete;
    Dt2& operator=(const Dt2&) = delete;

    // --- insertion
    Point2* insert(const Point2& p) override;
    // aHandles is null or receives a vertex a point.
    void insertVector(const Point2* aPoints, std::size_t numPoints, Point2** aHandles) override;

    // --- removal
    void remove(Point2* pVtx);

    // --- constraints
    ConstraintGraph2* createConstraint(std::vector<Segment2>& vSegments, ConstraintInsertionStrategy cis,
                                       bool bOrientedSegments);
    void applyConstraintsAndZones() override;
    ConstraintMgr& constraintMgr() const override { return *pConstraintMgr; }
    // Insert one live segment of the constrained, or of the conforming, strategy and all that comes of it.
    void newCDT_applyOneCS(ConstraintSegment2* pInitialCSeg);
    void insertSegmentConformingDelaunay(ConstraintSegment2* pCSeg);

    // --- soups and knives
    Zone2* importTriangles(const std::vector<Point2>& vCorners, bool bVerbose);
    ConstraintGraph2* cutTriangles(const std::vector<Segment2>& vKnives);

    // --- zones
    ZoneRegistry& zoneRegistry() const override { return *pZoneRegistry; }

    // --- export, of all triangles or, if a zone is given, of those of the zone
    bool writeObj(const std::string& filename, const Zone2* pZone);
    bool writeWebScene(const std::string& path, const Zone2* pZone);
    void getMeshArrays(MeshArrays& arrays, const Zone2* pZone);
    // True for a zone of this triangulation; anything else is reported.
    bool isOwn(const Zone2* pZone, const char* location) const override;

    // --- meshing
    void refine(const MeshGenParams& parameters);
    const RefinementReport& refinementReport() const;
    // All zero, after a warning, for what is no zone of this triangulation, or an empty one.
    ZoneQuality checkZoneQuality(const Zone2* pZone, const std::string& name);

    // --- queries
    Triangle2* locate(const Point2& q);
    void getConvexHull(bool bAllVertices, std::vector<Point2*>& vConvexHullPoints);
    void getTrianglePointers(std::vector<Triangle2*>& vAllTriangles) const;
    void getVertexPointers(std::vector<Point2*>& vAllVertices) const;
    Bbox2 computeBoundingBox() const;
    std::size_t numberOfPoints() const override { return vertexVault.numberOfPoints(); }
    std::size_t numberOfTriangles() const { return store.numTriangles(); }
    bool is2D() const override { return vertexVault.is2D(); }
    bool checkValidity(bool bCheckEmptyCircleProperty, const std::string& name);
    void statistics(const std::string& name) const;

    // --- drawing
    void show(const std::string& postscriptFilename, bool bWithConstraints) const;
    void show(Visualizer2* pVis, bool bWithConstraints) const override;

    // --- settings
    void setName(const std::string& newName) { name = newName; }
    const std::string& getName() const { return name; }
    int setNumCPU(int num);
    // Sizes for tests: from how many points on a batch is triangulated in chunks, and how many vertices a
    // chunk has at most.
    void setBatchLimits(std::size_t minChunked, std::size_t maxChunk) {
        minChunkedBatch = minChunked;
        maxChunkSize = maxChunk;
    }
    ProgressHub& progressHub() override { return hub; }

    // What insertions and removals cost since construction, for tests and benchmarks.
    const WorkCounts& workCounts() const { return work; }
    // How many in-circle tests, or orientations on the hull, decided what takes the place of vertices.
    std::uint64_t numRemovalTests() const { return vertexRemover.numQuestions(); }
    // How far the predicates had to go.
    const TeskTest::StageCounts& stageCounts() const { return pTeskPredicates.stageCounts(); }

private:
    friend class BatchInserter;

    // Extends the box, and doubles it when it grew, with all that refers to it.
    void growBox(const Point2& low, const Point2& high);
    Point2* insertLowerDimensional(const Point2& p);
    // Inserts a point within the box into the 2-D triangulation; the walk starts at the triangle, if one is
    // given.
    Point2* insertFrom(const Point2& p, Triangle2* pStart);
    WalkResult walkTo(const Point2& q, Triangle2* pStart);
    // False, after a warning, while a batch is triangulated in chunks: who asks was called by a listener.
    bool mayInsert(const char* location) const;
    // All triangles go; these vertices, which are all that there are, stay stored.
    void returnToStored(std::vector<Point2*> vVertices);
    InsertionSite insertionSite() {
        return {store, pTeskPredicates, hullLinks, pEdgeGuard, vCheckT, circleTies};
    }
    // Links the vertex in at the place that its walk found, and legalises.
    void place(Point2* pVtx, const WalkResult& found);
    // Takes out a vertex whose star the remover has looked at.
    void takeOutPrepared(Point2* pVtx);
    // The same, of which no triangle is left.
    void becomeLowerDimensional(Point2* pVtx);
    void legalizeSpokes(Point2* pVtx);
    void draw(Visualizer2& vis, bool bWithConstraints) const;
    bool checkConstraintSegments(const std::string& label) const;
    struct IgnoredKnives;
    KnifeCut findCut(const Segment2& knife, KnifePath& path);
    std::vector<KnifeCut> findCuts(const std::vector<Segment2>& vKnives, IgnoredKnives& ignored);
    Zone2* importAlone(const TriangleSoup& soup, SoupFaults& faults, bool bVerbose);
    Zone2* importBeside(const TriangleSoup& soup, SoupFaults& faults, bool bVerbose);
    void tryElsewhere(const TriangleSoup& soup, SoupFaults& faults) const;
    void letGo(const TriangleSoup& soup, const std::vector<Point2*>& vVertices);
    Zone2* keepSoup(const TriangleSoup& soup, const std::vector<Point2*>& vVertices,
                    const SoupPlacement& placement, bool bVerbose);
    std::vector<Point2*> insertAll(const std::vector<Point2>& vPoints);
    void clear();

    // --- ConstraintHost and SegmentSite
    TeskTest& predicates() override { return pTeskPredicates; }
    Point2* insertNear(const Point2& p, Triangle2* pNear) override;
    Point2* newVertex(const Point2& p) override;
    void replaceEdge(HalfEdge edge, Point2* pVtx) override;
    bool insertSegment(ConstraintSegment2* pCSeg) override;
    std::size_t allowSteinerPoints(std::size_t num) override;
    bool isEdge(const Point2* p, const Point2* q) const override;
    void legalizeAround(Point2* pVtx) override;
    void legalizeEdge(const Point2* p, const Point2* q) override;

    void removeInnerVertices(const Point2* pVtx, const Point2& rim) override;

    // --- MovingSite
    void coverPoint(const Point2& p) override { growBox(p, p); }
    WalkResult find(const Point2& p, Triangle2* pNear) override;
    void shift(Point2* pVtx, const Point2& to, const std::vector<Triangle2*>& vStar) override;
    Point2* takeOut(Point2* pVtx) override;
    void prepareToPutIn(const Point2& at) override;
    void putIn(Point2* pVtx, const Point2& at, const Point2* pNear) override;
    void substitute(Point2* pVtx, Point2* pOther) override;
    void wasRemoved(Point2* pVtx, bool bReuse) override;
    void forceSegment(ConstraintSegment2* pCSeg) override;

    // --- ZoneHost
    Dt2* implementation() override { return this; }
    const MeshStore& meshStore() const override { return store; }
    const ConstraintMgr& constraints() const override { return *pConstraintMgr; }
    Triangle2* locateNear(const Point2& q, Triangle2* pHint) override;
    ConstraintGraph2* fixEdges(const std::vector<PointerPair>& vEdges) override;
    bool mayRemove(const char* location) const override;
    VertexMover& vertexMover() override { return *pVertexMover; }
    void beginMoves() override;
    void endMoves(bool bSegmentsHaveMoved) override;

    // --- MeshingHost
    MeshStore& records() override { return store; }
    HullLinks& hullBorder() override { return hullLinks; }
    void wasLinked(Point2* pVtx) override;
    std::uint64_t changeCount() const override;

    std::vector<Triangle2*> trianglesFor(const Zone2* pZone);
    bool hasSome(const std::vector<Triangle2*>& vTriangles, const std::string& target) const;
    bool fillArrays(const std::vector<Triangle2*>& vTriangles, bool bNeighbours, MeshArrays& arrays);

    std::string name;
    MeshStore store;
    VertexVault vertexVault;
    TeskTest pTeskPredicates;
    Bbox2 box; // of all points inserted, doubled whenever it grew
    HC2 hc;
    std::vector<Triangle2*> vCheckT;
    std::vector<HalfEdge> vCheckEdges;
    VertexRemover vertexRemover{store, pTeskPredicates};
    HullLinks hullLinks;
    EdgeGuard* pEdgeGuard = nullptr; // null while no edge is fixed
    int numCPU = 1;
    CircleTies circleTies = CircleTies::TURN_DIAGONALS;
    bool bInChunks = false; // the batch that runs is triangulated in chunks
    std::size_t minChunkedBatch = 100000;
    std::size_t maxChunkSize = 32768;
    WorkCounts work;
    ProgressHub hub;
    std::unique_ptr<ConstraintMgr> pConstraintMgr;
    std::unique_ptr<SegmentInserter> pSegmentInserter;
    std::unique_ptr<VertexMover> pVertexMover;
    std::unique_ptr<ZoneRegistry> pZoneRegistry;
    std::unique_ptr<RefinementMemory> pRefinementMemory;
};

} // namespace TESK_KIVO2D
