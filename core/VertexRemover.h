#pragma once

#include "Point2.h"
#include "Triangle2.h"
#include "core/LinkTriangulation.h"
#include "core/MeshStore.h"
#include "kernel/TeskTest.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace TESK_KIVO2D {

// Takes vertices out of a triangulation. The triangles around the vertex go, and those of LinkTriangulation
// come, in the same records. All is known before the first link changes.
//
// Edges at the vertex must be Delaunay; then all edges are afterwards that were before. Its link may hold
// fixed edges, which stay.
class VertexRemover {
public:
    VertexRemover(MeshStore& records, TeskTest& predicates)
        : store(records), tests(predicates), filling(predicates) {}

    // Looks at the triangles around the vertex. False when no triangle would be left without it: then all
    // triangles are around it, and all other vertices are its link. Changes nothing.
    bool lookAround(Point2* pVtx);
    // What lookAround found. In counter-clockwise order; of a hull vertex from hull edge to hull edge, with
    // one vertex more than triangles.
    bool isOnHull() const { return bHull; }
    std::size_t degree() const { return last - first; }
    Triangle2* triangle(std::size_t i) const { return vBuffer[first + i].pT; }
    const std::vector<Point2*>& link() const { return vLink; }

    // Finds what to put in its place, and gets the memory. Changes nothing.
    void prepare();
    // How many questions about circles and new hull edges that took so far.
    std::uint64_t numQuestions() const { return filling.numQuestions(); }
    // Removes the vertex. Does not throw.
    void remove();

    // Puts a vertex that is part of nothing in the place of another one, which is part of nothing then. Does
    // not throw.
    static void replace(Point2* pVtx, Point2* pByVtx);

private:
    // A triangle around the vertex, and the edge from the vertex that comes first in it.
    struct Spoke {
        Triangle2* pT;
        Point2* pFrom;       // the other end of that edge
        Triangle2* pOutside; // behind the edge of the link, or null
        int ithOutside;      // of that edge, if links outside change
        bool bStays;         // the record is to have that edge of the link still
    };
    class Turn;

    std::span<Spoke> spokes() { return {vBuffer.data() + first, last - first}; }
    std::span<const Spoke> spokes() const { return {vBuffer.data() + first, last - first}; }
    void collectStar();
    void makeRoom();
    bool isLinkStraight() const;
    void assignRecords();
    void linkInside();
    void linkOutside();

    MeshStore& store;
    TeskTest& tests;
    LinkTriangulation filling;
    Point2* pGoing = nullptr;
    bool bHull = false;
    std::vector<Spoke> vBuffer; // the star, counter-clockwise, is from first to last
    std::size_t first = 0, last = 0;
    std::vector<Point2*> vLink;
    std::vector<Triangle2*> vRecords; // of the new triangles; null for those with the point at infinity
    std::vector<Triangle2*> vSpare;   // records of the star that are not used again
};

} // namespace TESK_KIVO2D
