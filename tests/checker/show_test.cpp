#include "SegmentChecker.h"

#include "Segment2.h"
#include "checker/faultMarks.h"
#include "tests/support/capture.h"
#include "tests/support/doubles.h"
#include "tests/support/files.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

using namespace TESK_KIVO2D;

namespace {

using Segments = std::vector<Segment2>;

std::vector<Segment2*> pointersTo(Segments& vSegments) {
    std::vector<Segment2*> v;
    for (Segment2& s : vSegments)
        v.push_back(&s);
    return v;
}

struct Drawn {
    std::string file;
    std::string messages;

    // Of the lines that end like that.
    int count(const std::string& ending) const {
        int num = 0;
        for (std::size_t at = file.find(ending); at != std::string::npos; at = file.find(ending, at + 1))
            ++num;
        return num;
    }
    bool hasLine(const std::string& text) const { return count("(" + text + ")\tshow\n") == 1; }
};

Drawn drawIllegal(Segments vSegments, bool alsoEndPoints, std::vector<Segment2*> vMore = {}) {
    const std::string path = pathOf("illegal.ps");
    const CapturedMessages messages;
    std::vector<Segment2*> vPointers = pointersTo(vSegments);
    vPointers.insert(vPointers.end(), vMore.begin(), vMore.end());
    SegmentChecker(vPointers).showIllegalSegments(alsoEndPoints, path);
    return {readFile(path), messages.output() + messages.error()};
}

Segments randomSegments(int num, double length) {
    doubles::Rng rng(3);
    Segments v;
    for (int i = 0; i < num; ++i) {
        const Point2 p(doubles::uniform(rng), doubles::uniform(rng));
        v.emplace_back(p, Point2(p.x() + length * doubles::uniform(rng, -1), p.y() + length));
    }
    return v;
}

// A crossing, an overlap, a shared end, and one apart from all.
const Segments fewOfEach{{{0, 0}, {4, 4}},   {{0, 4}, {4, 0}}, {{10, 0}, {16, 0}},
                         {{14, 0}, {18, 0}}, {{4, 4}, {4, 9}}, {{30, 30}, {31, 31}}};

} // namespace

TEST(SegmentChecker_show, eachFaultIsDrawnAndCountedOnce) {
    const Drawn drawn = drawIllegal(fewOfEach, false);
    EXPECT_EQ(
        "Visualizer2:: Writing " + pathOf("illegal.ps") +
            "\n      [Kivo2D-Message] SegmentChecker::showIllegalSegments(), INFO: Illegal segments: 4\n",
        drawn.messages);
    EXPECT_TRUE(drawn.hasLine("Segments \\(grey\\): 6"));
    EXPECT_TRUE(drawn.hasLine("- that intersect others \\(red\\): 4"));
    EXPECT_TRUE(drawn.hasLine("Pairs that cross or touch \\(black crosses\\): 1"));
    EXPECT_TRUE(drawn.hasLine("Pairs that overlap \\(thick blue lines\\): 1"));
    EXPECT_EQ(2, drawn.count("\tarc\n"));
    // The frame's three, six segments, what two share, and the cross, which has two lines.
    EXPECT_EQ(3 + 6 + 1 + 2, drawn.count("\tlineto\n"));

    const Drawn withEnds = drawIllegal(fewOfEach, true);
    EXPECT_NE(std::string::npos, withEnds.messages.find("Illegal segments: 5\n"));
    EXPECT_TRUE(withEnds.hasLine("- that only share ends \\(orange\\): 1"));
    EXPECT_TRUE(withEnds.hasLine("Pairs that share an end \\(green crosses\\): 1"));
    EXPECT_EQ(3, withEnds.count("\tarc\n"));
    EXPECT_EQ(3 + 6 + 1 + 4, withEnds.count("\tlineto\n"));
}

TEST(SegmentChecker_show, allSegmentsAreDrawnOnceAndTheTextCountsWhatWasGiven) {
    Segments vSegments = fewOfEach;
    const double nan = std::numeric_limits<double>::quiet_NaN();
    Segment2 notFinite({0, 0}, {nan, 0});
    std::vector<Segment2*> vPointers = pointersTo(vSegments);
    vPointers.insert(vPointers.end(), {nullptr, &notFinite, vPointers.front()});
    const SegmentChecker checker(vPointers);
    CapturedMessages messages;
    checker.showSegments(pathOf("all.ps"));
    EXPECT_EQ("Visualizer2:: Writing " + pathOf("all.ps") +
                  "\nSegmentChecker::showSegments(), numSegments=9\n",
              messages.output() + messages.error());
    EXPECT_EQ(6, (Drawn{readFile(pathOf("all.ps")), ""}.count("\tlineto\n")));
}

TEST(SegmentChecker_show, circlesHoldAllFaultsAndLieNoCloserThanTheirRadius) {
    Segments vSegments = randomSegments(3000, 0.05);
    std::vector<Segment2*> vIllegal;
    SegmentChecker(pointersTo(vSegments)).getIllegalSegments(false, vIllegal);
    Bbox2 box;
    for (const Segment2* p : vIllegal)
        box.add(p->getSrc()), box.add(p->getTrg());
    const FaultMarks marks = collectFaultMarks(vIllegal, false, box, [](double) {});
    EXPECT_TRUE(marks.bAllPairs);
    EXPECT_GT(marks.vFaultPlaces.size(), 1000U);
    EXPECT_LT(marks.vFaultPlaces.size(), marks.numCrossings / 2);
    const double radius = circleShare * box.getMaxRange() * (1 - 1e-9);
    const auto nearest = [&](const Point2& p, bool bItselfToo) {
        double sq = 1;
        for (const Point2& center : marks.vFaultPlaces)
            if (bItselfToo || !(center == p)) sq = std::min(sq, sqDistance(p, center));
        return std::sqrt(sq);
    };
    for (const Point2& center : marks.vFaultPlaces)
        ASSERT_GE(nearest(center, false), radius);
    for (const Point2& crossing : marks.vCrossings)
        ASSERT_LE(nearest(crossing, true), radius * (1 + 1e-8));

    for (const FaultLimits& limits : {FaultLimits{500, 1e9}, FaultLimits{1'000'000, 2000}}) {
        const FaultMarks some = collectFaultMarks(
            vIllegal, false, box, [](double) {}, limits);
        EXPECT_FALSE(some.bAllPairs);
        EXPECT_GE(some.numCrossings, 100U);
        EXPECT_LT(some.numCrossings, marks.numCrossings / 2);
    }
}

TEST(SegmentChecker_show, drawingsOfManyFaultsAreBoundedAndDoNotDependOnAddresses) {
    Segments vForth, vBack; // all cross
    for (int i = 0; i < 1200; ++i)
        vForth.emplace_back(Point2(i, 0), Point2(1.1 * (1199 - i) + 0.01 * (i % 7), 1000));
    vBack.assign(vForth.rbegin(), vForth.rend());
    std::vector<Segment2*> vSame = pointersTo(vBack);
    std::reverse(vSame.begin(), vSame.end());
    const Drawn drawn = drawIllegal(vForth, false);
    EXPECT_TRUE(drawn.hasLine("Pairs that cross or touch \\(black crosses\\): 719400"));
    EXPECT_LT(drawn.count("\tarc\n"), 6000);
    EXPECT_LT(drawn.file.size(), 8'000'000U);
    EXPECT_EQ(drawn.file, drawIllegal({}, false, vSame).file);
}

TEST(SegmentChecker_show, anyExtentWillDo) {
    const double huge = std::numeric_limits<double>::max(), tiny = std::numeric_limits<double>::denorm_min();
    const Segment2 crossing[]{{{-1, -1}, {1, 1}}, {{-1, 1}, {1, -1}}};
    std::vector<std::pair<Segments, int>> vCases{{{}, 0}, {{{{1, 1}, {1, 1}}}, 0}};
    vCases.push_back({{{{2, 2}, {2, 2}}, {{2, 2}, {2, 2}}}, 2}); // ends of both
    for (const double size : {huge, 1e160, 1e-170, tiny}) {
        vCases.push_back({{}, 2});
        for (const Segment2& s : crossing) {
            const Point2 a = s.getSrc(), b = s.getTrg();
            vCases.back().first.emplace_back(Point2(a.x() * size, a.y() * size),
                                             Point2(b.x() * size, b.y() * size));
        }
    }
    for (const auto& [vSegments, numIllegal] : vCases) {
        const Drawn drawn = drawIllegal(vSegments, true);
        EXPECT_NE(std::string::npos,
                  drawn.messages.find("Illegal segments: " + std::to_string(numIllegal) + "\n"));
        EXPECT_EQ(std::string::npos, drawn.messages.find("WARNING")) << drawn.messages;
        EXPECT_EQ(0, drawn.count("nan") + drawn.count("inf"));
        EXPECT_EQ(vSegments.size() < 2 ? 0 : 1, drawn.count("stroke\n0\t0\t0\tsetrgbcolor\n") +
                                                    drawn.count("stroke\n0\t0.6\t0.2\tsetrgbcolor\n"));
    }
}

TEST(SegmentChecker_show, oneProgressRunsOverAllAndCancellingLeavesTheOldFile) {
    struct Listener : MsgBase {
        void update(MsgType, const char* label, double progress) override {
            EXPECT_STREQ("SEGCHECK", label);
            EXPECT_GT(progress, last);
            last = progress;
            if (last > limit) throw std::runtime_error("enough");
        }
        double last = 0, limit = 2;
    } listener;
    Segments vSegments = randomSegments(2000, 0.05);
    SegmentChecker checker(pointersTo(vSegments));
    checker.subscribe(MSG_PROGRESS, &listener);
    const CapturedMessages messages;
    const std::string path = pathOf("progress.ps");
    checker.showIllegalSegments(true, path);
    EXPECT_EQ(1.0, listener.last);
    const std::string drawn = readFile(path);
    for (const double limit : {0.2, 0.7}) {
        listener.last = 0;
        listener.limit = limit;
        EXPECT_THROW(checker.showIllegalSegments(true, path), std::runtime_error);
        EXPECT_LT(listener.last, 1.0);
    }
    EXPECT_EQ(drawn, readFile(path));
}
