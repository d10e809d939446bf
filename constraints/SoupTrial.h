#pragma once

#include "Point2.h"
#include "constraints/ConstraintMgr.h"
#include "constraints/SoupFaults.h"
#include "constraints/SoupPlacement.h"
#include "constraints/TriangleSoup.h"
#include "core/MeshStore.h"
#include "core/RecordNumbers.h"
#include "core/TriangleStamps.h"
#include "kernel/TeskTest.h"

#include <array>
#include <cstddef>
#include <vector>

namespace TESK_KIVO2D {

// Puts a soup into a triangulation without constraints that is good for nothing else if it fails: of the
// soup's points, the vertices near it, and the ends of the constraint segments near it. Whatever stands in
// the way of the soup's edges and triangles, or of a segment, is a fault; if nothing does there is none.
class SoupTrial {
public:
    // A vertex for each point of the soup, and the placement of the soup on them.
    SoupTrial(const TriangleSoup& triangleSoup, const std::vector<Point2*>& vItsVertices,
              SoupPlacement& itsPlacement, const MeshStore& triangulation, TeskTest& predicates);

    // All that there are, unless the faults get full on the way. Segments are given by their ends.
    void findFaults(const std::vector<PointerPair>& vSegments, SoupFaults& faults);

private:
    using Index = TriangleSoup::Index;
    using Halves = TriangleSoup::Halves;
    using Corners = std::array<const Point2*, 3>;

    // The place of the first triangle at an edge among those given.
    Index firstGiven(Halves halves) const;
    void findShared(SoupFaults& faults) const;
    void noteBlocked(const TriangleSoup::Edge& edge, const CzResult& result, SoupFaults& faults);
    void claimTriangles(SoupFaults& faults);
    void searchAround(Index missing, SoupFaults& faults);
    void compareMissing(SoupFaults& faults);
    void findCrossed(const PointerPair& segment, SoupFaults& faults);
    bool isStrictlyInside(const Point2& p, const Corners& corners) const;
    bool overlap(const Corners& a, const Corners& b);
    Corners cornersOf(Index triangle) const;
    bool mayGoOn(SoupFaults& faults) const;

    const TriangleSoup& soup;
    const std::vector<Point2*>& vVertices;
    const MeshStore& store;
    TeskTest& tests;
    SoupPlacement& placement;
    RecordNumbers<Triangle2> numbers;
    TriangleStamps stamps;
    ConstraintZone zone;
    std::vector<Index> vClaims;  // by triangle of the triangulation: the last one of the soup that is it
    std::vector<Index> vEarlier; // by triangle of the soup: the one before that is the same
    std::vector<Index> vMissing; // triangles of the soup that are none of the triangulation
    std::size_t numComparisons = 0;
};

} // namespace TESK_KIVO2D
