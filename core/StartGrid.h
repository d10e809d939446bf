#pragma once

#include "Bbox2.h"
#include "Point2.h"
#include "Triangle2.h"
#include "core/GridAxis.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

namespace TESK_KIVO2D {

class WorkerPool;

// Where walks start: a grid of square cells over the vertices' box, about one a vertex, with a triangle near
// each. Looking one up costs one or two cache misses; a search tree over the vertices costs ten.
//
// A cell that proves too coarse, because it was visited before and still a walk from its triangle was long,
// is split into 4 x 4, and these again, so that clusters get cells of their own size. A triangle stays a good
// start while it lives, since splits and flips leave its record where it was; the latest insertion in a cell
// renews it. Removals leave dead triangles in cells, which lead to others near them until their records live
// again elsewhere.
class StartGrid {
public:
    // A cell, for the moment: laying out or refining ends it.
    class Cell {
    public:
        Cell() = default; // of no grid
        Triangle2* triangle() const { return reinterpret_cast<Triangle2*>(*pEntry & ~marks); }
        // Counts as a visit.
        void setTriangle(Triangle2* pT) {
            const std::uintptr_t visits = std::min(*pEntry & manyVisits, manyVisits - oneVisit) + oneVisit;
            *pEntry = reinterpret_cast<std::uintptr_t>(pT) | visits;
        }
        // Does not.
        void renew(Triangle2* pT) { *pEntry = reinterpret_cast<std::uintptr_t>(pT) | (*pEntry & marks); }
        bool hadManyVisits() const { return (*pEntry & manyVisits) == manyVisits; }
        bool operator==(const Cell& other) const { return pEntry == other.pEntry; }

    private:
        friend class StartGrid;
        Cell(std::uintptr_t* pItsEntry, int numDigits) : pEntry(pItsEntry), numDigitsLeft(numDigits) {}
        std::uintptr_t* pEntry = nullptr;
        int numDigitsLeft = 0; // for the numbering of parts
    };

    // Lays out about so many cells over the frame, without any triangle.
    void layOut(const Bbox2& newFrame, std::size_t numCells);
    // One cell without a triangle is left. Does not throw.
    void clear();
    // Gives cells without a triangle that of the nearest part of a neighbour. Afterwards every cell has one,
    // if any has.
    void fillGaps(WorkerPool& workers);

    // Cells of a row may be changed while another thread changes those of other rows, if each of the threads
    // refines in a lane of its own.
    std::uint64_t rowOf(double y) const { return axisY.cell(y, maxNumberY) >> numPartDigits; }
    void setLanes(std::size_t num) { vLanes.resize(std::max(num, vLanes.size())); }

    bool covers(const Point2& p) const { return frame.isInBox(p); }
    std::size_t numberOfCells() const { return vCells.size(); }

    // The cell of any point; those outside the frame have one at its border.
    Cell cellOf(const Point2& p) {
        const std::uint64_t x = axisX.cell(p.x(), maxNumberX), y = axisY.cell(p.y(), maxNumberY);
        int digitsLeft = numPartDigits;
        std::uintptr_t* pEntry = &vCells[(y >> digitsLeft) * numColumns + (x >> digitsLeft)];
        while ((*pEntry & isRefined) != 0) {
            digitsLeft -= childDigits;
            Children& children = *reinterpret_cast<Children*>(*pEntry - isRefined);
            pEntry = &children[(y >> digitsLeft) % childWidth * childWidth + (x >> digitsLeft) % childWidth];
        }
        return {pEntry, digitsLeft};
    }

    // Splits a cell, whose triangle all parts get, without a visit so far. A cell as small as rounding allows
    // stays, and so does every cell when memory runs out.
    void refine(Cell cell, std::size_t lane = 0);

private:
    // The number of a coordinate is that of its column or row, and 44 binary digits that name the parts.
    static constexpr int numPartDigits = 44;
    static constexpr double maxCellsOfAxis = 0x1p20; // so that numbers have 64 bits
    static constexpr int childDigits = 2;
    static constexpr std::uint64_t childWidth = 1 << childDigits;
    // An entry is the address of a triangle, with the number of visits up to three in bits 1 and 2, or that
    // of 16 entries with bit 0. Addresses have room for these.
    static constexpr std::uintptr_t isRefined = 1, oneVisit = 2, manyVisits = 6, marks = 7;
    static_assert(alignof(Triangle2) > marks);
    using Children = std::array<std::uintptr_t, childWidth * childWidth>;

    static std::uintptr_t partOf(std::uintptr_t entry, std::size_t column, std::size_t row);

    Bbox2 frame;
    GridAxis axisX, axisY;
    double maxNumberX = 0, maxNumberY = 0;
    std::size_t numColumns = 1;
    // Row by row. Zeroed, and so first touched, by one thread: several that meet fresh pages get in each
    // other's way in the system, which takes longer than all the filling.
    std::vector<std::uintptr_t> vCells = {0};
    std::vector<std::deque<Children>> vLanes =
        std::vector<std::deque<Children>>(1); // of children in no order; their addresses stay
};

} // namespace TESK_KIVO2D
