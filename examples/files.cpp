// Points and segments in files: binary ones keep every bit, text is for people and other programs.
#include <Kivo_2D.h>

#include <fstream>
#include <iostream>
#include <vector>

int main() {
    using namespace TESK_KIVO2D;
    std::vector<Point2> vPoints;
    std::vector<Segment2> vPolygon;
    generateRandomPoints(1000, -1.0, 1.0, vPoints, 42);
    generateRandomPolygon(20, -0.5, 0.5, vPolygon, 42);
    if (!createDirectory("data/today")) return 1;
    if (!writePointsBIN("data/today/points.bin", vPoints)) return 1;
    if (!writePointsASCII("data/today/points.xy", vPoints)) return 1;
    if (!writeSegmentsBIN("data/today/polygon.bin", vPolygon)) return 1;

    // Readers append, so that several files make one set.
    std::vector<Point2> vAgain;
    if (!readPointsBIN("data/today/points.bin", vAgain)) return 1;
    std::cout << "binary points are " << (vAgain == vPoints ? "equal" : "different") << '\n';
    vAgain.clear();
    if (!readXY("data/today/points.xy", vAgain)) return 1;
    std::cout << "points from text are " << (vAgain == vPoints ? "equal" : "different") << '\n';
    std::vector<Segment2> vRing;
    if (!readSegmentsBIN("data/today/polygon.bin", vRing)) return 1;

    Kivo_2D triangulation;
    triangulation.insert(vAgain);
    const ConstraintGraph2* const pRing = triangulation.createConstraint(vRing);
    std::cout << vRing.size() << " segments, " << (pRing->isPolygon() ? "a closed ring" : "no ring") << '\n';

    // What can't be read says so, and leaves the vector as it was.
    std::ofstream("data/today/torn.bin") << "no points";
    const bool bMissing = readPointsBIN("data/today/missing.bin", vAgain);
    const bool bTorn = readPointsBIN("data/today/torn.bin", vAgain);
    std::cout << std::boolalpha << bMissing << ' ' << bTorn << ' ' << vAgain.size() << '\n';
}
