#pragma once

#include "Point2.h"
#include "Triangle2.h"
#include "core/GhostRing.h"
#include "core/WorkCounts.h"
#include "kernel/TeskTest.h"

#include <cstddef>
#include <functional>
#include <span>
#include <vector>

namespace TESK_KIVO2D {

// What one thread works with, and nobody else: on cache lines of its own, in pairs as they are fetched, since
// it is written with every vertex.
class alignas(128) ChunkWorker {
public:
    // The predicates hold for coordinates up to that bound. `report` is called now and then with the number
    // of vertices that were inserted since; it may throw.
    ChunkWorker(double maxAbsCoord, std::function<void(std::size_t)> report);

    TeskTest& predicates() { return tests; }
    const WorkCounts& workCounts() const { return work; }

    // Triangulates different vertices that are ordered along the curve and have no triangle, and rings them
    // with ghosts. There are two records a vertex; the last two stay free.
    RingedPart triangulate(std::span<Point2* const> vertices, std::span<Triangle2> records);

    // From the RangeInserter.
    void duplicate(Point2* pVtx, Point2* pUnique);
    void advance() {
        if (++numSilent == maxSilent) flush();
    }
    // Reports what was not reported.
    void flush();

private:
    static constexpr std::size_t maxSilent = 1024;

    TeskTest tests;
    std::function<void(std::size_t)> report;
    std::size_t numSilent = 0;
    std::vector<Triangle2*> vLocalCheckT;
    WorkCounts work;
};

} // namespace TESK_KIVO2D
