// Draws a triangulation, and on top of it the cells of its Voronoi diagram: all that is nearer to one vertex
// than to any other.
#include <Kivo_2D.h>

#include <iostream>
#include <string>
#include <vector>

int main() {
    using namespace TESK_KIVO2D;
    std::vector<Point2> vPoints;
    generateRandomPoints(60, 0.0, 100.0, vPoints, 5);
    Kivo_2D triangulation;
    triangulation.insert(vPoints);

    // An edge of a cell joins the circumcentres of two neighbours. Those beyond the hull would make the
    // drawing small.
    std::vector<Segment2> vCellEdges;
    std::vector<Triangle2*> vTriangles;
    triangulation.getTrianglePointers(vTriangles);
    for (const Triangle2* pTriangle : vTriangles) {
        const Point2 centre = pTriangle->getDual().first;
        for (int i = 0; i < 3; ++i) {
            const Triangle2* const pNeighbour = pTriangle->getOppositeTriangle(i);
            if (pNeighbour == nullptr) continue;
            const Point2 other = pNeighbour->getDual().first;
            const bool bInside = triangulation.locate(centre) && triangulation.locate(other);
            if (bInside && centre < other) vCellEdges.emplace_back(centre, other); // from one side only
        }
    }

    std::vector<Point2*> vHull;
    triangulation.getConvexHull(true, vHull);
    std::vector<Segment2> vHullEdges;
    for (std::size_t i = 0; i < vHull.size(); ++i)
        vHullEdges.emplace_back(*vHull[i], *vHull[(i + 1) % vHull.size()]);

    Visualizer2 drawing("voronoi.ps");
    drawing.addHeaderLine("Voronoi cells of " + std::to_string(vPoints.size()) + " points");
    drawing.addObject(vTriangles, Color(0.93, 0.96, 1.0, 0.0, true)); // filled, the outlines on top
    drawing.addObject(vTriangles, Color(0.65, 0.75, 0.9, 0.4, false));
    drawing.addObject(vHullEdges, Color(CBLUE, 1.5F));
    drawing.addObject(vCellEdges, Color(CRED, 0.8F));
    drawing.addObject(vPoints, Color(CBLACK));
    drawing.addObject(Label(*vHull[0], "  start of the hull", false, 9), Color(CBLUE));
    drawing.writeFile();
    std::cout << vTriangles.size() << " triangles, " << vCellEdges.size() << " edges of cells, a hull of "
              << vHull.size() << " vertices\n";
}
