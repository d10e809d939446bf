#pragma once

#include "Point2.h"
#include "Triangle2.h"
#include "constraints/CzTraversal.h"
#include "constraints/polygonApexes.h"
#include "kernel/TeskTest.h"

#include <cstddef>
#include <vector>

namespace TESK_KIVO2D {

// Fills the zone of a segment anew, so that the segment becomes an edge and the polygons beside it become
// constrained Delaunay triangulations; then the whole triangulation is constrained Delaunay, if it was
// before. The records of the zone's triangles are used again. Working storage is kept from call to call.
class CzRetriangulation {
public:
    explicit CzRetriangulation(TeskTest& predicates, int nestingDepth = 0)
        : apexes(predicates, nestingDepth) {}

    // Throws only before the first link changes.
    void fill(ConstraintZone& zone);

private:
    // A pair of polygon vertices, and the edge between them of a triangle on the side of the segment.
    struct Base {
        std::size_t i, j;
        Triangle2* pT;
        int ith;
    };
    // One side of an edge that hangs into the polygon: both are inside.
    struct Hanging {
        Point2 *pFirst, *pSecond;
        Triangle2* pT;
        int ith;
        bool operator<(const Hanging& other) const;
    };

    Triangle2* link(const std::vector<Border>& polygon, const std::vector<std::size_t>& vApexes);
    void linkBorder(const Border& border, Point2* pNext, const Base& edge);
    void joinHanging();

    PolygonApexes apexes;
    Triangle2** pNextFree = nullptr; // of the zone's records
    std::vector<Base> vBases;
    std::vector<Hanging> vHanging;
    std::vector<Border> rReversed;
    std::vector<std::size_t> vLeftApexes;
};

} // namespace TESK_KIVO2D
