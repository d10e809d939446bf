#include "core/GridFiller.h"

#include "core/WorkerPool.h"

#include <algorithm>
#include <cfloat>
#include <limits>

namespace TESK_KIVO2D {

VertexSlices::VertexSlices(std::span<Point2* const> batch, WorkerPool& pool)
    : vertices(batch), workers(pool) {
    constexpr std::size_t minSize = 4096;
    sliceSize = std::max(minSize, (vertices.size() + maxSlices - 1) / maxSlices);
    numSlices = (vertices.size() + sliceSize - 1) / sliceSize;
    workers.run(numSlices, [this](std::size_t i, int) { slices[i] = scanned(i); });
    for (std::size_t i = 0; i < numSlices; ++i) {
        if (slices[i].numIn == 0) continue;
        numAll += slices[i].numIn;
        box.add(Point2(slices[i].minX, slices[i].minY));
        box.add(Point2(slices[i].maxX, slices[i].maxY));
        pLast = slices[i].pLast;
    }
}

VertexSlices::Slice VertexSlices::scanned(std::size_t slice) const {
    Slice result = {0, DBL_MAX, DBL_MAX, -DBL_MAX, -DBL_MAX, nullptr};
    for (const Point2* const pVtx : verticesOf(slice)) {
        if (pVtx->getIncidentTriangle() == nullptr) continue;
        ++result.numIn;
        result.minX = std::min(result.minX, pVtx->x());
        result.minY = std::min(result.minY, pVtx->y());
        result.maxX = std::max(result.maxX, pVtx->x());
        result.maxY = std::max(result.maxY, pVtx->y());
        result.pLast = pVtx;
    }
    return result;
}

void VertexSlices::fill(StartGrid& grid) const {
    // Several bands of rows a thread, since the slices at their ends make them different amounts of work.
    const auto size = static_cast<std::size_t>(workers.size());
    const std::size_t numBands = size == 1 ? 1 : std::min(2 * size, maxBands);
    const std::array<std::uint64_t, maxBands + 1> limits = rowLimits(grid, numBands);
    grid.setLanes(numBands);
    workers.run(numBands, [&](std::size_t i, int) { fillRows(grid, limits[i], limits[i + 1], i); });
}

// Rows of nearly the same number of vertices.
std::array<std::uint64_t, VertexSlices::maxBands + 1> VertexSlices::rowLimits(const StartGrid& grid,
                                                                              std::size_t numBands) const {
    struct Share {
        std::uint64_t row;
        std::size_t numIn;
    };
    std::array<Share, maxSlices> shares;
    for (std::size_t i = 0; i < numSlices; ++i)
        shares[i] = {grid.rowOf(slices[i].minY / 2 + slices[i].maxY / 2), slices[i].numIn};
    std::sort(shares.begin(), shares.begin() + static_cast<std::ptrdiff_t>(numSlices),
              [](const Share& a, const Share& b) { return a.row < b.row; });
    std::array<std::uint64_t, maxBands + 1> limits{};
    std::size_t numBefore = 0, numLimits = 1;
    for (std::size_t i = 0; i < numSlices; ++i) {
        for (; numLimits < numBands && numBefore * numBands >= numAll * numLimits; ++numLimits)
            limits[numLimits] = shares[i].row;
        numBefore += shares[i].numIn;
    }
    std::fill(limits.begin() + static_cast<std::ptrdiff_t>(numLimits), limits.end(),
              std::numeric_limits<std::uint64_t>::max());
    return limits;
}

// The rows from the first one to the one before the end.
void VertexSlices::fillRows(StartGrid& grid, std::uint64_t firstRow, std::uint64_t endRow,
                            std::size_t lane) const {
    GridFiller filler(grid, lane);
    for (std::size_t i = 0; i < numSlices; ++i) {
        if (slices[i].numIn == 0) continue;
        const std::uint64_t low = grid.rowOf(slices[i].minY), high = grid.rowOf(slices[i].maxY);
        if (high < firstRow || low >= endRow) {
            filler.leaveOut();
            continue;
        }
        const bool bAll = low >= firstRow && high < endRow;
        for (const Point2* const pVtx : verticesOf(i)) {
            if (pVtx->getIncidentTriangle() == nullptr) continue;
            const std::uint64_t row = bAll ? firstRow : grid.rowOf(pVtx->y());
            if (row >= firstRow && row < endRow) {
                filler.enter(*pVtx);
            } else {
                filler.leaveOut();
            }
        }
    }
}

} // namespace TESK_KIVO2D
