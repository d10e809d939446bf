#include "zones/GridUnifier.h"

#include "zones/StartAnchors.h"
#include "zones/ZoneEvaluation.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>

namespace TESK_KIVO2D {
namespace {

// A multiple of the width, rounded to double. A number that is one already comes back as it is: for 2^50
// widths and more, where that would not hold, every number does.
double nearestMultiple(double x, double width) {
    constexpr double limit = 0x1p50;
    const double quotient = x / width;
    if (!(std::fabs(quotient) < limit)) return x;
    const double multiple = std::nearbyint(quotient) * width;
    return std::isfinite(multiple) ? multiple + 0.0 : x; // never -0
}

// The length of the way, in the maximum norm, rounded down so that those are equal that differ by a few
// thousandths.
double roughLength(const Point2& p, const Point2& q) {
    const double length = std::max(std::fabs(p.x() - q.x()), std::fabs(p.y() - q.y()));
    constexpr int mantissaBits = 52, bitsKept = 8;
    const std::uint64_t bits = std::bit_cast<std::uint64_t>(length);
    return std::bit_cast<double>(bits >> (mantissaBits - bitsKept) << (mantissaBits - bitsKept));
}

// A number for each index: different, the same in every run, and in no order (Steele, Lea, Flood 2014).
std::uint64_t drawLot(std::size_t index) {
    std::uint64_t lot = (index + 1) * 0x9E3779B97F4A7C15u;
    lot = (lot ^ lot >> 30) * 0xBF58476D1CE4E5B9u;
    lot = (lot ^ lot >> 27) * 0x94D049BB133111EBu;
    return lot ^ lot >> 31;
}

} // namespace

Point2 GridUnifier::nearestGridPoint(const Point2& p) const {
    return Point2(nearestMultiple(p.x(), width), nearestMultiple(p.y(), width));
}

std::size_t GridUnifier::run() {
    host.beginMoves();
    try {
        const std::size_t num = moveAll();
        settle();
        return num;
    } catch (...) {
        settle();
        throw;
    }
}

std::size_t GridUnifier::moveAll() {
    const StartAnchors anchors(host);
    std::vector<Task> vTasks = findTasks();
    for (;;) {
        while (workOff(vTasks)) {
        }
        if (hasMovedSegments()) anchors.restore();
        // Once more: some rules of zones follow the vertices.
        std::vector<Task> vNext = findTasks();
        if (areSame(vTasks, vNext)) return vTasks.size();
        vTasks.swap(vNext);
    }
}

void GridUnifier::settle() {
    mover.release();
    host.endMoves(hasMovedSegments());
}

// Short ways come first, since these vertices are in the way of others. Among those of about the same length
// it is a draw: in the order of a row, say, the last one that stays behind would see all that have moved, and
// each move would take as long as the row.
std::vector<GridUnifier::Task> GridUnifier::findTasks() const {
    // What the hull bounds, and no constraint, may have vanished.
    const ZoneEvaluation evaluation(host, ZoneEvaluation::EmptyInside::IS_FINE);
    std::vector<Point2*> vVertices;
    evaluation.listVertices(zone, vVertices);
    std::vector<Task> vTasks;
    for (Point2* const pVtx : vVertices) {
        const Point2 target = nearestGridPoint(*pVtx);
        if (target != *pVtx)
            vTasks.push_back({pVtx, target, roughLength(*pVtx, target), drawLot(vTasks.size())});
    }
    std::sort(vTasks.begin(), vTasks.end(), [](const Task& a, const Task& b) {
        return a.roughLength != b.roughLength ? a.roughLength < b.roughLength : a.lot < b.lot;
    });
    return vTasks;
}

bool GridUnifier::areSame(const std::vector<Task>& vA, const std::vector<Task>& vB) {
    const auto verticesOf = [](const std::vector<Task>& vTasks) {
        std::vector<const Point2*> vVertices;
        for (const Task& task : vTasks)
            vVertices.push_back(task.pVtx);
        std::sort(vVertices.begin(), vVertices.end(), std::less<>{});
        return vVertices;
    };
    return vA.size() == vB.size() && verticesOf(vA) == verticesOf(vB);
}

// Tries each once, and keeps those that are left out. True when one was not.
bool GridUnifier::workOff(std::vector<Task>& vTasks) {
    std::vector<Task> vLeft;
    for (Task task : vTasks) {
        if (task.pVtx->getIncidentTriangle() == nullptr) continue; // it was merged with another one
        if (task.numSegmentMoves != mover.numberOfSegmentMoves()) {
            const VertexMover::Result result = mover.move(task.pVtx, task.target);
            if (result == VertexMover::Result::MOVED || result == VertexMover::Result::MERGED) continue;
            if (result == VertexMover::Result::BLOCKED) task.numSegmentMoves = mover.numberOfSegmentMoves();
        }
        vLeft.push_back(task);
    }
    vTasks.swap(vLeft);
    return vTasks.size() < vLeft.size();
}

} // namespace TESK_KIVO2D
