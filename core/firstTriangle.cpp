#include "core/firstTriangle.h"

#include <algorithm>

namespace TESK_KIVO2D {
namespace {

// The first place from this one on that is no gap, or the end.
std::size_t nextIn(std::span<Point2* const> vertices, std::size_t index) {
    while (index < vertices.size() && vertices[index] == nullptr)
        ++index;
    return index;
}

} // namespace

bool FirstTriangleSearch::find(std::span<Point2* const> vertices, TeskTest& tests, Point2* (&corners)[3]) {
    first = nextIn(vertices, first);
    second = nextIn(vertices, std::max(second, first + 1));
    for (numCollinear = std::max(numCollinear, second + 1); numCollinear < vertices.size(); ++numCollinear) {
        if (vertices[numCollinear] == nullptr) continue;
        Point2 *const a = vertices[first], *const b = vertices[second], *const c = vertices[numCollinear];
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
