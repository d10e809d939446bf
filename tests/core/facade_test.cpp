#include "Kivo_2D.h"

#include "tests/support/capture.h"
#include "tests/support/doubles.h"
#include "tests/support/expectSound.h"

#include <gtest/gtest.h>

#include <filesystem>

using namespace TESK_KIVO2D;

namespace {

std::vector<Point2> randomPoints(std::size_t num, std::uint64_t seed) {
    doubles::Rng rng(seed);
    std::vector<Point2> v;
    while (v.size() < num) {
        const double x = doubles::uniform(rng);
        v.emplace_back(x, doubles::uniform(rng));
    }
    return v;
}

struct Listener : MsgBase {
    std::vector<double> vHeard;
    std::string label;
    double throwAt = 2;

    void update(MsgType, const char* operationLabel, double progress) override {
        vHeard.push_back(progress);
        label = operationLabel;
        if (progress >= throwAt) throw std::runtime_error("cancelled");
    }
};

} // namespace

TEST(facade, tellsItsVersion) {
    EXPECT_EQ(1, getMajorVersionNumber());
    EXPECT_EQ(60, getMinorVersionNumber());
    EXPECT_EQ(244, getRevisionNumber());
    EXPECT_EQ(std::string("Kivo 2D, ") + (isRelease() ? "RELEASE" : "DEBUG") + ", v1.60.244",
              getKivo2DVersion());
}

TEST(facade, setsTheNumberOfThreads) {
    Kivo_2D kivo;
    EXPECT_EQ(1, kivo.setNumCPU(-5));
    EXPECT_EQ(3, kivo.setNumCPU(3));
    EXPECT_GE(kivo.setNumCPU(0), 1);
    kivo.enableMultithreading();
}

TEST(facade, keepsAName) {
    Kivo_2D kivo(10);
    EXPECT_EQ("", kivo.getName());
    kivo.setName("roof");
    EXPECT_EQ("roof", kivo.getName());
}

TEST(facade, answersPrematureCallsWithAMessage) {
    Kivo_2D kivo;
    kivo.insert(Point2(1, 1));
    const std::string file = "premature.ps";
    std::filesystem::remove(file);
    const CapturedMessages messages;
    std::vector<Point2*> vHull{nullptr};
    kivo.getConvexHull(true, vHull);
    EXPECT_EQ(1u, vHull.size());
    EXPECT_TRUE(kivo.checkValidity(true, "n"));
    kivo.show(file);
    kivo.show(static_cast<Visualizer2*>(nullptr));
    EXPECT_EQ(nullptr, kivo.locate(Point2(1, 1)));
    EXPECT_FALSE(std::filesystem::exists(file));
    EXPECT_EQ(
        "      [Kivo2D-Message] Dt2::getConvexHull(), WARNING: is2D() is false, the triangulation is not "
        "full "
        "dimensional yet\n"
        "      [Kivo2D-Message] Kivo_2D::CheckValidity(n), INFO: has been started\n"
        "      [Kivo2D-Message] checkValidity(n), WARNING: not fulldimensional yet (empty or all points "
        "collinear), Returning true\n"
        "      [Kivo2D-Message] Dt2::show(), WARNING: The triangulation is not 2D, no visualization\n"
        "      [Kivo2D-Message] Dt2::show(), WARNING: The triangulation is not full dimensional yet, no "
        "visualization\n",
        messages.output());
}

TEST(facade, reportsTheProgressOfABatch) {
    Kivo_2D kivo;
    Listener listener;
    kivo.subscribe(MSG_PROGRESS, &listener);
    std::vector<Point2> v = randomPoints(1000, 1);
    kivo.insert(v);
    std::vector<double> vExpected;
    for (int i = 1; i <= 100; ++i)
        vExpected.push_back(i * 10 / 1000.0);
    EXPECT_EQ(vExpected, listener.vHeard);
    EXPECT_EQ("insert vertices", listener.label);
    // Points that are there already count like others; the last word is 1.0, once.
    listener.vHeard.clear();
    kivo.insert(v);
    EXPECT_EQ(vExpected, listener.vHeard);
    listener.vHeard.clear();
    kivo.insert(std::vector<Point2>(500, Point2(2, 2)));
    ASSERT_FALSE(listener.vHeard.empty());
    EXPECT_EQ(1.0, listener.vHeard.back());
    EXPECT_EQ(1, std::count(listener.vHeard.begin(), listener.vHeard.end(), 1.0));
    listener.vHeard.clear();
    kivo.unsubscribe(MSG_PROGRESS, &listener);
    kivo.unsubscribe(MSG_PROGRESS, &listener);
    kivo.insert(randomPoints(1000, 2));
    EXPECT_TRUE(listener.vHeard.empty());
}

TEST(facade, staysSoundWhenAListenerCancelsABatch) {
    const CapturedMessages silence;
    const std::vector<Point2> vFirst = randomPoints(500, 3), vSecond = randomPoints(1000, 4);
    for (const bool bFirst2D : {true, false}) {
        Kivo_2D kivo;
        std::vector<Point2*> vKept, vHandles;
        if (bFirst2D) {
            kivo.insert(vFirst, vKept);
        } else { // the client holds vertices on a line when the batch that spans triangles is cut off
            for (int i = 0; i < 50; ++i)
                vKept.push_back(kivo.insert(Point2(i * 0.02, 0.5)));
        }
        const std::size_t numBefore = kivo.numberOfPoints();
        Listener listener;
        listener.throwAt = 0.4;
        kivo.subscribe(MSG_PROGRESS, &listener);
        EXPECT_THROW(kivo.insert(vSecond, vHandles), std::runtime_error);
        kivo.unsubscribe(MSG_PROGRESS, &listener);
        EXPECT_GT(kivo.numberOfPoints(), numBefore);
        EXPECT_LT(kivo.numberOfPoints(), numBefore + vSecond.size());
        expectSound(kivo);
        std::vector<Point2*> vAll;
        kivo.getVertexPointers(vAll);
        for (Point2* p : vKept)
            EXPECT_EQ(1, std::count(vAll.begin(), vAll.end(), p));
        for (std::size_t i = 0; i < vHandles.size(); ++i) {
            EXPECT_TRUE(vHandles[i] == nullptr || *vHandles[i] == vSecond[i]);
        }
        kivo.insert(vSecond, vHandles); // and goes on as if nothing had been
        expectSound(kivo);
        EXPECT_EQ(numBefore + vSecond.size(), kivo.numberOfPoints());
        for (std::size_t i = 0; i < vHandles.size(); ++i)
            EXPECT_EQ(vSecond[i], *vHandles[i]);
    }
}

TEST(facade, measuresTheTimeOfATriangulation) {
    Kivo_2D kivo(1000);
    std::vector<Point2> v = randomPoints(1000, 5);
    EXPECT_GT(kivo.measureTrianguluationTime(v), 0.0);
    EXPECT_EQ(1000u, kivo.numberOfPoints());
}

TEST(facade, keepsMemoryWithinBoundsWhenTheSamePointsComeAgainAndAgain) {
    Kivo_2D kivo;
    const std::vector<Point2> v = randomPoints(2000, 6);
    std::vector<Point2*> vFirst, vAgain;
    kivo.insert(v, vFirst);
    Point2* pLast = nullptr;
    for (int round = 0; round < 50; ++round) {
        kivo.insert(v, vAgain);
        ASSERT_EQ(vFirst, vAgain);
        Point2* pNew = kivo.insert(Point2(2 + round, round));
        EXPECT_TRUE(round < 2 || pNew - pLast <= 2); // records of duplicates were used again
        pLast = pNew;
    }
    expectSound(kivo);
}
