#pragma once

#include "checker/RTree.h"
#include "checker/SegmentArray.h"
#include "core/GridAxis.h"

#include <cmath>

namespace TESK_KIVO2D {

// An R-tree over the boxes of segments. Boxes are in cells of a grid over all of them, or all but a few far
// away, which have cells at its border: the map to cells keeps the order of coordinates, so that no two boxes
// that touch come apart, whatever their size.
class SegmentIndex {
public:
    // The segments must outlive the index.
    explicit SegmentIndex(const SegmentArray& segments);

    // Calls visit(i) for each segment whose box meets that of a segment, which may be any, until one call
    // returns false. Where the box is large against those of the tree's nodes, nodes off the segment's line
    // are left out.
    template<class Visit>
    bool visitCandidates(const Ends& ends, Visit&& visit) const;

    // The same for the i-th segment of the array, and first of all for its neighbours in the order, where
    // most hits are found.
    template<class Visit>
    bool visitCandidatesOf(std::size_t i, const Ends& ends, const Visit& visit) const {
        const auto visitOthers = [&](std::size_t j) {
            return j / RTree::fanOut == i / RTree::fanOut || visit(j);
        };
        return tree.visitBeside(i, visit) && visitCandidates(ends, visitOthers);
    }

private:
    // A line within the grid, in cells. The map moves what it maps by less than a cell and a bit in each
    // axis.
    class Line {
    public:
        Line(const SegmentIndex& index, const Ends& ends)
            : x(cell(index.axisX, ends.srcX)), y(cell(index.axisY, ends.srcY)),
              dx(cell(index.axisX, ends.trgX) - x), dy(cell(index.axisY, ends.trgY) - y) {}
        bool isOff(const CellBox& box) const {
            constexpr double slack = 4;
            const double halfWidth = box.width() * 0.5 + slack, halfHeight = box.height() * 0.5 + slack;
            const double toX = (static_cast<double>(box.minX) + box.maxX) * 0.5 - x;
            const double toY = (static_cast<double>(box.minY) + box.maxY) * 0.5 - y;
            return std::fabs(dx * toY - dy * toX) > std::fabs(dx) * halfHeight + std::fabs(dy) * halfWidth;
        }

    private:
        double x, y, dx, dy;
    };

    // The lowest and the highest number are left to empty boxes.
    static constexpr double maxCell = 0x1p32 - 3;

    static std::int32_t cell(const GridAxis& axis, double coord) {
        constexpr std::int64_t lowest = std::numeric_limits<std::int32_t>::min() + 1;
        return static_cast<std::int32_t>(lowest + static_cast<std::int64_t>(axis.cell(coord, maxCell)));
    }
    CellBox boxOf(const Ends& ends) const {
        const std::int32_t x0 = cell(axisX, ends.srcX), x1 = cell(axisX, ends.trgX);
        const std::int32_t y0 = cell(axisY, ends.srcY), y1 = cell(axisY, ends.trgY);
        return {x0 < x1 ? x0 : x1, y0 < y1 ? y0 : y1, x0 < x1 ? x1 : x0, y0 < y1 ? y1 : y0};
    }

    Bbox2 grid;
    GridAxis axisX, axisY;
    RTree tree;
};

template<class Visit>
bool SegmentIndex::visitCandidates(const Ends& ends, Visit&& visit) const {
    const CellBox box = boxOf(ends);
    // What reaches beyond the grid has cells at its border, which are not on its line.
    const bool bInGrid = grid.isInBox(ends.src()) && grid.isInBox(ends.trg());
    if (!bInGrid || box.width() * box.height() <= 4 * tree.meanLeafArea())
        return tree.visitMeeting(
            box, [](const RTree::Node&, unsigned mask) { return mask; }, visit);
    const Line line(*this, ends);
    const auto narrow = [&](const RTree::Node& node, unsigned mask) {
        for (unsigned rest = mask; rest != 0; rest &= rest - 1) {
            const auto i = static_cast<unsigned>(std::countr_zero(rest));
            if (line.isOff(node.box(i))) mask &= ~(1U << i);
        }
        return mask;
    };
    return tree.visitMeeting(box, narrow, visit);
}

} // namespace TESK_KIVO2D
