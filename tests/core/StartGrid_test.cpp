#include "core/StartGrid.h"

#include "Kivo_2D.h"
#include "core/Dt2.h"
#include "core/GridFiller.h"
#include "core/WorkerPool.h"
#include "tests/support/boxOf.h"
#include "tests/support/doubles.h"

#include <gtest/gtest.h>

#include <set>
#include <tuple>
#include <vector>

using namespace TESK_KIVO2D;

namespace {

double stepsPerInsertion(const Kivo_2D& kivo) {
    const WorkCounts& work = kivo.getImpl()->workCounts();
    return static_cast<double>(work.walkSteps) / static_cast<double>(work.insertions);
}

// What there is to see of the grid at the vertices.
std::vector<std::tuple<const Triangle2*, bool, bool>> seenAt(const std::vector<Point2*>& vVertices,
                                                             StartGrid& grid) {
    std::vector<std::tuple<const Triangle2*, bool, bool>> vSeen;
    StartGrid::Cell last;
    for (const Point2* const pVtx : vVertices) {
        const StartGrid::Cell cell = grid.cellOf(*pVtx);
        vSeen.emplace_back(cell.triangle(), cell.hadManyVisits(), cell == last);
        last = cell;
    }
    return vSeen;
}

} // namespace

TEST(StartGrid, tellsPointsApartAndRemembersTheirTriangles) {
    StartGrid grid;
    grid.layOut(boxOf(0, 0, 8, 2), 16);
    std::vector<Triangle2> vTriangles(16);
    for (std::size_t i = 0; i < 16; ++i)
        grid.cellOf(Point2(0.5 + double(i % 8), 0.5 + double(i / 8))).setTriangle(&vTriangles[i]);
    for (std::size_t i = 0; i < 16; ++i) {
        const double x = double(i % 8), y = double(i / 8);
        EXPECT_EQ(&vTriangles[i], grid.cellOf(Point2(x + 0.01, y + 0.99)).triangle()) << i;
    }
    // Beyond the frame: the cell at the border.
    EXPECT_EQ(&vTriangles[0], grid.cellOf(Point2(-1e308, -1)).triangle());
    EXPECT_EQ(&vTriangles[15], grid.cellOf(Point2(9, 1e308)).triangle());
    EXPECT_TRUE(grid.covers(Point2(8, 2)));
    EXPECT_FALSE(grid.covers(Point2(8.1, 2)));
}

TEST(StartGrid, refinesACellUntilRoundingEnds) {
    StartGrid grid;
    grid.layOut(boxOf(0, 0, 1, 1), 4);
    Triangle2 first, second;
    const Point2 p(0.3, 0.3), q(0.3 + 1e-12, 0.3);
    grid.cellOf(p).setTriangle(&first);
    int numRefined = 0;
    while (grid.cellOf(p) == grid.cellOf(q) && numRefined < 30) {
        grid.refine(grid.cellOf(p));
        EXPECT_EQ(&first, grid.cellOf(p).triangle()); // parts begin with what the whole had
        ++numRefined;
    }
    EXPECT_LT(numRefined, 25);
    grid.cellOf(q).setTriangle(&second);
    EXPECT_EQ(&first, grid.cellOf(p).triangle());
    EXPECT_EQ(&second, grid.cellOf(q).triangle());
    for (int i = 0; i < 100; ++i)
        grid.refine(grid.cellOf(p)); // in the end it stays as it is
    EXPECT_EQ(&first, grid.cellOf(p).triangle());
}

TEST(StartGrid, fillsGapsFromTheNearestInTheRow) {
    StartGrid grid;
    grid.layOut(boxOf(0, 0, 8, 8), 64);
    Triangle2 left, right;
    grid.cellOf(Point2(1.5, 3.5)).setTriangle(&left);
    grid.cellOf(Point2(6.5, 3.5)).setTriangle(&right);
    grid.refine(grid.cellOf(Point2(6.5, 3.5)));
    WorkerPool pool(2);
    grid.fillGaps(pool);
    for (int y = 0; y < 8; ++y) {
        for (int x = 0; x < 8; ++x)
            EXPECT_EQ(x < 4 ? &left : &right, grid.cellOf(Point2(x + 0.5, y + 0.5)).triangle())
                << x << " " << y;
    }
    // A cell that was filled is one of its own.
    grid.cellOf(Point2(5.5, 3.5)).setTriangle(&left);
    EXPECT_EQ(&right, grid.cellOf(Point2(6.5, 3.5)).triangle());
}

// Clusters of the size of a cell and less at many places, so that cells are refined everywhere.
TEST(StartGrid, isFilledInThreadsAsByOne) {
    doubles::Rng rng(6);
    doubles::Points v;
    for (int i = 0; i < 150000; ++i) {
        const double x = doubles::below(rng, 40), size = std::ldexp(1.0, -doubles::below(rng, 12));
        v.emplace_back(x + size * doubles::uniform(rng), x * x / 40 + size * doubles::uniform(rng));
    }
    Kivo_2D kivo;
    kivo.insert(v);
    std::vector<Point2*> vVertices;
    kivo.getVertexPointers(vVertices);
    Point2 loose(1, 1); // is left out, wherever it is
    vVertices.insert(vVertices.begin() + 70000, 10000, &loose);
    Bbox2 box;
    StartGrid expected;
    expected.layOut(boxOf(0, 0, 41, 40), 20000);
    GridFiller filler(expected);
    for (const Point2* const pVtx : vVertices) {
        if (pVtx == &loose) continue;
        filler.enter(*pVtx);
        box.add(*pVtx);
    }
    for (const int numThreads : {1, 2, 3, 8}) {
        WorkerPool pool(numThreads);
        const VertexSlices slices(vVertices, pool);
        EXPECT_EQ(vVertices.size() - 10000, slices.numIn());
        EXPECT_EQ(vVertices.back(), slices.last());
        EXPECT_EQ(box.getMinPoint(), slices.extent().getMinPoint());
        EXPECT_EQ(box.getMaxPoint(), slices.extent().getMaxPoint());
        StartGrid grid;
        grid.layOut(boxOf(0, 0, 41, 40), 20000);
        slices.fill(grid);
        EXPECT_TRUE(seenAt(vVertices, expected) == seenAt(vVertices, grid)) << numThreads;
    }
}

TEST(StartGrid, tellsPointsApartAlongTheLongestRowsToo) {
    StartGrid grid;
    Triangle2 t;
    for (const bool bUpright : {false, true}) {
        grid.layOut(bUpright ? boxOf(0, 0, 1e-9, 1) : boxOf(0, 0, 1, 1e-9), std::size_t(3) << 20);
        grid.cellOf(Point2(0, 0)).setTriangle(&t);
        WorkerPool pool(2);
        grid.fillGaps(pool);
        const auto cellAt = [&](double v) { return grid.cellOf(bUpright ? Point2(0, v) : Point2(v, 0)); };
        for (int i = 1; i < 16; ++i)
            EXPECT_FALSE(cellAt(i / 16.0) == cellAt((i - 1) / 16.0)) << i;
    }
}

TEST(StartGrid, hasCellsForEveryFrame) {
    const double inf = HUGE_VAL, tiny = 5e-324;
    const double coords[] = {0, tiny, -1, 5, 1e308, -1e308, DBL_MAX, inf, -inf, std::nan("")};
    Triangle2 t;
    for (const Bbox2& box : {boxOf(0, 0, 0, 0), boxOf(0, 0, tiny, 1e9), boxOf(-DBL_MAX, 0, DBL_MAX, tiny),
                             boxOf(-inf, -1, inf, 1), boxOf(1e6, 0, 1e6, 9), Bbox2()}) {
        StartGrid grid;
        grid.layOut(box, 1000);
        EXPECT_GE(2002u, grid.numberOfCells());
        grid.cellOf(Point2(0, 0)).setTriangle(&t);
        WorkerPool pool(2);
        grid.fillGaps(pool);
        for (const double x : coords) {
            for (const double y : coords)
                EXPECT_EQ(&t, grid.cellOf(Point2(x, y)).triangle());
        }
    }
}

TEST(StartGrid, keepsWalksShortForEveryOrderAndDensity) {
    doubles::Rng rng(7);
    const auto uniform = [&](double width) {
        const double x = doubles::uniform(rng, 0, width);
        return Point2(x, doubles::uniform(rng, 0, width));
    };
    const std::size_t num = 20000;
    std::vector<Point2> vUniform, vDense, vDrifting, vAlternating;
    for (std::size_t i = 0; i < num; ++i) {
        const Point2 p = uniform(1);
        vUniform.push_back(p);
        vDense.emplace_back(i < 3 ? 1e9 * double(i * i) : p.x(), i < 3 ? 1e9 * double(i) : p.y());
        vDrifting.emplace_back(double(i) + p.x(), 100 * p.y());
        vAlternating.emplace_back(p.x() + (i % 2 == 0 ? 0 : 1e6), p.y());
    }
    int set = 0;
    for (const auto* pPoints : {&vUniform, &vDense, &vDrifting, &vAlternating}) {
        SCOPED_TRACE(set++);
        Kivo_2D single;
        for (const Point2& p : *pPoints)
            single.insert(p);
        EXPECT_LT(stepsPerInsertion(single), 8);
        EXPECT_EQ(num, single.numberOfPoints());
        // Single ones after a batch start from what the batch left.
        Kivo_2D mixed;
        mixed.insert({pPoints->begin(), pPoints->begin() + num / 2});
        for (std::size_t i = num / 2; i < num; ++i)
            mixed.insert((*pPoints)[i]);
        EXPECT_LT(stepsPerInsertion(mixed), 8);
    }
}
