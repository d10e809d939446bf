#pragma once

#include "Point2.h"
#include "meshing/GridFrame.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace TESK_KIVO2D {

// What grid points keep their distance from: a segment, or a vertex when both ends are the same.
struct GridObstacle {
    Point2* pFrom;
    Point2* pTo;
    GridSpot from;
    GridSpot to;
    std::size_t index;
    bool bBorder;     // the zone ends here, to the left of which it lies
    bool bSplittable; // grid points may lie on it
};

// Goes up through the rows of a grid and finds what parts of each are free: inside the zone, and far enough
// from all obstacles.
//
// Computed in doubles. Rounding moves the ends of a part a little, never by so much that an obstacle comes to
// lie in a part or the zone ends there: each crossing of the border lies well inside of what its own edge
// blocks, and each ring crosses a row as often downwards as upwards, since it is decided once for each vertex
// whether that lies above the row.
class RowSweep {
public:
    // Half the length of the grid, but for what rounding may do to points at just that distance.
    static constexpr double clearance = 0.5 * (1 - 1e-9);
    static constexpr std::int64_t noRow = std::numeric_limits<std::int64_t>::max();

    explicit RowSweep(std::vector<GridObstacle> obstacles);

    // How many obstacles all rows meet, together.
    double totalWork() const { return work; }

    // The next row that meets an obstacle, or noRow.
    std::int64_t nextRow();
    // Calls onFree(low, high) with each free part of the row that nextRow gave, and onAlone(low, high,
    // obstacle) with each part that is too close to one obstacle only and that one splittable.
    template<class OnFree, class OnAlone>
    void visit(OnFree onFree, OnAlone onAlone) {
        findBlocked();
        constexpr double infinity = std::numeric_limits<double>::infinity();
        // Of what begins before `at`, the two parts that reach farthest.
        double at = -infinity, reach = -infinity, secondReach = -infinity;
        const GridObstacle* pFarthest = nullptr;
        int depth = 0; // how often the zone lies around, to the right of all that
        for (const Blocked& blocked : vBlocked) {
            if (pFarthest != nullptr && pFarthest->bSplittable) {
                const double low = at > secondReach ? at : secondReach;
                const double high = reach < blocked.low ? reach : blocked.low;
                if (low <= high) onAlone(low, high, *pFarthest);
            }
            if (reach < blocked.low && depth > 0) onFree(reach, blocked.low);
            at = blocked.low;
            if (blocked.high > reach) {
                secondReach = reach;
                reach = blocked.high;
                pFarthest = blocked.pObstacle;
            } else if (blocked.high > secondReach) {
                secondReach = blocked.high;
            }
            depth += blocked.turn;
        }
    }

private:
    // What an obstacle takes of the row, and whether the zone begins (1) or ends (-1) at it. The last one is
    // the end of the row.
    struct Blocked {
        double low;
        double high;
        int turn;
        const GridObstacle* pObstacle;
    };
    struct Rows {
        std::int64_t first;
        std::int64_t last;
        std::size_t index; // of the obstacle
    };

    void findBlocked();
    Blocked blockedBy(const GridObstacle& obstacle) const;

    std::vector<GridObstacle> vObstacles;
    std::vector<Rows> vRows;   // by their first one
    std::size_t idxNext = 0;   // of those that begin above the row
    std::vector<Rows> vActive; // those that reach the row
    std::vector<Blocked> vBlocked;
    std::int64_t row = std::numeric_limits<std::int64_t>::min();
    double work = 0;
};

} // namespace TESK_KIVO2D
