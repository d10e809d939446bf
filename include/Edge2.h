#pragma once

#include "Point2.h"
#include "Triangle2.h"
#include "export.h"
#include "fwd.h"

namespace TESK_KIVO2D {

/// An edge, named by a triangle and the index of the corner opposite. It runs counter-clockwise around its
/// triangle, which lies to its left; so an inner edge has two names of opposite direction, and they compare
/// unequal.
class KIVO_API Edge2 {
public:
    /// No edge: it may only be assigned to and compared.
    Edge2() = default;
    /// The edge of the triangle opposite that corner (0..2).
    Edge2(Triangle2* pTriangle, int oppositeIndex) : pT(pTriangle), ith(oppositeIndex) {}

    /// The triangle that names the edge.
    Triangle2* getTriangle() const { return pT; }
    /// The corner after the opposite one, counter-clockwise.
    Point2* getSrc() const { return pT->getCorner(Triangle2::incIndexBy1(ith)); }
    /// The corner before the opposite one.
    Point2* getTrg() const { return pT->getCorner(Triangle2::incIndexBy2(ith)); }
    /// Source and target.
    void getPoints(Point2*& p0, Point2*& p1) const {
        p0 = getSrc();
        p1 = getTrg();
    }
    /// Both triangles at the edge and the indices of their corners opposite: first the naming one, then its
    /// neighbour, or null and -1 on the hull.
    void getTriangles(Triangle2*& pT0, Triangle2*& pT1, int& idx0, int& idx1) const;
    /// Deliberate: the squared length.
    double getLength2D() const { return sqDistance(*getTrg(), *getSrc()); }

    /// Same triangle and same index; the other name of an inner edge is unequal.
    bool operator==(const Edge2& other) const { return pT == other.pT && ith == other.ith; }
    /// The opposite of `==`.
    bool operator!=(const Edge2& other) const { return !(*this == other); }
    /// By the triangle's address, then by index: an order for sets and maps.
    bool operator<(const Edge2& other) const;

private:
    Triangle2* pT = nullptr;
    int ith = 0;
};

} // namespace TESK_KIVO2D
