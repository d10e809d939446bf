// A floor that somebody else has triangulated comes in as it is, once a slip in it is mended; then two
// trenches are cut through it.
#include <Kivo_2D.h>

#include <iostream>
#include <string>
#include <vector>

using namespace TESK_KIVO2D;

static void print(const char* what, const Kivo_2D& plan, const Zone2* pFloor) {
    std::cout << what << ": " << plan.numberOfPoints() << " vertices, " << pFloor->getNumberOfTriangles()
              << " triangles, area " << pFloor->getArea2D() << '\n';
}

int main() {
    setMessageSink([](MessageChannel, const std::string& text) { std::cout << text; });
    const Point2 a(0, 0), b(12, 0), c(14, 4), d(0, 4), e(5, 9), f(5, 4);
    Kivo_2D plan;

    // Three corners a triangle. Two have an edge from d to c, two end in the middle of it, and whoever has
    // seen the crack has filled it with a triangle of no height.
    if (plan.importTriangles({a, b, c, a, c, d, d, f, e, f, c, e, d, f, c}) == nullptr)
        std::cout << "nothing came in: " << plan.numberOfPoints() << " vertices\n";

    // Mended; the second triangle is clockwise, which is no fault. A Delaunay triangulation would have the
    // other diagonal of the lower part: the given one becomes a constraint.
    const Zone2* const pFloor = plan.importTriangles({a, b, c, a, d, c, d, c, e});
    print("imported", plan, pFloor);

    // The trenches cross edges, each other and the border, beyond which nothing is cut.
    ConstraintGraph2* const pTrenches =
        plan.cutTriangles({{Point2(-1, 3), Point2(15, 3)}, {Point2(8, -1), Point2(4, 9)}});
    print("cut", plan, pFloor);
    std::vector<Point2*> vCourse; // two ends an edge, along the first trench, then along the second one
    pTrenches->getPolygonVertices(vCourse);
    for (std::size_t i = 0; i < vCourse.size(); i += 2)
        std::cout << "  (" << vCourse[i]->x() << ", " << vCourse[i]->y() << ") to (" << vCourse[i + 1]->x()
                  << ", " << vCourse[i + 1]->y() << ")\n";

    // They are borders from now on, as that of the floor is.
    const Zone2* const pCorner =
        plan.createZone({pFloor->getConstraintGraph(), pTrenches}, ZL_GROW, Point2(1, 1));
    std::cout << "the corner at (1, 1): area " << pCorner->getArea2D() << '\n';
    setMessageSink({}); // the standard streams again
}
