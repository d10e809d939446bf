#pragma once

#include "Triangle2.h"

namespace TESK_KIVO2D {

// The edge of pT opposite corner ith. It runs counter-clockwise around pT, which lies to its left.
struct HalfEdge {
    Triangle2* pT;
    int ith;

    Point2* source() const { return pT->getCorner(Triangle2::incIndexBy1(ith)); }
    Point2* target() const { return pT->getCorner(Triangle2::incIndexBy2(ith)); }
    Triangle2* opposite() const { return pT->getOppositeTriangle(ith); }
    bool operator==(const HalfEdge& other) const { return pT == other.pT && ith == other.ith; }
};

} // namespace TESK_KIVO2D
