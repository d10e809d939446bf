#pragma once

#include "constraints/CzTraversal.h"
#include "kernel/TeskTest.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace TESK_KIVO2D {

class PolygonGuide;

// The constrained Delaunay triangulation of the polygon beside a segment, without touching a mesh. The
// polygon lies to the left of the segment from its first vertex to its last, its base.
//
// The triangle at the base is the one whose circumcircle holds no other vertex of the polygon: all of them
// see the base, so none is hidden behind another edge, and the same holds for the two bases that this
// triangle leaves (Anglada 1997). That takes O(k log k) for k vertices unless the triangles come out as long
// fans; what is left after too many steps follows a Delaunay triangulation of the vertices, see PolygonGuide.
class PolygonApexes {
public:
    explicit PolygonApexes(TeskTest& predicates, int nestingDepth = 0);
    ~PolygonApexes();

    // The apex of each triangle, as an index into the polygon. Their order is that of this walk: the base is
    // the pair (0, last); of a base (i, j) that is no edge of the polygon the apex k comes first, then all
    // that belongs to the base (i, k), then all that belongs to (k, j).
    const std::vector<std::size_t>& find(const std::vector<Border>& polygon);

private:
    struct Base {
        std::size_t i, j;
        Triangle2* pGuideT; // of the guide, on the side of the polygon; null while there is none
    };

    std::size_t findApex(const std::vector<Border>& polygon, const Base& base);

    TeskTest& tests;
    const int depth; // a guide is made with the help of another one at most so often
    std::vector<std::size_t> vApexes;
    std::vector<Base> vBases;
    std::size_t numSteps = 0;
    std::unique_ptr<PolygonGuide> pGuide; // of the large base that is being worked on
};

} // namespace TESK_KIVO2D
