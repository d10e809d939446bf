#pragma once

#include "Point2.h"
#include "Triangle2.h"
#include "constraints/CzTraversal.h"
#include "core/MeshStore.h"
#include "kernel/TeskTest.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace TESK_KIVO2D {

// A triangulation of its own of the vertices i to j of a polygon, with the polygon's edges in it: inside of
// the polygon it is what PolygonApexes looks for. Most edges are there as soon as the vertices are, since
// they were Delaunay edges among even more vertices; the others are forced in. The vertices are inserted in
// an order that leaves none of the long fans of which the polygon must be suspected: every second one of a
// coarser selection at each level.
class PolygonGuide {
public:
    PolygonGuide(const std::vector<Border>& polygon, std::size_t i, std::size_t j, TeskTest& predicates,
                 int depth);

    // What a triangle at the base (i, j) leads to.
    struct Step {
        std::size_t apex;
        Triangle2* pAtSource; // the triangle at the base (i, apex), if that is no edge of the polygon
        Triangle2* pAtTarget; // and at (apex, j)
    };
    Triangle2* triangleAtBase() const { return pBaseT; }
    Step follow(const Triangle2* pT, std::size_t i, std::size_t j) const;

private:
    void insertVertices(const std::vector<Border>& polygon);
    void forceEdges(int depth);
    Point2* at(std::size_t index) const { return vVertices[index - first]; }

    MeshStore store;
    TeskTest& tests;
    std::size_t first;
    std::vector<Point2*>
        vVertices; // our copies of those of the polygon; a vertex that it visits twice is one
    std::vector<std::pair<const Point2*, std::size_t>> vIndices; // sorted: the visits of each
    Triangle2* pBaseT;
};

} // namespace TESK_KIVO2D
