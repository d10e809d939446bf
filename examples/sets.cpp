// Two forests and the clearing of a power line: unions, intersections and differences of zones, and a zone
// without the thin triangles at its border.
#include <Kivo_2D.h>

#include <cmath>
#include <iostream>
#include <vector>

using namespace TESK_KIVO2D;

static Zone2* createDisc(Kivo_2D& map, double x, double y, double radius) {
    std::vector<Point2> vCircle;
    generateCircle(64, x, y, radius, radius, vCircle);
    std::vector<Segment2> vRing;
    for (std::size_t i = 0; i < vCircle.size(); ++i)
        vRing.emplace_back(vCircle[i], vCircle[(i + 1) % vCircle.size()]);
    return map.createZone(map.createConstraint(vRing), ZL_INSIDE);
}

// Peels off what has an angle below 15 degrees, as far as the border can reach it.
class IsThin : public UserPredicateT {
public:
    bool operator()(const Triangle2* pTriangle) override {
        return pTriangle->getInteriorAngle2D(pTriangle->getMinIndex()) < 15;
    }
};

int main() {
    std::vector<Point2> vSurvey;
    generateRandomPoints(2000, -150.0, 150.0, vSurvey, 11);
    Kivo_2D map;
    map.insert(vSurvey);
    Zone2* const pOaks = createDisc(map, -30, 0, 60);
    Zone2* const pPines = createDisc(map, 40, 10, 70);
    std::vector<Segment2> vClearing{{Point2(-140, -8), Point2(140, -8)},
                                    {Point2(140, -8), Point2(140, 8)},
                                    {Point2(140, 8), Point2(-140, 8)},
                                    {Point2(-140, 8), Point2(-140, -8)}};
    Zone2* const pClearing = map.createZone(map.createConstraint(vClearing), ZL_INSIDE);

    Zone2* const pBoth = zoneUnion(pOaks, pPines);
    Zone2* const pMixed = zoneIntersection(pOaks, pPines);
    Zone2* const pPure = zoneSymmetricDifference(pOaks, pPines);
    Zone2* const pForest = zoneDifference(pBoth, pClearing);
    std::cout << "oaks " << std::lround(pOaks->getArea2D()) << ", pines " << std::lround(pPines->getArea2D())
              << "\nmixed " << std::lround(pMixed->getArea2D()) << ", of one kind "
              << std::lround(pPure->getArea2D()) << "\nboth " << std::lround(pBoth->getArea2D())
              << ", without the clearing " << std::lround(pForest->getArea2D()) << '\n';
    const double sum = pOaks->getArea2D() + pPines->getArea2D();
    const double difference = sum - pBoth->getArea2D() - pMixed->getArea2D();
    std::cout << "is union + intersection = sum of both? "
              << (std::fabs(difference) < 1e-9 * sum ? "yes" : "no") << '\n';

    IsThin isThin;
    Zone2* const pSmooth = peelOffIf(pForest, &isThin, false);
    std::cout << "without thin triangles at its border: " << pForest->getNumberOfTriangles() << " -> "
              << pSmooth->getNumberOfTriangles() << " triangles\n";

    Visualizer2 drawing("forest.ps");
    map.show(&drawing, false);
    pSmooth->show(&drawing, false, true);
    drawing.writeFile();
}
