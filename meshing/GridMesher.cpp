#include "meshing/GridMesher.h"

#include "core/HalfEdge.h"
#include "kernel/assertion.h"
#include "kernel/messages.h"
#include "kernel/tools.h"
#include "kernel/valueText.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

namespace TESK_KIVO2D {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
// Points are inserted so many at a time: near ones together, and soon done when somebody wants to stop.
constexpr std::size_t chunkSize = 1 << 16;
constexpr std::uint64_t rowsPerLook = 256;
// Grid points are off by some units in the last place of the largest coordinate. This many of those units
// must be within the grid's length.
constexpr double minUnitsPerLength = 512;
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
                       RefinementReport& refinementReport)
    : host(triangulation), params(parameters), innerVertices(record), report(refinementReport),
      frame(params.gridVector, params.gridLength),
      minPiece(params.minEdgeLength > 0 ? params.minEdgeLength / params.gridLength : 0) {}

void GridMesher::createStripes(const std::vector<Triangle2*>& vTriangles, TriangleMarks& marks,
                               double maxAbsCoord) {
    vStripes.clear();
    numPlanned = idxStripe = 0;
    numDoneOfStripe = 0;
    expectedChangeCount = host.changeCount();
    const double usedTargetLength = frame.length();
    KIVO_ASSERT(usedTargetLength > 0, "usedTargetLength>0");
    const double unit = std::nextafter(maxAbsCoord, infinity) - maxAbsCoord;
    if (!(usedTargetLength >= minUnitsPerLength * unit)) {
        leaveOut("gridLength=" + numberText(usedTargetLength) +
                 " is too small for the coordinates of the zone");
        return;
    }
    std::vector<GridObstacle> vObstacles = findObstacles(vTriangles, marks);
    if (isTooLarge(vObstacles)) {
        leaveOutTooMany();
        return;
    }
    RowSweep sweep(std::move(vObstacles));
    if (sweep.totalWork() > maxWork) {
        leaveOut("gridLength=" + numberText(usedTargetLength) + " is too small for the border of the zone");
        return;
    }
    std::uint64_t numRows = 0;
    for (std::int64_t row = sweep.nextRow(); row != RowSweep::noRow; row = sweep.nextRow()) {
        if (++numRows % rowsPerLook == 0 && isStopRequested()) return;
        sweep.visit([&](double low, double high) { addStripe(row, low, high); },
                    [&](double low, double high, const GridObstacle& segment) {
                        addPointsOn(segment, row, low, high);
                    });
        if (numPlanned > params.maxInsertedPoints - report.numGridPoints) {
            leaveOutTooMany();
            return;
        }
    }
}

// Each closed edge once, with the zone to its left, and vertices that lie on none.
std::vector<GridObstacle> GridMesher::findObstacles(const std::vector<Triangle2*>& vTriangles,
                                                    TriangleMarks& marks) const {
    std::vector<GridObstacle> vObstacles;
    const auto add = [&](const Point2* p, const Point2* q, bool bBorder, bool bSplittable) {
        vObstacles.push_back({p, q, frame.spotOf(*p), frame.spotOf(*q), bBorder, bSplittable});
    };
    for (Triangle2* const pT : vTriangles) {
        for (int i = 0; i < 3; ++i) {
            // A vertex whose triangle of reference is elsewhere is an end of edges of the border.
            const Point2* const pVtx = pT->getCorner(i);
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

void GridMesher::addStripe(std::int64_t row, double low, double high) {
    append(row, roundedUp(low), roundedDown(high));
}

void GridMesher::addPointsOn(const GridObstacle& segment, std::int64_t row, double low, double high) {
    for (std::int64_t i = roundedUp(low), last = roundedDown(high); i <= last; ++i) {
        const Point2 point = frame.pointAt(i, row);
        if (!isInBox(point, *segment.pFrom, *segment.pTo)) continue;
        if (host.predicates().orientationUnbounded(*segment.pFrom, *segment.pTo, point) !=
            ORIENTATION2_COLLINEAR)
            continue;
        const double s = static_cast<double>(i), t = static_cast<double>(row);
        const double toNearest = std::min(std::hypot(s - segment.from.s, t - segment.from.t),
                                          std::hypot(s - segment.to.s, t - segment.to.t));
        if (toNearest >= std::max(minPiece, 0.5) * (1 - 1e-9)) append(row, i, i);
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

void GridMesher::leaveOut(const std::string& reason) {
    vStripes = {};
    numPlanned = 0;
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
    vChunk.clear();
    vChunk.reserve(std::min<std::uint64_t>(chunkSize, numPlanned));
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
    insertChunk();
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
        numPlanned -= vChunk.size();
        expectedChangeCount = host.changeCount();
    };
    try {
        host.insertVector(vChunk.data(), vChunk.size(), vHandles.data());
    } catch (...) {
        record();
        throw;
    }
    record();
}

} // namespace TESK_KIVO2D
