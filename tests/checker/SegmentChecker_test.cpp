#include "SegmentChecker.h"

#include "KivoException.h"
#include "tests/support/capture.h"
#include "tests/support/sanitized.h"
#include "tests/support/segmentOracle.h"
#include "tests/support/segmentSets.h"

#include <gtest/gtest.h>

using namespace segmentOracle;
using namespace segmentSets;

namespace {

// Nulls, repeated pointers and segments that are none, anywhere.
void spoil(Rng& rng, Pointers& v) {
    static Segment2 aBad[] = {{{HUGE_VAL, 0}, {1, 1}}, {{0, 0}, {1, std::nan("")}}};
    for (int i = 1 + below(rng, 6); i > 0; --i) {
        const auto place = v.begin() + below(rng, static_cast<int>(v.size()) + 1);
        Segment2* const aChoices[] = {nullptr, v.empty() ? nullptr : v[rng() % v.size()], &aBad[rng() % 2]};
        v.insert(place, aChoices[rng() % 3]);
    }
}

// Added at once or in two parts, with queries in between.
std::string findFaultInParts(Rng& rng, const Pointers& v) {
    const auto middle = v.begin() + below(rng, 2) * below(rng, static_cast<int>(v.size()) + 1);
    const Pointers vFirst(v.begin(), middle);
    SegmentChecker checker(vFirst);
    const std::string fault = vFirst.empty() ? "" : findFault(checker, vFirst);
    checker.addSegments(Pointers(middle, v.end()));
    return fault + findFault(checker, v);
}

// For a segment that may be any.
bool findsAll(const SegmentChecker& checker, const Segment2& s, const Pointers& v) {
    Intersectors vExpected, vFound;
    for (const std::uint32_t place : placesTakingPart(v)) {
        const auto type = v[place] != &s ? checker.getIntersectionType(&s, v[place]) : SIT_NONE;
        if (type != SIT_NONE) vExpected.emplace_back(v[place], type);
    }
    checker.getIntersectors(&s, true, vFound);
    return vFound == vExpected;
}

struct Listener : MsgBase {
    std::vector<double> vHeard;
    std::size_t numBeforeThrow = SIZE_MAX;

    void update(MsgType, const char* label, double progress) override {
        EXPECT_STREQ("SEGCHECK", label);
        vHeard.push_back(progress);
        if (vHeard.size() > numBeforeThrow) throw 1;
    }
};

} // namespace

TEST(SetsOfSegments, haveTheIntersectorsThatPairByPairShows) {
    const CapturedMessages messages;
    constexpr int numSmall = isSanitized ? 100 : 400, aSeveralLevels[] = {100, 170, 257, 300, 600};
    for (const Kind& kind : segmentSets::all()) {
        Rng rng(41);
        for (int i = 0; i < numSmall + 5 && !HasFailure(); ++i) {
            const int num = i >= numSmall ? std::min(aSeveralLevels[i - numSmall], kind.maxNum)
                                          : below(rng, i % 2 == 0 ? 8 : 61);
            Segments segments = kind.make(rng, num);
            if (i % 8 != 0) segments = varied(rng, std::move(segments));
            Pointers v = pointersTo(segments);
            if (i % 3 == 0) std::shuffle(v.begin(), v.end(), rng);
            if (i % 4 == 0) spoil(rng, v);
            EXPECT_EQ(findFaultInParts(rng, v), "") << kind.name << i << " of " << num;
        }
    }
    Rng rng(42);
    Segments segments = longAndShort(rng, isSanitized ? 300 : 4500, 0.01); // a tree of four levels
    EXPECT_EQ(findFaultInParts(rng, pointersTo(segments)), "");
}

TEST(SetsOfSegments, answerForOtherSegmentsInsideAndFarOutside) {
    const CapturedMessages messages;
    for (const Kind& kind : segmentSets::all()) {
        Rng rng(43);
        Segments segments;
        for (int i = 0; i < (isSanitized ? 60 : 600) && !HasFailure(); ++i) {
            if (i % 200 == 0)
                segments = varied(rng, kind.make(rng, i == 0 ? 5 : i == 200 ? 40 : kind.maxNum));
            const Pointers v = pointersTo(segments);
            const SegmentChecker checker(v);
            const Segment2 s = *v[rng() % v.size()], other = *v[rng() % v.size()];
            const Segment2 across(s.getSrc(), between(other, 1 - below(rng, 2) / 2.0));
            const double reach = std::ldexp(1, below(rng, 12)), start = below(rng, 3) / 2.0 - reach;
            const Segment2 query(between(across, start), between(across, reach * below(rng, 5) / 4.0));
            EXPECT_TRUE(!isFinite(query) || findsAll(checker, query, v)) << kind.name << i;
        }
    }
}

TEST(SegmentChecker, findsWhatALineTouchesInNoMoreThanACornerOfBoxes) {
    Rng rng(46);
    for (int i = 0; i < (isSanitized ? 10 : 40); ++i) {
        Segments segments = fansOnALine(rng, 1500);
        const Pointers v = pointersTo(segments);
        const SegmentChecker checker(v);
        for (std::size_t piece = 600; piece < v.size(); piece += 150)
            EXPECT_TRUE(findsAll(checker, *v[piece], v));
    }
}

TEST(SegmentChecker, keepsTheNumberingOfTheSet) {
    Segment2 a({0, 0}, {1, 1}), b({0, 1}, {1, 0}), foreign = a;
    const CapturedMessages messages;
    SegmentChecker checker({nullptr, &b});
    checker.addSegments({&a, &b});
    EXPECT_TRUE(checker.getNumberOfSegments() == 4 && checker.getSegment(3) == &b);
    EXPECT_TRUE(checker.getIndex(&b) == 1 && checker.getIndex(&a) == 2);
    const std::string heard = messages.output();
    EXPECT_EQ(checker.getIndex(&foreign), -1);
    EXPECT_EQ(messages.output(),
              heard + "      [Kivo2D-Message] SegmentChecker::getIndex(), WARNING: No such segment\n");
    EXPECT_THROW(checker.getSegment(4), KivoException);
    EXPECT_TRUE(messages.output().find("i<pSCD->vSegments.size()") != std::string::npos);
}

TEST(SegmentChecker, warnsOfWhatMayBeAMistakeAndRefusesWhatIsNoSegment) {
    Segment2 only({1, 1}, {2, 2}), point({5, 5}, {5, 5}), bad({0, 0}, {std::nan(""), 0});
    for (const Pointers& v : {Pointers{}, Pointers{nullptr}, Pointers{&bad}, Pointers{&only, &only},
                              Pointers{&only}, Pointers{&point}, Pointers{&only, &point}}) {
        const CapturedMessages messages;
        const SegmentChecker checker(v);
        EXPECT_EQ(findFault(checker, v), "");
        const bool bSuspicious = placesTakingPart(v).size() < std::max<std::size_t>(v.size(), 1);
        const std::string heard = messages.output();
        EXPECT_EQ(heard.find(", WARNING: ") != std::string::npos, bSuspicious) << heard;
        EXPECT_TRUE(findsAll(checker, only, v));
        EXPECT_TRUE(v.empty() || messages.output() == heard) << messages.output(); // nothing is said twice
        Intersectors vFound;
        for (const Segment2* pBad : std::initializer_list<const Segment2*>{nullptr, &bad}) {
            const std::size_t before = messages.output().size();
            checker.getIntersectors(pBad, true, vFound);
            EXPECT_NE(messages.output().find("getIntersectors(), ERROR: ", before), std::string::npos);
        }
        EXPECT_TRUE(vFound.empty());
    }
}

TEST(SegmentChecker, tellsProgressUpToExactlyOneUnlessAnExceptionEndsTheQuery) {
    const CapturedMessages messages;
    Rng rng(44);
    Listener listener;
    for (const int num : {0, 1, 2, 400}) {
        Segments segments = lattice(rng, num);
        SegmentChecker checker(pointersTo(segments));
        checker.unsubscribe(MSG_PROGRESS, &listener); // before there is any
        checker.subscribe(MSG_PROGRESS, &listener);
        listener = {};
        Pointers vExpected, vIllegal;
        checker.getIllegalSegments(true, vExpected);
        const std::vector<double> v = listener.vHeard;
        ASSERT_GE(v.size(), num == 400 ? 10u : 1u); // it is heard of on the way, too
        EXPECT_TRUE(std::is_sorted(v.begin(), v.end()) && v.front() >= 0 && v.back() == 1);
        EXPECT_EQ(std::count(v.begin(), v.end(), 1.0), 1) << num;
        for (const std::size_t numBefore : {std::size_t(0), v.size() / 2, v.size() - 1}) {
            listener.vHeard.clear();
            listener.numBeforeThrow = numBefore;
            EXPECT_THROW(checker.getIllegalSegments(true, vIllegal), int);
            EXPECT_TRUE(vIllegal.empty());
        }
        checker.unsubscribe(MSG_PROGRESS, &listener);
        checker.getIllegalSegments(true, vIllegal);
        EXPECT_EQ(vIllegal, vExpected);
    }
    const std::string warning =
        "      [Kivo2D-Message] SegmentChecker::unsubscribe(), WARNING: No publisher present\n";
    EXPECT_NE(messages.output().find(warning), std::string::npos);
}
