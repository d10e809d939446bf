#include "meshing/Sight.h"

namespace TESK_KIVO2D {
namespace {

// A line that passes through a vertex, or along an edge, says nothing of the sides of edges there: so all of
// the triangle's edges are asked.
Sight classify(Triangle2* pT, const Point2& q, TeskTest& tests, const TriangleMarks& marks) {
    Sight sight{Sight::INSIDE, {pT, 0}};
    for (int i = 0; i < 3; ++i) {
        const HalfEdge edge{pT, i};
        if (tests.orientationUnbounded(*edge.source(), *edge.target(), q) == ORIENTATION2_CCW) continue;
        if (sight.end != Sight::INSIDE) return {Sight::AT_CORNER, {pT, 0}};
        sight = {marks.isClosed(edge) ? Sight::BLOCKED : Sight::ON_EDGE, edge};
    }
    return sight;
}

} // namespace

Sight look(Triangle2* pT, int ith, const Point2& q, TeskTest& tests, const TriangleMarks& marks) {
    const Point2& eye = *pT->getCorner(ith);
    const bool bNear = q.getMaxAbs() <= tests.getMaxAbsCoord();
    const auto sideOf = [&](const Point2& a, const Point2& b, const Point2& c) {
        return bNear ? tests.orientation(a, b, c) : tests.orientationUnbounded(a, b, c);
    };
    HalfEdge edge{pT, ith};
    const Orientation2 right = sideOf(eye, *edge.source(), q), left = sideOf(*edge.target(), eye, q);
    if (right == ORIENTATION2_CW || left == ORIENTATION2_CW) return {Sight::AWAY, edge};
    bool bGeneral = right == ORIENTATION2_CCW && left == ORIENTATION2_CCW;
    for (;;) {
        const Orientation2 side = sideOf(*edge.source(), *edge.target(), q);
        if (side == ORIENTATION2_CCW)
            return bGeneral ? Sight{Sight::INSIDE, edge} : classify(edge.pT, q, tests, marks);
        if (marks.isClosed(edge)) return {Sight::BLOCKED, edge};
        if (side == ORIENTATION2_COLLINEAR)
            return bGeneral ? Sight{Sight::ON_EDGE, edge} : classify(edge.pT, q, tests, marks);
        Triangle2* const pN = edge.opposite();
        const int j = pN->getIntraTriangleIndex(edge.pT);
        const Orientation2 apex = sideOf(eye, q, *pN->getCorner(j));
        if (apex == ORIENTATION2_COLLINEAR) bGeneral = false;
        // From the other side the edge runs from corner j+1, left of the line, to corner j+2. What is left of
        // the line goes on being the target.
        edge = {pN, apex == ORIENTATION2_CW ? Triangle2::incIndexBy2(j) : Triangle2::incIndexBy1(j)};
    }
}

} // namespace TESK_KIVO2D
