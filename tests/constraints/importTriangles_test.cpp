#include "tests/support/memoryLimit.h"
#include "tests/support/nastySets.h"
#include "tests/support/realData.h"
#include "tests/support/sanitized.h"
#include "tests/support/triangleSoups.h"

#include <cmath>
#include <limits>
#include <stdexcept>

// Soups that fit become part of the triangulation as they are, wherever they come from.

using namespace triangleSoups;
using namespace realData;

namespace {

constexpr int numRounds = isSanitized ? 30 : 300;

struct Soups : testing::TestWithParam<Frame> {};
INSTANTIATE_TEST_SUITE_P(of, Soups, testing::ValuesIn(aFrames),
                         [](const auto& info) { return info.param.name; });

struct RealSoups : testing::TestWithParam<Folder> {};
INSTANTIATE_TEST_SUITE_P(in, RealSoups, testing::ValuesIn(folders()),
                         [](const auto& info) { return info.param.name; });

// Parts of a soup, by any triangles.
std::vector<Soup> partsOf(Rng& rng, const Soup& vSoup, std::size_t num) {
    std::vector<Soup> vParts(num);
    for (std::size_t i = 0, part = 0; i < vSoup.size(); ++i) {
        if (i % 3 == 0) part = any(rng, num);
        vParts[part].push_back(vSoup[i]);
    }
    std::erase(vParts, Soup());
    return vParts;
}

// Imports the triangles into nothing, in any order, and finds them again.
void expectRoundTrip(Rng& rng, const Soup& vSoup) {
    Constrained c;
    expectImported(c, shuffled(rng, vSoup));
}

struct Listener : MsgBase {
    explicit Listener(long num) : numLeft(num) {}
    void update(MsgType, const char* label, double progress) override {
        if (std::string_view(label) != "import triangles") return;
        EXPECT_LE(last, progress);
        last = progress;
        if (numLeft-- == 0) throw std::runtime_error("enough");
    }
    long numLeft;
    double last = 0;
};

} // namespace

// Where nothing is, beside some vertices, within a zone that they may touch, or where all corners are
// vertices and some join constraints: there, triangles replace others.
TEST_P(Soups, comeInPartsSideBySideAndTwice) {
    Rng rng(1);
    std::size_t numImported = 0;
    for (int round = 0; round < numRounds && !HasFailure(); ++round) {
        SCOPED_TRACE(round);
        const Soup vSoup = goodSoup(rng, GetParam(), round % 10 == 0 ? 100 : 30);
        std::vector<Soup> vParts = partsOf(rng, vSoup, 1 + any(rng, 4));
        if (rng() % 4 == 0) vParts.push_back(vSoup);
        if (rng() % 2 == 0) vParts.push_back(Soup(vParts[0]));
        Constrained c;
        if (rng() % 4 == 0) c.kivo.insert({vSoup[0], vSoup[1], GetParam().place(-20, -20)});
        if (rng() % 2 == 0) {
            c.kivo.insert(vSoup);
            if (rng() % 2 == 0) vParts.resize(1);
            for (const Segment2& s : anySegments(rng, vSoup, below(rng, 8)))
                if (oracle::soupFaults(vParts[0], {}, {s}).empty()) c.add({s}, CIS_CONSTRAINED_DELAUNAY);
        }
        const double low = rng() % 2 == 0 ? 0 : -2;
        const Segments vRing = zoned::ringOf({GetParam().place(low, low), GetParam().place(20, low),
                                              GetParam().place(20, 20), GetParam().place(low, 20)});
        const Zone2* pRound = nullptr;
        if (rng() % 4 == 0)
            pRound = c.kivo.createZone(c.add(vRing, ConstraintInsertionStrategy(rng() % 2), true), ZL_INSIDE);
        std::vector<std::pair<Zone2*, oracle::SoupFacts>> vImported;
        for (const Soup& v : vParts)
            if (oracle::soupFaults(v, verticesOf(c.kivo), segmentsOf(constraintEdges(c))).empty())
                vImported.emplace_back(expectImported(c, v), oracle::soupFacts(v));
        if (pRound != nullptr) zoned::expectNearArea(oracle::areaOf(vRing), pRound->getArea2D());
        for (const auto& [pZone, facts] : vImported)
            expectZoneOf(c.kivo, pZone, facts);
        numImported += vImported.size();
    }
    EXPECT_LE(numRounds, numImported);
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

// By a listener that throws, or where memory runs out: beside what is there, or (kinds 2 and 3) where nothing
// is.
TEST(ImportedSoups, thatEndEarlyLeaveAValidTriangulation) {
    constexpr long all = std::numeric_limits<long>::max();
    Rng rng(5);
    for (const int kind : {0, 1, 2, 3}) {
        const bool bByListener = kind % 2 == 0;
        Soup vSoup = gridSoup(rng, !bByListener ? 4 : isSanitized ? 20 : 60);
        flipSome(rng, vSoup, 100);
        bool bDone = false;
        for (long num = 0; !bDone && !HasFailure(); ++num) {
            SCOPED_TRACE(num);
            Constrained c;
            if (kind < 2) {
                c.kivo.insert({{2, -3}, {-3, 3}, {7, -7}, {1, 2}, {3, 3}});
                c.add({{{0, -2}, {0, 6}}}, CIS_CONSTRAINED_DELAUNAY);
            }
            const Points vBefore = verticesOf(c.kivo);
            Listener listener(bByListener ? num : all);
            c.kivo.subscribe(MSG_PROGRESS, &listener);
            const CapturedMessages captured;
            try {
                const MemoryLimit limit(bByListener ? all : num, num % 2 == 0);
                EXPECT_NE(nullptr, c.kivo.importTriangles(vSoup));
                bDone = listener.numLeft >= 0 && memoryLimit::numLeft > 0;
                EXPECT_EQ(1, listener.last);
            } catch (const std::exception&) {
            }
            c.kivo.unsubscribe(MSG_PROGRESS, &listener);
            const Points vAfter = verticesOf(c.kivo);
            for (const Point2& p : vBefore)
                EXPECT_EQ(1, std::count(vAfter.begin(), vAfter.end(), p));
            EXPECT_TRUE(!c.kivo.is2D() || c.kivo.checkValidity(true, "ended early"));
            expectImported(c, vSoup);
        }
    }
}

// No triangle is Delaunay, and each edge crosses many that are.
TEST(ImportedSoups, mayBeFansOfManyCorners) {
    Rng rng(10);
    const int num = isSanitized ? 200 : 2000;
    for (const int direction : {-1, 1}) {
        Soup vSoup;
        for (int i = 0; i + 2 < num; ++i)
            for (const double x : {i, i + 1, num - 1})
                vSoup.emplace_back(x, direction * x * x);
        expectRoundTrip(rng, vSoup);
    }
}

TEST(LargeSoups, giveTheSameTrianglesByAnyNumberOfThreads) {
    Rng rng(8);
    const Soup vSoup = shuffled(rng, gridSoup(rng, isSanitized ? 100 : 340));
    const std::vector<oracle::Corners> vExpected = oracle::soupFacts(vSoup).vTriangles;
    std::vector<oracle::Corners> vFirst;
    for (const int numThreads : {1, 2, 3}) {
        const CapturedMessages captured;
        Kivo_2D kivo;
        kivo.setNumCPU(numThreads);
        const Zone2* const pZone = kivo.importTriangles(vSoup);
        ASSERT_NE(nullptr, pZone);
        EXPECT_EQ(vExpected.size(), pZone->getNumberOfTriangles());
        EXPECT_TRUE(vExpected == oracle::triangleSet(kivo));
        if (numThreads == 1) vFirst = oracle::triangleList(kivo);
        EXPECT_TRUE(vFirst == oracle::triangleList(kivo));
    }
}

TEST(RoundTrips, giveTheTrianglesOfNastySetsWithAndWithoutConstraints) {
    Rng rng(6);
    for (const nastySets::Kind& kind : nastySets::all()) {
        for (int round = 0; round < numRounds / 5 && !HasFailure(); ++round) {
            SCOPED_TRACE(std::string(kind.name) + " " + std::to_string(round));
            const Points vPoints = kind.make(rng);
            Constrained c;
            c.kivo.insert(vPoints);
            if (!c.kivo.is2D()) continue;
            c.addOneByOne(anySegments(rng, vPoints, below(rng, 6)));
            expectRoundTrip(rng, partsOf(rng, soupOf(c.kivo), 1 + any(rng, 2))[0]);
        }
    }
}

// All triangles, or those that constraints enclose, which small sets also have refined.
TEST_P(RealSoups, giveTheTrianglesOfAllData) {
    Rng rng(7);
    const std::vector<Path> vFiles = filesIn(GetParam(), ".xy");
    ASSERT_FALSE(vFiles.empty()) << "no input in " << GetParam().path;
    for (const Path& path : vFiles) {
        SCOPED_TRACE(path.filename().string());
        Kivo_2D kivo;
        kivo.insert(readPoints(path));
        if (!kivo.is2D()) continue;
        std::vector<Soup> vSoups;
        const Segments vSegments = readSegments(Path(path).replace_extension(".seg"));
        ConstraintGraph2* const pGraph = vSegments.empty() ? nullptr : zoned::add(kivo, vSegments, false);
        {
            const CapturedMessages captured;
            Zone2* const pZone = pGraph == nullptr ? nullptr : kivo.createParityZone({pGraph});
            if (pZone == nullptr || vSegments.size() < 400) vSoups.push_back(soupOf(kivo));
            if (pZone != nullptr) vSoups.push_back(soupOf(zoned::trianglesOf(pZone)));
            if (vSoups.size() == 2) {
                kivo.refine(pZone, 25, 0, HUGE_VAL, true);
                vSoups.push_back(soupOf(kivo));
            }
        }
        for (const Soup& vSoup : vSoups)
            expectRoundTrip(rng, vSoup);
    }
}

// By other programs.
TEST_P(RealSoups, mayBePublishedTriangulations) {
    Rng rng(11);
    const std::vector<Path> vFiles = filesIn(GetParam(), ".tri");
    EXPECT_TRUE(vFiles.size() >= 50 || GetParam().name != std::string("open"));
    for (const Path& path : vFiles) {
        SCOPED_TRACE(path.filename().string());
        const Points vPoints = readPoints(Path(path).replace_extension().replace_extension(".xy"));
        Soup vSoup;
        for (const double number : readNumbers(path))
            vSoup.push_back(vPoints.at(std::size_t(number)));
        expectRoundTrip(rng, vSoup);
    }
}
