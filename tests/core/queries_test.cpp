#include "Kivo_2D.h"
#include "tests/support/capture.h"
#include "tests/support/expectSound.h"
#include "tests/support/nastySets.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>

using namespace TESK_KIVO2D;
using doubles::Points;
using doubles::Rng;

namespace {

using Fan = std::vector<Triangle2*>;

// The square (0,0) ... (4,4) with its centre and the middle of its lower side.
struct Square : testing::Test {
    Square() { kivo.insert({{0, 0}, {4, 0}, {4, 4}, {0, 4}, {2, 2}, {2, 0}}, vVertices); }
    Point2* at(std::size_t i) const { return vVertices[i]; }
    std::vector<Point2*> hull(bool bAll) const {
        std::vector<Point2*> vHull{nullptr}; // what is in it goes
        kivo.getConvexHull(bAll, vHull);
        std::rotate(vHull.begin(), std::find(vHull.begin(), vHull.end(), at(0)), vHull.end());
        return vHull;
    }
    Kivo_2D kivo;
    std::vector<Point2*> vVertices;
};

Fan fanOf(const Kivo_2D& kivo, Point2* pVtx) {
    Fan vFan;
    kivo.getIncidentTriangles(pVtx, vFan);
    return vFan;
}

// The edge from the vertex to the corner that follows it; its counter-clockwise end in the last one.
Point2* following(const Triangle2* pT, const Point2* pVtx, int steps) {
    return pT->getCorner((pT->getIntraTriangleIndex(pVtx) + steps) % 3);
}

// Positions that ++ and -- pass from a triangle of the fan until it is met again; each as previewed.
void expectCirculation(Point2* pVtx, const Fan& vFan, bool bHull) {
    Fan vCycle = vFan;
    if (bHull) vCycle.push_back(nullptr);
    for (std::size_t start = 0; start < vFan.size(); ++start) {
        TriangleAroundVertexIterator forward(pVtx, vFan[start]), backward(pVtx, vFan[start]);
        for (std::size_t i = 1; i <= vCycle.size(); ++i) {
            Triangle2* const pNext = forward.previewNextTriangle();
            Triangle2* const pPrev = backward.previewPrevTriangle();
            EXPECT_EQ(vCycle[(start + i) % vCycle.size()], *++forward);
            EXPECT_EQ(vCycle[(start + i * (vCycle.size() - 1)) % vCycle.size()], *--backward);
            EXPECT_EQ(*forward, pNext);
            EXPECT_EQ(*backward, pPrev);
        }
        EXPECT_EQ(forward, backward);
    }
}

} // namespace

TEST_F(Square, hullKeepsPointsInsideStraightPiecesOnlyOnRequest) {
    EXPECT_EQ((std::vector<Point2*>{at(0), at(5), at(1), at(2), at(3)}), hull(true));
    EXPECT_EQ((std::vector<Point2*>{at(0), at(1), at(2), at(3)}), hull(false));
}

TEST_F(Square, adjacentTriangleIsTheOneToTheLeftOfTheDirectedEdge) {
    const Triangle2 *pLeft = kivo.getAdjacentTriangle(at(4), at(0)),
                    *pRight = kivo.getAdjacentTriangle(at(0), at(4));
    ASSERT_TRUE(pLeft != nullptr && pRight != nullptr);
    EXPECT_NE(pLeft, pRight);
    EXPECT_TRUE(pLeft->hasVertex(at(5)) || pRight->hasVertex(at(5)));
    EXPECT_TRUE(pRight->hasVertex(at(3)));
    EXPECT_NE(nullptr, kivo.getAdjacentTriangle(at(1), at(2)));
    EXPECT_EQ(nullptr, kivo.getAdjacentTriangle(at(2), at(1))) << "outside the hull";
    EXPECT_EQ(nullptr, kivo.getAdjacentTriangle(at(0), at(2))) << "no edge";
    struct Row {
        Point2 *p0, *p1;
        const char* text;
    };
    for (const Row& row :
         {Row{nullptr, at(0), "p0!=0"}, {at(0), nullptr, "p1!=0"}, {at(0), at(0), "p0!=p1"}}) {
        CapturedMessages messages;
        EXPECT_THROW(kivo.getAdjacentTriangle(row.p0, row.p1), KivoException);
        const std::string expected = "      [Kivo2D-Message] Kivo, , ERROR: Condition [ " +
                                     std::string(row.text) + " failed ]\n      ";
        EXPECT_EQ(expected, messages.output().substr(0, expected.size()));
    }
}

TEST_F(Square, incidentTrianglesAreAppended) {
    std::vector<Triangle2*> vTriangles(1, nullptr);
    kivo.getIncidentTriangles(at(4), vTriangles);
    EXPECT_EQ(6u, vTriangles.size());
    EXPECT_EQ(nullptr, vTriangles[0]);
}

TEST_F(Square, verticesTrianglesAndBoxAreWhatIsThere) {
    std::vector<Point2*> vFound{nullptr};
    kivo.getVertexPointers(vFound);
    EXPECT_EQ(std::set<Point2*>(vVertices.begin(), vVertices.end()),
              std::set<Point2*>(vFound.begin(), vFound.end()));
    std::vector<Triangle2*> vTriangles{nullptr};
    kivo.getTrianglePointers(vTriangles);
    EXPECT_EQ(kivo.numberOfTriangles(), std::set<Triangle2*>(vTriangles.begin(), vTriangles.end()).size());
    EXPECT_EQ(0u, std::count(vTriangles.begin(), vTriangles.end(), nullptr));
    const Bbox2 box = kivo.computeBoundingBox();
    EXPECT_EQ(Point2(0, 0), box.getMinPoint());
    EXPECT_EQ(Point2(4, 4), box.getMaxPoint());
}

TEST_F(Square, statisticsCountsEveryInteriorAngle) {
    CapturedMessages messages;
    kivo.statistics("square");
    std::istringstream text(messages.output());
    std::string line;
    std::getline(text, line);
    EXPECT_EQ("MESH STATISTICS square", line);
    std::size_t numAngles = 0;
    while (std::getline(text, line)) {
        std::size_t low = 0, high = 0, num = 0;
        if (std::sscanf(line.c_str(), " %zu - %zu: %zu", &low, &high, &num) == 3) numAngles += num;
    }
    EXPECT_EQ(3 * kivo.numberOfTriangles(), numAngles);
    EXPECT_EQ(0u, messages.output().find("MESH STATISTICS"));
    EXPECT_NE(std::string::npos,
              messages.output().find("  vertices:   6\n  triangles:  5\n  edges:      10\n"));
}

TEST(Circulation, goesRoundEveryVertexOfEverySetAndShowsTheOutsideOnce) {
    Rng rng(21);
    for (const auto& kind : nastySets::all()) {
        SCOPED_TRACE(kind.name);
        for (int i = 0; i < 10; ++i) {
            Kivo_2D kivo;
            kivo.insert(kind.make(rng));
            if (!kivo.is2D()) continue;
            std::vector<Point2*> vVertices, vHull;
            kivo.getVertexPointers(vVertices);
            kivo.getConvexHull(true, vHull);
            std::size_t numIncidences = 0;
            for (Point2* pVtx : vVertices) {
                const Fan vFan = fanOf(kivo, pVtx);
                numIncidences += vFan.size();
                const bool bHull = std::find(vHull.begin(), vHull.end(), pVtx) != vHull.end();
                for (std::size_t k = 0; k + (bHull ? 1 : 0) < vFan.size(); ++k)
                    EXPECT_EQ(following(vFan[k], pVtx, 2), following(vFan[(k + 1) % vFan.size()], pVtx, 1));
                EXPECT_EQ(bHull, kivo.getAdjacentTriangle(pVtx, following(vFan.back(), pVtx, 2)) == nullptr);
                for (Triangle2* pT : vFan) {
                    EXPECT_EQ(pT, kivo.getAdjacentTriangle(pVtx, following(pT, pVtx, 1)));
                    EXPECT_EQ(pT, kivo.getAdjacentTriangle(following(pT, pVtx, 2), pVtx));
                }
                expectCirculation(pVtx, vFan, bHull);
            }
            EXPECT_EQ(3 * kivo.numberOfTriangles(), numIncidences);
        }
    }
}

TEST(Circulation, fromAVertexWithoutTriangleThrows) {
    Kivo_2D kivo;
    Point2 outside(1, 2);
    for (Point2* pVtx : {kivo.insert({0, 0}), &outside}) {
        CapturedMessages messages;
        EXPECT_THROW(TriangleAroundVertexIterator{pVtx}, KivoException);
        std::vector<Triangle2*> vTriangles;
        EXPECT_THROW(kivo.getIncidentTriangles(pVtx, vTriangles), KivoException);
        const std::string text =
            "TriangleAroundVertexIterator::TriangleAroundVertexIterator(), created from an invalid point\n";
        EXPECT_EQ(text + text, messages.error());
        EXPECT_EQ("", messages.output());
    }
}

TEST(QueriesWhileNot2D, answerNeutrallyAndLeaveTheHullVectorAsItIs) {
    Kivo_2D kivo;
    EXPECT_FALSE(kivo.computeBoundingBox().isValid());
    std::vector<Point2*> vVertices;
    kivo.getVertexPointers(vVertices);
    EXPECT_TRUE(vVertices.empty());
    kivo.insert({{0, 0}, {2, 4}, {1, 2}});
    kivo.getVertexPointers(vVertices);
    EXPECT_EQ(3u, vVertices.size());
    std::vector<Triangle2*> vTriangles;
    kivo.getTrianglePointers(vTriangles);
    EXPECT_TRUE(vTriangles.empty());
    EXPECT_EQ(Point2(2, 4), kivo.computeBoundingBox().getMaxPoint());
    CapturedMessages messages;
    std::vector<Point2*> vHull(2, vVertices[0]);
    kivo.getConvexHull(false, vHull);
    EXPECT_EQ(2u, vHull.size());
    EXPECT_EQ("      [Kivo2D-Message] Dt2::getConvexHull(), WARNING: "
              "is2D() is false, the triangulation is not full dimensional yet\n",
              messages.output());
}
