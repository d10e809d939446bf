#pragma once

#include "Point2.h"
#include "Triangle2.h"
#include "core/HalfEdge.h"
#include "core/MeshStore.h"
#include "kernel/TeskTest.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace TESK_KIVO2D {

// The hole that a new vertex makes in a triangulation with fixed edges: the triangles that it sees and whose
// circumcircles contain it. Filling the hole with a fan around the vertex makes every edge there legal
// (Bowyer 1981; Watson 1981), as splits and flips would. But the hole is known before anything changes, so it
// can still be decided not to insert the vertex; and fewer links are written.
//
// The hole grows from a polygon that the vertex sees from strictly inside. A triangle whose circumcircle has
// the vertex strictly inside, seen across an edge, has its other two edges seen as well: so the hole stays
// star-shaped, and no triangle is ever met twice.
class Cavity {
public:
    // An edge of the hole, which lies to its left.
    struct BorderEdge {
        Point2* pFrom;
        Point2* pTo;
        HalfEdge inside;     // as an edge of the triangle in the hole
        Triangle2* pOutside; // null on the hull
        std::uint8_t ithOutside;
        bool bClosed;
    };

    void clear() {
        vTriangles.clear();
        vBorder.clear();
        vStack.clear();
    }
    // All of one triangle, which has the point strictly inside. `isClosed` tells of a HalfEdge whether the
    // hole must not grow across it.
    template<class IsClosed>
    void startInside(Triangle2* pT, const Point2& p, TeskTest& tests, IsClosed isClosed) {
        startAt(pT);
        for (int i = 0; i < 3; ++i)
            grow({pT, i}, p, tests, isClosed);
    }
    // The triangle, but for its edge `ith`, on which the point lies or which it replaces. Both other edges
    // are seen from it. The border, which is in counter-clockwise order, begins at the end of that edge.
    template<class IsClosed>
    void startBeside(HalfEdge edge, const Point2& p, TeskTest& tests, IsClosed isClosed) {
        startAt(edge.pT);
        grow({edge.pT, Triangle2::incIndexBy1(edge.ith)}, p, tests, isClosed);
        grow({edge.pT, Triangle2::incIndexBy2(edge.ith)}, p, tests, isClosed);
    }
    // Then the hole may grow across that edge too, if the point lies strictly inside the triangle.
    template<class IsClosed>
    void growAcross(HalfEdge edge, const Point2& p, TeskTest& tests, IsClosed isClosed) {
        grow(edge, p, tests, isClosed);
    }

    // In counter-clockwise order.
    const std::vector<BorderEdge>& border() const { return vBorder; }

    // Replaces the hole by triangles with the vertex at corner 0, one for each border edge. Then calls f with
    // each of them and the number of its border edge. A closed fan ends where it begins; an open one lies on
    // the hull. Two more triangles must be reserved. Does not throw, if f does not.
    template<class F>
    void fill(Point2* pVtx, bool bOpenFan, MeshStore& store, F f) {
        while (vTriangles.size() < vBorder.size())
            vTriangles.push_back(store.newTriangle());
        link(pVtx, bOpenFan);
        for (std::size_t i = 0; i < vBorder.size(); ++i)
            f(vTriangles[i], i);
    }
    // The triangles of the fan, after fill.
    const std::vector<Triangle2*>& fan() const { return vTriangles; }
    // Makes fill need no memory.
    void reserve() { vTriangles.reserve(vTriangles.size() + 2); }

private:
    void startAt(Triangle2* pT) { vTriangles.push_back(pT); }

    // Grows across this edge, as far as it goes, and appends the border that comes of it.
    template<class IsClosed>
    void grow(HalfEdge first, const Point2& p, TeskTest& tests, IsClosed isClosed) {
        vStack.push_back(first);
        while (!vStack.empty()) {
            const HalfEdge edge = vStack.back();
            vStack.pop_back();
            Triangle2* const pN = edge.opposite();
            const bool bClosed = isClosed(edge);
            const int j = pN != nullptr ? pN->getIntraTriangleIndex(edge.pT) : 0;
            if (bClosed || pN == nullptr || tests.inCircle(*pN, p) != CINC2_INCIRCLE) {
                vBorder.push_back(
                    {edge.source(), edge.target(), edge, pN, static_cast<std::uint8_t>(j), bClosed});
                continue;
            }
            vTriangles.push_back(pN);
            // In place of a -> b come a -> c and c -> b. The later one goes first onto the stack.
            vStack.push_back({pN, Triangle2::incIndexBy2(j)});
            vStack.push_back({pN, Triangle2::incIndexBy1(j)});
        }
    }

    void link(Point2* pVtx, bool bOpenFan);

    std::vector<Triangle2*> vTriangles; // of the hole; later those of the fan
    std::vector<BorderEdge> vBorder;
    std::vector<HalfEdge> vStack;
};

} // namespace TESK_KIVO2D
