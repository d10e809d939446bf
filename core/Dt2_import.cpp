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
    findSoupFaults(soup, faults);
    if (!faults.empty()) {
        faults.report(soup, location);
        progress.finish();
        return nullptr;
    }
    Zone2* const pZone = placeSoup(soup, bVerbose);
    progress.finish();
    return pZone;
}

void Dt2::findSoupFaults(const TriangleSoup& soup, SoupFaults& faults) {
    for (const Index given : soup.notFinite())
        faults.add({.kind = SoupFault::NOT_FINITE, .triangle = given});
    for (const Index given : soup.degenerate())
        faults.add({.kind = SoupFault::DEGENERATE, .triangle = given});
    if (soup.triangles().empty()) return;
    const Bbox2 soupBox(soup.points().begin(), soup.points().end());
    std::vector<Point2> vPoints = soup.points();
    for (std::size_t i = 0; i < vPoints.size(); ++i)
        vPoints[i].setCustomIndex(static_cast<int>(i));
    const auto add = [&](const Point2& p) {
        vPoints.push_back(p);
        vPoints.back().setCustomIndex(-1);
    };
    const auto addVertex = [&](const Point2* pVtx) {
        if (soupBox.isInBox(*pVtx) && soup.find(*pVtx) == TriangleSoup::none) add(*pVtx);
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
        if (!soupBox.doIntersect(segmentBox)) return;
        add(*pCSeg->getSrc());
        add(*pCSeg->getTrg());
    });
    std::vector<Point2*> vVertices(vPoints.size());
    Dt2 trial(static_cast<unsigned int>(std::min<std::size_t>(vPoints.size(), 0xFFFFFFFF)));
    trial.setNumCPU(numCPU);
    trial.insertVector(vPoints.data(), vPoints.size(), vVertices.data());
    std::vector<PointerPair> vSegments;
    for (std::size_t i = firstEnd; i < vPoints.size(); i += 2)
        vSegments.emplace_back(vVertices[i], vVertices[i + 1]);
    SoupTrial(soup, vVertices, trial.store, trial.pTeskPredicates).findFaults(vSegments, faults);
}

// Nothing is in the way of the soup.
Zone2* Dt2::placeSoup(const TriangleSoup& soup, bool bVerbose) {
    std::vector<Point2*> vVertices(soup.points().size());
    insertVector(soup.points().data(), soup.points().size(), vVertices.data());
    const std::vector<PointerPair> vHeld = heldEdges(soup, vVertices, pTeskPredicates);
    SoupPlacement placement(soup, vVertices, pTeskPredicates);
    Zone2* pZone = nullptr;
    try {
        placement.force([](const Edge&, const CzResult&) { KIVO_ASSERT(false, "false"); });
        if (!vHeld.empty()) fixEdges(vHeld);
        pZone = boundedZone(soup, placement);
    } catch (...) { // out of memory: what is not held gives way to what is Delaunay
        soup.forEachEdge([&](const Edge& edge) { legalizeEdge(vVertices[edge.p], vVertices[edge.q]); });
        throw;
    }
    if (bVerbose) reportImported(soup, vHeld.size());
    return pZone;
}

Zone2* Dt2::boundedZone(const TriangleSoup& soup, const SoupPlacement& placement) {
    const RecordNumbers<Triangle2> numbers = store.triangleNumbers();
    TriangleSet triangles(numbers);
    for (const TriangleSoup::Triangle& triangle : soup.triangles()) {
        const Triangle2* const pT = placement.find(triangle);
        KIVO_ASSERT(pT != nullptr, "pT!=NULL");
        triangles.insert(pT);
    }
    return pZoneRegistry->createBoundedZone(triangles);
}

} // namespace TESK_KIVO2D
