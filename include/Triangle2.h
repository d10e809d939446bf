#pragma once

#include "Point2.h"
#include "export.h"
#include "fwd.h"

#include <cassert>
#include <iosfwd>
#include <utility>

namespace TESK_KIVO2D {

/// A triangle of the triangulation: three corners in counter-clockwise order and three neighbours.
///
///              corner 2
///                /\             neighbour i lies across the edge opposite corner i, which runs from corner
///      opp T 1  /  \  opp T 0   i+1 to corner i+2 (mod 3); null marks an edge of the convex hull
///              /____\.
///      corner 0      corner 1
///            opp T 2
///
/// Triangles belong to their triangulation. A pointer stays valid until the triangulation is changed: the
/// record lives on, but insertion and removal give it other corners.
class KIVO_API Triangle2 {
public:
    /// No corners and no neighbours.
    Triangle2() = default;

    /// (i + 1) mod 3.
    static int incIndexBy1(int num) {
        assert(num >= 0 && num < 3);
        return (0x09 >> (2 * num)) & 3;
    }
    /// (i + 2) mod 3.
    static int incIndexBy2(int num) {
        assert(num >= 0 && num < 3);
        return (0x12 >> (2 * num)) & 3;
    }

    /// Corner ith (0..2).
    Point2* getCorner(int ith) const {
        assert(checkRange(ith));
        return aCorners[ith];
    }
    /// The neighbour across the edge opposite corner ith, or null on the convex hull.
    Triangle2* getOppositeTriangle(int ith) const {
        assert(checkRange(ith));
        return aOppT[ith];
    }

    /// Sets corner ith only; the vertex's incident triangle stays as it is.
    void setVertexPointer(int ith, Point2* pVtx) {
        assert(checkRange(ith));
        aCorners[ith] = pVtx;
    }
    /// Sets neighbour ith only; the neighbour's back pointer is the caller's business.
    void setOppTriangle(int ith, Triangle2* pT) {
        assert(checkRange(ith));
        aOppT[ith] = pT;
    }

    /// Sets the corners, makes this the incident triangle of each, and clears the neighbours.
    void setProperties(Point2* pI, Point2* pJ, Point2* pK) {
        setPropertiesAndOppT(pI, pJ, pK, nullptr, nullptr, nullptr);
    }
    /// Sets corners and neighbours and makes this the incident triangle of each corner. The back pointers of
    /// the neighbours are the caller's business.
    void setPropertiesAndOppT(Point2* pI, Point2* pJ, Point2* pK, Triangle2* pOppI, Triangle2* pOppJ,
                              Triangle2* pOppK) {
        if (pI == nullptr || pJ == nullptr || pK == nullptr) failNullCorner();
        relink(pI, pJ, pK, pOppI, pOppJ, pOppK);
        becomeIncidentAt(0);
        becomeIncidentAt(1);
        becomeIncidentAt(2);
    }
    /// Sets corners and neighbours only, the corners not null; the caller knows which of them need another
    /// incident triangle.
    void relink(Point2* pI, Point2* pJ, Point2* pK, Triangle2* pOppI, Triangle2* pOppJ, Triangle2* pOppK) {
        aCorners[0] = pI;
        aCorners[1] = pJ;
        aCorners[2] = pK;
        aOppT[0] = pOppI;
        aOppT[1] = pOppJ;
        aOppT[2] = pOppK;
    }
    /// Makes this the incident triangle of corner ith.
    void becomeIncidentAt(int ith) {
        assert(checkRange(ith));
        aCorners[ith]->pIncidentT = this;
    }
    /// Sets all six pointers to null.
    void clearProperties() { *this = Triangle2(); }

    /// Index of the corner that is this very vertex. A vertex of another triangle is a programming error.
    int getIntraTriangleIndex(const Point2* pVtx) const { return indexIn(aCorners, pVtx); }
    /// Index of the corner opposite the edge pq, in whichever direction it is named.
    int getIntraTriangleIndex(const Point2* p, const Point2* q) const;
    /// Index of the edge behind which this neighbour lies.
    int getIntraTriangleIndex(const Triangle2* pT) const { return indexIn(aOppT, pT); }

    /// True when this vertex is a corner; another one at the same place is not.
    bool hasVertex(const Point2* pVtx) const {
        return aCorners[0] == pVtx || aCorners[1] == pVtx || aCorners[2] == pVtx;
    }

    /// True when q lies on the closed edge opposite corner ith. Exact.
    bool hasOnEdge(int ith, const Point2& q) const;

    /// Squared length of the edge opposite corner ith.
    double getSquaredEdgeLength(int ith) const;
    /// Index of the corner opposite the shortest edge; the first one of equals.
    int getMinIndex() const;
    /// Index of the corner opposite the longest edge; the first one of equals.
    int getMaxIndex() const;
    /// Area by Heron's formula, of slivers by the cross product of two edges; 0 for a degenerate triangle.
    /// Throws `KivoException` when it is not a number.
    double getArea2D() const;
    /// The mean of the corners.
    Point2 getBarycenter() const;
    /// The angle at corner ith in degrees, too large by a factor of 1 + 8.4e-7: the conversion takes 3.14159
    /// for pi. Throws `KivoException` when the corner coincides with another one.
    double getInteriorAngle2D(int ith) const;
    /// The circumcentre, and whether it is accurate: at equal distances from the corners to 1e-6, and not
    /// beyond the longest edge's fan. A degenerate triangle gives a far point and false.
    std::pair<Point2, bool> getDual() const;

private:
    static bool checkRange(int ith) { return ith >= 0 && ith < 3; }
    // By arithmetic: branches on the way to the answer would be mispredicted half of the time.
    template<class T>
    static int indexIn(T* const (&a)[3], const T* p) {
        const int bNot0 = a[0] != p, bNot1 = a[1] != p;
        const int ith = bNot0 + (bNot0 & bNot1);
        return a[ith] == p ? ith : failIndex();
    }
    [[noreturn]] static void failNullCorner();
    [[noreturn]] static int failIndex();

    Point2* aCorners[3] = {nullptr, nullptr, nullptr};
    Triangle2* aOppT[3] = {nullptr, nullptr, nullptr};
};

/// Writes the triangle's address, area, orientation, and a line for each corner with its neighbour.
KIVO_API std::ostream& operator<<(std::ostream& stream, const Triangle2& triangle);

} // namespace TESK_KIVO2D
