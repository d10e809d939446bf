#pragma once

#include "Point2.h"
#include "core/Dt2.h"
#include "kernel/ProgressHub.h"

#include <cstddef>
#include <vector>

namespace TESK_KIVO2D {

// Inserts many vertices at once: orders them along the Hilbert curve, lays their records out in that order,
// and inserts by recursive bisection down to blocks, those by ever finer selections, each vertex from a
// triangle nearby. Lives for one batch, or for the moment when the stored vertices span their first triangle.
//
// A listener that throws, or memory that runs out, ends the batch early: what is in stays in, vertices that
// the client held before are in for certain, and the triangulation is valid.
class BatchInserter {
public:
    BatchInserter(Dt2& owner, ProgressHub::Operation& operation) : dt(owner), progress(operation) {}

    // Fewer than 2^32 points. aHandles is null or receives the vertex of each point, null for one that is not
    // finite.
    void insert(const Point2* aPoints, std::size_t numPoints, Point2** aHandles);

    // While not 2-D: if the stored vertices span a triangle, makes it and inserts them all.
    void insertStored();

private:
    void registerVertices(const Point2* aPoints, std::size_t numPoints, Point2** aHandles);
    void insertAll(Triangle2* pStart);
    Triangle2* insertRange(Point2* const* pFirst, Point2* const* pLast, Triangle2* pStart);
    Triangle2* insertBlock(Point2* const* aVertices, std::size_t num, Triangle2* pStart);
    Triangle2* insertOne(Point2* pVtx, Triangle2* pStart);
    void rescueStored(Triangle2* pStart);
    void settle();
    void resolveHandles(Point2** aHandles, std::size_t numHandles) const;
    void recycleLeftOut();

    Dt2& dt;
    ProgressHub::Operation& progress;
    std::vector<Point2*> vRange; // the vertices to insert, in key order
    std::size_t numIn = 0;       // of these, that are in the triangulation in the end
    // How many of the stored vertices were there before this batch, whose own follow in key order.
    static constexpr std::size_t all = ~std::size_t(0);
    std::size_t numStoredBefore = all;
    std::vector<Point2*> vStoredBefore; // those, which the client may hold already, when all are inserted
};

} // namespace TESK_KIVO2D
