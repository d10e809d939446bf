#include "Kivo_2D.h"
#include "core/Dt2.h"
#include "tests/oracle/exact.h"
#include "tests/support/capture.h"
#include "tests/support/expectSound.h"
#include "tests/support/nastySets.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <limits>
#include <numeric>
#include <stdexcept>

using namespace TESK_KIVO2D;
using doubles::Points;
using doubles::Rng;

namespace {

constexpr int numSets = 150; // of each kind

void insertOneByOne(Kivo_2D& kivo, const Points& vPoints) {
    for (const Point2& p : vPoints) {
        const Point2* pVtx = kivo.insert(p);
        ASSERT_NE(nullptr, pVtx);
        EXPECT_EQ(p, *pVtx);
    }
}

void insertInBatchesOf(std::size_t size, Kivo_2D& kivo, const Points& vPoints) {
    for (std::size_t i = 0; i < vPoints.size(); i += size)
        kivo.insert(
            Points(vPoints.begin() + static_cast<std::ptrdiff_t>(i),
                   vPoints.begin() + static_cast<std::ptrdiff_t>(std::min(i + size, vPoints.size()))));
}

// Ways to insert the same points.
struct Way {
    const char* name;
    void (*insert)(Kivo_2D&, const Points&);
};
const Way aWays[] = {
    {"batch", [](Kivo_2D& kivo, const Points& vPoints) { kivo.insert(vPoints); }},
    {"oneByOne", insertOneByOne},
    {"batchesOf3", [](Kivo_2D& kivo, const Points& vPoints) { insertInBatchesOf(3, kivo, vPoints); }},
    {"oneThenBatch",
     [](Kivo_2D& kivo, const Points& vPoints) {
         insertOneByOne(kivo, Points(vPoints.begin(), vPoints.begin() + 1));
         kivo.insert(vPoints);
     }},
    {"batchThenAllAgain",
     [](Kivo_2D& kivo, const Points& vPoints) {
         kivo.insert(vPoints);
         insertOneByOne(kivo, vPoints);
     }},
};

struct Insertion : testing::TestWithParam<nastySets::Kind> {};
INSTANTIATE_TEST_SUITE_P(of, Insertion, testing::ValuesIn(nastySets::all()),
                         [](const auto& info) { return info.param.name; });

// Handle i is the vertex at input i, equal points share one, and that is the first of them.
void expectHandles(const Points& vInput, Point2* const* aHandles) {
    for (std::size_t i = 0; i < vInput.size(); ++i) {
        ASSERT_NE(nullptr, aHandles[i]) << doubles::hex(vInput);
        const auto first = std::find(vInput.begin(), vInput.end(), vInput[i]) - vInput.begin();
        EXPECT_EQ(vInput[i], *aHandles[i]) << doubles::hex(vInput);
        EXPECT_EQ(first, aHandles[i]->getCustomIndex()) << doubles::hex(vInput);
        EXPECT_EQ(aHandles[first], aHandles[i]) << doubles::hex(vInput);
    }
}

void numberThem(Points& vPoints) {
    for (std::size_t i = 0; i < vPoints.size(); ++i)
        vPoints[i].setCustomIndex(static_cast<int>(i));
}

// The sign of q against each edge, exact.
bool contains(const Triangle2& t, const Point2& q) {
    for (int i = 0; i < 3; ++i) {
        if (oracle::orientation(*t.getCorner(i), *t.getCorner((i + 1) % 3), q) < 0) return false;
    }
    return true;
}

void expectLocated(const Kivo_2D& kivo, const Point2& q) {
    std::vector<Triangle2*> vTriangles;
    kivo.getTrianglePointers(vTriangles);
    const bool bInside = std::any_of(vTriangles.begin(), vTriangles.end(),
                                     [&](const Triangle2* pT) { return contains(*pT, q); });
    const Triangle2* pFound = kivo.locate(q);
    EXPECT_EQ(bInside, pFound != nullptr) << doubles::hex({q});
    EXPECT_TRUE(pFound == nullptr || contains(*pFound, q)) << doubles::hex({q});
}

// Stops a batch after so many progress messages.
struct Canceller : MsgBase {
    explicit Canceller(int numMessages) : numLeft(numMessages) {}
    void update(MsgType, const char*, double) override {
        if (numLeft-- == 0) throw std::runtime_error("enough");
    }
    int numLeft;
};

Points withNumbers(std::initializer_list<Point2> points) {
    Points vPoints(points);
    numberThem(vPoints);
    return vPoints;
}

const double notANumber = std::numeric_limits<double>::quiet_NaN();
const double infinity = std::numeric_limits<double>::infinity();

} // namespace

TEST_P(Insertion, givesTheDelaunayTriangulationWhicheverWayAndSilently) {
    Rng rng(11);
    for (int i = 0; i < numSets && !HasFailure(); ++i) {
        const Points vPoints = GetParam().make(rng);
        std::vector<oracle::Corners> vFirst;
        for (const Way& way : aWays) {
            SCOPED_TRACE(way.name);
            const CapturedMessages messages;
            Kivo_2D kivo;
            way.insert(kivo, vPoints);
            expectSound(kivo, vPoints);
            EXPECT_EQ("", messages.output() + messages.error());
            if (HasFailure()) break;
            if (vFirst.empty()) vFirst = oracle::triangleSet(kivo);
            EXPECT_TRUE(!oracle::isUnique(kivo) || vFirst == oracle::triangleSet(kivo))
                << doubles::hex(vPoints);
        }
    }
}

TEST_P(Insertion, doesNotDependOnTheOrderOfThePointsWhereTheTriangulationIsUnique) {
    Rng rng(12);
    for (int i = 0; i < numSets && !HasFailure(); ++i) {
        Points vPoints = GetParam().make(rng);
        Kivo_2D kivo;
        kivo.insert(vPoints);
        std::shuffle(vPoints.begin(), vPoints.end(), rng);
        Kivo_2D shuffled;
        aWays[i % 2].insert(shuffled, vPoints);
        expectSound(shuffled, vPoints);
        EXPECT_TRUE(!oracle::isUnique(kivo) || oracle::triangleSet(kivo) == oracle::triangleSet(shuffled))
            << doubles::hex(vPoints);
    }
}

TEST_P(Insertion, isTheSameListOfTrianglesForPointsTimesAPowerOfTwo) {
    if (!GetParam().bScales) return;
    Rng rng(13);
    for (int i = 0; i < numSets && !HasFailure(); ++i) {
        const Points vPoints = GetParam().make(rng);
        for (const int exponent : {-100, -1, 3, 100}) {
            Kivo_2D kivo, larger;
            aWays[i % 2].insert(kivo, vPoints);
            aWays[i % 2].insert(larger, doubles::scaled(vPoints, exponent));
            auto vExpected = oracle::triangleList(kivo);
            for (auto& corners : vExpected) {
                for (auto& [x, y] : corners) {
                    x = std::ldexp(x, exponent);
                    y = std::ldexp(y, exponent);
                }
            }
            EXPECT_EQ(vExpected, oracle::triangleList(larger)) << doubles::hex(vPoints);
        }
    }
}

TEST_P(Insertion, handsOutOneVertexForEachPointTheFirstOfEqualOnes) {
    Rng rng(14);
    for (int i = 0; i < numSets && !HasFailure(); ++i) {
        Points vPoints = GetParam().make(rng);
        numberThem(vPoints);
        Kivo_2D batch, flat, single;
        std::vector<Point2*> vHandles(3, nullptr); // what is in it goes
        batch.insert(vPoints, vHandles);
        ASSERT_EQ(vPoints.size(), vHandles.size());
        expectHandles(vPoints, vHandles.data());

        std::vector<double> vCoordinates;
        for (const Point2& p : vPoints)
            vCoordinates.insert(vCoordinates.end(), {p.x(), p.y()});
        std::vector<Point2*> vFlatHandles(vPoints.size(), nullptr);
        flat.insert(static_cast<int>(vPoints.size()), vCoordinates.data(), vFlatHandles.data());
        for (std::size_t k = 0; k < vPoints.size(); ++k) {
            ASSERT_EQ(vPoints[k], *vFlatHandles[k]);
            EXPECT_EQ(-1, vFlatHandles[k]->getCustomIndex());
        }
        EXPECT_EQ(oracle::triangleList(batch), oracle::triangleList(flat));

        std::vector<Point2*> vSingle;
        for (const Point2& p : vPoints)
            vSingle.push_back(single.insert(p));
        expectHandles(vPoints, vSingle.data());
        // A second batch of the same points finds them all and adds nothing.
        const std::vector<Point2*> vBefore = vHandles;
        batch.insert(vPoints, vHandles);
        EXPECT_EQ(vBefore, vHandles) << doubles::hex(vPoints);
    }
}

TEST_P(Insertion, isFollowedByLocatingWhatBruteForceFinds) {
    Rng rng(15);
    CapturedMessages messages;
    for (int i = 0; i < numSets / 5 && !HasFailure(); ++i) {
        const Points vPoints = GetParam().make(rng);
        Kivo_2D kivo;
        kivo.insert(vPoints);
        Points vQueries = GetParam().make(rng);
        vQueries.insert(vQueries.end(), vPoints.begin(), vPoints.end());
        for (std::size_t k = 1; k < vPoints.size(); ++k) {
            const Point2 &p = vPoints[k - 1], &q = vPoints[k];
            vQueries.emplace_back(p.x() / 2 + q.x() / 2, p.y() / 2 + q.y() / 2);
            vQueries.push_back(doubles::jittered(rng, p, 1));
        }
        for (const double far : {1e100, -1e100, DBL_MAX})
            vQueries.emplace_back(far, doubles::uniform(rng, -1, 1));
        for (const Point2& q : vQueries)
            expectLocated(kivo, q);
        EXPECT_TRUE(!HasFailure()) << doubles::hex(vPoints);
    }
    EXPECT_EQ("", messages.output());
}

TEST(InsertionOf, theFirstPointOffTheLineMakesTrianglesInEveryOrder) {
    Points vPoints = withNumbers({{0, 0}, {1, 0}, {2, 0}, {0, 1}, {1, 0}, {-0.0, 0}});
    std::sort(vPoints.begin(), vPoints.end(),
              [](const Point2& p, const Point2& q) { return p.getCustomIndex() < q.getCustomIndex(); });
    std::vector<int> vOrder(vPoints.size());
    std::iota(vOrder.begin(), vOrder.end(), 0);
    do {
        Points vInput;
        for (const int k : vOrder)
            vInput.push_back(vPoints[static_cast<std::size_t>(k)]);
        numberThem(vInput);
        for (std::size_t split = 0; split <= vInput.size() && !testing::Test::HasFailure(); ++split) {
            // The first ones singly, the rest as a batch: every vertex that was handed out stays the one.
            Kivo_2D kivo;
            std::vector<Point2*> vHandles, vRest;
            for (std::size_t i = 0; i < split; ++i)
                vHandles.push_back(kivo.insert(vInput[i]));
            kivo.insert(Points(vInput.begin() + static_cast<std::ptrdiff_t>(split), vInput.end()), vRest);
            vHandles.insert(vHandles.end(), vRest.begin(), vRest.end());
            expectHandles(vInput, vHandles.data());
            EXPECT_EQ(4u, kivo.numberOfPoints());
            EXPECT_EQ(2u, kivo.numberOfTriangles());
            expectSound(kivo, vInput);
        }
    } while (std::next_permutation(vOrder.begin(), vOrder.end()));
}

TEST(InsertionOf, pointsOnEdgesAndBeyondHullEdgesMakesTheRightNumberOfTriangles) {
    struct Row {
        const char* name;
        Point2 point;
        std::size_t numTriangles;
    };
    // Into the square (0,0) ... (4,4) with its centre: four triangles.
    const Row aRows[] = {{"inside a triangle", {2, 1}, 6},
                         {"on an inner edge", {1, 1}, 6},
                         {"on a hull edge", {2, 0}, 5},
                         {"at a vertex", {2, 2}, 4},
                         {"at a corner", {4, 4}, 4},
                         {"on the line of a hull edge", {6, 0}, 5},
                         {"beyond one hull edge", {2, -1}, 5},
                         {"beyond two hull edges", {5, 5}, 6},
                         {"far on the line of a diagonal", {-1e9, -1e9}, 6}};
    for (const Row& row : aRows) {
        SCOPED_TRACE(row.name);
        Points vPoints{{0, 0}, {4, 0}, {4, 4}, {0, 4}, {2, 2}};
        Kivo_2D kivo;
        kivo.insert(vPoints);
        ASSERT_EQ(4u, kivo.numberOfTriangles());
        kivo.insert(row.point);
        vPoints.push_back(row.point);
        EXPECT_EQ(row.numTriangles, kivo.numberOfTriangles());
        expectSound(kivo, vPoints);
    }
}

TEST(InsertionOf, pointsThatAreNotFiniteIsRefusedByNumberAndKeepsAllOthers) {
    const auto expectWarning = [](const CapturedMessages& messages, const char* location,
                                  const char* number) {
        const std::string text = messages.output(),
                          start = "      [Kivo2D-Message] " + std::string(location) + ", WARNING: ";
        EXPECT_EQ(start, text.substr(0, start.size()));
        EXPECT_NE(std::string::npos, text.substr(start.size()).find(number)) << text;
        EXPECT_EQ(1, std::count(text.begin(), text.end(), '\n')) << text;
        EXPECT_EQ("", messages.error());
    };
    Points vGood, vPoints;
    const double aBad[] = {notANumber, infinity, -infinity};
    for (int i = 0; i < 21; ++i) {
        vGood.emplace_back(i % 4, i / 4);
        vPoints.push_back(vGood.back());
        if (i % 3 == 0)
            vPoints.emplace_back(i % 2 == 0 ? aBad[i % 9 / 3] : 1.0, i % 2 == 0 ? 1.0 : aBad[i % 9 / 3]);
    }
    Kivo_2D batch, flat, single;
    std::vector<Point2*> vHandles;
    {
        CapturedMessages messages;
        batch.insert(vPoints, vHandles);
        expectWarning(messages, "Kivo_2D::insert()", "7");
    }
    std::vector<double> vCoordinates;
    for (const Point2& p : vPoints)
        vCoordinates.insert(vCoordinates.end(), {p.x(), p.y()});
    {
        CapturedMessages messages;
        flat.insert(static_cast<int>(vPoints.size()), vCoordinates.data(), nullptr);
        expectWarning(messages, "Kivo_2D::insert()", "7");
    }
    ASSERT_EQ(vPoints.size(), vHandles.size());
    for (std::size_t i = 0; i < vPoints.size(); ++i) {
        const bool bFinite = std::isfinite(vPoints[i].x()) && std::isfinite(vPoints[i].y());
        ASSERT_EQ(bFinite, vHandles[i] != nullptr);
        EXPECT_TRUE(!bFinite || *vHandles[i] == vPoints[i]);
        CapturedMessages messages;
        EXPECT_EQ(bFinite, single.insert(vPoints[i]) != nullptr);
        if (!bFinite) expectWarning(messages, "Kivo_2D::insert()", "1");
    }
    for (const Kivo_2D* pKivo : {&batch, &flat, &single})
        expectSound(*pKivo, vGood);
    for (const Point2& q : {Point2(notANumber, 0), Point2(1, infinity), Point2(-infinity, notANumber)}) {
        CapturedMessages messages;
        EXPECT_EQ(nullptr, batch.locate(q));
        expectWarning(messages, "Kivo_2D::locate()", "1");
    }
}

TEST(InsertionOf, nothingDoesNothing) {
    CapturedMessages messages;
    Kivo_2D kivo;
    Point2* pHandle = nullptr;
    double aCoordinates[] = {1, 2};
    std::vector<Point2*> vHandles(1, nullptr);
    kivo.insert(Points());
    kivo.insert(Points(), vHandles);
    EXPECT_TRUE(vHandles.empty());
    for (const int count : {0, -1, std::numeric_limits<int>::min()}) {
        kivo.insert(count, aCoordinates, &pHandle);
        kivo.insert(count, nullptr, nullptr);
    }
    EXPECT_EQ(nullptr, pHandle);
    EXPECT_EQ(0u, kivo.numberOfPoints());
    kivo.insert(1, aCoordinates, nullptr);
    EXPECT_EQ(1u, kivo.numberOfPoints());
    EXPECT_EQ(nullptr, kivo.locate({1, 2})) << "not 2-D yet";
    EXPECT_EQ("", messages.output() + messages.error());
}

TEST(InsertionOf, pointsInBoxesWithoutExtentOrBeyondDoublesIsSilentAndRight) {
    const double tiny = 0x1p-1074, huge = DBL_MAX;
    const Points aSets[] = {
        {{3, 4}},
        {{3, 4}, {3, 4}, {3, 4}},
        {{0, 0}, {-0.0, -0.0}, {0.0, -0.0}},
        {{1, 0}, {1, 5}, {1, 2}, {1, 2}},
        {{0, 1}, {5, 1}, {2, 1}},
        {{huge, huge}, {huge, huge}},
        {{-huge, 0}, {huge, 0}, {0, tiny}},
        {{-huge, -huge}, {huge, -huge}, {huge, huge}, {-huge, huge}, {0, 0}},
        {{-huge, -huge}, {huge, huge}, {0, 0}, {huge / 2, huge / 2}, {tiny, 0}},
        {{0, 0}, {1e308, 0}, {0, 1e308}, {1.7e308, 1.7e308}, {-1.7e308, 3}},
        {{0, 0}, {tiny, 0}, {0, tiny}, {tiny, tiny}, {2 * tiny, tiny}},
        {{1, 1}, {1 + 0x1p-52, 1}, {1, 1 + 0x1p-52}},
        {{0, 0}, {1, tiny}, {2, 0}, {huge, tiny}},
        {{-tiny, -huge}, {tiny, huge}, {0, 0}, {0, huge}, {-tiny, huge}},
    };
    Rng rng(16);
    for (Points vPoints : aSets) {
        for (int i = 0; i < 24 && !testing::Test::HasFailure(); ++i) {
            for (const Way& way : aWays) {
                SCOPED_TRACE(way.name);
                CapturedMessages messages;
                Kivo_2D kivo;
                way.insert(kivo, vPoints);
                expectSound(kivo, vPoints);
                for (const Point2& q : vPoints)
                    EXPECT_EQ(kivo.is2D(), kivo.locate(q) != nullptr);
                EXPECT_EQ("", messages.output() + messages.error()) << doubles::hex(vPoints);
            }
            std::shuffle(vPoints.begin(), vPoints.end(), rng);
        }
    }
}

TEST(InsertionOf, aBatchThatAListenerStopsLeavesASoundTriangulation) {
    Rng rng(20);
    Points vFirst, vPoints;
    for (int i = 0; i < 300; ++i)
        vPoints.push_back(nastySets::latticePoint(rng, 15, 0.3));
    for (int i = 0; i < 20; ++i)
        vFirst.emplace_back(i % 5, 0); // all on one line
    for (int numMessages = 0; numMessages < 103; ++numMessages) {
        for (const bool bLineBefore : {false, true}) {
            Kivo_2D kivo;
            std::vector<Point2*> vFirstHandles, vHandles;
            if (bLineBefore) kivo.insert(vFirst, vFirstHandles);
            Canceller canceller(numMessages);
            kivo.subscribe(MSG_PROGRESS, &canceller);
            bool bStopped = false;
            try {
                kivo.insert(vPoints, vHandles);
            } catch (const std::runtime_error&) {
                bStopped = true;
            }
            kivo.unsubscribe(MSG_PROGRESS, &canceller);
            EXPECT_EQ(canceller.numLeft < 0, bStopped);
            expectSound(kivo);
            for (std::size_t i = 0; i < vFirstHandles.size(); ++i)
                EXPECT_EQ(vFirst[i], *vFirstHandles[i]);
            kivo.insert(vPoints, vHandles);
            Points vAll = vPoints;
            if (bLineBefore) vAll.insert(vAll.end(), vFirst.begin(), vFirst.end());
            expectSound(kivo, vAll);
            for (std::size_t i = 0; i < vFirstHandles.size(); ++i)
                EXPECT_EQ(vFirstHandles[i], kivo.insert(vFirst[i]));
            if (testing::Test::HasFailure()) return;
        }
    }
}

TEST(InsertionOf, aBatchAnswersAndTakesInWhatItsListenerAsks) {
    struct Asker : MsgBase {
        explicit Asker(Kivo_2D& itsKivo) : kivo(itsKivo) {}
        void update(MsgType, const char*, double) override {
            if (kivo.locate({0.3, 0.3}) != nullptr) ++numFound;
            kivo.insert(Point2(++numCalls * 0.01, 0.7));
        }
        Kivo_2D& kivo;
        int numFound = 0, numCalls = 0;
    };
    Rng rng(21);
    Points vPoints;
    for (int i = 0; i < 2000; ++i)
        vPoints.push_back(nastySets::latticePoint(rng, 101, 0.01));
    Kivo_2D kivo;
    Asker asker(kivo);
    kivo.subscribe(MSG_PROGRESS, &asker);
    std::vector<Point2*> vHandles;
    kivo.insert(vPoints, vHandles);
    kivo.unsubscribe(MSG_PROGRESS, &asker);
    EXPECT_LT(50, asker.numFound);
    for (std::size_t i = 0; i < vPoints.size(); ++i)
        ASSERT_TRUE(vHandles[i] != nullptr && *vHandles[i] == vPoints[i]) << i;
    for (int i = 1; i <= asker.numCalls; ++i)
        vPoints.emplace_back(i * 0.01, 0.7);
    expectSound(kivo, vPoints);
}

TEST(InsertionOf, farQueriesLeavesTheStaticFilterAtWork) {
    Rng rng(17);
    Points vPoints;
    for (int i = 0; i < 2000; ++i) {
        const double x = doubles::uniform(rng);
        vPoints.emplace_back(x, doubles::uniform(rng));
    }
    Kivo_2D plain, asked;
    plain.insert(vPoints);
    insertOneByOne(asked, Points(vPoints.begin(), vPoints.begin() + 1000));
    EXPECT_EQ(nullptr, asked.locate({1e100, -1e300}));
    const auto before = asked.getImpl()->stageCounts();
    asked.insert(Points(vPoints.begin() + 1000, vPoints.end()));
    EXPECT_LT(asked.getImpl()->stageCounts().orientationPastStatic - before.orientationPastStatic, 10u);
    EXPECT_LT(plain.getImpl()->stageCounts().orientationPastStatic, 10u);
    expectSound(asked, vPoints);
    EXPECT_EQ(oracle::triangleSet(plain), oracle::triangleSet(asked));
}

TEST(InsertionOf, aTriangleIsFollowedByLocatingFarPointsAlmostOnTheLinesOfItsEdges) {
    Rng rng(22);
    for (int i = 0; i < 500; ++i) {
        Points vPoints;
        for (int k = 0; k < 3; ++k) {
            const double x = doubles::uniform(rng);
            vPoints.emplace_back(x, doubles::uniform(rng));
        }
        Kivo_2D kivo;
        kivo.insert(vPoints);
        for (int k = 0; k < 20; ++k) {
            const Point2 &p = vPoints[rng() % 3], &q = vPoints[rng() % 3];
            const double t = doubles::ofSize(rng, 2, 60);
            const Point2 far(p.x() + t * (q.x() - p.x()), p.y() + t * (q.y() - p.y()));
            expectLocated(kivo, doubles::jittered(rng, far, 1));
        }
    }
}

// Quadratic work would take these past every test's time limit.
TEST(InsertionOf, longLinesOneByOneTakesAboutLinearTime) {
    constexpr int num = 200000;
    Rng rng(18);
    for (const bool bShuffled : {false, true}) {
        Points vPoints;
        for (int i = 0; i < num; ++i)
            vPoints.emplace_back(3.0 * i, -7.0 * i);
        if (bShuffled) std::shuffle(vPoints.begin(), vPoints.end(), rng);
        Kivo_2D kivo(num);
        insertOneByOne(kivo, vPoints);
        insertOneByOne(kivo, Points(vPoints.begin(), vPoints.begin() + num / 10));
        EXPECT_FALSE(kivo.is2D());
        EXPECT_EQ(static_cast<std::size_t>(num), kivo.numberOfPoints());
        kivo.insert({0, 1e7});
        vPoints.emplace_back(0, 1e7);
        EXPECT_EQ(static_cast<std::size_t>(num - 1), kivo.numberOfTriangles());
        expectSound(kivo, vPoints);
    }
}

TEST(InsertionOf, manyPointsIsSoundInBatchesSinglyAndOnGrids) {
    Rng rng(19);
    for (const int num : {15, 16, 17, 1000, 20000}) {
        Points vUniform, vGrid, vClusters;
        const int side = static_cast<int>(std::sqrt(num)) + 1;
        for (int i = 0; i < num; ++i) {
            const double x = doubles::uniform(rng, -5, 5);
            vUniform.emplace_back(x, doubles::uniform(rng, 1000, 1001));
            vGrid.emplace_back(i % side, i / side);
            vClusters.push_back(doubles::jittered(rng, nastySets::latticePoint(rng, 5, 0.7), 20));
        }
        for (const Points* pPoints : {&vUniform, &vGrid, &vClusters}) {
            CapturedMessages messages;
            Kivo_2D batch, single, mixed;
            batch.insert(*pPoints);
            insertOneByOne(single, *pPoints);
            insertInBatchesOf(static_cast<std::size_t>(num) / 4 + 1, mixed, *pPoints);
            for (const Kivo_2D* pKivo : {&batch, &single, &mixed})
                expectSound(*pKivo, *pPoints);
            if (!oracle::isUnique(batch)) continue;
            EXPECT_EQ(oracle::triangleSet(batch), oracle::triangleSet(single));
            EXPECT_EQ(oracle::triangleSet(batch), oracle::triangleSet(mixed));
        }
    }
}
