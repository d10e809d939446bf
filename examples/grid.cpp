// A hall with an atrium, its walls askew to the axes: a mesh of halves of squares along the walls, its
// quality, and all its corners on whole millimetres.
#include <Kivo_2D.h>

#include <cmath>
#include <iostream>
#include <string>
#include <vector>

using namespace TESK_KIVO2D;

static const double askew = std::acos(-1.0) / 6;

// A rectangle in metres along the walls.
static std::vector<Segment2> walls(double left, double right, double bottom, double top) {
    std::vector<Point2> vCorners;
    for (const Point2& p :
         {Point2(left, bottom), Point2(right, bottom), Point2(right, top), Point2(left, top)})
        vCorners.emplace_back(p.x() * std::cos(askew) - p.y() * std::sin(askew),
                              p.x() * std::sin(askew) + p.y() * std::cos(askew));
    std::vector<Segment2> vWalls;
    for (std::size_t i = 0; i < vCorners.size(); ++i)
        vWalls.emplace_back(vCorners[i], vCorners[(i + 1) % vCorners.size()]);
    return vWalls;
}

static std::size_t countHalvesOfSquares(const Zone2* pZone) {
    std::vector<Triangle2*> vTriangles;
    pZone->getTriangles(vTriangles);
    std::size_t num = 0;
    for (const Triangle2* pT : vTriangles) {
        const int ith = pT->getMaxIndex(); // opposite the longest edge
        const bool bRight = std::abs(pT->getInteriorAngle2D(ith) - 90) < 0.001;
        if (bRight && std::abs(pT->getInteriorAngle2D(Triangle2::incIndexBy1(ith)) - 45) < 0.001) ++num;
    }
    return num;
}

static std::size_t countBesideMillimetres(const Zone2* pZone) {
    std::vector<Point2*> vVertices;
    pZone->getVertices(vVertices);
    std::size_t num = 0;
    for (const Point2* pVertex : vVertices)
        if (std::round(pVertex->x() / 0.001) * 0.001 != pVertex->x()) ++num;
    return num;
}

int main() {
    Kivo_2D plan;
    std::vector<Segment2> vOutside = walls(0.3, 20.7, 0.2, 12.6), vAtrium = walls(7.4, 12.9, 4.6, 8.5);
    Zone2* const pHall =
        plan.createParityZone({plan.createConstraint(vOutside), plan.createConstraint(vAtrium)});

    MeshGenParams limits(pHall);
    limits.gridLength = 0.5;
    limits.gridVector = Vector2(std::cos(askew), std::sin(askew));
    limits.minAngleDegree = 25;
    limits.minEdgeLength = 0;
    plan.refineAdvanced(&limits);
    const RefinementReport report = plan.getRefinementReport();
    std::cout << report.numGridPoints << " points of the grid, "
              << report.numInnerPoints + report.numSegmentPoints << " more towards the walls\n";

    // It prints the distributions too, unless nobody listens, and draws the worst triangles into a file.
    setMessageSink([](MessageChannel, const std::string&) {});
    const ZoneQuality quality = plan.checkZoneQuality(pHall, "hall");
    setMessageSink({});
    std::cout << countHalvesOfSquares(pHall) << " of " << quality.numTriangles
              << " triangles are halves of squares; the smallest angle is "
              << std::floor(quality.angles.smallest) << " degrees, the area " << quality.totalArea << '\n';

    const std::size_t numBeside = countBesideMillimetres(pHall);
    const std::size_t numLeft = pHall->unifyGrid(0.001);
    std::cout << numBeside << " vertices lay beside whole millimetres, " << countBesideMillimetres(pHall)
              << " still do; " << numLeft << " could not move\n"
              << "a second call moves " << (pHall->unifyGrid(0.001) == 0 ? "nothing" : "something") << '\n';
    plan.writeWebScene("hall", pHall); // open hall/index.html
}
