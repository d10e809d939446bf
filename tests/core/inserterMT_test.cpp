// Batches on several threads, in chunks so small that few points make many of them.
#include "Kivo_2D.h"
#include "core/Dt2.h"
#include "tests/oracle/exact.h"
#include "tests/support/capture.h"
#include "tests/support/constrained.h"
#include "tests/support/expectSound.h"
#include "tests/support/files.h"
#include "tests/support/memoryLimit.h"
#include "tests/support/nastySets.h"
#include "tests/support/sanitized.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <map>
#include <optional>
#include <stdexcept>
#include <thread>

using namespace TESK_KIVO2D;
using doubles::Points;
using doubles::Rng;

namespace {

// With several threads every batch goes by chunks, with one none.
void setThreads(Kivo_2D& kivo, int numThreads, std::size_t maxChunk) {
    kivo.setNumCPU(numThreads);
    kivo.getImpl()->setBatchLimits(numThreads > 1 ? 0 : std::numeric_limits<std::size_t>::max(), maxChunk);
}

template<class Make>
Points repeat(int num, Make make) {
    Points vPoints;
    for (int i = 0; i < num; ++i)
        vPoints.push_back(make(i));
    return vPoints;
}

Point2 inBox(Rng& rng, double low, double high) {
    const double x = doubles::uniform(rng, low, high);
    return {x, doubles::uniform(rng, low, high)};
}

// Spread evenly over the unit square, always the same for a number.
Point2 numbered(int k) {
    return {std::fmod(k * 0.7548776662466927, 1), std::fmod(k * 0.5698402909980532, 1)};
}

// In clusters of a hundred, or in clusters in clusters; denser towards their middles.
template<int numLevels>
Point2 clustered(Rng& rng, int, int num) {
    Point2 p = numbered(doubles::below(rng, 1 + num / 100));
    for (int level = 1; level <= numLevels; ++level) {
        const double reach = std::pow(1e-3, level) * doubles::uniform(rng);
        const Point2 step = inBox(rng, -reach, reach);
        p = Point2(p.x() + step.x(), p.y() + step.y());
    }
    return p;
}

Point2 onCircle(Rng& rng, double radius) {
    const double angle = doubles::uniform(rng, 0, 6.283185307179586);
    return {radius * std::cos(angle), radius * std::sin(angle)};
}

template<int dx, int dy>
Point2 onLine(Rng& rng, int, int num) {
    const double t = doubles::below(rng, 4 * num);
    return {dx * t + 5, dy * t - 3};
}

// A kind of input: makes point i of num.
struct Kind {
    const char* name;
    Point2 (*make)(Rng&, int i, int num);
    Points operator()(Rng& rng, int num) const {
        return repeat(num, [&](int i) { return make(rng, i, num); });
    }
};
void PrintTo(const Kind& kind, std::ostream* pStream) { *pStream << kind.name; }

constexpr double infinity = std::numeric_limits<double>::infinity(),
                 notANumber = std::numeric_limits<double>::quiet_NaN();

const Kind uniform = {"uniform", [](Rng&r, int, int) { return inBox(r, 0, 1); }},
           line = {"line", onLine<1, 2>};
const Kind aKinds[] = {
    uniform,
    line,
    {"horizontal", onLine<1, 0>},
    {"vertical", onLine<0, 1>},
    {"slanted", onLine<3, -7>},
    {"clusters", clustered<1>},
    {"clustersInClusters", clustered<4>},
    {"grid",
     [](Rng& r, int, int num) { return nastySets::latticePoint(r, static_cast<int>(std::sqrt(num)) + 1); }},
    {"tenths", [](Rng& r, int, int) { return nastySets::latticePoint(r, 40, 0.1); }},
    {"circle", [](Rng& r, int, int) { return onCircle(r, 1); }},
    {"roundedCircle",
     [](Rng& r, int, int) {
         const Point2 p = onCircle(r, 2000);
         return Point2(std::round(p.x()), std::round(p.y()));
     }},
    {"cocircular", [](Rng& r, int, int) { return doubles::cocircular(r, 1)[0]; }},
    {"twoLines", [](Rng& r, int i, int num) { return Point2(doubles::below(r, 3 * num), i % 2); }},
    {"diagonals",
     [](Rng& r, int i, int num) {
         const double t = doubles::below(r, 2 * num) - num;
         return Point2(t, i % 2 == 0 ? t : -t);
     }},
    {"oneOutlier",
     [](Rng& r, int i, int num) { return i == num / 2 ? Point2(1e6, -3e6) : inBox(r, 0, 1e-9); }},
    {"lineAndOutlier",
     [](Rng& r, int i, int num) { return i == num / 2 ? Point2(7, 1e5) : onLine<2, 1>(r, i, num); }},
    {"fourTimesEach", [](Rng& r, int, int num) { return numbered(doubles::below(r, num / 4 + 1)); }},
    {"allTheSame", [](Rng&, int, int) { return Point2(3, 4); }},
    {"tiny", [](Rng& r, int, int) { return inBox(r, 0, 1e-300); }},
    {"huge",
     [](Rng& r, int, int) {
         const Point2 p = inBox(r, -1, 1);
         return Point2(1.7e308 * p.x(), 1.7e308 * p.y());
     }},
    {"farAway", [](Rng& r, int, int) { return inBox(r, 5e6, 5e6 + 10); }},
    {"subnormal", [](Rng& r, int, int) { return nastySets::latticePoint(r, 30, 0x1p-1074); }},
    {"notAllFinite",
     [](Rng& r, int i, int) {
         const Point2 p = inBox(r, -1, 1);
         return Point2(i % 7 == 3 ? notANumber : p.x(), i % 11 == 5 ? -infinity : p.y());
     }},
    {"allSizes",
     [](Rng& r, int, int) {
         const double x = doubles::ofSize(r, -1074, 1023);
         return Point2(x, doubles::ofSize(r, -9, 9));
     }},
};

bool isFinite(const Point2& p) { return std::isfinite(p.x()) && std::isfinite(p.y()); }

Points finiteOnes(Points vPoints) {
    std::erase_if(vPoints, [](const Point2& p) { return !isFinite(p); });
    return vPoints;
}

// Handle i is the vertex at point i, and of equal points the first has become it.
void expectHandles(const Points& vPoints, const std::vector<Point2*>& vHandles) {
    ASSERT_EQ(vPoints.size(), vHandles.size());
    std::map<Point2, std::size_t> mFirst;
    for (std::size_t i = 0; i < vPoints.size(); ++i) {
        ASSERT_EQ(isFinite(vPoints[i]), vHandles[i] != nullptr) << i;
        if (vHandles[i] == nullptr) continue;
        const std::size_t first = mFirst.emplace(vPoints[i], i).first->second;
        ASSERT_EQ(vPoints[i], *vHandles[i]) << i;
        ASSERT_EQ(vHandles[first], vHandles[i]) << i;
        ASSERT_EQ(static_cast<int>(first), vHandles[i]->getCustomIndex()) << i;
    }
}

void numberThem(Points& vPoints) {
    for (std::size_t i = 0; i < vPoints.size(); ++i)
        vPoints[i].setCustomIndex(static_cast<int>(i));
}

void expectAt(const Points& vPoints, const std::vector<Point2*>& vHandles) {
    ASSERT_EQ(vPoints.size(), vHandles.size());
    for (std::size_t i = 0; i < vPoints.size(); ++i)
        ASSERT_TRUE(vHandles[i] != nullptr && *vHandles[i] == vPoints[i]) << i;
}

// All that has an order, as a client reads it.
struct Listing {
    std::vector<oracle::Corners> vTriangles;
    std::vector<std::pair<double, double>> vVertices;
    std::string obj;
    bool operator==(const Listing&) const = default;
};

Listing listingOf(const Kivo_2D& kivo) {
    Listing listing{oracle::triangleList(kivo), {}, ""};
    std::vector<Point2*> vVertices;
    kivo.getVertexPointers(vVertices);
    for (const Point2* p : vVertices)
        listing.vVertices.emplace_back(p->x(), p->y());
    if (kivo.writeObj("threads.obj")) listing.obj = readFile("threads.obj");
    return listing;
}

// Triangulates by chunks and checks all laws, also by the library's own means; returns the triangles.
std::vector<oracle::Corners> expectTriangulated(const Points& vPoints, int numThreads, std::size_t maxChunk) {
    const CapturedMessages messages;
    Kivo_2D kivo;
    setThreads(kivo, numThreads, maxChunk);
    std::vector<Point2*> vHandles;
    kivo.insert(vPoints, vHandles);
    expectHandles(vPoints, vHandles);
    expectSound(kivo, finiteOnes(vPoints));
    EXPECT_TRUE(kivo.checkValidity(true, "chunks"));
    for (std::size_t i = 0; i < vPoints.size(); i += 1 + vPoints.size() / 20) {
        EXPECT_TRUE(!kivo.is2D() || !isFinite(vPoints[i]) || kivo.locate(vPoints[i]) != nullptr);
    }
    return oracle::triangleSet(kivo);
}

struct Batches : testing::TestWithParam<Kind> {};
INSTANTIATE_TEST_SUITE_P(of, Batches, testing::ValuesIn(aKinds),
                         [](const auto& info) { return info.param.name; });

} // namespace

TEST_P(Batches, areTheDelaunayTriangulationOfTheSequentialOneWhateverTheChunks) {
    Rng rng(41);
    for (const int num : {0, 1, 2, 3, 4, 5, 8, 13, 40, 100, 1000}) {
        for (const std::size_t maxChunk : {1u, 2u, 3u, 5u, 17u, 100u, 5000u}) {
            if (num == 1000 && maxChunk % 2 == 0 && maxChunk != 100) continue;
            SCOPED_TRACE(testing::Message() << num << " points, chunks of " << maxChunk);
            Points vPoints = GetParam()(rng, num);
            numberThem(vPoints);
            const int numThreads = 2 + num % 3;
            const auto vTriangles = expectTriangulated(vPoints, numThreads, maxChunk);
            const CapturedMessages messages;
            Kivo_2D sequential;
            setThreads(sequential, 1, maxChunk);
            sequential.insert(vPoints);
            EXPECT_TRUE(!oracle::isUnique(sequential) || oracle::triangleSet(sequential) == vTriangles);
            if (HasFailure()) FAIL() << (num <= 100 ? doubles::hex(vPoints) : "");
        }
    }
}

TEST_P(Batches, areTheSameToTheByteForAnyNumberOfThreadsAndInEveryRun) {
    Rng rng(42);
    for (const int num : {60, isSanitized ? 600 : 3000}) {
        const Points vPoints = GetParam()(rng, num), vMore = GetParam()(rng, num);
        for (const std::size_t maxChunk : {7u, 64u}) {
            std::optional<Listing> first, second;
            for (const int numThreads : {1, 2, 2, 3, 4, 8, 64}) {
                SCOPED_TRACE(testing::Message() << num << " points, " << numThreads << " threads");
                Kivo_2D kivo;
                kivo.setNumCPU(numThreads);
                kivo.getImpl()->setBatchLimits(0, maxChunk);
                const CapturedMessages messages;
                kivo.insert(vPoints);
                if (!first) first = listingOf(kivo);
                ASSERT_TRUE(*first == listingOf(kivo));
                kivo.insert(vMore); // with one thread not by chunks, as it is no larger than what is there
                if (!second && numThreads > 1) second = listingOf(kivo);
                ASSERT_TRUE(numThreads == 1 || *second == listingOf(kivo));
            }
        }
    }
}

TEST(ParallelBatches, beginAtAHundredThousandPoints) {
    Rng rng(43);
    const Points vPoints = Kind{"", clustered<1>}(rng, 100000);
    for (const std::size_t num : {vPoints.size() - 1, vPoints.size()}) {
        const Points vBatch(vPoints.begin(), vPoints.begin() + static_cast<std::ptrdiff_t>(num));
        Kivo_2D usual, chunked, sequential;
        usual.setNumCPU(2);
        setThreads(chunked, 3, 32768);
        setThreads(sequential, 1, 32768);
        for (Kivo_2D* const pKivo : {&usual, &chunked, &sequential})
            pKivo->insert(vBatch);
        const auto vUsual = oracle::triangleList(usual);
        EXPECT_EQ(num == vPoints.size(), vUsual == oracle::triangleList(chunked));
        EXPECT_EQ(num < vPoints.size(), vUsual == oracle::triangleList(sequential));
        EXPECT_EQ(oracle::triangleSet(sequential), oracle::triangleSet(chunked));
    }
}

TEST(ParallelBatches, ofManyPointsInManyChunksAreSound) {
    Rng rng(44);
    for (const Kind& kind : aKinds) {
        SCOPED_TRACE(kind.name);
        Points vPoints = kind(rng, isSanitized ? 3000 : 20000);
        numberThem(vPoints);
        expectTriangulated(vPoints, 4, 300);
    }
}

// Batches, removals and single points in any order, on few points and places so that much coincides.
TEST(ParallelBatches, goOnFromWhateverIsThereAndKeepWhatWasHandedOut) {
    Rng rng(45);
    for (int round = 0; round < 150 && !testing::Test::HasFailure(); ++round) {
        const CapturedMessages messages;
        const Kind& kind = aKinds[static_cast<std::size_t>(round) % std::size(aKinds)];
        SCOPED_TRACE(testing::Message() << round << " " << kind.name);
        Kivo_2D kivo;
        setThreads(kivo, 2 + round % 3, 1 + rng() % 30);
        std::map<Point2, Point2*> mHeld;
        if (round % 3 == 0) { // stored on a line at first
            for (const Point2& p : line(rng, 9))
                mHeld[p] = kivo.insert(p);
        }
        for (int step = 0; step < 6; ++step) {
            const Points vBatch = kind(rng, doubles::below(rng, step % 2 == 0 ? 200 : 20));
            std::vector<Point2*> vHandles;
            kivo.insert(vBatch, vHandles);
            for (std::size_t i = 0; i < vBatch.size(); ++i) {
                if (!isFinite(vBatch[i])) continue;
                ASSERT_TRUE(vHandles[i] != nullptr && *vHandles[i] == vBatch[i]);
                ASSERT_EQ(vHandles[i], mHeld.emplace(vBatch[i], vHandles[i]).first->second);
            }
            for (int i = doubles::below(rng, 30); i > 0 && !mHeld.empty(); --i) {
                const auto at = std::next(mHeld.begin(), doubles::below(rng, static_cast<int>(mHeld.size())));
                kivo.remove(at->second);
                mHeld.erase(at);
            }
            Points vExpected;
            for (const auto& [point, pVtx] : mHeld) {
                ASSERT_EQ(point, *pVtx);
                vExpected.push_back(point);
            }
            expectSound(kivo, vExpected);
        }
    }
}

TEST(ParallelBatches, keepConstraints) {
    Rng rng(46);
    for (int round = 0; round < 40 && !testing::Test::HasFailure(); ++round) {
        Constrained c;
        setThreads(c.kivo, 2, 10);
        if (round % 2 == 0) c.kivo.insert(uniform(rng, 50));
        Segments vSegments;
        for (int i = 0; i < 5; ++i)
            vSegments.emplace_back(nastySets::latticePoint(rng, 8, 0.125), inBox(rng, 0, 1));
        c.add(vSegments, ConstraintInsertionStrategy(round % 4 / 2));
        const Points vBatch = repeat(300, [&](int) { return nastySets::latticePoint(rng, 40, 0.025); });
        std::vector<Point2*> vHandles;
        c.kivo.insert(vBatch, vHandles);
        expectAt(vBatch, vHandles);
        expectConstrained(c);
    }
}

namespace {

// Notes what it hears; may end the batch.
struct Listener : MsgBase {
    void update(MsgType, const char*, double progress) override {
        bHereOnly = bHereOnly && std::this_thread::get_id() == home;
        vProgress.push_back(progress);
        if (numUntilThrow-- == 0) throw std::runtime_error("enough");
    }
    const std::thread::id home = std::this_thread::get_id();
    bool bHereOnly = true;
    std::vector<double> vProgress;
    int numUntilThrow = -1;
};

// Meddles with the triangulation that is being made.
struct Meddler : MsgBase {
    explicit Meddler(Kivo_2D& itsKivo) : kivo(itsKivo) {}
    void update(MsgType, const char*, double) override {
        kivo.locate({0.3, 0.3});
        kivo.insert(Point2(0.1 * ++numCalls, 2));
        kivo.insert(Points{{0.1 * numCalls, 3}, {-1, -1}});
        std::vector<Segment2> vSegments{{Point2(0, 0), Point2(1, 1)}};
        kivo.createConstraint(vSegments, CIS_CONSTRAINED_DELAUNAY);
    }
    Kivo_2D& kivo;
    int numCalls = 0;
};

// Some vertices, and a batch of more or fewer than those.
struct Begun {
    Begun(Rng& rng, int round) {
        setThreads(kivo, 2 + round % 3, 20);
        vOld = round % 2 == 0 ? uniform(rng, 60) : line(rng, 30);
        if (round % 3 != 0) kivo.insert(vOld, vOldHandles);
        if (round % 3 == 0) vOld.clear();
        vBatch = uniform(rng, 500);
        vBefore = oracle::triangleSet(kivo);
    }
    // After a batch that came to nothing. When memory was out for that, too, the next insertion triangulates.
    void expectAsBefore() {
        if (!vBefore.empty() && !kivo.is2D()) kivo.insert(Points{vOld.front()});
        EXPECT_EQ(vBefore, oracle::triangleSet(kivo));
        expectSound(kivo, vOld);
        for (std::size_t i = 0; i < vOldHandles.size(); ++i)
            EXPECT_TRUE(*vOldHandles[i] == vOld[i] && kivo.insert(vOld[i]) == vOldHandles[i]);
    }
    void expectCompleted() {
        kivo.insert(vBatch);
        Points vAll = vBatch;
        vAll.insert(vAll.end(), vOld.begin(), vOld.end());
        expectSound(kivo, vAll);
    }
    Kivo_2D kivo;
    Points vOld, vBatch;
    std::vector<Point2*> vOldHandles;
    std::vector<oracle::Corners> vBefore;
};

} // namespace

TEST(ParallelBatches, tellListenersOnTheCallersThreadHowFarTheyAre) {
    Rng rng(47);
    for (const int numThreads : {2, 8}) {
        for (const int num : {10, 30000}) {
            Kivo_2D kivo;
            setThreads(kivo, numThreads, 500);
            Listener listener;
            kivo.subscribe(MSG_PROGRESS, &listener);
            kivo.insert(uniform(rng, num));
            kivo.unsubscribe(MSG_PROGRESS, &listener);
            EXPECT_TRUE(listener.bHereOnly);
            const std::vector<double>& v = listener.vProgress;
            ASSERT_FALSE(v.empty());
            EXPECT_TRUE(std::is_sorted(v.begin(), v.end())) << testing::PrintToString(v);
            EXPECT_LE(0, v.front());
            EXPECT_EQ(1, v.back());
            EXPECT_EQ(1, std::count(v.begin(), v.end(), 1.0));
        }
    }
}

TEST(ParallelBatches, areSafeFromListenersThatMeddle) {
    Rng rng(50);
    for (const int num : {300, 20000}) {
        Kivo_2D kivo;
        setThreads(kivo, 3, 200);
        kivo.insert(uniform(rng, 100));
        Meddler meddler(kivo);
        const CapturedMessages messages;
        kivo.subscribe(MSG_PROGRESS, &meddler);
        std::vector<Point2*> vHandles;
        const Points vBatch = uniform(rng, num);
        kivo.insert(vBatch, vHandles);
        kivo.unsubscribe(MSG_PROGRESS, &meddler);
        EXPECT_LT(0, meddler.numCalls);
        expectAt(vBatch, vHandles);
        EXPECT_TRUE(kivo.checkValidity(true, "meddled"));
    }
}

TEST(ParallelBatches, thatAListenerEndsLeaveAllAsItWas) {
    Rng rng(48);
    for (int round = 0; round < 12; ++round) {
        for (int numMessages = 0; !testing::Test::HasFailure(); numMessages += 1 + numMessages / 4) {
            Begun begun(rng, round);
            Listener listener;
            listener.numUntilThrow = numMessages;
            begun.kivo.subscribe(MSG_PROGRESS, &listener);
            bool bStopped = false;
            try {
                begun.kivo.insert(begun.vBatch);
            } catch (const std::runtime_error&) {
                bStopped = true;
            }
            begun.kivo.unsubscribe(MSG_PROGRESS, &listener);
            EXPECT_EQ(static_cast<int>(listener.vProgress.size()) > numMessages, bStopped);
            if (bStopped && listener.vProgress.back() < 1) begun.expectAsBefore();
            begun.expectCompleted();
            if (!bStopped) break;
        }
    }
}

TEST(ParallelBatches, forWhichMemoryRunsOutAnywhereLeaveAllAsItWas) {
    Rng rng(49);
    for (int round = 0; round < 12; ++round) {
        int numStopped = 0;
        bool bRanOut = true;
        for (long numAll = 0; bRanOut && !testing::Test::HasFailure();
             numAll += 1 + numAll / (isSanitized ? 8 : 50)) {
            SCOPED_TRACE(testing::Message() << round << ", after " << numAll);
            const CapturedMessages messages;
            Begun begun(rng, round);
            std::vector<Point2*> vHandles(begun.vBatch.size());
            bool bStopped = false;
            try {
                const MemoryLimit limit(numAll, round % 4 < 2);
                begun.kivo.insert(begun.vBatch, vHandles);
                bRanOut = memoryLimit::numLeft <= 0; // fewer threads will do
            } catch (const std::bad_alloc&) {
                bStopped = true;
            }
            if (bStopped) {
                begun.expectAsBefore();
                EXPECT_EQ(
                    0, std::count_if(vHandles.begin(), vHandles.end(), [](auto* p) { return p != nullptr; }));
            }
            begun.expectCompleted();
            numStopped += bStopped;
        }
        EXPECT_LT(5, numStopped);
    }
}
