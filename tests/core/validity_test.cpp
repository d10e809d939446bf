#include "Kivo_2D.h"
#include "tests/support/capture.h"

#include <filesystem>
#include <gtest/gtest.h>

using namespace TESK_KIVO2D;

namespace {

const std::string prefix = "      [Kivo2D-Message] ";
const std::string started = prefix + "Kivo_2D::CheckValidity(mesh), INFO: has been started\n";
const std::string segments = "\n* ConstraintSegments (alive): 0, contained: 0, missing: 0\n";
const std::string valid = prefix + "Kivo_2D::CheckValidity(mesh), INFO: Valid triangulation\n";

struct Report {
    bool bValid;
    std::string text;
    bool says(const std::string& error) const {
        return text.find(prefix + "Kivo_2D::CheckValidity(mesh), ERROR: " + error + "\n") !=
               std::string::npos;
    }
};

Report check(const Kivo_2D& kivo, bool bCircles = true) {
    CapturedMessages messages;
    const bool bValid = kivo.checkValidity(bCircles, "mesh");
    EXPECT_EQ("", messages.error());
    return {bValid, messages.output()};
}

// A square with a point off its centre: four triangles round one inner vertex.
struct Validity : testing::TestWithParam<double> {
    Validity() {
        removeDrawings();
        const double s = GetParam();
        kivo.insert({{0, 0}, {4 * s, 0}, {4 * s, 4 * s}, {0, 4 * s}, {2 * s, s}}, vVertices);
        kivo.getTrianglePointers(vTriangles);
    }
    ~Validity() override { removeDrawings(); }
    static void removeDrawings() {
        std::filesystem::remove("meshcurrentState.ps");
        std::filesystem::remove("meshbadEmptyCircle.ps");
    }
    // What must have been found, and which drawings it leaves.
    void expectFailure(const std::string& error, bool bCircles, bool bCircleDrawing) const {
        const Report report = check(kivo, bCircles);
        EXPECT_FALSE(report.bValid);
        EXPECT_TRUE(report.says(error)) << report.text;
        EXPECT_EQ(0u, report.text.find(started + segments));
        EXPECT_NE(std::string::npos, report.text.find("\ncheckValidity, bug, name=mesh\n"));
        EXPECT_EQ(std::string::npos, report.text.find("Valid triangulation"));
        EXPECT_TRUE(std::filesystem::exists("meshcurrentState.ps"));
        EXPECT_EQ(bCircleDrawing, std::filesystem::exists("meshbadEmptyCircle.ps"));
    }
    Triangle2* over(int i, int j) const {
        return kivo.getAdjacentTriangle(vVertices[static_cast<std::size_t>(i)],
                                        vVertices[static_cast<std::size_t>(j)]);
    }
    Kivo_2D kivo;
    std::vector<Point2*> vVertices;
    std::vector<Triangle2*> vTriangles;
};

// At the largest scale the areas overflow: a report must not fail over what it prints.
INSTANTIATE_TEST_SUITE_P(atScale, Validity, testing::Values(1.0, 4e307, 0x1p-1074));

} // namespace

TEST_P(Validity, holdsForWhatInsertionMade) {
    for (const bool bCircles : {false, true}) {
        const Report report = check(kivo, bCircles);
        EXPECT_TRUE(report.bValid);
        EXPECT_EQ(started + segments + valid, report.text);
    }
    EXPECT_FALSE(std::filesystem::exists("meshcurrentState.ps"));
}

TEST_P(Validity, failsForADoubledCorner) {
    Triangle2* pT = over(0, 1);
    pT->setVertexPointer(0, pT->getCorner(1));
    expectFailure("Less than three different corners", true, false);
}

TEST_P(Validity, failsForANullCorner) {
    for (int i = 0; i < 3; ++i) {
        Triangle2* pT = over(0, 1);
        Point2* pVtx = pT->getCorner(i);
        pT->setVertexPointer(i, nullptr);
        EXPECT_FALSE(check(kivo).bValid);
        pT->setVertexPointer(i, pVtx);
    }
    EXPECT_TRUE(check(kivo).bValid);
}

TEST_P(Validity, failsForALostBackPointer) {
    Triangle2 *pT = over(0, 1), *pN = over(1, 2);
    pN->setOppTriangle(pN->getIntraTriangleIndex(pT), nullptr);
    expectFailure("Inconsistent neighborships:", true, false);
}

TEST_P(Validity, failsForNeighboursThatPointBackAcrossAnotherEdge) {
    Triangle2 *pT = over(0, 1), *pN = over(1, 2);
    const int i = pN->getIntraTriangleIndex(pT), j = (i + 1) % 3;
    pN->setOppTriangle(i, pN->getOppositeTriangle(j));
    pN->setOppTriangle(j, pT);
    expectFailure("Neighbor found but inconsistent intra triangle indices:", false, false);
}

TEST_P(Validity, failsForCornersInClockwiseOrder) {
    Triangle2* pT = over(0, 1);
    Point2* p0 = pT->getCorner(0);
    pT->setVertexPointer(0, pT->getCorner(1));
    pT->setVertexPointer(1, p0);
    EXPECT_FALSE(check(kivo, false).bValid);
}

TEST_P(Validity, failsForAVertexThatKnowsAForeignTriangle) {
    Triangle2 stranger;
    stranger.setProperties(vVertices[0], vVertices[1], vVertices[2]);
    stranger.clearProperties();
    EXPECT_FALSE(check(kivo, false).bValid);
}

TEST_P(Validity, failsForAFlippedEdgeOnlyWhenCirclesAreAskedFor) {
    // A kite, whose short diagonal is the Delaunay edge, with the long one instead.
    const double s = GetParam();
    Kivo_2D kite;
    std::vector<Point2*> v;
    kite.insert({{0, s}, {2 * s, 0}, {4 * s, s}, {2 * s, 2 * s}}, v);
    Triangle2 *pLow = kite.getAdjacentTriangle(v[0], v[1]), *pHigh = kite.getAdjacentTriangle(v[2], v[3]);
    pLow->setPropertiesAndOppT(v[0], v[1], v[2], nullptr, pHigh, nullptr);
    pHigh->setPropertiesAndOppT(v[0], v[2], v[3], nullptr, nullptr, pLow);
    EXPECT_TRUE(check(kite, false).bValid);
    const Report report = check(kite, true);
    EXPECT_FALSE(report.bValid);
    EXPECT_TRUE(report.says("Sphere inclusion test failed ")) << report.text;
    EXPECT_NE(std::string::npos, report.text.find("\ncheckValidity, bug, name=mesh\n"));
    EXPECT_TRUE(std::filesystem::exists("meshcurrentState.ps"));
    EXPECT_TRUE(std::filesystem::exists("meshbadEmptyCircle.ps"));
}

TEST(ValidityOf, gridsHoldsAlthoughEveryCellIsATie) {
    for (const double step : {1.0, 0.1, 1e-170, 1e306}) {
        Kivo_2D kivo;
        std::vector<Point2> vPoints;
        for (int i = 0; i < 400; ++i)
            vPoints.emplace_back(i % 20 * step, i / 20 * step);
        kivo.insert(vPoints);
        EXPECT_EQ(started + segments + valid, check(kivo).text);
    }
}

TEST(ValidityOf, nothingOrALineIsTrueWithAWarning) {
    Kivo_2D kivo;
    for (int i = 0; i < 3; ++i) {
        const Report report = check(kivo);
        EXPECT_TRUE(report.bValid);
        EXPECT_EQ(started + prefix +
                      "checkValidity(mesh), WARNING: "
                      "not fulldimensional yet (empty or all points collinear), Returning true\n",
                  report.text);
        kivo.insert(Point2(i, i));
    }
}
