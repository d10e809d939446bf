#include "tests/oracle/cgalConstrained.h"

#include "Kivo_2D.h"
#include "tests/oracle/exact.h"
#include "tests/support/constrained.h"
#include "tests/support/realData.h"

#include <algorithm>

using namespace TESK_KIVO2D;
using namespace realData;

namespace {

using Points = std::vector<Point2>;

// The four corners of the two triangles at the edge lie on one circle, so that the other diagonal is as good.
bool isTie(const Kivo_2D& kivo, Point2* p, Point2* q) {
    const Triangle2 *pLeft = kivo.getAdjacentTriangle(p, q), *pRight = kivo.getAdjacentTriangle(q, p);
    if (pLeft == nullptr || pRight == nullptr) return false;
    const Point2* const pFar = pRight->getCorner(pRight->getIntraTriangleIndex(p, q));
    return oracle::inCircle(*pLeft->getCorner(0), *pLeft->getCorner(1), *pLeft->getCorner(2), *pFar) == 0;
}

// Same vertices, same constraints, and the same edges but where there was a choice.
void expectAgreement(const Constrained& c, const oracle::ConstrainedFacts& rival) {
    EXPECT_EQ(rival.numVertices, c.kivo.numberOfPoints());
    EXPECT_EQ(rival.numTriangles, c.kivo.numberOfTriangles());
    EXPECT_EQ(rival.vConstraints, oracle::leafEdges(c.vGraphs));
    std::vector<Triangle2*> vTriangles;
    c.kivo.getTrianglePointers(vTriangles);
    for (const Triangle2* pT : vTriangles) {
        for (int i = 0; i < 3; ++i) {
            Point2 *p = pT->getCorner((i + 1) % 3), *q = pT->getCorner((i + 2) % 3);
            const bool bShared =
                std::binary_search(rival.vEdges.begin(), rival.vEdges.end(), oracle::edgeOf(*p, *q));
            ASSERT_TRUE(bShared || isTie(c.kivo, p, q)) << *p << " - " << *q;
        }
    }
}

// Returns the number of triangles.
std::size_t expectSameAsRival(const Points& vPoints, const Segments& vSegments) {
    Constrained c;
    c.kivo.insert(vPoints);
    c.add(vSegments, CIS_CONSTRAINED_DELAUNAY);
    std::vector<oracle::Xy> vXy;
    std::vector<oracle::XyPair> vPairs;
    for (const Point2& p : vPoints)
        vXy.emplace_back(p.x(), p.y());
    for (const Segment2& s : vSegments)
        vPairs.push_back({{s.getSrc().x(), s.getSrc().y()}, {s.getTrg().x(), s.getTrg().y()}});
    expectAgreement(c, oracle::cgalConstrained(vXy, vPairs));
    expectConstrained(c);
    return c.kivo.numberOfTriangles();
}

struct RealConstraints : testing::TestWithParam<Folder> {};
INSTANTIATE_TEST_SUITE_P(in, RealConstraints, testing::ValuesIn(folders()),
                         [](const auto& info) { return info.param.name; });

bool hasCrossings(const nlohmann::json& facts) {
    return facts.contains("derived") && facts["derived"]["segments"]["pairs_crossing"] != 0;
}

} // namespace

TEST(RandomPolygons, giveTheRivalsEdges) {
    for (unsigned int seed = 1; seed <= 30 && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Segments vPolygon;
        Points vPoints;
        generateRandomPolygon(seed % 5 == 0 ? 2000 : 10 * seed, 0, 100, vPolygon, seed);
        generateRandomPoints(seed % 3 * 200, -10, 110, vPoints, seed + 100);
        expectSameAsRival(vPoints, vPolygon);
    }
}

TEST_P(RealConstraints, giveTheRivalsEdgesAndThePublishedCountsWhereNoneCross) {
    for (const Path& path : filesIn(GetParam(), ".seg")) {
        SCOPED_TRACE(path.filename().string());
        const nlohmann::json facts = factsBeside(path);
        if (hasCrossings(facts)) continue;
        const std::size_t numTriangles =
            expectSameAsRival(readPoints(Path(path).replace_extension(".xy")), readSegments(path));
        if (!facts.contains("derived") || !facts["derived"].contains("cdt_triangles_in_hull")) continue;
        EXPECT_EQ(facts["derived"]["cdt_triangles_in_hull"], numTriangles);
    }
}

TEST_P(RealConstraints, keepAllLawsByEitherStrategy) {
    const std::vector<Path> vFiles = filesIn(GetParam(), ".seg");
    ASSERT_FALSE(vFiles.empty()) << "no input in " << GetParam().path;
    for (const Path& path : vFiles) {
        for (const ConstraintInsertionStrategy cis : {CIS_CONFORMING_DELAUNAY, CIS_CONSTRAINED_DELAUNAY}) {
            SCOPED_TRACE(path.filename().string() +
                         (cis == CIS_CONFORMING_DELAUNAY ? " conforming" : " constrained"));
            Constrained c;
            c.add(readSegments(path), cis, cis == CIS_CONFORMING_DELAUNAY);
            expectConstrained(c);
        }
    }
}
