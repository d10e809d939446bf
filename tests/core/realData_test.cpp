#include "Kivo_2D.h"
#include "tests/oracle/cgalDelaunay.h"
#include "tests/oracle/exact.h"
#include "tests/support/capture.h"
#include "tests/support/expectSound.h"
#include "tests/support/realData.h"

#include <algorithm>
#include <fstream>

using namespace TESK_KIVO2D;
using namespace realData;
using nlohmann::json;

namespace {

struct RealData : testing::TestWithParam<Folder> {
    static std::vector<Path> files(const std::string& ending) { return filesIn(GetParam(), ending); }
};
INSTANTIATE_TEST_SUITE_P(in, RealData, testing::ValuesIn(folders()),
                         [](const auto& info) { return info.param.name; });

std::vector<oracle::Xy> hullOf(const Kivo_2D& kivo, bool bAll) {
    std::vector<Point2*> vHull;
    if (kivo.is2D()) kivo.getConvexHull(bAll, vHull);
    std::vector<oracle::Xy> vXy;
    for (const Point2* p : vHull)
        vXy.emplace_back(p->x(), p->y());
    std::rotate(vXy.begin(), std::min_element(vXy.begin(), vXy.end()), vXy.end());
    return vXy;
}

void expectPublishedFacts(const Kivo_2D& kivo, const json& facts) {
    if (!facts.contains("derived")) return;
    const json& derived = facts["derived"];
    EXPECT_EQ(derived["unique_points"], kivo.numberOfPoints());
    EXPECT_EQ(derived["delaunay_triangles_of_unique_points"], kivo.numberOfTriangles());
    EXPECT_EQ(derived["all_collinear"], !kivo.is2D());
    if (!kivo.is2D()) return;
    EXPECT_EQ(derived["hull_points_incl_collinear"], hullOf(kivo, true).size());
    EXPECT_EQ(derived["hull_vertices_strict"], hullOf(kivo, false).size());
}

// Same counts and hull; the same triangles too where no other choice was right.
void expectAgreement(const Kivo_2D& kivo, const oracle::DelaunayFacts& rival) {
    EXPECT_EQ(rival.numVertices, kivo.numberOfPoints());
    EXPECT_EQ(rival.vTriangles.size(), kivo.numberOfTriangles());
    EXPECT_EQ(rival.vHull, hullOf(kivo, true));
    EXPECT_TRUE(!oracle::isUnique(kivo) || rival.vTriangles == oracle::triangleSet(kivo));
}

std::vector<oracle::Xy> sortedCorners(oracle::Corners corners) {
    std::sort(corners.begin(), corners.end());
    return {corners.begin(), corners.end()};
}

} // namespace

TEST_P(RealData, givesThePublishedCountsTheRivalsTrianglesAndAValidMesh) {
    const std::vector<Path> vFiles = files(".xy");
    ASSERT_FALSE(vFiles.empty()) << "no input in " << GetParam().path;
    for (const Path& path : vFiles) {
        SCOPED_TRACE(path.filename().string());
        const std::vector<Point2> vPoints = readPoints(path);
        ASSERT_FALSE(vPoints.empty());
        Kivo_2D kivo;
        CapturedMessages messages;
        kivo.insert(vPoints);
        EXPECT_EQ("", messages.output() + messages.error());
        EXPECT_TRUE(kivo.checkValidity(true, "real"));
        expectPublishedFacts(kivo, factsBeside(path));
        std::vector<oracle::Xy> vXy;
        for (const Point2& p : vPoints)
            vXy.emplace_back(p.x(), p.y());
        expectAgreement(kivo, oracle::cgalDelaunay(vXy));
        expectSound(kivo, vPoints);
    }
}

TEST_P(RealData, oneByOneGivesTheBatchsTriangles) {
    for (const Path& path : files(".xy")) {
        SCOPED_TRACE(path.filename().string());
        const std::vector<Point2> vPoints = readPoints(path);
        Kivo_2D batch, single;
        batch.insert(vPoints);
        for (const Point2& p : vPoints)
            single.insert(p);
        EXPECT_EQ(batch.numberOfTriangles(), single.numberOfTriangles());
        EXPECT_EQ(hullOf(batch, true), hullOf(single, true));
        EXPECT_EQ("", oracle::findFault(single, oracle::ONLY_NEIGHBOURS));
        EXPECT_TRUE(!oracle::isUnique(batch) || oracle::triangleSet(batch) == oracle::triangleSet(single));
    }
}

TEST_P(RealData, givesThePublishedTrianglesWhereTheyAreTheOnlyDelaunayOnes) {
    const std::string ending = ".published.tri";
    std::size_t numCompared = 0;
    for (const Path& path : files(ending)) {
        const std::string name = path.filename().string();
        SCOPED_TRACE(name);
        const Path input = path.parent_path() / (name.substr(0, name.size() - ending.size()) + ".xy");
        const json facts = factsBeside(input);
        const json& audit = facts["derived"]["audit_of_published_triangulations"]["published"];
        if (audit["unconstrained_edges_not_delaunay"] != 0 ||
            audit["unconstrained_edges_cocircular_tie"] != 0)
            continue;
        const std::vector<Point2> vPoints = readPoints(input);
        std::vector<std::vector<oracle::Xy>> vPublished, vOurs;
        std::ifstream file(path);
        for (std::array<std::size_t, 3> t; file >> t[0] >> t[1] >> t[2];) {
            oracle::Corners corners;
            for (std::size_t i = 0; i < 3; ++i)
                corners[i] = {vPoints.at(t[i]).x(), vPoints.at(t[i]).y()};
            vPublished.push_back(sortedCorners(corners));
        }
        Kivo_2D kivo;
        kivo.insert(vPoints);
        for (const oracle::Corners& corners : oracle::triangleList(kivo))
            vOurs.push_back(sortedCorners(corners));
        std::sort(vPublished.begin(), vPublished.end());
        std::sort(vOurs.begin(), vOurs.end());
        EXPECT_EQ(vPublished, vOurs);
        ++numCompared;
    }
    EXPECT_TRUE(GetParam().name != std::string("open") || numCompared >= 5);
}
