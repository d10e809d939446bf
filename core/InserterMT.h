#pragma once

#include "Point2.h"
#include "Triangle2.h"
#include "core/HC2.h"
#include "core/WorkCounts.h"
#include "core/WorkerPool.h"
#include "kernel/ProgressHub.h"
#include "kernel/TeskTest.h"

#include <cstddef>
#include <span>

namespace TESK_KIVO2D {

class MeshStore;

// Triangulates many vertices in several threads: chunks of them on their own, and neighbouring parts merged
// until all are one (see ChunkTree). No two threads share a vertex or a triangle at any time, so there are no
// locks; and the result does not depend on the number of threads.
class InserterMT {
public:
    InserterMT(const HC2& curve, double maxAbsCoordinate, std::size_t maxChunkSize, WorkerPool& pool,
               ProgressHub::Operation& operation)
        : hc(curve), maxAbsCoord(maxAbsCoordinate), maxChunk(maxChunkSize), workers(pool),
          progress(operation) {}

    // The different vertices, in the order of the curve, get the Delaunay triangulation of all of them; when
    // they lie on one line they get nothing, and the answer is false. There are two records of the store a
    // vertex; it gets back what is left of them. Progress is told in the caller's thread only.
    //
    // When it throws, vertices and records are linked anyhow, and both must be cleared.
    bool triangulate(std::span<Point2* const> vertices, std::span<Triangle2> records, MeshStore& store);

    const WorkCounts& workCounts() const { return work; }
    const TeskTest::StageCounts& stageCounts() const { return stages; }

private:
    const HC2& hc;
    const double maxAbsCoord;
    const std::size_t maxChunk;
    WorkerPool& workers;
    ProgressHub::Operation& progress;
    WorkCounts work;
    TeskTest::StageCounts stages;
};

} // namespace TESK_KIVO2D
