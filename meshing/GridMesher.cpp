#include "meshing/GridMesher.h"

#include "core/HalfEdge.h"
#include "kernel/assertion.h"
#include "kernel/messages.h"
#include "kernel/tools.h"
#include "kernel/valueText.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

namespace TESK_KIVO2D {
namespace {

// Points are inserted so many at a time: near ones together, and soon done when somebody wants to stop.
constexpr std::size_t chunkSize = 1 << 16;
constexpr std::uint64_t rowsPerLook = 256;
constexpr std::size_t splitsPerCall = 1 << 12;
// A grid point beside a segment by no more, in units of the grid, was meant to lie on it. It may be off by
// the rounding of decimals, or of sines and cosines.
constexpr double maxAside = 1e-8;
// More rows across edges take seconds, and memory for parts of rows, whether or not points fit there.
constexpr double maxWork = 0x1p27;

double crossProduct(const GridSpot& a, const GridSpot& b, const GridSpot& origin) {
    return (a.s - origin.s) * (b.t - origin.t) - (a.t - origin.t) * (b.s - origin.s);
}

// Casts stay in range for what createStripes lets pass.
std::int64_t roundedUp(double value) { return static_cast<std::int64_t>(std::ceil(value)); }
std::int64_t roundedDown(double value) { return static_cast<std::int64_t>(std::floor(value)); }

} // namespace

bool GridMesher::isWanted(const MeshGenParams& params) {
    const double length = params.gridLength, x = params.gridVector.x(), y = params.gridVector.y();
    if (!std::isfinite(length) || !std::isfinite(x) || !std::isfinite(y)) {
        reportWarning("Dt2::refineMain2()",
                      "gridLength or gridVector is not finite, grid meshing is left out");
        return false;
    }
    return length > 0 && (x != 0 || y != 0);
}

GridMesher::GridMesher(MeshingHost& triangulation, const MeshGenParams& parameters, InnerVtxMgr& record,
                       RefinementReport& refinementReport, const Bbox2& box)
    : host(triangulation), params(parameters), innerVertices(record), report(refinementReport),
      frame(params.gridVector, params.gridLength, box),
      minPiece(params.minEdgeLength > 0 ? params.minEdgeLength / params.gridLength : 0) {}

void GridMesher::createStripes(const std::vector<Triangle2*>& vTriangles, TriangleMarks marks) {
    clearPlan();
    expectedChangeCount = host.changeCount();
    const double usedTargetLength = frame.length();
    KIVO_ASSERT(usedTargetLength > 0, "usedTargetLength>0");
    if (!frame.isExactEnough()) {
        leaveOut("gridLength=" + numberText(params.gridLength) +
                 " is too small for the coordinates of the zone");
        return;
    }
    std::vector<GridObstacle> vObstacles = findObstacles(vTriangles, std::move(marks));
    if (isTooLarge(vObstacles)) {
        leaveOutTooMany();
        return;
    }
    RowSweep sweep(std::move(vObstacles));
    if (sweep.totalWork() > maxWork) {
        leaveOut("gridLength=" + numberText(params.gridLength) + " is too small for the border of the zone");
        return;
    }
    planRows(sweep);
    if (numWaiting() > params.maxInsertedPoints - report.numGridPoints) leaveOutTooMany();
    std::sort(vSplits.begin(), vSplits.end(), [](const SegmentPoint& p, const SegmentPoint& q) {
        return p.idxSegment != q.idxSegment ? p.idxSegment < q.idxSegment : p.along < q.along;
    });
}

void GridMesher::planRows(RowSweep& sweep) {
    const std::uint64_t maxPoints = params.maxInsertedPoints - report.numGridPoints;
    std::uint64_t numRows = 0;
    for (std::int64_t row = sweep.nextRow(); row != RowSweep::noRow; row = sweep.nextRow()) {
        if (++numRows % rowsPerLook == 0 && isStopRequested()) return;
        sweep.visit([&](double low, double high) { addStripe(row, low, high); },
                    [&](double low, double high, const GridObstacle& segment) {
                        addPointsOn(segment, row, low, high);
                    });
        if (numPlanned > maxPoints) return;
    }
}

// Each closed edge once, with the zone to its left, and vertices that lie on none.
std::vector<GridObstacle> GridMesher::findObstacles(const std::vector<Triangle2*>& vTriangles,
                                                    TriangleMarks marks) const {
    std::vector<GridObstacle> vObstacles;
    const auto add = [&](Point2* p, Point2* q, bool bBorder, bool bSplittable) {
        vObstacles.push_back(
            {p, q, frame.spotOf(*p), frame.spotOf(*q), vObstacles.size(), bBorder, bSplittable});
    };
    for (Triangle2* const pT : vTriangles) {
        for (int i = 0; i < 3; ++i) {
            // A vertex whose triangle of reference is elsewhere is an end of edges of the border.
            Point2* const pVtx = pT->getCorner(i);
            if (pVtx->getIncidentTriangle() == pT) add(pVtx, pVtx, false, false);
            const HalfEdge edge{pT, i};
            if (!marks.isClosed(edge)) continue;
            Triangle2* const pN = edge.opposite();
            const bool bBorder = pN == nullptr || !marks.isInZone(pN);
            if (!bBorder) marks.open({pN, pN->getIntraTriangleIndex(pT)}); // its turn is over
            add(edge.source(), edge.target(), bBorder, maySplit(edge.source(), edge.target()));
        }
    }
    return vObstacles;
}

bool GridMesher::maySplit(const Point2* p, const Point2* q) const {
    return params.bAllowConstraintSplitting && minPiece <= 1 && host.constraintMgr().isConstraint(p, q);
}

// True when there are too many points for certain, but for what lies along the border.
bool GridMesher::isTooLarge(const std::vector<GridObstacle>& vObstacles) const {
    double area = 0, lengthOfAll = 0;
    for (const GridObstacle& obstacle : vObstacles) {
        if (obstacle.bBorder) area += crossProduct(obstacle.from, obstacle.to, vObstacles.front().from) / 2;
        lengthOfAll += std::hypot(obstacle.to.s - obstacle.from.s, obstacle.to.t - obstacle.from.t) + 1;
    }
    return area - 2 * lengthOfAll > static_cast<double>(params.maxInsertedPoints);
}

// What a stripe leaves free at its end: as far as the obstacle, or as the next place of the grid, which is
// too close to it. (Another vertex there, in the middle of what is left, has been tried: it makes up to a
// tenth more triangles, and worse ones.)
void GridMesher::checkStop(double freeBeyondEnd) const {
    const double usedTargetLength = frame.length();
    const double stopStripeSpace = usedTargetLength * std::min(freeBeyondEnd + RowSweep::clearance, 1.0);
    KIVO_ASSERT(stopStripeSpace > 0.49 * usedTargetLength, "stopStripeSpace>0.49*usedTargetLength");
    KIVO_ASSERT(stopStripeSpace < 1.01 * usedTargetLength, "stopStripeSpace<1.01*usedTargetLength");
}

void GridMesher::addStripe(std::int64_t row, double low, double high) {
    const std::int64_t first = roundedUp(low), last = roundedDown(high);
    if (first > last) return;
    checkStop(static_cast<double>(first) - low);
    checkStop(high - static_cast<double>(last));
    append(row, first, last);
}

void GridMesher::addPointsOn(const GridObstacle& segment, std::int64_t row, double low, double high) {
    const GridSpot &a = segment.from, &b = segment.to;
    const double length = std::hypot(b.s - a.s, b.t - a.t);
    const double minToEnd = std::max(minPiece, 0.5) * (1 - 1e-9);
    if (!(length >= 2 * minToEnd)) return;
    for (std::int64_t i = roundedUp(low), last = roundedDown(high); i <= last; ++i) {
        const GridSpot spot{static_cast<double>(i), static_cast<double>(row)};
        const double ds = (b.s - a.s) / length, dt = (b.t - a.t) / length;
        const double along = (spot.s - a.s) * ds + (spot.t - a.t) * dt;
        const double aside = (spot.t - a.t) * ds - (spot.s - a.s) * dt;
        if (std::fabs(aside) > maxAside || along < minToEnd || along > length - minToEnd) continue;
        addPointOn(segment, frame.pointAt(i, row), along);
    }
}

void GridMesher::addPointOn(const GridObstacle& segment, const Point2& p, double along) {
    const Point2 &a = *segment.pFrom, &b = *segment.pTo;
    const bool bUpright = a.x() == b.x(), bLevel = a.y() == b.y();
    const Point2 point = bUpright ? Point2(a.x(), p.y())
                         : bLevel ? Point2(p.x(), a.y())
                                  : getFootPoint(p, a, b);
    if (!isInBox(point, a, b)) return;
    ++numPlanned;
    if (bUpright || bLevel) {
        vOnSegments.push_back(point);
    } else {
        vSplits.push_back({segment.index, along, segment.pFrom, segment.pTo, point});
    }
}

void GridMesher::append(std::int64_t row, std::int64_t first, std::int64_t last) {
    if (first > last) return;
    numPlanned += static_cast<std::uint64_t>(last - first) + 1;
    if (!vStripes.empty() && vStripes.back().row == row && vStripes.back().last == first - 1) {
        vStripes.back().last = last;
    } else {
        vStripes.push_back({row, first, last});
    }
}

void GridMesher::clearPlan() {
    vStripes = {};
    vOnSegments = {};
    vSplits = {};
    numPlanned = numDone = idxStripe = 0;
    numDoneOfStripe = 0;
}

void GridMesher::leaveOut(const std::string& reason) {
    clearPlan();
    reportWarning("Dt2::refineMain2()", reason + ", grid meshing is left out");
}

void GridMesher::leaveOutTooMany() {
    leaveOut("the grid has more than maxInsertedPoints=" + std::to_string(params.maxInsertedPoints) +
             " points");
}

bool GridMesher::isStopRequested() const {
    return params.pStopRequest != nullptr && params.pStopRequest->load(std::memory_order_relaxed);
}

void GridMesher::insertSome() {
    if (numDone < vOnSegments.size()) {
        vChunk.assign(vOnSegments.begin() + static_cast<std::ptrdiff_t>(numDone),
                      vOnSegments.begin() +
                          static_cast<std::ptrdiff_t>(std::min(numDone + chunkSize, vOnSegments.size())));
        insertChunk();
    } else if (idxStripe < vStripes.size()) {
        fillChunk();
        insertChunk();
    } else {
        splitSegments();
    }
    expectedChangeCount = host.changeCount();
}

void GridMesher::fillChunk() {
    vChunk.clear();
    while (idxStripe < vStripes.size() && vChunk.size() < chunkSize) {
        const Stripe& stripe = vStripes[idxStripe];
        const std::int64_t first = stripe.first + numDoneOfStripe;
        const std::int64_t last =
            std::min(stripe.last, first + static_cast<std::int64_t>(chunkSize - vChunk.size()) - 1);
        for (std::int64_t i = first; i <= last; ++i)
            vChunk.push_back(frame.pointAt(i, stripe.row));
        numDoneOfStripe = last - stripe.first + 1;
        if (last < stripe.last) continue;
        ++idxStripe;
        numDoneOfStripe = 0;
    }
}

// All of them become new vertices: no other one is near.
void GridMesher::insertChunk() {
    vHandles.assign(vChunk.size(), nullptr);
    innerVertices.reserve(vChunk.size());
    const auto record = [this] {
        for (Point2* const pVtx : vHandles) {
            if (pVtx == nullptr) continue; // memory ran out before it
            innerVertices.add(pVtx);
            ++report.numGridPoints;
        }
        numDone += vChunk.size();
    };
    try {
        host.insertVector(vChunk.data(), vChunk.size(), vHandles.data());
    } catch (...) {
        record();
        throw;
    }
    record();
}

// Counts the vertices that come while it lives. Conforming segments may need more than one, and when memory
// runs out the one that came is not returned.
struct GridMesher::Counter {
    Counter(const MeshingHost& triangulation, RefinementReport& refinementReport)
        : host(triangulation), report(refinementReport), numBefore(host.numberOfPoints()) {}
    ~Counter() { report.numGridPoints += host.numberOfPoints() - numBefore; }
    Counter(const Counter&) = delete;
    Counter& operator=(const Counter&) = delete;

    const MeshingHost& host;
    RefinementReport& report;
    const std::size_t numBefore;
};

// The segments that were planned for, each piece by piece.
void GridMesher::splitSegments() {
    std::size_t i = vSplits.size() - static_cast<std::size_t>(numWaiting());
    const std::size_t end = std::min(i + splitsPerCall, vSplits.size());
    for (; i < end; ++i, ++numDone) {
        const SegmentPoint& next = vSplits[i];
        if (i == 0 || next.idxSegment != vSplits[i - 1].idxSegment) pPieceFrom = next.pFrom;
        ConstraintSegment2* const pCSeg = host.constraintMgr().getConstraintSegment(pPieceFrom, next.pTo);
        if (pCSeg == nullptr) continue; // doubles had no room for the one before
        innerVertices.reserve();
        const Counter counter(host, report);
        Point2* const pVtx = pCSeg->insertAndSplit(next.point);
        if (pVtx == nullptr) continue;
        innerVertices.add(pVtx);
        pPieceFrom = pVtx;
    }
}

} // namespace TESK_KIVO2D
