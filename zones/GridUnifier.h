#pragma once

#include "Point2.h"
#include "Zone2.h"
#include "zones/ZoneHost.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace TESK_KIVO2D {

// Moves the vertices of a zone onto the grid of a given width through the origin. What can't move at first
// may be able to after others have: it is tried again until nothing moves any more.
class GridUnifier {
public:
    // The width is positive and finite.
    GridUnifier(const Zone2& itsZone, ZoneHost& triangulation, double itsWidth)
        : zone(itsZone), host(triangulation), mover(triangulation.vertexMover()), width(itsWidth),
          numSegmentMovesBefore(mover.numberOfSegmentMoves()) {}

    // Returns the number of vertices that stay beside the grid.
    std::size_t run();

private:
    struct Task {
        Point2* pVtx;
        Point2 target;
        double roughLength;
        std::uint64_t lot;
        // How many had been made when it was found blocked.
        std::size_t numSegmentMoves = static_cast<std::size_t>(-1);
    };

    bool hasMovedSegments() const { return mover.numberOfSegmentMoves() > numSegmentMovesBefore; }
    std::size_t moveAll();
    void settle();
    std::vector<Task> findTasks() const;
    static bool areSame(const std::vector<Task>& vA, const std::vector<Task>& vB);
    bool workOff(std::vector<Task>& vTasks);
    Point2 nearestGridPoint(const Point2& p) const;

    const Zone2& zone;
    ZoneHost& host;
    VertexMover& mover;
    const double width;
    const std::size_t numSegmentMovesBefore;
};

} // namespace TESK_KIVO2D
