#pragma once

#include "Bbox2.h"
#include "Point2.h"
#include "core/StartGrid.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace TESK_KIVO2D {

class WorkerPool;

// Enters vertices into a grid of start triangles, of which near ones follow each other, and refines cells
// that get many in a row.
class GridFiller {
public:
    // Fillers that work at the same time have different parts of the grid, and lanes.
    explicit GridFiller(StartGrid& startGrid, std::size_t itsLane = 0) : grid(startGrid), lane(itsLane) {}

    void enter(const Point2& vertex) {
        constexpr int many = 16;
        StartGrid::Cell cell = grid.cellOf(vertex);
        numInRow = cell == last ? numInRow + 1 : 0;
        if (numInRow == many) {
            grid.refine(cell, lane);
            cell = grid.cellOf(vertex);
            numInRow = 0;
        }
        cell.setTriangle(vertex.getIncidentTriangle());
        last = cell;
    }
    // A vertex follows that another filler enters.
    void leaveOut() { last = {}; }

private:
    StartGrid& grid;
    const std::size_t lane;
    StartGrid::Cell last;
    int numInRow = 0;
};

// The vertices of a batch, near ones after each other, and what they amount to. Those without a triangle are
// left out. Needs no memory, so that the vertices of a batch can be counted when there is none left.
class VertexSlices {
public:
    VertexSlices(std::span<Point2* const> batch, WorkerPool& pool);

    std::size_t numIn() const { return numAll; }
    const Bbox2& extent() const { return box; }
    const Point2* last() const { return pLast; } // null if there are none

    // Enters them, with the same result for every number of threads: each has rows of its own.
    void fill(StartGrid& grid) const;

private:
    // A part of the batch, and so a small part of the plane.
    struct Slice {
        std::size_t numIn;
        double minX, minY, maxX, maxY;
        const Point2* pLast;
    };
    static constexpr std::size_t maxSlices = 512, maxBands = 64;

    std::span<Point2* const> verticesOf(std::size_t slice) const {
        const std::size_t first = slice * sliceSize;
        return vertices.subspan(first, std::min(sliceSize, vertices.size() - first));
    }
    Slice scanned(std::size_t slice) const;
    std::array<std::uint64_t, maxBands + 1> rowLimits(const StartGrid& grid, std::size_t numBands) const;
    void fillRows(StartGrid& grid, std::uint64_t firstRow, std::uint64_t endRow, std::size_t lane) const;

    std::span<Point2* const> vertices;
    WorkerPool& workers;
    std::size_t sliceSize, numSlices;
    std::array<Slice, maxSlices> slices; // the first numSlices
    std::size_t numAll = 0;
    Bbox2 box;
    const Point2* pLast = nullptr;
};

} // namespace TESK_KIVO2D
