#include "core/VertexVault.h"

#include "core/GridFiller.h"
#include "core/WorkerPool.h"
#include "kernel/assertion.h"
#include "kernel/messages.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <new>

namespace TESK_KIVO2D {
namespace {

// In the maximum norm, which does not overflow.
double distance(const Point2& p, const Point2& q) {
    const double dx = std::fabs(p.x() - q.x()), dy = std::fabs(p.y() - q.y());
    return dx < dy ? dy : dx;
}

// Room at the border for what comes next.
Bbox2 withMargin(Bbox2 box) {
    box.enlargeRanges(1.125);
    return box;
}

} // namespace

std::size_t VertexVault::CoordinateHash::operator()(const Point2* p) const {
    const std::hash<double> hash; // equal for 0.0 and -0.0
    return hash(p->x()) * 0x9e3779b97f4a7c15u ^ hash(p->y());
}

void VertexVault::fillLookup() {
    for (; numLookup < vStored.size(); ++numLookup) {
        if (vStored[numLookup] != nullptr) mLookup.emplace(vStored[numLookup], numLookup);
    }
}

void VertexVault::closeGaps() const {
    vStored.erase(std::remove(vStored.begin(), vStored.end(), nullptr), vStored.end());
    numGone = 0;
    mLookup.clear(); // they stand elsewhere
    numLookup = 0;
    search = {}; // they are looked at again, which takes no longer than this
}

void VertexVault::reserveStored(std::size_t num) {
    const std::size_t needed = vStored.size() + num;
    if (vStored.capacity() < needed) vStored.reserve(std::max(needed, 2 * vStored.size()));
}

Point2* VertexVault::findStored(const Point2& p) {
    fillLookup(); // on demand: most clients begin with one batch and never ask
    const auto found = mLookup.find(&p);
    return found == mLookup.end() ? nullptr : vStored[found->second];
}

bool VertexVault::takeOutStored(const Point2* pVtx) {
    fillLookup();
    const auto found = mLookup.find(pVtx);
    if (found == mLookup.end() || found->first != pVtx) return false;
    vStored[found->second] = nullptr;
    mLookup.erase(found);
    if (++numGone > vStored.size() / 2) closeGaps();
    return true;
}

bool VertexVault::findFirstTriangle(TeskTest& tests, Point2* (&corners)[3]) {
    KIVO_ASSERT(!bFullDimensional, "!bFullDimensional");
    return search.find(vStored, tests, corners);
}

std::vector<Point2*> VertexVault::becomeFullDimensional(const Point2* pCorner) {
    bFullDimensional = true;
    pLatest = pCorner;
    if (numGone > 0) closeGaps();
    mLookup = {};
    numLookup = 0;
    search = {};
    return std::exchange(vStored, {});
}

void VertexVault::becomeLowerDimensional(std::vector<Point2*> vVertices) {
    bFullDimensional = false;
    vStored.swap(vVertices);
    numActive = 0;
    pLatest = nullptr;
    extent = Bbox2();
    startGrid.clear();
    numOfNextLayout = 0;
}

StartGrid::Cell VertexVault::startCell(const Point2& p, const MeshStore& store) {
    if (!startGrid.covers(p)) {
        // Doubled, so that points that drift away cost a logarithm of layouts.
        Bbox2 frame = extent;
        frame.add(p);
        frame.doubleTheBox();
        layOutGrid(frame, numActive, store);
    } else if (numActive >= numOfNextLayout) {
        layOutGrid(withMargin(extent), numActive, store);
    }
    return startGrid.cellOf(p);
}

Triangle2* VertexVault::getCloT(StartGrid::Cell cell, const Point2& p) const {
    // None while the first batch runs, or after memory ran out. In a part of the plane that is new, such as
    // ahead of a sweep, all cells are out of date. And a triangle may have died with its vertex.
    Triangle2* const pCellT = cell.triangle();
    Triangle2* const pT = MeshStore::survivorOf(pCellT);
    if (pT != pCellT) cell.renew(pT);
    const bool bUsable = pT != nullptr && distance(*pT->getCorner(0), p) <= distance(*pLatest, p);
    return bUsable ? pT : pLatest->getIncidentTriangle();
}

void VertexVault::added(StartGrid::Cell start, const Point2* pVtx, int numSteps) {
    constexpr int longWalk = 12;
    ++numActive;
    extent.add(*pVtx);
    pLatest = pVtx;
    start.setTriangle(pVtx->getIncidentTriangle());
    if (numSteps > longWalk && start.hadManyVisits()) startGrid.refine(start);
}

std::size_t VertexVault::addedAll(std::span<Point2* const> vertices, const MeshStore& store,
                                  WorkerPool& workers) {
    const VertexSlices slices(vertices, workers);
    if (slices.numIn() == 0) return 0;
    numActive += slices.numIn();
    extent.add(slices.extent().getMinPoint());
    extent.add(slices.extent().getMaxPoint());
    pLatest = slices.last();
    const bool bCovers = startGrid.covers(extent.getMinPoint()) && startGrid.covers(extent.getMaxPoint());
    try {
        if (bCovers && numActive < numOfNextLayout) {
            slices.fill(startGrid);
        } else if (slices.numIn() < numActive) {
            layOutGrid(withMargin(extent), numActive / 2, store);
        } else { // there are no others
            startGrid.layOut(withMargin(extent), numActive / 2);
            numOfNextLayout = 2 * numActive;
            slices.fill(startGrid);
            startGrid.fillGaps(workers);
        }
    } catch (const std::bad_alloc&) { // all are in, so the batch has not failed; the next one tries again
        numOfNextLayout = 0;
    }
    return slices.numIn();
}

void VertexVault::layOutGrid(const Bbox2& frame, std::size_t numCells, const MeshStore& store) {
    startGrid.layOut(frame, numCells);
    numOfNextLayout = 2 * numActive;
    GridFiller filler(startGrid);
    store.forEachVertex([&](Point2* pVtx) { filler.enter(*pVtx); });
    WorkerPool callerOnly(1);
    startGrid.fillGaps(callerOnly);
}

void VertexVault::sortRedundant() {
    std::sort(mRedundant2UniqueVtx.begin(), mRedundant2UniqueVtx.end(),
              [](const auto& a, const auto& b) { return std::less<Point2*>()(a.first, b.first); });
}

Point2* VertexVault::uniqueOf(Point2* pVtx) const {
    const auto pExisting =
        std::lower_bound(mRedundant2UniqueVtx.begin(), mRedundant2UniqueVtx.end(), pVtx,
                         [](const auto& pair, Point2* p) { return std::less<Point2*>()(pair.first, p); });
    if (pExisting == mRedundant2UniqueVtx.end() || pExisting->first != pVtx) return pVtx;
    KIVO_ASSERT(*pVtx == *pExisting->second, "**it==*pExistingVtx");
    return pExisting->second;
}

} // namespace TESK_KIVO2D
