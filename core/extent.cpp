#include "core/extent.h"

#include "core/WorkerPool.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <vector>

namespace TESK_KIVO2D {
namespace {

// Plain numbers, which stay in registers. Of equal bounds, such as zeros of both signs, the first one stays.
struct Bounds {
    double minX = DBL_MAX, minY = DBL_MAX, maxX = -DBL_MAX, maxY = -DBL_MAX;
    std::size_t numFinite = 0;

    void add(const Bounds& other) {
        minX = std::min(minX, other.minX);
        minY = std::min(minY, other.minY);
        maxX = std::max(maxX, other.maxX);
        maxY = std::max(maxY, other.maxY);
        numFinite += other.numFinite;
    }
};

Bounds boundsOf(const Point2* pFirst, const Point2* pLast) {
    Bounds bounds;
    for (const Point2* p = pFirst; p != pLast; ++p) {
        if (std::isfinite(p->x()) && std::isfinite(p->y())) bounds.add({p->x(), p->y(), p->x(), p->y(), 1});
    }
    return bounds;
}

} // namespace

Extent scanExtent(const Point2* aPoints, std::size_t num, WorkerPool& pool) {
    constexpr std::size_t sliceSize = 1 << 16;
    std::vector<Bounds> vSlices((num + sliceSize - 1) / sliceSize);
    pool.run(vSlices.size(), [&](std::size_t i, int) {
        vSlices[i] = boundsOf(aPoints + i * sliceSize, aPoints + std::min((i + 1) * sliceSize, num));
    });
    Bounds all;
    for (const Bounds& slice : vSlices)
        all.add(slice);
    Extent extent;
    extent.numFinite = all.numFinite;
    if (all.numFinite > 0) {
        extent.box.add(Point2(all.minX, all.minY));
        extent.box.add(Point2(all.maxX, all.maxY));
    }
    return extent;
}

} // namespace TESK_KIVO2D
