// A metal sheet, divided into triangles by another program: taken in as it is, and sawn along two lines.
#include <Kivo_2D.h>

#include <iostream>
#include <vector>

using namespace TESK_KIVO2D;

int main() {
    // Three corners a triangle. A corner of the upper part lies inside an edge of the lower one, which can't
    // be part of a triangulation; the message says where.
    std::vector<Point2> vSheet = {{0, 0},  {40, 0},  {40, 10}, {0, 0},  {40, 10}, {0, 10},
                                  {0, 10}, {15, 10}, {15, 30}, {0, 10}, {15, 30}, {0, 30}};
    Kivo_2D sheet;
    if (sheet.importTriangles(vSheet) == nullptr)
        std::cout << "not taken in; " << sheet.numberOfPoints() << " vertices\n";

    // The second triangle becomes two. Only what is given is in the zone, and all of it.
    vSheet[5] = Point2(15, 10);
    vSheet.insert(vSheet.end(), {{0, 0}, {15, 10}, {0, 10}});
    Zone2* const pSheet = sheet.importTriangles(vSheet, false);
    std::cout << pSheet->getNumberOfTriangles() << " triangles, area " << pSheet->getArea2D() << '\n';

    // Saw lines that cross each other, and edges: each comes back as a chain of edges, which stay.
    ConstraintGraph2* const pCuts =
        sheet.cutTriangles({{Point2(10, -1), Point2(10, 31)}, {Point2(-1, 5), Point2(41, 5)}});
    std::vector<Point2*> vChains;
    pCuts->getPolygonVertices(vChains);
    std::cout << vChains.size() / 2 << " edges along the cuts; the sheet now has "
              << pSheet->getNumberOfTriangles() << " triangles, area " << pSheet->getArea2D() << '\n';

    // A piece is what can be reached from a place in it without a step over the border or a cut.
    for (const Point2& place : {Point2(1, 1), Point2(39, 1), Point2(1, 29), Point2(39, 9)}) {
        const Zone2* const pPiece =
            sheet.createZone({pSheet->getConstraintGraph(), pCuts}, ZL_GROW, place, false);
        std::cout << "the piece at (" << place.x() << ", " << place.y() << ") has an area of "
                  << pPiece->getArea2D() << '\n';
    }
    pSheet->show("sheet.ps", false, true);
}
