#pragma once

#include "Point2.h"
#include "Triangle2.h"
#include "core/HalfEdge.h"
#include "core/MeshStore.h"
#include "kernel/TeskTest.h"

#include <cstddef>
#include <vector>

namespace TESK_KIVO2D {

// Takes vertices out of a triangulation. The triangles around the vertex go, and ears are cut off the hole,
// or off the notch in the hull, until it is filled.
//
// An ear is a triangle (a, b, c) of neighbours that follow each other, counter-clockwise, without the vertex
// strictly inside. What is left of the hole is then seen from the vertex as before, and while it has more
// than three corners it has an ear.
class VertexRemover {
public:
    // The edges of new triangles, which are not legal yet, go onto the stack.
    VertexRemover(MeshStore& records, TeskTest& predicates, std::vector<HalfEdge>& vToCheck)
        : store(records), tests(predicates), vCheckEdges(vToCheck) {}

    // Makes ready to remove this vertex. False when no triangle would be left without it. Changes nothing.
    bool prepare(Point2* pVtx);
    // Of the vertex that was made ready.
    bool isOnHull() const { return bHull; }
    // Puts a vertex that is part of nothing in the place of another one, which is part of nothing then. Does
    // not throw.
    static void replace(Point2* pVtx, Point2* pByVtx);
    // Removes the vertex that was made ready, and returns one of its neighbours. Does not throw.
    Point2* remove();

private:
    // A corner of the hole, and what lies outside of the edge to the next one: a triangle with that edge
    // opposite its corner ith, or null.
    struct Corner {
        Point2* pVtx;
        HalfEdge outside;
        std::size_t previous, next;
    };

    void lookAround();
    bool isEar(std::size_t i) const;
    void fillHole();
    void fillNotch();
    void cutOff(std::size_t i);
    void makeTriangle(std::size_t a, std::size_t b, std::size_t c);

    MeshStore& store;
    TeskTest& tests;
    std::vector<HalfEdge>& vCheckEdges;
    Point2* pGoing = nullptr;
    bool bHull = false;
    std::vector<Triangle2*> vStar; // counter-clockwise, on the hull from hull edge to hull edge
    std::vector<Corner> vCorners;  // counter-clockwise
};

} // namespace TESK_KIVO2D
