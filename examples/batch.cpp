// Cleans a survey: one call inserts all measurements, the handles tell which of them are one and the same
// point, and custom indices lead from the triangles back to the input.
#include <Kivo_2D.h>

#include <cmath>
#include <iostream>
#include <vector>

int main() {
    using namespace TESK_KIVO2D;
    // Two parties measured the same field; rows 0 and 3 of the second one were measured by the first, too,
    // and one value was lost.
    std::vector<Point2> vMeasured{{0, 0},  {50, 5},  {95, 0},   {90, 60}, {40, 70}, {5, 55},
                                  {50, 5}, {45, 35}, {NAN, 20}, {90, 60}, {70, 30}};
    for (std::size_t i = 0; i < vMeasured.size(); ++i)
        vMeasured[i].setCustomIndex(static_cast<int>(i)); // a vertex takes over the index of its first point

    Kivo_2D field(static_cast<unsigned int>(vMeasured.size()));
    std::vector<Point2*> vHandles;
    field.insert(vMeasured, vHandles);

    for (std::size_t i = 0; i < vHandles.size(); ++i) {
        if (vHandles[i] == nullptr)
            std::cout << "row " << i << " is no point\n";
        else if (vHandles[i]->getCustomIndex() != static_cast<int>(i))
            std::cout << "row " << i << " repeats row " << vHandles[i]->getCustomIndex() << '\n';
    }

    double area = 0;
    std::vector<Triangle2*> vTriangles;
    field.getTrianglePointers(vTriangles);
    std::cout << field.numberOfPoints() << " points, " << vTriangles.size() << " triangles of rows:\n";
    for (const Triangle2* pTriangle : vTriangles) {
        area += pTriangle->getArea2D();
        for (int i = 0; i < 3; ++i)
            std::cout << ' ' << pTriangle->getCorner(i)->getCustomIndex();
        std::cout << '\n';
    }
    std::cout << "the field has an area of " << area << '\n';
}
