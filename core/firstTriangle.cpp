#include "core/firstTriangle.h"

#include <algorithm>

namespace TESK_KIVO2D {

bool findFirstTriangle(std::span<Point2* const> vertices, std::size_t& numCollinear, TeskTest& tests,
                       Point2* (&corners)[3]) {
    for (numCollinear = std::max<std::size_t>(numCollinear, 2); numCollinear < vertices.size();
         ++numCollinear) {
        Point2 *const a = vertices[0], *const b = vertices[1], *const c = vertices[numCollinear];
        const Orientation2 turn = tests.orientation(*a, *b, *c);
        if (turn == ORIENTATION2_COLLINEAR) continue;
        corners[0] = a;
        corners[1] = turn == ORIENTATION2_CCW ? b : c;
        corners[2] = turn == ORIENTATION2_CCW ? c : b;
        return true;
    }
    return false;
}

} // namespace TESK_KIVO2D
