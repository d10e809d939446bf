#pragma once

#include "Point2.h"
#include "Triangle2.h"
#include "constraints/CzRetriangulation.h"
#include "constraints/CzTraversal.h"
#include "constraints/TriangleSoup.h"
#include "core/EdgeGuard.h"
#include "kernel/TeskTest.h"

#include <vector>

namespace TESK_KIVO2D {

// Makes the edges of a soup edges of a triangulation that has all points of the soup as vertices, and finds
// the soup's triangles there. Edges of the soup that are there stay; what an edge crosses else is filled anew
// as a constrained Delaunay triangulation. So where no edge is blocked all of them are there in the end, and
// the triangulation is Delaunay but for them, if it was before.
class SoupPlacement : private EdgeGuard {
public:
    // A vertex for each point of the soup.
    SoupPlacement(const TriangleSoup& triangleSoup, const std::vector<Point2*>& vItsVertices,
                  TeskTest& predicates)
        : soup(triangleSoup), vVertices(vItsVertices), tests(predicates), retriangulation(predicates) {}

    // Calls onBlocked(edge, result) with each edge that can't be one, since a vertex lies on it or it crosses
    // another one of the soup.
    //
    // Edges that cross no more than one are flipped in, near ones one after the other. The others in random
    // order: then the area that an edge crosses is expected to be small, whatever the soup is (Shewchuk &
    // Brown 2015). A fan of long edges from one end to the other would take quadratic time.
    template<class OnBlocked>
    void force(OnBlocked onBlocked) {
        findTriangles();
        for (const TriangleSoup::Edge& edge : edgesToForce()) {
            const CzResult result = traverse(vVertices[edge.p], vVertices[edge.q], tests, this, zone);
            if (result.end == CzResult::REACHED) {
                retriangulation.fill(zone);
            } else if (result.end != CzResult::IS_EDGE) {
                onBlocked(edge, result);
            }
        }
        findTriangles();
    }

    // For each triangle of the soup the one of the triangulation with the same corners, or null.
    const std::vector<Triangle2*>& triangles() const { return vTriangles; }

    // Knows the edges of the soup as fixed.
    const EdgeGuard& guard() const { return *this; }

private:
    // Looks for those that are not known yet. The others stay: their edges do.
    void findTriangles();
    // In the order of the points.
    std::vector<TriangleSoup::Edge> missingEdges() const;
    // What is left of these when some have been flipped in, shuffled.
    std::vector<TriangleSoup::Edge> edgesToForce();
    bool flipIn(const TriangleSoup::Edge& edge);
    bool isFixed(const Point2* p, const Point2* q) const override;
    void wasSplit(Point2*, Point2*, Point2*) override {} // no vertex comes

    const TriangleSoup& soup;
    const std::vector<Point2*>& vVertices;
    TeskTest& tests;
    CzRetriangulation retriangulation;
    ConstraintZone zone;
    std::vector<Triangle2*> vTriangles;
};

} // namespace TESK_KIVO2D
