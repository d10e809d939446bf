#include "SegmentChecker.h"

#include "checker/faultMarks.h"
#include "tests/support/capture.h"
#include "tests/support/files.h"
#include "tests/support/segmentSets.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace TESK_KIVO2D;
using namespace segmentSets;

namespace {

using Pointers = std::vector<Segment2*>;

struct Drawing {
    std::string messages, file;

    Drawing(const Pointers& v, bool alsoEndPoints) {
        const CapturedMessages heard;
        SegmentChecker(v).showIllegalSegments(alsoEndPoints, pathOf("illegal.ps"));
        messages = heard.output() + heard.error();
        file = readFile(pathOf("illegal.ps"));
    }
    std::size_t count(const std::string& part) const {
        std::size_t num = 0;
        for (std::size_t at = file.find(part); at != std::string::npos; at = file.find(part, at + 1))
            ++num;
        return num;
    }
    bool says(const std::string& text) const { return count("(" + text + ")\tshow\n") == 1; }
    bool tellsOf(std::size_t numIllegal) const {
        return messages.find(
                   "      [Kivo2D-Message] SegmentChecker::showIllegalSegments(), INFO: Illegal segments: " +
                   std::to_string(numIllegal) + "\n") != std::string::npos;
    }
};

} // namespace

TEST(SegmentChecker_show, eachSegmentAndEachFaultIsDrawnAndCountedOnce) {
    // A crossing, an overlap, a shared end, one apart from all, and what takes no part.
    Segments vSegments{{{0, 0}, {4, 4}},   {{0, 4}, {4, 0}}, {{10, 0}, {16, 0}},
                       {{14, 0}, {18, 0}}, {{4, 4}, {4, 9}}, {{30, 30}, {31, 31}}};
    Segment2 notFinite({0, 0}, {HUGE_VAL, 0});
    Pointers v = pointersTo(vSegments);
    v.insert(v.end(), {nullptr, &notFinite, v[0]});
    const Drawing drawn(v, false), withEnds(v, true);
    EXPECT_TRUE(drawn.says("Segments \\(grey\\): 6") && drawn.says("- that intersect others \\(red\\): 4") &&
                drawn.says("Pairs that cross or touch \\(black crosses\\): 1") &&
                drawn.says("Pairs that overlap \\(thick blue lines\\): 1"));
    EXPECT_TRUE(withEnds.says("- that only share ends \\(orange\\): 1") &&
                withEnds.says("Pairs that share an end \\(green crosses\\): 1"));
    EXPECT_TRUE(drawn.tellsOf(4) && withEnds.tellsOf(5));
    EXPECT_TRUE(drawn.count("\tarc\n") == 2 && withEnds.count("\tarc\n") == 3);
    // The frame's three, six segments, the overlap, and crosses, each of two lines.
    EXPECT_EQ(3u + 6 + 1 + 2, drawn.count("\tlineto\n"));
    EXPECT_EQ(3u + 6 + 1 + 4, withEnds.count("\tlineto\n"));

    const CapturedMessages messages;
    SegmentChecker(v).showSegments(pathOf("all.ps"));
    EXPECT_NE(std::string::npos, messages.output().find("\nSegmentChecker::showSegments(), numSegments=9\n"));
    Drawing all = drawn;
    all.file = readFile(pathOf("all.ps"));
    EXPECT_EQ(6u, all.count("\tlineto\n"));
}

TEST(SegmentChecker_show, circlesHoldAllFaultsAndLieNoCloserThanTheirRadius) {
    Rng rng(3);
    Segments vSegments = longAndShort(rng, 2000, 0.02);
    Pointers v;
    SegmentChecker(pointersTo(vSegments)).getIllegalSegments(false, v);
    Bbox2 box;
    for (const Segment2* p : v)
        box.add(p->getSrc()), box.add(p->getTrg());
    const auto noProgress = [](double) {};
    const FaultMarks marks = collectFaultMarks(v, false, box, noProgress);
    EXPECT_TRUE(marks.bAllPairs && marks.vFaultPlaces.size() > 300);
    const double sqRadius = std::pow(circleShare * box.getMaxRange(), 2);
    const auto numAround = [&](const Point2& p, double sq) {
        return std::count_if(marks.vFaultPlaces.begin(), marks.vFaultPlaces.end(),
                             [&](const Point2& center) { return sqDistance(p, center) < sq; });
    };
    for (const Point2& center : marks.vFaultPlaces)
        ASSERT_EQ(numAround(center, sqRadius * (1 - 1e-9)), 1); // itself
    for (const Point2& crossing : marks.vCrossings)
        ASSERT_GE(numAround(crossing, sqRadius * (1 + 1e-9)), 1);
    for (const FaultLimits& limits : {FaultLimits{300, 1e9}, FaultLimits{1'000'000, 1000}}) {
        const FaultMarks some = collectFaultMarks(v, false, box, noProgress, limits);
        EXPECT_TRUE(!some.bAllPairs && some.numCrossings > 20 && some.numCrossings < marks.numCrossings / 2);
    }
}

TEST(SegmentChecker_show, drawingsOfManyFaultsAreBoundedAndDoNotDependOnAddresses) {
    Segments vForth = many(1200, [](int i) { // all cross
        return Segment2(Point2(i, 0), Point2(1.1 * (1199 - i) + 0.01 * (i % 7), 1000));
    });
    Segments vBack(vForth.rbegin(), vForth.rend());
    Pointers vSame = pointersTo(vBack);
    std::reverse(vSame.begin(), vSame.end());
    const Drawing drawn(pointersTo(vForth), false);
    EXPECT_TRUE(drawn.says("Pairs that cross or touch \\(black crosses\\): 719400"));
    EXPECT_TRUE(drawn.count("\tarc\n") < 6000 && drawn.file.size() < 8'000'000);
    EXPECT_EQ(drawn.file, Drawing(vSame, false).file);
}

TEST(SegmentChecker_show, anyExtentWillDo) {
    std::vector<Segments> vSets{{}, {{{2, 2}, {2, 2}}, {{2, 2}, {2, 2}}}};
    for (const double d : {DBL_MAX, 1e160, 1e-170, 4.9e-324})
        vSets.push_back({{{-d, -d}, {d, d}}, {{-d, d}, {d, -d}}});
    for (Segments& v : vSets) {
        const Drawing drawn(pointersTo(v), true);
        EXPECT_TRUE(drawn.tellsOf(v.size()));
        EXPECT_EQ(std::string::npos, drawn.messages.find("left out")) << drawn.messages;
        EXPECT_EQ(0u, drawn.count("nan") + drawn.count("inf"));
        EXPECT_EQ(v.size() / 2,
                  drawn.count("1.1\tsetlinewidth\n") + drawn.count("\t0.6\t0.2\tsetrgbcolor\n"));
    }
}

TEST(SegmentChecker_show, progressIsThatOfTheWholeAndCancellingLeavesTheOldFile) {
    struct Listener : MsgBase {
        void update(MsgType, const char*, double progress) override {
            EXPECT_GT(progress, last);
            last = progress;
            if (last > limit) throw 1;
        }
        double last = 0, limit = 2;
    } listener;
    Rng rng(3);
    Segments vSegments = longAndShort(rng, 2000, 0.02);
    SegmentChecker checker(pointersTo(vSegments));
    checker.subscribe(MSG_PROGRESS, &listener);
    const CapturedMessages messages;
    checker.showIllegalSegments(true, pathOf("progress.ps"));
    EXPECT_EQ(1.0, listener.last);
    const std::string drawn = readFile(pathOf("progress.ps"));
    for (const double limit : {0.2, 0.7}) {
        listener.last = 0;
        listener.limit = limit;
        EXPECT_THROW(checker.showIllegalSegments(true, pathOf("progress.ps")), int);
    }
    EXPECT_EQ(drawn, readFile(pathOf("progress.ps")));
}
