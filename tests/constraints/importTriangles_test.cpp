#include "tests/support/memoryLimit.h"
#include "tests/support/nastySets.h"
#include "tests/support/realData.h"
#include "tests/support/sanitized.h"
#include "tests/support/triangleSoups.h"

#include <cmath>
#include <fstream>
#include <map>
#include <stdexcept>

// Soups that fit become part of the triangulation as they are, wherever they come from.

using namespace triangleSoups;
using namespace realData;

namespace {

constexpr int numRounds = isSanitized ? 30 : 300;

struct Soups : testing::TestWithParam<Frame> {};
INSTANTIATE_TEST_SUITE_P(of, Soups, testing::ValuesIn(aFrames),
                         [](const auto& info) { return info.param.name; });

// Parts of a soup, by any triangles.
std::vector<Soup> partsOf(Rng& rng, const Soup& vSoup, std::size_t num) {
    std::vector<Soup> vParts(num), vFilled;
    for (std::size_t i = 0; i < vSoup.size(); i += 3) {
        Soup& vPart = vParts[any(rng, num)];
        vPart.insert(vPart.end(), vSoup.begin() + long(i), vSoup.begin() + long(i) + 3);
    }
    std::copy_if(vParts.begin(), vParts.end(), std::back_inserter(vFilled),
                 [](auto& v) { return !v.empty(); });
    return vFilled;
}

// Imports the triangles into nothing, in any order, and finds them again.
void expectRoundTrip(Rng& rng, const Soup& vSoup) {
    Constrained c;
    expectImported(c, shuffled(rng, vSoup));
}

template<class Call>
auto quietly(Call call) {
    const CapturedMessages captured;
    return call();
}

double areaOf(const Soup& vSoup) {
    double area = 0;
    for (std::size_t i = 0; i < vSoup.size(); i += 3)
        area += std::abs(oracle::areaOf(zoned::ringOf({vSoup[i], vSoup[i + 1], vSoup[i + 2]})));
    return area;
}

// Squares with both diagonals as good as each other.
enum Diagonals { RISING, FALLING, ANY };
Soup gridSoup(Rng& rng, int num, Diagonals diagonals) {
    Soup v;
    for (int i = 0; i < num; ++i) {
        for (int j = 0; j < num; ++j) {
            const Point2 a(i, j), b(i + 1, j), c(i + 1, j + 1), d(i, j + 1);
            if (diagonals == RISING || (diagonals == ANY && rng() % 2 == 0)) {
                v.insert(v.end(), {a, b, c, a, c, d});
            } else {
                v.insert(v.end(), {a, b, d, b, c, d});
            }
        }
    }
    return v;
}

struct RealSoups : testing::TestWithParam<Folder> {};
INSTANTIATE_TEST_SUITE_P(in, RealSoups, testing::ValuesIn(folders()),
                         [](const auto& info) { return info.param.name; });

} // namespace

TEST_P(Soups, comeInPartsSideBySideAndTwice) {
    Rng rng(1);
    for (int round = 0; round < numRounds && !HasFailure(); ++round) {
        SCOPED_TRACE(round);
        const Soup vSoup = goodSoup(rng, GetParam(), round % 10 == 0 ? 100 : 20);
        Constrained c;
        // Points on one line, a segment that waits, or points beside the soup.
        if (rng() % 4 == 0) c.kivo.insert({vSoup[0], vSoup[1], GetParam().place(-20, -20)});
        std::vector<Soup> vParts = partsOf(rng, shuffled(rng, vSoup), 1 + any(rng, 4));
        if (rng() % 2 == 0) vParts.push_back(vParts[0]);
        if (rng() % 4 == 0) vParts.push_back(vSoup);
        std::vector<Zone2*> vZones;
        for (const Soup& vPart : vParts)
            vZones.push_back(expectImported(c, vPart));
        for (std::size_t i = 0; i < vZones.size() && !HasFailure(); ++i)
            expectZoneOf(c.kivo, vZones[i], oracle::soupFacts(vParts[i]));
    }
}

// Of the triangulation itself: before, some of the edges that are not Delaunay in the soup are turned.
TEST_P(Soups, replaceTrianglesOfTheSameVerticesAndKeepTheRest) {
    Rng rng(2);
    for (int round = 0; round < numRounds && !HasFailure(); ++round) {
        SCOPED_TRACE(round);
        Points vPoints;
        for (int i = 4 + below(rng, 40); i > 0; --i)
            vPoints.push_back(anyPoint(rng, GetParam(), 12, round % 2 == 0));
        Constrained c;
        c.kivo.insert(vPoints);
        if (!c.kivo.is2D()) continue;
        Soup vSoup = soupOf(c.kivo);
        for (std::size_t i = any(rng, 3) * vSoup.size(); i > 0; --i)
            flipSome(rng, vSoup);
        const Soup vPart = partsOf(rng, vSoup, 1 + any(rng, 3))[0];
        for (const Segment2& s : anySegments(rng, vPoints, below(rng, 8)))
            if (oracle::soupFaults(vPart, {}, {s}).empty()) c.add({s}, CIS_CONSTRAINED_DELAUNAY);
        Points vCrossings = verticesOf(c.kivo);
        if (oracle::soupFaults(vPart, vCrossings, segmentsOf(constraintEdges(c))).empty())
            expectImported(c, shuffled(rng, vPart));
    }
}

TEST(CocircularGrids, keepTheDiagonalsThatWereGiven) {
    Rng rng(3);
    for (const Diagonals diagonals : {RISING, FALLING, ANY}) {
        for (const bool bPointsFirst : {false, true}) {
            const Soup vSoup = gridSoup(rng, 12, diagonals);
            Constrained c;
            if (bPointsFirst) c.kivo.insert(vSoup);
            expectImported(c, shuffled(rng, vSoup));
            EXPECT_EQ(48u, constraintEdges(c).size()) << "only the border";
        }
    }
}

TEST(ImportedCorners, areOneVertexWhereZerosHaveAnySignAndKeepTheirCustomIndices) {
    Soup vSoup = {{0.0, -0.0}, {1, 0.0}, {-0.0, 1}, {1, -0.0}, {1, 1}, {0.0, 1}};
    for (Point2& p : vSoup)
        p.setCustomIndex(int(10 + 2 * p.x() + p.y()));
    Constrained c;
    Point2* const pOld = c.kivo.insert(Point2(1, 1));
    expectImported(c, vSoup);
    std::vector<Point2*> v;
    c.kivo.getVertexPointers(v);
    EXPECT_EQ(4u, v.size());
    for (const Point2* p : v)
        EXPECT_EQ(p == pOld ? -1 : int(10 + 2 * p->x() + p->y()), p->getCustomIndex());
}

TEST(ImportedSoups, keepZonesThatWereThere) {
    Rng rng(4);
    for (int round = 0; round < numRounds / 5 && !HasFailure(); ++round) {
        SCOPED_TRACE(round);
        Constrained c;
        c.kivo.insert({{-9, -9}, {30, -9}, {-9, 30}});
        // A ring round where the soup comes, and one that its corners may touch from outside.
        ConstraintGraph2* const pRound = c.add(zoned::square(-5, -5, 20), CIS_CONSTRAINED_DELAUNAY, true);
        ConstraintGraph2* const pSide =
            c.add(zoned::square(-4, 0, 4), ConstraintInsertionStrategy(round % 2), true);
        const Zone2* const pOuter = c.kivo.createZone(pRound, ZL_INSIDE);
        const Zone2* const pBeside = c.kivo.createZone(pSide, ZL_INSIDE);
        const Soup vSoup = shuffled(rng, goodSoup(rng, aFrames[0], 20));
        if (!oracle::soupFaults(vSoup, verticesOf(c.kivo), segmentsOf(constraintEdges(c))).empty()) continue;
        const Zone2* const pZone = expectImported(c, vSoup);
        ASSERT_NE(nullptr, pZone);
        c.kivo.insert({{6, 6}, {2.5, 3.5}, {-1, 1}, {11, 2}});
        EXPECT_NEAR(areaOf(vSoup), pZone->getArea2D(), 1e-9);
        zoned::expectNearArea(400, pOuter->getArea2D());
        zoned::expectNearArea(16, pBeside->getArea2D());
    }
}

TEST(ImportedSoups, areHeardOfAndAListenerMayStopThem) {
    struct Listener : MsgBase {
        explicit Listener(int num) : numLeft(num) {}
        void update(MsgType, const char* label, double progress) override {
            if (label != std::string("import triangles")) return;
            EXPECT_LE(last, progress);
            last = progress;
            if (numLeft-- == 0) throw std::runtime_error("enough");
        }
        int numLeft;
        double last = 0;
    };
    Rng rng(5);
    const Soup vSoup = shuffled(rng, gridSoup(rng, isSanitized ? 20 : 60, FALLING));
    for (int num = -1; num < 20; ++num) {
        Constrained c;
        c.kivo.insert({{0, 0}, {5, -5}, {-7, 3}});
        Listener listener(num);
        c.kivo.subscribe(MSG_PROGRESS, &listener);
        try {
            const CapturedMessages captured;
            EXPECT_NE(nullptr, c.kivo.importTriangles(vSoup));
            EXPECT_EQ(1, listener.last);
        } catch (const std::runtime_error&) {
            const CapturedMessages captured;
            EXPECT_TRUE(num >= 0 && c.kivo.checkValidity(true, "stopped"));
        }
        c.kivo.unsubscribe(MSG_PROGRESS, &listener);
        expectImported(c, vSoup);
    }
}

TEST(ImportedSoups, thatMemoryDoesNotSufficeForLeaveAValidTriangulation) {
    Rng rng(9);
    Soup vSoup = gridSoup(rng, 4, ANY);
    for (int i = 0; i < 100; ++i)
        flipSome(rng, vSoup);
    bool bDone = false;
    for (long num = 0; !bDone && !HasFailure(); ++num) {
        SCOPED_TRACE(num);
        Constrained c;
        c.kivo.insert({{2, -3}, {-3, 3}, {7, 7}, {1, 2}, {3, 3}});
        c.add({{{0, -2}, {0, 6}}}, CIS_CONSTRAINED_DELAUNAY);
        const Points vBefore = verticesOf(c.kivo);
        try {
            const CapturedMessages captured;
            const MemoryLimit limit(num, num % 2 == 0);
            c.kivo.importTriangles(vSoup);
            bDone = memoryLimit::numLeft > 0;
        } catch (const std::bad_alloc&) {
        }
        const Points vAfter = verticesOf(c.kivo);
        for (const Point2& p : vBefore)
            EXPECT_TRUE(std::count(vAfter.begin(), vAfter.end(), p) == 1);
        EXPECT_TRUE(quietly([&] { return c.kivo.checkValidity(true, "short of memory"); }));
        expectImported(c, vSoup);
    }
}

// No triangle is Delaunay, and each edge crosses many that are.
TEST(ImportedSoups, mayBeFansOfManyCorners) {
    Rng rng(10);
    for (const int direction : {-1, 1}) {
        const int num = isSanitized ? 200 : 2000;
        Soup vSoup;
        for (int i = 0; i + 2 < num; ++i)
            for (const double x : {i, i + 1, num - 1})
                vSoup.emplace_back(x, direction * x * x);
        expectRoundTrip(rng, vSoup);
    }
}

TEST(LargeSoups, giveTheSameTrianglesByAnyNumberOfThreads) {
    Rng rng(8);
    const Soup vSoup = shuffled(rng, gridSoup(rng, isSanitized ? 100 : 340, ANY));
    std::vector<std::vector<oracle::Corners>> vLists;
    for (const int numThreads : {1, 2, 3}) {
        Kivo_2D kivo;
        kivo.setNumCPU(numThreads);
        const Zone2* const pZone = quietly([&] { return kivo.importTriangles(vSoup); });
        ASSERT_NE(nullptr, pZone);
        EXPECT_EQ(vSoup.size() / 3, pZone->getNumberOfTriangles());
        vLists.push_back(oracle::triangleList(kivo));
        EXPECT_EQ(vLists[0], vLists.back());
    }
    std::sort(vLists[0].begin(), vLists[0].end());
    EXPECT_TRUE(oracle::soupFacts(vSoup).vTriangles == vLists[0]);
}

TEST(RoundTrips, giveTheTrianglesOfNastySetsWithAndWithoutConstraints) {
    Rng rng(6);
    for (const nastySets::Kind& kind : nastySets::all()) {
        for (int round = 0; round < numRounds / 5 && !HasFailure(); ++round) {
            SCOPED_TRACE(std::string(kind.name) + " " + std::to_string(round));
            const Points vPoints = kind.make(rng);
            Kivo_2D kivo;
            kivo.insert(vPoints);
            if (const Segments v = anySegments(rng, vPoints, below(rng, 6)); !v.empty())
                zoned::add(kivo, v, false);
            if (!kivo.is2D()) continue;
            const Soup vSoup = soupOf(kivo);
            expectRoundTrip(rng, vSoup);
            expectRoundTrip(rng, partsOf(rng, vSoup, 2)[0]);
        }
    }
}

TEST_P(RealSoups, giveTheTrianglesOfAllDataWithTheirConstraintsAndOfWhatTheseEnclose) {
    Rng rng(7);
    const std::vector<Path> vFiles = filesIn(GetParam(), ".xy");
    ASSERT_FALSE(vFiles.empty()) << "no input in " << GetParam().path;
    for (const Path& path : vFiles) {
        SCOPED_TRACE(path.filename().string());
        Kivo_2D kivo;
        kivo.insert(readPoints(path));
        if (!kivo.is2D()) continue;
        const Segments vSegments = readSegments(Path(path).replace_extension(".seg"));
        ConstraintGraph2* const pGraph = vSegments.empty() ? nullptr : zoned::add(kivo, vSegments, false);
        expectRoundTrip(rng, soupOf(kivo));
        if (pGraph == nullptr) continue;
        Zone2* const pZone = quietly([&] { return kivo.createParityZone({pGraph}); });
        if (pZone == nullptr) continue;
        expectRoundTrip(rng, soupOf(zoned::trianglesOf(pZone)));
        if (vSegments.size() > 2000) continue;
        quietly([&] { kivo.refine(pZone, 25, 0, HUGE_VAL, true); });
        expectRoundTrip(rng, soupOf(zoned::trianglesOf(pZone)));
        expectRoundTrip(rng, soupOf(kivo));
    }
}
