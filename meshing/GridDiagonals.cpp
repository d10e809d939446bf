#include "meshing/GridDiagonals.h"

#include "core/HalfEdge.h"
#include "core/flip.h"

#include <cmath>

namespace TESK_KIVO2D {
namespace {

// The steps of a grid, to be told in the vectors between corners of triangles.
class Steps {
public:
    explicit Steps(const GridFrame& frame)
        : along(frame.pointAt(1, 0) - frame.pointAt(0, 0)),
          falling(frame.pointAt(-1, 1) - frame.pointAt(0, 0)), tolerance(1e-6 * frame.length()) {}

    bool isAlong(const Point2& from, const Point2& to) const { return isNear(from, to, along); }
    bool isFalling(const Point2& from, const Point2& to) const { return isNear(from, to, falling); }

private:
    bool isNear(const Point2& from, const Point2& to, const Vector2& step) const {
        return std::fabs(to.x() - from.x() - step.x()) < tolerance &&
               std::fabs(to.y() - from.y() - step.y()) < tolerance;
    }

    const Vector2 along, falling;
    const double tolerance;
};

// True for the open diagonal of a square, whose corners are exactly on a circle, seen from its lower left.
bool isToTurn(HalfEdge edge, const Steps& steps, const TriangleMarks& marks, TeskTest& tests) {
    const Point2 &source = *edge.source(), &target = *edge.target();
    if (!steps.isFalling(source, target) || !steps.isAlong(*edge.pT->getCorner(edge.ith), source) ||
        marks.isClosed(edge))
        return false;
    const Triangle2* const pN = edge.opposite();
    const Point2& far = *pN->getCorner(pN->getIntraTriangleIndex(edge.pT));
    return steps.isAlong(target, far) && tests.inCircle(*edge.pT, far) == CINC2_ZERO;
}

} // namespace

void turnDiagonals(const std::vector<Triangle2*>& vTriangles, const GridFrame& frame, TriangleMarks& marks,
                   TeskTest& tests) {
    const Steps steps(frame);
    for (Triangle2* const pT : vTriangles) {
        for (int i = 0; i < 3; ++i) {
            if (!isToTurn({pT, i}, steps, marks, tests)) continue;
            marks.flip({pT, i});
            flip(pT, i);
            break;
        }
    }
}

} // namespace TESK_KIVO2D
