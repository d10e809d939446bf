#pragma once

#include "Triangle2.h"

namespace TESK_KIVO2D {

// Makes the neighbour that knew pOld behind one of its edges know pNew there.
inline void redirect(Triangle2* pNeighbour, const Triangle2* pOld, Triangle2* pNew) {
    if (pNeighbour != nullptr) pNeighbour->setOppTriangle(pNeighbour->getIntraTriangleIndex(pOld), pNew);
}

// Two triangles side by side, and what lies around them.
//
//        c                  c           a = corner ith of T, d = far corner of N
//      / | \              /   \         before: T = (a, b, c), N across bc
//  T a   |   d N   ->    a-----d        after:  T = (a, b, d), N = (a, d, c)
//      \ | /              \   /
//        b                  b           N is the upper one afterwards, T the lower one
struct FlipQuad {
    // N knows T behind its edge opposite corner j.
    FlipQuad(Triangle2* pFirst, int ith, int j)
        : pT(pFirst), pN(pT->getOppositeTriangle(ith)), a(pT->getCorner(ith)),
          b(pT->getCorner(Triangle2::incIndexBy1(ith))), c(pT->getCorner(Triangle2::incIndexBy2(ith))),
          d(pN->getCorner(j)), pBD(pN->getOppositeTriangle(Triangle2::incIndexBy1(j))),
          pDC(pN->getOppositeTriangle(Triangle2::incIndexBy2(j))),
          pCA(pT->getOppositeTriangle(Triangle2::incIndexBy1(ith))),
          pAB(pT->getOppositeTriangle(Triangle2::incIndexBy2(ith))) {}

    // All links but those of BD to T and of CA to N, and the incident triangles of b and c.
    void relink() const {
        pT->relink(a, b, d, pBD, pN, pAB);
        pN->relink(a, d, c, pDC, pCA, pT);
    }

    Triangle2 *pT, *pN;
    Point2 *a, *b, *c, *d;
    Triangle2 *pBD, *pDC, *pCA, *pAB;
};

// Flips the edge of pT opposite corner ith; the neighbour there must exist and the four corners must be
// strictly convex. Links only. The former corner a ends at index 0 of both triangles. Each of b and c loses a
// triangle that may have been its incident one; a and d lose none.
inline void flip(Triangle2* pT, int ith) {
    const FlipQuad quad(pT, ith, pT->getOppositeTriangle(ith)->getIntraTriangleIndex(pT));
    redirect(quad.pBD, quad.pN, pT);
    redirect(quad.pCA, pT, quad.pN);
    quad.relink();
    pT->becomeIncidentAt(1);
    quad.pN->becomeIncidentAt(2);
}

} // namespace TESK_KIVO2D
