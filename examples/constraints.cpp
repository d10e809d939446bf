// Two roads that cross, in a triangulation of survey points: forced in as they are (constrained), or divided
// until all triangles are Delaunay triangles again (conforming).
#include <Kivo_2D.h>

#include <iostream>
#include <vector>

using namespace TESK_KIVO2D;

// Triangles with an angle below 5 degrees, which simulations do not like.
static int countThinTriangles(const Kivo_2D& triangulation) {
    int num = 0;
    std::vector<Triangle2*> vTriangles;
    triangulation.getTrianglePointers(vTriangles);
    for (const Triangle2* pTriangle : vTriangles) {
        const int cornerOfShortest = pTriangle->getMinIndex(); // the smallest angle is opposite
        if (pTriangle->getInteriorAngle2D(cornerOfShortest) < 5) ++num;
    }
    return num;
}

int main() {
    std::vector<Point2> vSurvey;
    generateRandomPoints(300, 0.0, 100.0, vSurvey, 3);
    std::vector<Segment2> vRoads{{Point2(2, 13), Point2(93, 61)}, {Point2(11, 94), Point2(84, 3)}};

    for (const auto strategy : {CIS_CONSTRAINED_DELAUNAY, CIS_CONFORMING_DELAUNAY}) {
        const bool bConforming = strategy == CIS_CONFORMING_DELAUNAY;
        Kivo_2D map;
        map.insert(vSurvey);
        const ConstraintGraph2* const pRoads = map.createConstraint(vRoads, strategy, true);
        std::cout << (bConforming ? "conforming: " : "constrained: ") << map.numberOfPoints() << " vertices, "
                  << countThinTriangles(map) << " thin triangles\n";

        // A segment that was divided keeps its pieces as children, and theirs as children of these.
        std::vector<ConstraintSegment2*> vGiven;
        pRoads->getOriginalConstraintSegments(vGiven);
        for (ConstraintSegment2* pRoad : vGiven) {
            std::vector<ConstraintSegment2*> vPieces;
            pRoad->getChildrenRec(vPieces);
            std::cout << "  a road became " << vPieces.size() << " edges\n";
        }
        // The graph lists the ends of all pieces in the direction in which the roads were given.
        std::vector<Point2*> vCourse;
        pRoads->getPolygonVertices(vCourse);
        std::cout << "  the first piece leads to (" << vCourse[1]->x() << ", " << vCourse[1]->y() << ")\n";
        map.show(bConforming ? "conforming.ps" : "constrained.ps");
    }
}
