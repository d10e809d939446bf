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

// Every batch goes through chunks, or none.
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

// Centre, and points about it that lie the denser the nearer.
Points clusters(Rng& rng, int num, int numLevels) {
    const Points vCentres = repeat(1 + num / 100, [&](int) { return inBox(rng, 0, 1); });
    return repeat(num, [&](int) {
        Point2 p = vCentres[rng() % vCentres.size()];
        for (int level = 1; level <= numLevels; ++level) {
            const double reach = std::pow(1e-3, level) * doubles::uniform(rng);
            const Point2 step = inBox(rng, -reach, reach);
            p = Point2(p.x() + step.x(), p.y() + step.y());
        }
        return p;
    });
}

Points onCircle(Rng& rng, int num, double radius, bool bRounded) {
    return repeat(num, [&](int) {
        const double angle = doubles::uniform(rng, 0, 6.283185307179586);
        const double x = radius * std::cos(angle), y = radius * std::sin(angle);
        return bRounded ? Point2(std::round(x), std::round(y)) : Point2(x, y);
    });
}

Points everyOneFourTimes(Rng& rng, int num) {
    Points vPoints = repeat(num / 4 + 1, [&](int) { return inBox(rng, 0, 1); });
    const Points vOnce = vPoints;
    for (int i = 0; i < 3; ++i)
        vPoints.insert(vPoints.end(), vOnce.begin(), vOnce.end());
    std::shuffle(vPoints.begin(), vPoints.end(), rng);
    return vPoints;
}

Points withoutSomeNumbers(Rng& rng, int num) {
    static constexpr double aBad[] = {std::numeric_limits<double>::quiet_NaN(),
                                      std::numeric_limits<double>::infinity(),
                                      -std::numeric_limits<double>::infinity()};
    return repeat(num, [&](int i) {
        const Point2 p = inBox(rng, -1, 1);
        if (i % 7 == 3) return Point2(aBad[i % 3], p.y());
        return i % 11 == 5 ? Point2(p.x(), aBad[i % 3]) : p;
    });
}

// A kind of input, and how many of its points.
struct Kind {
    const char* name;
    Points (*make)(Rng&, int);
};
void PrintTo(const Kind& kind, std::ostream* pStream) { *pStream << kind.name; }

Points scattered(Rng& rng, int num) {
    return repeat(num, [&](int) { return inBox(rng, 0, 1); });
}
Points timesOver(Points vPoints, double factor, double offset = 0) {
    for (Point2& p : vPoints)
        p = Point2(p.x() * factor + offset, p.y() * factor + offset);
    return vPoints;
}
template<int dx, int dy>
Points line(Rng& rng, int num) {
    return repeat(num, [&](int) {
        const double t = doubles::below(rng, 4 * num + 1);
        return Point2(dx * t + 5, dy * t - 3);
    });
}

const Kind aKinds[] = {
    {"uniform", scattered},
    {"clusters", [](Rng& r, int num) { return clusters(r, num, 1); }},
    {"clustersInClusters", [](Rng& r, int num) { return clusters(r, num, 4); }},
    {"grid",
     [](Rng& r, int num) {
         const int side = static_cast<int>(std::sqrt(num)) + 1;
         return repeat(num, [&](int) { return nastySets::latticePoint(r, side); });
     }},
    {"tenths",
     [](Rng& r, int num) { return repeat(num, [&](int) { return nastySets::latticePoint(r, 40, 0.1); }); }},
    {"circle", [](Rng& r, int num) { return onCircle(r, num, 1, false); }},
    {"roundedCircle", [](Rng& r, int num) { return onCircle(r, num, 2000, true); }},
    {"cocircular", [](Rng& r, int num) { return doubles::cocircular(r, static_cast<std::size_t>(num)); }},
    {"horizontal", line<1, 0>},
    {"vertical", line<0, 1>},
    {"rising", line<1, 1>},
    {"slanted", line<3, -7>},
    {"twoLines",
     [](Rng& r, int num) {
         return repeat(num, [&](int i) { return Point2(doubles::below(r, 3 * num + 1), i % 2); });
     }},
    {"crossedDiagonals",
     [](Rng& r, int num) {
         return repeat(num, [&](int i) {
             const double t = doubles::below(r, 2 * num + 1) - num;
             return Point2(t, i % 2 == 0 ? t : -t);
         });
     }},
    {"oneOutlier",
     [](Rng& r, int num) {
         Points vPoints = timesOver(scattered(r, num), 1e-9);
         if (!vPoints.empty()) vPoints[vPoints.size() / 2] = Point2(1e6, -3e6);
         return vPoints;
     }},
    {"lineAndOutlier",
     [](Rng& r, int num) {
         Points vPoints = line<2, 1>(r, num);
         if (!vPoints.empty()) vPoints[vPoints.size() / 2] = Point2(7, 1e5);
         return vPoints;
     }},
    {"everyOneFourTimes", everyOneFourTimes},
    {"allTheSame", [](Rng&, int num) { return repeat(num, [](int) { return Point2(3, 4); }); }},
    {"tiny", [](Rng& r, int num) { return timesOver(scattered(r, num), 1e-300); }},
    {"huge", [](Rng& r, int num) { return timesOver(scattered(r, num), 1.7e308); }},
    {"farAway", [](Rng& r, int num) { return timesOver(scattered(r, num), 10, 5e6); }},
    {"subnormal",
     [](Rng& r, int num) {
         return repeat(num, [&](int) { return nastySets::latticePoint(r, 30, 0x1p-1074); });
     }},
    {"notAllFinite", withoutSomeNumbers},
    {"allSizes",
     [](Rng& r, int num) {
         return repeat(
             num, [&](int) { return Point2(doubles::ofSize(r, -1074, 1023), doubles::ofSize(r, -9, 9)); });
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

// All that has an order, as a client reads it.
struct Listing {
    std::vector<oracle::Corners> vTriangles;
    std::vector<std::pair<double, double>> vVertices, vHull;
    std::string obj;
    bool operator==(const Listing&) const = default;
};

Listing listingOf(const Kivo_2D& kivo, const char* file) {
    Listing listing;
    std::vector<Point2*> vVertices, vHull;
    kivo.getVertexPointers(vVertices);
    if (kivo.is2D()) kivo.getConvexHull(true, vHull);
    for (const Point2* p : vVertices)
        listing.vVertices.emplace_back(p->x(), p->y());
    for (const Point2* p : vHull)
        listing.vHull.emplace_back(p->x(), p->y());
    listing.vTriangles = oracle::triangleList(kivo);
    if (file == nullptr) return listing;
    const CapturedMessages messages;
    if (kivo.writeObj(file)) listing.obj = readFile(file);
    return listing;
}

// Triangulates by chunks and checks all laws, also by the library's own means; says what came out.
Listing expectTriangulated(const Points& vPoints, int numThreads, std::size_t maxChunk) {
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
    return listingOf(kivo, nullptr);
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
            Points vPoints = GetParam().make(rng, num);
            numberThem(vPoints);
            const int numThreads = 2 + num % 3;
            Listing chunked = expectTriangulated(vPoints, numThreads, maxChunk);
            const CapturedMessages messages;
            Kivo_2D sequential;
            setThreads(sequential, 1, maxChunk);
            sequential.insert(vPoints);
            std::sort(chunked.vTriangles.begin(), chunked.vTriangles.end());
            EXPECT_TRUE(!oracle::isUnique(sequential) ||
                        oracle::triangleSet(sequential) == chunked.vTriangles);
            if (HasFailure()) FAIL() << (num <= 100 ? doubles::hex(vPoints) : "");
        }
    }
}

TEST_P(Batches, areTheSameToTheByteForAnyNumberOfThreadsAndInEveryRun) {
    Rng rng(42);
    for (const int num : {60, 3000}) {
        const Points vPoints = GetParam().make(rng, num);
        for (const std::size_t maxChunk : {7u, 64u}) {
            std::optional<Listing> first;
            for (const int numThreads : {2, 2, 3, 4, 8, 64, 3}) {
                const CapturedMessages messages;
                Kivo_2D kivo;
                setThreads(kivo, numThreads, maxChunk);
                for (const Points& vBatch : {vPoints, timesOver(vPoints, 0.75)})
                    kivo.insert(vBatch);
                const Listing listing = listingOf(kivo, "threads.obj");
                if (!first) first = listing;
                ASSERT_TRUE(*first == listing) << num << " points, " << numThreads << " threads";
            }
        }
    }
}

TEST(ParallelBatches, beginAtAHundredThousandPoints) {
    Rng rng(43);
    const Points vPoints = clusters(rng, 100000, 1);
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
        Points vPoints = kind.make(rng, 20000);
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
            for (const Point2& p : line<1, 2>(rng, 9))
                mHeld[p] = kivo.insert(p);
        }
        for (int step = 0; step < 6; ++step) {
            const Points vBatch = kind.make(rng, doubles::below(rng, step % 2 == 0 ? 200 : 20));
            std::vector<Point2*> vHandles;
            kivo.insert(vBatch, vHandles);
            for (std::size_t i = 0; i < vBatch.size(); ++i) {
                if (!isFinite(vBatch[i])) continue;
                ASSERT_TRUE(vHandles[i] != nullptr && *vHandles[i] == vBatch[i]);
                ASSERT_EQ(vHandles[i], mHeld.emplace(vBatch[i], vHandles[i]).first->second);
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
        if (round % 2 == 0) c.kivo.insert(scattered(rng, 50));
        Segments vSegments;
        for (int i = 0; i < 5; ++i)
            vSegments.emplace_back(nastySets::latticePoint(rng, 8, 0.125), inBox(rng, 0, 1));
        c.add(vSegments, ConstraintInsertionStrategy(round % 4 / 2));
        const Points vBatch = repeat(300, [&](int) { return nastySets::latticePoint(rng, 40, 0.025); });
        std::vector<Point2*> vHandles;
        c.kivo.insert(vBatch, vHandles);
        for (std::size_t i = 0; i < vBatch.size(); ++i)
            ASSERT_TRUE(vHandles[i] != nullptr && *vHandles[i] == vBatch[i]);
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

// Some vertices, and a batch of more or fewer than those.
struct Begun {
    Begun(Rng& rng, int round) {
        setThreads(kivo, 2 + round % 3, 20);
        vOld = round % 2 == 0 ? scattered(rng, 60) : line<1, 1>(rng, 30);
        if (round % 3 != 0) kivo.insert(vOld, vOldHandles);
        if (round % 3 == 0) vOld.clear();
        vBatch = scattered(rng, 500);
        before = listingOf(kivo, nullptr);
    }
    // After a batch that came to nothing.
    void expectAsBefore() {
        EXPECT_TRUE(before == listingOf(kivo, nullptr));
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
    Listing before;
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
            kivo.insert(scattered(rng, num));
            kivo.unsubscribe(MSG_PROGRESS, &listener);
            EXPECT_TRUE(listener.bHereOnly);
            const std::vector<double>& v = listener.vProgress;
            ASSERT_FALSE(v.empty());
            EXPECT_TRUE(std::is_sorted(v.begin(), v.end())) << testing::PrintToString(v);
            EXPECT_LE(0, v.front());
            EXPECT_EQ(1, v.back());
            EXPECT_EQ(1, std::count(v.begin(), v.end(), 1.0));
            EXPECT_TRUE(num < 1000 || v.size() >= 5) << v.size();
        }
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
        for (long numAll = 0; bRanOut && !testing::Test::HasFailure(); numAll += 1 + numAll / 50) {
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
                std::fprintf(stderr, "%d %ld: %zu of %zu points, %zu tri 2d %d\n", round, numAll,
                             begun.kivo.numberOfPoints(), begun.vOld.size(), begun.kivo.numberOfTriangles(),
                             begun.kivo.is2D());
                begun.expectAsBefore();
            }
            begun.expectCompleted();
            numStopped += bStopped;
        }
        EXPECT_LT(5, numStopped);
    }
}
