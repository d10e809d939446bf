#include "meshing/GridDiagonals.h"

#include "core/HalfEdge.h"
#include "core/flip.h"

#include <cmath>

namespace TESK_KIVO2D {
namespace {

constexpr double tolerance = 1e-6; // of the grid's length

bool isNear(const GridSpot& spot, double s, double t) {
    return std::fabs(spot.s - s) < tolerance && std::fabs(spot.t - t) < tolerance;
}

// The corner of a triangle, seen from the source of the edge opposite to it.
GridSpot apexFrom(HalfEdge edge, const GridFrame& frame) {
    return frame.spotOf(*edge.pT->getCorner(edge.ith) - *edge.source());
}

// True for a triangle to the lower left of the falling diagonal of a square.
bool isBelowFallingDiagonal(HalfEdge edge, const GridFrame& frame) {
    return isNear(frame.spotOf(*edge.target() - *edge.source()), -1, 1) &&
           isNear(apexFrom(edge, frame), -1, 0);
}

} // namespace

void turnDiagonals(const std::vector<Triangle2*>& vTriangles, const GridFrame& frame, TriangleMarks marks,
                   TeskTest& tests) {
    for (Triangle2* const pT : vTriangles) {
        for (int i = 0; i < 3; ++i) {
            const HalfEdge edge{pT, i};
            if (marks.isClosed(edge) || !isBelowFallingDiagonal(edge, frame)) continue;
            Triangle2* const pN = edge.opposite();
            const int j = pN->getIntraTriangleIndex(pT);
            if (!isNear(apexFrom({pN, j}, frame), 1, 0)) continue;
            if (tests.inCircle(*pT, *pN->getCorner(j)) != CINC2_ZERO) continue;
            marks.flip(edge);
            flip(pT, i);
            break;
        }
    }
}

} // namespace TESK_KIVO2D
