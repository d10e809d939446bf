#pragma once

#include "Point2.h"
#include "Triangle2.h"
#include "core/HalfEdge.h"
#include "kernel/TeskTest.h"

namespace TESK_KIVO2D {

// What a segment from one vertex towards another meets first.
struct Departure {
    enum Kind {
        ALONG_EDGE, // the edge to pVtx, which lies on the segment or is its other end
        ACROSS_EDGE // the interior of the edge opposite the vertex in a triangle
    };
    Kind kind;
    bool bFromTarget; // seen from the target towards the source, because that was found first
    Point2* pVtx;     // for ALONG_EDGE
    HalfEdge across;  // for ACROSS_EDGE
};

// How the segment from p to q, two vertices of the triangulation, leaves p, or how the one from q to p leaves
// q. Turns around p, and if that takes long around q as well, so it costs the lower of their degrees: the
// segments of a star are found from their outer ends.
Departure findDeparture(Point2* p, Point2* q, TeskTest& tests);

// The edge between two vertices, with a triangle on either side of it; a null triangle when there is none.
// Costs the lower of their degrees.
HalfEdge findEdge(const Point2* p, const Point2* q);

// The triangle with these corners, or null. Costs the lowest of their degrees.
Triangle2* findTriangle(const Point2* a, const Point2* b, const Point2* c);

// Calls f with the other end of each edge at the vertex, as long as it returns true.
template<class F>
void forEachSpoke(const Point2* pVtx, F f) {
    for (int side = 0; side < 2; ++side) { // on the hull, the second time the other way round
        Triangle2* const pStart = pVtx->getIncidentTriangle();
        for (Triangle2* pT = pStart; pT != nullptr;) {
            const int i = pT->getIntraTriangleIndex(pVtx);
            const int far = side == 0 ? Triangle2::incIndexBy2(i) : Triangle2::incIndexBy1(i);
            if (!f(pT->getCorner(far))) return;
            pT = pT->getOppositeTriangle(side == 0 ? Triangle2::incIndexBy1(i) : Triangle2::incIndexBy2(i));
            if (pT == pStart) return;
        }
    }
}

// Calls f with each triangle around the vertex and the index of the vertex in it, as long as it returns true:
// counter-clockwise, and on the hull from the first one the other way round too.
template<class F>
void forEachTriangleAround(const Point2* pVtx, F f) {
    Triangle2* const pFirst = pVtx->getIncidentTriangle();
    for (const bool bForwards : {true, false}) {
        for (Triangle2* pT = pFirst; pT != nullptr;) {
            const int i = pT->getIntraTriangleIndex(pVtx);
            if ((bForwards || pT != pFirst) && !f(pT, i)) return;
            pT = pT->getOppositeTriangle(bForwards ? Triangle2::incIndexBy1(i) : Triangle2::incIndexBy2(i));
            if (pT == pFirst) return;
        }
    }
}

} // namespace TESK_KIVO2D
