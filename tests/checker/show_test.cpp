#include "SegmentChecker.h"

#include "checker/faultMarks.h"
#include "tests/support/capture.h"
#include "tests/support/files.h"
#include "tests/support/segmentSets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <stdexcept>

using namespace TESK_KIVO2D;
using segmentSets::Segments;

namespace {

using Pointers = std::vector<Segment2*>;

Pointers pointersTo(Segments& vSegments) {
    Pointers v;
    for (Segment2& s : vSegments)
        v.push_back(&s);
    return v;
}

struct Drawn {
    std::string file, messages;

    int count(const std::string& part) const {
        int num = 0;
        for (std::size_t at = file.find(part); at != std::string::npos; at = file.find(part, at + 1))
            ++num;
        return num;
    }
    bool says(const std::string& text) const { return count("(" + text + ")\tshow\n") == 1; }
};

Drawn drawIllegal(const Pointers& vPointers, bool alsoEndPoints) {
    const CapturedMessages messages;
    SegmentChecker(vPointers).showIllegalSegments(alsoEndPoints, pathOf("illegal.ps"));
    return {readFile(pathOf("illegal.ps")), messages.output() + messages.error()};
}

const std::string info =
    "      [Kivo2D-Message] SegmentChecker::showIllegalSegments(), INFO: Illegal segments: ";

} // namespace

TEST(SegmentChecker_show, eachSegmentAndEachFaultIsDrawnAndCountedOnce) {
    // A crossing, an overlap, a shared end, one apart from all, and what takes no part.
    Segments vSegments{{{0, 0}, {4, 4}},   {{0, 4}, {4, 0}}, {{10, 0}, {16, 0}},
                       {{14, 0}, {18, 0}}, {{4, 4}, {4, 9}}, {{30, 30}, {31, 31}}};
    Segment2 notFinite({0, 0}, {std::numeric_limits<double>::quiet_NaN(), 0});
    Pointers v = pointersTo(vSegments);
    v.insert(v.end(), {nullptr, &notFinite, v[0]});
    const Drawn drawn = drawIllegal(v, false), withEnds = drawIllegal(v, true);
    EXPECT_TRUE(drawn.says("Segments \\(grey\\): 6") && drawn.says("- that intersect others \\(red\\): 4") &&
                drawn.says("Pairs that cross or touch \\(black crosses\\): 1") &&
                drawn.says("Pairs that overlap \\(thick blue lines\\): 1"));
    EXPECT_TRUE(withEnds.says("- that only share ends \\(orange\\): 1") &&
                withEnds.says("Pairs that share an end \\(green crosses\\): 1"));
    EXPECT_NE(std::string::npos, drawn.messages.find(pathOf("illegal.ps") + "\n" + info + "4\n"));
    EXPECT_NE(std::string::npos, withEnds.messages.find(info + "5\n"));
    EXPECT_EQ(2, drawn.count("\tarc\n"));
    EXPECT_EQ(3, withEnds.count("\tarc\n"));
    // The frame's three, six segments, the overlap, and crosses, each of two lines.
    EXPECT_EQ(3 + 6 + 1 + 2, drawn.count("\tlineto\n"));
    EXPECT_EQ(3 + 6 + 1 + 4, withEnds.count("\tlineto\n"));

    const CapturedMessages messages;
    SegmentChecker(v).showSegments(pathOf("all.ps"));
    EXPECT_NE(std::string::npos, messages.output().find("\nSegmentChecker::showSegments(), numSegments=9\n"));
    EXPECT_EQ(6, (Drawn{readFile(pathOf("all.ps")), ""}.count("\tlineto\n")));
}

TEST(SegmentChecker_show, circlesHoldAllFaultsAndLieNoCloserThanTheirRadius) {
    doubles::Rng rng(3);
    Segments vSegments = segmentSets::longAndShort(rng, 2000);
    Pointers vIllegal;
    SegmentChecker(pointersTo(vSegments)).getIllegalSegments(false, vIllegal);
    Bbox2 box;
    for (const Segment2* p : vIllegal)
        box.add(p->getSrc()), box.add(p->getTrg());
    const FaultMarks marks = collectFaultMarks(vIllegal, false, box, [](double) {});
    EXPECT_TRUE(marks.bAllPairs);
    EXPECT_GT(marks.vFaultPlaces.size(), 300U);
    EXPECT_GT(marks.vCrossings.size(), marks.vFaultPlaces.size());
    const double radius = circleShare * box.getMaxRange();
    const auto distance = [&](const Point2& p, bool bOthersOnly) {
        double sq = 1;
        for (const Point2& center : marks.vFaultPlaces)
            if (!bOthersOnly || !(center == p)) sq = std::min(sq, sqDistance(p, center));
        return std::sqrt(sq);
    };
    for (const Point2& center : marks.vFaultPlaces)
        ASSERT_GE(distance(center, true), radius * (1 - 1e-9));
    for (const Point2& crossing : marks.vCrossings)
        ASSERT_LE(distance(crossing, false), radius * (1 + 1e-9));
    for (const FaultLimits& limits : {FaultLimits{300, 1e9}, FaultLimits{1'000'000, 1000}}) {
        const FaultMarks some = collectFaultMarks(
            vIllegal, false, box, [](double) {}, limits);
        EXPECT_FALSE(some.bAllPairs);
        EXPECT_GT(some.numCrossings, 20U);
        EXPECT_LT(some.numCrossings, marks.numCrossings / 2);
    }
}

TEST(SegmentChecker_show, drawingsOfManyFaultsAreBoundedAndDoNotDependOnAddresses) {
    Segments vForth = segmentSets::many(1200, [](int i) { // all cross
        return Segment2(Point2(i, 0), Point2(1.1 * (1199 - i) + 0.01 * (i % 7), 1000));
    });
    Segments vBack(vForth.rbegin(), vForth.rend());
    Pointers vSame = pointersTo(vBack);
    std::reverse(vSame.begin(), vSame.end());
    const Drawn drawn = drawIllegal(pointersTo(vForth), false);
    EXPECT_TRUE(drawn.says("Pairs that cross or touch \\(black crosses\\): 719400"));
    EXPECT_LT(drawn.count("\tarc\n"), 6000);
    EXPECT_LT(drawn.file.size(), 8'000'000U);
    EXPECT_EQ(drawn.file, drawIllegal(vSame, false).file);
}

TEST(SegmentChecker_show, anyExtentWillDo) {
    std::vector<Segments> vSets{{}, {{{1, 1}, {1, 1}}}, {{{2, 2}, {2, 2}}, {{2, 2}, {2, 2}}}};
    for (const double d : {std::numeric_limits<double>::max(), 1e160, 1e-170, 4.9e-324})
        vSets.push_back({{{-d, -d}, {d, d}}, {{-d, d}, {d, -d}}});
    for (Segments& vSegments : vSets) {
        const Drawn drawn = drawIllegal(pointersTo(vSegments), true);
        const int numIllegal = vSegments.size() == 2 ? 2 : 0;
        EXPECT_NE(std::string::npos, drawn.messages.find(info + std::to_string(numIllegal) + "\n"));
        EXPECT_EQ(std::string::npos, drawn.messages.find("left out")) << drawn.messages;
        EXPECT_EQ(0, drawn.count("nan") + drawn.count("inf"));
        const int numCrosses = drawn.count("1.1\tsetlinewidth\n") + drawn.count("\t0.6\t0.2\tsetrgbcolor\n");
        EXPECT_EQ(numIllegal / 2, numCrosses);
    }
}

TEST(SegmentChecker_show, progressIsThatOfTheWholeAndCancellingLeavesTheOldFile) {
    struct Listener : MsgBase {
        void update(MsgType, const char* label, double progress) override {
            EXPECT_STREQ("SEGCHECK", label);
            EXPECT_GT(progress, last);
            last = progress;
            if (last > limit) throw std::runtime_error("enough");
        }
        double last = 0, limit = 2;
    } listener;
    doubles::Rng rng(3);
    Segments vSegments = segmentSets::longAndShort(rng, 2000);
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
