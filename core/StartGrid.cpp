#include "core/StartGrid.h"

#include "core/WorkerPool.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace TESK_KIVO2D {

void StartGrid::layOut(const Bbox2& newFrame, std::size_t numCells) {
    // Halves, since the ranges of the largest frames are infinite.
    const double num = static_cast<double>(std::max<std::size_t>(numCells, 1));
    const double halfWidth = newFrame.get_maxX() / 2 - newFrame.get_minX() / 2;
    const double halfHeight = newFrame.get_maxY() / 2 - newFrame.get_minY() / 2;
    // Ratios only, so that the same points at another scale have the same cells.
    const double aspect = halfWidth / halfHeight;
    double cellsX = std::sqrt(num), cellsY = cellsX;
    if (num * aspect < 1) {
        cellsX = num * aspect;
        cellsY = num;
    } else if (num / aspect < 1) {
        cellsX = num;
        cellsY = num / aspect;
    } else if (num * aspect > 0) {
        cellsX = std::sqrt(num * aspect);
        cellsY = std::sqrt(num / aspect);
    }
    cellsX = std::min(cellsX, maxCellsOfAxis);
    cellsY = std::min(cellsY, maxCellsOfAxis);
    const auto columns = static_cast<std::size_t>(std::max(std::ceil(cellsX), 1.0));
    const auto rows = static_cast<std::size_t>(std::max(std::ceil(cellsY), 1.0));
    std::vector<std::uintptr_t> vNewCells(columns * rows);
    vCells.swap(vNewCells);
    for (std::deque<Children>& dChildren : vLanes)
        dChildren.clear();
    frame = newFrame;
    numColumns = columns;
    const double partsOfCell = std::ldexp(1.0, numPartDigits);
    axisX.set(frame.get_minX(), frame.get_maxX(), cellsX * partsOfCell);
    axisY.set(frame.get_minY(), frame.get_maxY(), cellsY * partsOfCell);
    // The next number down: from 2^53 on, less than one is lost to rounding.
    maxNumberX = std::nextafter(static_cast<double>(columns) * partsOfCell, 0);
    maxNumberY = std::nextafter(static_cast<double>(rows) * partsOfCell, 0);
}

void StartGrid::clear() {
    frame = Bbox2();
    maxNumberX = maxNumberY = 0;
    numColumns = 1;
    vCells.resize(1);
    vCells[0] = 0;
    for (std::deque<Children>& dChildren : vLanes)
        dChildren.clear();
}

namespace {

// Fills the gaps of a sequence from their ends: fill(i, j) gives element i what element j has. False when all
// is gap.
template<class IsGap, class Fill>
bool fillFromEnds(std::size_t num, IsGap isGap, Fill fill) {
    bool bAny = false;
    std::size_t previous = 0; // the filled one before the gap
    for (std::size_t i = 0; i < num; ++i) {
        if (isGap(i)) continue;
        const std::size_t gapBegin = bAny ? previous + 1 : 0;
        const std::size_t middle = bAny ? gapBegin + (i - gapBegin) / 2 : 0;
        for (std::size_t k = gapBegin; k < middle; ++k)
            fill(k, previous);
        for (std::size_t k = middle; k < i; ++k)
            fill(k, i);
        previous = i;
        bAny = true;
    }
    for (std::size_t k = previous + 1; bAny && k < num; ++k)
        fill(k, previous);
    return bAny;
}

} // namespace

// The triangle of the outermost part in this column and row of a cell, as an entry without visits.
std::uintptr_t StartGrid::partOf(std::uintptr_t entry, std::size_t column, std::size_t row) {
    while ((entry & isRefined) != 0)
        entry = (*reinterpret_cast<const Children*>(entry - isRefined))[row * childWidth + column];
    return entry & ~marks;
}

// A gap takes the part that is nearest to it.
void StartGrid::fillGaps(WorkerPool& workers) {
    constexpr std::size_t first = 0, middle = childWidth / 2, last = childWidth - 1;
    const std::size_t width = numColumns, height = vCells.size() / numColumns;
    constexpr std::size_t rowsOfTask = 32;
    workers.run((height + rowsOfTask - 1) / rowsOfTask, [&](std::size_t task, int) {
        const std::size_t end = std::min((task + 1) * rowsOfTask, height);
        for (std::size_t y = task * rowsOfTask; y < end; ++y) {
            std::uintptr_t* const aRow = &vCells[y * width];
            fillFromEnds(
                width, [&](std::size_t i) { return aRow[i] == 0; },
                [&](std::size_t i, std::size_t j) {
                    aRow[i] = partOf(aRow[j], j < i ? last : first, middle);
                });
        }
    });
    fillFromEnds(
        height, [&](std::size_t y) { return vCells[y * width] == 0; },
        [&](std::size_t y, std::size_t from) {
            for (std::size_t x = 0; x < width; ++x)
                vCells[y * width + x] = partOf(vCells[from * width + x], middle, from < y ? last : first);
        });
}

void StartGrid::refine(Cell cell, std::size_t lane) {
    if (cell.numDigitsLeft < childDigits) return; // no part of it has a number
    try {
        Children& children = vLanes[lane].emplace_back();
        children.fill(*cell.pEntry & ~marks);
        *cell.pEntry = reinterpret_cast<std::uintptr_t>(&children) + isRefined;
    } catch (const std::bad_alloc&) { // longer walks are no reason to fail
    }
}

} // namespace TESK_KIVO2D
