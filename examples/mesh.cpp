// A plate with a round hole is torn apart: a mesh for its stresses, fine where they are large.
#include <Kivo_2D.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <vector>

using namespace TESK_KIVO2D;

static const Point2 center(4, 3);
static constexpr double radius = 1;

static std::vector<Segment2> closedRing(const std::vector<Point2>& vCorners) {
    std::vector<Segment2> vRing;
    for (std::size_t i = 0; i < vCorners.size(); ++i)
        vRing.emplace_back(vCorners[i], vCorners[(i + 1) % vCorners.size()]);
    return vRing;
}

// Limits may be the same everywhere, which is set in the fields, or vary over the plane.
class FineAtTheHole : public MeshGenParams {
public:
    explicit FineAtTheHole(Zone2* pPlate) : MeshGenParams(pPlate) {
        minAngleDegree = 28;
        minEdgeLength = 0;
        maxEdgeLength = 1;
    }
    double getMaxEdgeLength(Triangle2* pT) const override {
        const double distance = std::sqrt(sqDistance(pT->getBarycenter(), center)) - radius;
        return std::min(maxEdgeLength, 0.1 + distance / 4);
    }
};

int main() {
    std::vector<Point2> vRound;
    for (int i = 0; i < 48; ++i) {
        const double angle = 2 * std::acos(-1.0) * i / 48;
        vRound.emplace_back(center.x() + radius * std::cos(angle), center.y() + radius * std::sin(angle));
    }
    std::vector<Segment2> vHole = closedRing(vRound);
    std::vector<Segment2> vOutline = closedRing({{0, 0}, {10, 0}, {10, 6}, {0, 6}});
    Kivo_2D plate;
    Zone2* const pPlate =
        plate.createParityZone({plate.createConstraint(vOutline), plate.createConstraint(vHole)});
    const double area = pPlate->getArea2D();

    FineAtTheHole limits(pPlate);
    plate.refineAdvanced(&limits);
    const RefinementReport report = plate.getRefinementReport();
    std::cout << (report.end == RefinementEnd::COMPLETE ? "complete" : "not complete") << ", "
              << report.numBadTriangles << " triangles break a rule\n";

    // The zone is the same area as before, with other triangles.
    std::vector<Triangle2*> vTriangles;
    pPlate->getTriangles(vTriangles);
    std::size_t numSmallAngles = 0, numTooLong = 0, numFine = 0;
    for (Triangle2* pT : vTriangles) {
        const double longest = std::sqrt(pT->getSquaredEdgeLength(pT->getMaxIndex()));
        if (longest > limits.getMaxEdgeLength(pT)) ++numTooLong;
        if (longest < 0.2) ++numFine;
        for (int i = 0; i < 3; ++i)
            if (pT->getInteriorAngle2D(i) < 28) ++numSmallAngles;
    }
    std::cout << numSmallAngles << " angles below 28 degrees, " << numTooLong
              << " triangles with too long an edge\n"
              << "the hole is " << (numFine > 200 ? "finely" : "coarsely") << " meshed\n"
              << "area " << area << " before and " << pPlate->getArea2D() << " after\n";

    // Beside a corner of the input that is smaller than the limit, an angle must stay; the report says so.
    std::vector<Segment2> vSliver = closedRing({{0, 0}, {5, 0}, {5, 0.5}});
    Kivo_2D sliver;
    Zone2* const pSliver = sliver.createZone(sliver.createConstraint(vSliver), ZL_INSIDE);
    sliver.refine(pSliver, 20, 0, 10, true);
    std::cout << "the sliver keeps "
              << sliver.getRefinementReport().numBad(MeshRule::MIN_ANGLE, MeshObstacle::SMALL_INPUT_ANGLE)
              << " small angle\n";
    plate.writeWebScene("plate", pPlate); // open plate/index.html
}
