#include "zones/GridUnifier.h"

#include <algorithm>
#include <cmath>

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

} // namespace

Point2 GridUnifier::nearestGridPoint(const Point2& p) const {
    return Point2(nearestMultiple(p.x(), width), nearestMultiple(p.y(), width));
}

std::size_t GridUnifier::run() {
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
    for (;;) {
        std::vector<Task> vTasks = findTasks(); // anew each time: some rules follow the vertices
        if (!workOff(vTasks)) return vTasks.size();
        while (workOff(vTasks)) {
        }
    }
}

void GridUnifier::settle() {
    if (!host.vertexMover().hasMovedSegments()) return;
    host.vertexMover().forget();
    host.segmentsHaveMoved();
}

// Those with the shortest way first, since they are in the way of others.
std::vector<GridUnifier::Task> GridUnifier::findTasks() const {
    std::vector<Point2*> vVertices;
    zone.getVertices(vVertices);
    std::vector<Task> vTasks;
    for (Point2* const pVtx : vVertices) {
        const Point2 target = nearestGridPoint(*pVtx);
        if (target != *pVtx) vTasks.push_back({pVtx, target, sqDistance(*pVtx, target)});
    }
    std::stable_sort(vTasks.begin(), vTasks.end(),
                     [](const Task& a, const Task& b) { return a.sqLength < b.sqLength; });
    return vTasks;
}

// Tries each once, and keeps those that are left out. True when one was not.
bool GridUnifier::workOff(std::vector<Task>& vTasks) {
    VertexMover& mover = host.vertexMover();
    const std::size_t numBefore = vTasks.size();
    std::erase_if(vTasks, [&](const Task& task) {
        return task.pVtx->getIncidentTriangle() == nullptr ||
               mover.move(task.pVtx, task.target) != VertexMover::Result::LEFT_OUT;
    });
    return vTasks.size() < numBefore;
}

} // namespace TESK_KIVO2D
