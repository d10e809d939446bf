#pragma once

#include "Point2.h"
#include "core/BatchVertices.h"
#include "core/Dt2.h"
#include "core/WorkerPool.h"
#include "kernel/ProgressHub.h"

#include <cstddef>
#include <span>
#include <vector>

namespace TESK_KIVO2D {

// Inserts many vertices at once: orders them along the Hilbert curve, lays their records out in that order,
// and inserts them one after the other (RangeInserter), or large batches by chunks (InserterMT). Lives
// for one batch, or for the moment when the stored vertices span their first triangle.
//
// A listener that throws, or memory that runs out, ends the batch early: vertices that the client held before
// are in for certain, and the triangulation is valid. Of the new ones those are in that were inserted one by
// one until then, and none by chunks.
class BatchInserter {
public:
    BatchInserter(Dt2& owner, WorkerPool& pool, ProgressHub::Operation& operation)
        : dt(owner), workers(pool), progress(operation) {}

    // Fewer than 2^32 points. aHandles is null or receives the vertex of each point, null for one that is not
    // finite.
    void insert(std::span<const Point2> points, Point2** aHandles);

    // While not 2-D: if the stored vertices span a triangle, makes it and inserts them all.
    void insertStored();

    // From the RangeInserter.
    void duplicate(Point2* pVtx, Point2* pUnique) { dt.vertexVault.addRedundant(pVtx, pUnique); }
    void advance() { progress.advance(); }

private:
    bool isForChunks(std::size_t numPoints) const;
    void insertInSequence(std::span<const Point2> points, Point2** aHandles);
    void insertInChunks(std::span<const Point2> points, Point2** aHandles);

    void takeOld(std::vector<Point2*> vVertices);
    bool isOld(const Point2* pVtx) const;
    void insertLowerDimensional();
    void storeNew();
    void insertAllStored(Point2* const (&corners)[3]);
    void insertAll(Triangle2* pStart);
    void rescueOld(Triangle2* pStart);
    void settle();
    void resolveHandles(std::span<Point2*> handles) const;
    void recycleLeftOut();
    void undoChunks(std::span<Point2*> handles);

    Dt2& dt;
    WorkerPool& workers;
    ProgressHub::Operation& progress;
    BatchVertices vertices;    // to insert
    std::vector<Point2*> vOld; // of these, that the client may hold already; sorted
    std::size_t numIn = 0;     // of these, that are in the triangulation in the end
};

} // namespace TESK_KIVO2D
