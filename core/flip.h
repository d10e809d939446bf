#pragma once

#include "Triangle2.h"

namespace TESK_KIVO2D {

// Makes the neighbour that knew pOld behind one of its edges know pNew there.
inline void redirect(Triangle2* pNeighbour, const Triangle2* pOld, Triangle2* pNew) {
    if (pNeighbour != nullptr) pNeighbour->setOppTriangle(pNeighbour->getIntraTriangleIndex(pOld), pNew);
}

// Flips the edge of pT opposite corner ith; the neighbour there must exist and the four corners must be
// strictly convex. Links only. The former corner a ends at index 0 of both triangles. Each of b and c loses a
// triangle that may have been its incident one; a and d lose none.
//
//        c                  c           a = corner ith of T, d = far corner of N
//      / | \              /   \         before: T = (a, b, c), N across bc
//  T a   |   d N   ->    a-----d        after:  T = (a, b, d), N = (a, d, c)
//      \ | /              \   /
//        b                  b           N is the upper one afterwards, T the lower one
inline void flip(Triangle2* pT, int ith) {
    const int iNext = Triangle2::incIndexBy1(ith), iPrev = Triangle2::incIndexBy2(ith);
    Triangle2* const pN = pT->getOppositeTriangle(ith);
    const int j = pN->getIntraTriangleIndex(pT);
    const int jNext = Triangle2::incIndexBy1(j), jPrev = Triangle2::incIndexBy2(j);
    Point2* const a = pT->getCorner(ith);
    Point2* const b = pT->getCorner(iNext);
    Point2* const c = pT->getCorner(iPrev);
    Point2* const d = pN->getCorner(j);
    Triangle2* const pBD = pN->getOppositeTriangle(jNext);
    Triangle2* const pDC = pN->getOppositeTriangle(jPrev);
    Triangle2* const pCA = pT->getOppositeTriangle(iNext);
    Triangle2* const pAB = pT->getOppositeTriangle(iPrev);
    redirect(pBD, pN, pT);
    redirect(pCA, pT, pN);
    pT->relink(a, b, d, pBD, pN, pAB);
    pN->relink(a, d, c, pDC, pCA, pT);
    pT->becomeIncidentAt(1);
    pN->becomeIncidentAt(2);
}

} // namespace TESK_KIVO2D
