// A building with a courtyard and a wall through it: what is inside, how large it is and where its border
// runs.
#include <Kivo_2D.h>

#include <cmath>
#include <iostream>
#include <vector>

using namespace TESK_KIVO2D;

static std::vector<Segment2> closedRing(const std::vector<Point2>& vCorners) {
    std::vector<Segment2> vRing;
    for (std::size_t i = 0; i < vCorners.size(); ++i)
        vRing.emplace_back(vCorners[i], vCorners[(i + 1) % vCorners.size()]);
    return vRing;
}

int main() {
    Kivo_2D plan;
    std::vector<Segment2> vOutline = closedRing({{0, 0}, {40, 0}, {40, 30}, {15, 30}, {15, 20}, {0, 20}});
    std::vector<Segment2> vCourtyard = closedRing({{20, 10}, {30, 10}, {30, 20}, {20, 20}});
    std::vector<Segment2> vWall{{Point2(15, 20), Point2(30, -5)}};
    ConstraintGraph2* const pOutline = plan.createConstraint(vOutline);
    ConstraintGraph2* const pCourtyard = plan.createConstraint(vCourtyard);
    ConstraintGraph2* const pWall = plan.createConstraint(vWall);

    // One closed ring: its inside and its outside, in whichever direction it was given.
    const Zone2* const pLot = plan.createZone(pOutline, ZL_INSIDE);
    const Zone2* const pYard = plan.createZone(pCourtyard, ZL_INSIDE);
    const Zone2* const pAround = plan.createZone(pOutline, ZL_OUTSIDE);
    std::cout << "lot " << pLot->getArea2D() << ", courtyard " << pYard->getArea2D() << ", around it "
              << pAround->getArea2D() << '\n';

    // Several rings: inside is what an odd number of them encloses, so holes need no thought.
    Zone2* const pHouse = plan.createParityZone({pOutline, pCourtyard});
    std::cout << "house " << pHouse->getArea2D() << '\n';

    // A room: what can be reached from a place in it without a step through the walls.
    Zone2* const pRoom = plan.createZone({pOutline, pCourtyard, pWall}, ZL_GROW, Point2(1, 1));
    std::cout << "room " << pRoom->getArea2D() << '\n';

    // The border comes as closed rings; the house lies to the left.
    std::vector<Segment2> vBorder;
    pHouse->getBoundarySegments(vBorder);
    double length = 0;
    for (const Segment2& segment : vBorder)
        length += std::sqrt(segment.getSqLen2D());
    std::cout << "the house has " << length << " of outer walls\n";

    // A zone is a rule: after an insertion it has other triangles, and the same area.
    const auto numBefore = pHouse->getNumberOfTriangles();
    for (int x = 1; x < 40; x += 2)
        plan.insert(Point2(x, 5));
    std::cout << numBefore << " triangles became " << pHouse->getNumberOfTriangles() << ", area "
              << pHouse->getArea2D() << '\n';
    pHouse->show("house.ps", false, true);
    plan.deleteZone(pRoom); // the others live as long as the triangulation
}
