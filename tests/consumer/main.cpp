#include <Kivo_2D.h>

#include <iostream>
#include <vector>

int main() {
    using namespace TESK_KIVO2D;
    const std::vector<Point2> vPoints{{0, 0}, {4, 0}, {4, 4}, {0, 4}, {2, 2}};
    Kivo_2D triangulation;
    triangulation.insert(vPoints);
    std::cout << getKivo2DVersion() << ": " << triangulation.numberOfPoints() << " points, "
              << triangulation.numberOfTriangles() << " triangles\n";
    return triangulation.numberOfTriangles() == 4 && triangulation.checkValidity(true, "consumer") ? 0 : 1;
}
