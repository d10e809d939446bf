// Triangles that come from elsewhere.
#include "core/Dt2.h"

#include "constraints/ConstraintMgr.h"
#include "constraints/SoupFaults.h"
#include "constraints/SoupPlacement.h"
#include "constraints/SoupTrial.h"
#include "constraints/TriangleSoup.h"
#include "core/TriangleSet.h"
#include "kernel/assertion.h"
#include "kernel/messages.h"
#include "zones/ZoneRegistry.h"

#include <string>
#include <utility>

namespace TESK_KIVO2D {
namespace {

using Index = TriangleSoup::Index;
using Edge = TriangleSoup::Edge;

constexpr const char* location = "Dt2::importTriangles(..)";

bool areCorners(const std::vector<Point2>& vCorners) {
    if (vCorners.empty()) {
        reportWarning(location, "vCorners is empty, returning NULL");
        return false;
    }
    const std::string number = std::to_string(vCorners.size());
    if (vCorners.size() % 3 != 0) {
        reportError(location, "vCorners does not hold three corners a triangle (" + number +
                                  (vCorners.size() == 1 ? " point" : " points") + "), returning NULL");
        return false;
    }
    if (vCorners.size() > TriangleSoup::maxCorners) {
        reportError(location, "vCorners holds too many corners (" + number + "), returning NULL");
        return false;
    }
    return true;
}

// The edges inside the soup that have to be constraints lest they be flipped away.
std::vector<PointerPair> heldEdges(const TriangleSoup& soup, const std::vector<Point2*>& vVertices,
                                   TeskTest& tests) {
    std::vector<PointerPair> vHeld;
    soup.forEachEdge([&](const Edge& edge) {
        if (edge.halves.size() == 1) return;
        const auto& [p, q, halves] = edge;
        TriangleSoup::Half left = TriangleSoup::halfOf(halves[0]), right = TriangleSoup::halfOf(halves[1]);
        if (!soup.isLeft(left, p)) std::swap(left, right);
        const std::vector<Point2>& vPoints = soup.points();
        const bool bIllegal = tests.inCircle(vPoints[p], vPoints[q], vPoints[soup.apexOf(left)],
                                             vPoints[soup.apexOf(right)]) == CINC2_INCIRCLE;
        if (bIllegal) vHeld.emplace_back(vVertices[p], vVertices[q]);
    });
    return vHeld;
}

void reportImported(const TriangleSoup& soup, std::size_t numHeld) {
    const auto count = [](std::size_t num, const std::string& what) {
        return std::to_string(num) + " " + what + (num == 1 ? "" : "s");
    };
    std::size_t numBorder = 0;
    soup.forEachEdge([&](const Edge& edge) { numBorder += edge.halves.size() == 1; });
    reportInfo(location,
               count(soup.triangles().size(), "triangle") + " with " + count(soup.points().size(), "corner") +
                   " imported, " + std::to_string(soup.numTurned()) + " turned round, " +
                   count(numBorder, "border edge") + ", " + count(numHeld, "inner constraint edge"));
}

} // namespace

Zone2* Dt2::importTriangles(const std::vector<Point2>& vCorners, bool bVerbose) {
    if (!areCorners(vCorners) || !mayInsert("Kivo_2D::importTriangles()")) return nullptr;
    ProgressHub::Operation progress(hub, "import triangles", 100);
    const TriangleSoup soup(vCorners);
    progress.advance(10); // listeners might insert: not between the search for faults and the end
    SoupFaults faults;
    for (const Index given : soup.notFinite())
        faults.add({.kind = SoupFault::NOT_FINITE, .triangle = given});
    for (const Index given : soup.degenerate())
        faults.add({.kind = SoupFault::DEGENERATE, .triangle = given});
    Zone2* pZone = nullptr;
    if (!soup.triangles().empty()) {
        const bool bAlone = numberOfPoints() == 0 && pConstraintMgr->empty();
        pZone = bAlone ? importAlone(soup, faults, bVerbose) : importBeside(soup, faults, bVerbose);
    }
    if (!faults.empty()) faults.report(soup, location);
    progress.finish();
    return pZone;
}

// Into an empty triangulation: it serves for the trial itself.
Zone2* Dt2::importAlone(const TriangleSoup& soup, SoupFaults& faults, bool bVerbose) {
    std::vector<Point2*> vVertices;
    SoupPlacement placement(soup, vVertices, pTeskPredicates);
    try {
        vVertices = insertAll(soup.points());
        SoupTrial(soup, vVertices, placement, store, pTeskPredicates).findFaults({}, faults);
    } catch (...) {
        clear();
        throw;
    }
    if (faults.empty()) return keepSoup(soup, vVertices, placement, bVerbose);
    clear();
    return nullptr;
}

Zone2* Dt2::importBeside(const TriangleSoup& soup, SoupFaults& faults, bool bVerbose) {
    tryElsewhere(soup, faults);
    if (!faults.empty()) return nullptr;
    const std::vector<Point2*> vVertices = insertAll(soup.points());
    SoupPlacement placement(soup, vVertices, pTeskPredicates);
    try {
        placement.force([](const Edge&, const CzResult&) { KIVO_ASSERT(false, "false"); });
    } catch (...) {
        letGo(soup, vVertices);
        throw;
    }
    return keepSoup(soup, vVertices, placement, bVerbose);
}

// When memory has run out: edges of the soup that are no constraints give way to what is Delaunay.
void Dt2::letGo(const TriangleSoup& soup, const std::vector<Point2*>& vVertices) {
    soup.forEachEdge([&](const Edge& edge) { legalizeEdge(vVertices[edge.p], vVertices[edge.q]); });
}

std::vector<Point2*> Dt2::insertAll(const std::vector<Point2>& vPoints) {
    std::vector<Point2*> vVertices(vPoints.size());
    insertVector(vPoints.data(), vPoints.size(), vVertices.data());
    return vVertices;
}

// In a triangulation of its own, with the vertices and the segments that might be in the way.
void Dt2::tryElsewhere(const TriangleSoup& soup, SoupFaults& faults) const {
    const Bbox2 soupBox(soup.points().begin(), soup.points().end());
    std::vector<Point2> vPoints = soup.points();
    const auto addVertex = [&](const Point2* pVtx) {
        if (soupBox.isInBox(*pVtx) && soup.find(*pVtx) == TriangleSoup::none) vPoints.push_back(*pVtx);
    };
    if (is2D()) {
        store.forEachVertex(addVertex);
    } else {
        for (const Point2* pVtx : vertexVault.stored())
            addVertex(pVtx);
    }
    const std::size_t firstEnd = vPoints.size();
    pConstraintMgr->forEachLiveSegment([&](const ConstraintSegment2* pCSeg) {
        Bbox2 segmentBox;
        segmentBox.add(*pCSeg->getSrc());
        segmentBox.add(*pCSeg->getTrg());
        if (soupBox.doIntersect(segmentBox))
            vPoints.insert(vPoints.end(), {*pCSeg->getSrc(), *pCSeg->getTrg()});
    });
    Dt2 trial(static_cast<unsigned int>(std::min<std::size_t>(vPoints.size(), 0xFFFFFFFF)));
    trial.setNumCPU(numCPU);
    const std::vector<Point2*> vVertices = trial.insertAll(vPoints);
    std::vector<PointerPair> vSegments;
    for (std::size_t i = firstEnd; i < vPoints.size(); i += 2)
        vSegments.emplace_back(vVertices[i], vVertices[i + 1]);
    SoupPlacement placement(soup, vVertices, trial.pTeskPredicates);
    SoupTrial(soup, vVertices, placement, trial.store, trial.pTeskPredicates).findFaults(vSegments, faults);
}

// Makes what holds the soup constraints, and its triangles, which are all there, a zone.
Zone2* Dt2::keepSoup(const TriangleSoup& soup, const std::vector<Point2*>& vVertices,
                     const SoupPlacement& placement, bool bVerbose) {
    try {
        const std::vector<PointerPair> vHeld = heldEdges(soup, vVertices, pTeskPredicates);
        if (!vHeld.empty()) fixEdges(vHeld);
        const RecordNumbers<Triangle2> numbers = store.triangleNumbers();
        TriangleSet triangles(numbers);
        for (const Triangle2* pT : placement.triangles()) {
            KIVO_ASSERT(pT != nullptr, "pT!=NULL");
            triangles.insert(pT);
        }
        Zone2* const pZone = pZoneRegistry->createBoundedZone(triangles);
        if (bVerbose) reportImported(soup, vHeld.size());
        return pZone;
    } catch (...) {
        letGo(soup, vVertices);
        throw;
    }
}

// All vertices go, at which nothing hangs but triangles. The next ones get their records in the same order.
void Dt2::clear() {
    std::vector<Point2*> vVertices;
    getVertexPointers(vVertices);
    for (auto it = vVertices.rbegin(); it != vVertices.rend(); ++it) {
        MeshStore::unlinkVertex(*it);
        store.recycleVertex(*it);
    }
    returnToStored({});
    box = Bbox2(&pTeskPredicates);
}

} // namespace TESK_KIVO2D
