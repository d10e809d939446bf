#include "SegmentChecker.h"

#include "KivoException.h"
#include "checker/SegmentQueries.h"
#include "tests/support/capture.h"
#include "tests/support/sanitized.h"
#include "tests/support/segmentSets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

using namespace TESK_KIVO2D;
using doubles::below;
using doubles::Rng;
using segmentSets::Segments;

namespace {

using Pointers = std::vector<Segment2*>;
using Intersectors = std::vector<std::pair<Segment2*, SegmentIntersectionType>>;

bool isFinite(const Segment2& s) {
    const Point2 a = s.getSrc(), b = s.getTrg();
    return std::isfinite(a.x()) && std::isfinite(a.y()) && std::isfinite(b.x()) && std::isfinite(b.y());
}

// Every pair whose boxes meet, one by one: a sweep over x leaves the others out.
class Reference {
public:
    explicit Reference(const Pointers& vSet) : v(vSet), vOf(vSet.size()) {
        Pointers vSeen;
        for (std::size_t i = 0; i < v.size(); ++i) {
            const auto at = std::lower_bound(vSeen.begin(), vSeen.end(), v[i]);
            if (v[i] == nullptr || !isFinite(*v[i]) || (at != vSeen.end() && *at == v[i])) continue;
            vSeen.insert(at, v[i]);
            vPlaces.push_back(i);
        }
        std::vector<std::size_t> vOrder = vPlaces;
        std::sort(vOrder.begin(), vOrder.end(), [&](auto i, auto j) { return low(i).x() < low(j).x(); });
        for (auto i = vOrder.begin(); i != vOrder.end(); ++i) {
            for (auto j = i + 1; j != vOrder.end() && low(*j).x() <= high(*i).x(); ++j)
                add(*i, *j);
        }
        for (auto& vOfOne : vOf)
            std::sort(vOfOne.begin(), vOfOne.end());
    }

    // Of those that take part.
    const std::vector<std::size_t>& places() const { return vPlaces; }
    // Among the first of them.
    Intersectors intersectors(std::size_t i, bool alsoEndPoints, std::size_t num) const {
        Intersectors result;
        for (const auto& [j, type] : vOf[i])
            if (j < num && (alsoEndPoints || type != SIT_ENDPOINT)) result.emplace_back(v[j], type);
        return result;
    }
    Pointers illegal(bool alsoEndPoints, std::size_t num) const {
        Pointers result;
        for (std::size_t i = 0; i < num; ++i)
            if (!intersectors(i, alsoEndPoints, num).empty()) result.push_back(v[i]);
        return result;
    }

private:
    Point2 low(std::size_t i) const { return std::min(v[i]->getSrc(), v[i]->getTrg()); }
    Point2 high(std::size_t i) const { return std::max(v[i]->getSrc(), v[i]->getTrg()); }

    void add(std::size_t i, std::size_t j) {
        const auto [lowI, highI] = std::minmax({v[i]->getSrc().y(), v[i]->getTrg().y()});
        const auto [lowJ, highJ] = std::minmax({v[j]->getSrc().y(), v[j]->getTrg().y()});
        if (highI < lowJ || highJ < lowI) return;
        const SegmentIntersectionType type = pairs.getIntersectionType(v[i], v[j]);
        if (type == SIT_NONE) return;
        vOf[i].emplace_back(j, type);
        vOf[j].emplace_back(i, type);
    }

    const SegmentChecker pairs;
    const Pointers v;
    std::vector<std::size_t> vPlaces;
    std::vector<std::vector<std::pair<std::size_t, SegmentIntersectionType>>> vOf; // by first place
};

std::string text(const Pointers& vSet) {
    if (vSet.size() > 12) return std::to_string(vSet.size()) + " segments";
    std::string result;
    for (const Segment2* p : vSet)
        result += p == nullptr ? "null " : doubles::hex({p->getSrc(), p->getTrg()}) + " ";
    return result;
}

Pointers pointers(Segments& v) {
    Pointers vPointers;
    for (Segment2& s : v)
        vPointers.push_back(&s);
    return vPointers;
}

// Nulls, repeated pointers and segments that are none, anywhere.
void spoil(Rng& rng, Pointers& v) {
    static Segment2 aBad[] = {
        {{HUGE_VAL, 0}, {1, 1}}, {{0, 0}, {1, std::nan("")}}, {{0, -HUGE_VAL}, {0, HUGE_VAL}}};
    for (int i = 1 + below(rng, 6); i > 0; --i) {
        const std::size_t place = rng() % (v.size() + 1);
        Segment2* const aChoices[] = {nullptr, v.empty() ? nullptr : v[rng() % v.size()], &aBad[rng() % 3]};
        v.insert(v.begin() + static_cast<std::ptrdiff_t>(place), aChoices[rng() % 3]);
    }
}

testing::AssertionResult areQueriesRight(const SegmentChecker& checker, const Reference& reference,
                                         const Pointers& v, std::size_t num, std::size_t stride) {
    Segment2 before;
    for (const bool alsoEndPoints : {false, true}) {
        Pointers vIllegal = {&before}, vExpected = reference.illegal(alsoEndPoints, num);
        vExpected.insert(vExpected.begin(), &before);
        checker.getIllegalSegments(alsoEndPoints, vIllegal);
        if (vIllegal != vExpected)
            return testing::AssertionFailure() << "illegal ones, " << alsoEndPoints << ": " << text(vIllegal)
                                               << " instead of " << text(vExpected) << " in " << text(v);
        for (std::size_t i = 0; i < num; i += stride) {
            const auto first = static_cast<std::size_t>(std::find(v.begin(), v.end(), v[i]) - v.begin());
            Intersectors vOfOne = {{&before, SIT_NONE}},
                         vExpectedOfOne = reference.intersectors(first, alsoEndPoints, num);
            vExpectedOfOne.insert(vExpectedOfOne.begin(), {&before, SIT_NONE});
            checker.getIntersectors(v[i], alsoEndPoints, vOfOne);
            if (vOfOne != vExpectedOfOne)
                return testing::AssertionFailure()
                       << "place " << i << ", " << alsoEndPoints << ": " << vOfOne.size() << " instead of "
                       << vExpectedOfOne.size() << " in " << text(v);
        }
    }
    return testing::AssertionSuccess();
}

// By boxes for some comparisons or none, then by lines.
testing::AssertionResult isSearchByLinesRight(Rng& rng, const Reference& reference, const Pointers& v) {
    std::vector<std::uint32_t> vPlaces;
    for (const std::size_t place : reference.places())
        vPlaces.push_back(static_cast<std::uint32_t>(place));
    SegmentQueries queries(v, vPlaces);
    for (const bool alsoEndPoints : {false, true}) {
        const std::vector<char> vMarks = queries.findIllegal(alsoEndPoints, nullptr, rng() % 3);
        Pointers vIllegal;
        for (std::size_t i = 0; i < v.size(); ++i)
            if (vMarks[i] != 0) vIllegal.push_back(v[i]);
        if (vIllegal != reference.illegal(alsoEndPoints, v.size()))
            return testing::AssertionFailure()
                   << "by lines, " << alsoEndPoints << ": " << text(vIllegal) << " instead of "
                   << text(reference.illegal(alsoEndPoints, v.size())) << " in " << text(v);
    }
    return testing::AssertionSuccess();
}

// Added at once or in parts, with queries in between.
testing::AssertionResult isRight(Rng& rng, const Pointers& v, std::size_t stride = 1) {
    const Reference reference(v);
    SegmentChecker checker;
    for (std::size_t num = 0;;) {
        const std::size_t next = rng() % 3 == 0 ? num + rng() % (v.size() - num + 1) : v.size();
        const auto at = [&](std::size_t i) { return v.begin() + static_cast<std::ptrdiff_t>(i); };
        checker.addSegments(Pointers(at(num), at(next)));
        num = next;
        const auto result = areQueriesRight(checker, reference, v, num, stride);
        if (!result) return result;
        if (num == v.size()) return isSearchByLinesRight(rng, reference, v);
    }
}

testing::AssertionResult isRightFor(const Segment2& query, const SegmentChecker& checker, const Pointers& v) {
    const SegmentChecker pairs;
    Intersectors vExpected, vFound;
    for (Segment2* p : v) {
        const auto type = p != &query && isFinite(*p) ? pairs.getIntersectionType(&query, p) : SIT_NONE;
        if (type != SIT_NONE) vExpected.emplace_back(p, type);
    }
    checker.getIntersectors(&query, true, vFound);
    if (vFound == vExpected) return testing::AssertionSuccess();
    return testing::AssertionFailure() << text({const_cast<Segment2*>(&query)}) << ": " << vFound.size()
                                       << " instead of " << vExpected.size() << " in " << text(v);
}

class SetsOfSegments : public testing::TestWithParam<segmentSets::Kind> {};
INSTANTIATE_TEST_SUITE_P(All, SetsOfSegments, testing::ValuesIn(segmentSets::all()),
                         [](const auto& info) { return info.param.name; });

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

TEST_P(SetsOfSegments, ofSmallSizeHaveTheIntersectorsThatPairByPairShows) {
    const CapturedMessages messages;
    Rng rng(41);
    for (int i = 0; i < (isSanitized ? 100 : std::min(800, GetParam().maxNum)) && !HasFailure(); ++i) {
        Segments segments = GetParam().make(rng, below(rng, i % 2 == 0 ? 8 : 61));
        if (i % 4 == 1) {
            const Segments more =
                segmentSets::all()[rng() % segmentSets::all().size()].make(rng, below(rng, 20));
            segments.insert(segments.end(), more.begin(), more.end());
        }
        if (i % 8 != 0) segments = segmentSets::varied(rng, std::move(segments));
        Pointers v = pointers(segments);
        if (i % 3 == 0) std::shuffle(v.begin(), v.end(), rng);
        if (i % 4 == 0) spoil(rng, v);
        EXPECT_TRUE(isRight(rng, v)) << "set " << i;
    }
}

TEST_P(SetsOfSegments, ofSeveralTreeLevelsHaveThemToo) {
    const CapturedMessages messages;
    Rng rng(42);
    for (const int num : {100, 130, 170, 200, 257, 300, 512, 700, 1500, 4500}) {
        if (num > (isSanitized ? 300 : GetParam().maxNum)) break;
        Segments segments = segmentSets::varied(rng, GetParam().make(rng, num));
        Pointers v = pointers(segments);
        if (rng() % 4 != 0) std::shuffle(v.begin(), v.end(), rng);
        EXPECT_TRUE(isRight(rng, v, static_cast<std::size_t>(1 + num / 1000)));
    }
}

TEST_P(SetsOfSegments, answerForOtherSegmentsInsideAndFarOutside) {
    const CapturedMessages messages;
    Rng rng(43);
    for (const int num : {5, 40, 600}) {
        Segments segments = segmentSets::varied(rng, GetParam().make(rng, num));
        const Pointers v = pointers(segments);
        const SegmentChecker checker(v);
        for (int i = 0; i < (isSanitized ? 20 : 200) && !HasFailure(); ++i) {
            const Segment2 &s = *v[rng() % v.size()], &other = *v[rng() % v.size()];
            const Segment2 across(s.getSrc(),
                                  rng() % 2 == 0 ? other.getTrg() : segmentSets::between(other, 0.5));
            const double reach = std::ldexp(1, below(rng, 12));
            const Segment2 query(segmentSets::between(across, below(rng, 3) / 2.0 - reach),
                                 segmentSets::between(across, reach * below(rng, 5) / 4.0));
            if (!isFinite(query)) continue;
            EXPECT_TRUE(isRightFor(query, checker, v));
        }
    }
}

TEST(SegmentChecker, findsWhatALineTouchesInNoMoreThanACornerOfBoxes) {
    Rng rng(46);
    for (int i = 0; i < (isSanitized ? 10 : 40) && !HasFailure(); ++i) {
        Segments segments = segmentSets::fansOnALine(rng, 1500);
        const Pointers v = pointers(segments);
        const SegmentChecker checker(v);
        for (std::size_t piece = 600; piece < v.size(); piece += 150)
            EXPECT_TRUE(isRightFor(*v[piece], checker, v));
    }
}

TEST(SegmentChecker, keepsTheNumberingAndTheOrderOfTheSet) {
    Segment2 a({0, 0}, {1, 1}), b({0, 1}, {1, 0}), foreign({0, 0}, {1, 1}), bad({0, 0}, {HUGE_VAL, 0});
    const CapturedMessages messages;
    SegmentChecker checker({nullptr, &b, &bad});
    checker.addSegments({&a, &b});
    EXPECT_EQ(checker.getNumberOfSegments(), 5u);
    EXPECT_EQ(checker.getSegment(0), nullptr);
    EXPECT_EQ(checker.getSegment(2), &bad);
    EXPECT_EQ(checker.getSegment(4), &b);
    EXPECT_EQ(checker.getIndex(&b), 1);
    EXPECT_EQ(checker.getIndex(&a), 3);
    Pointers vIllegal;
    checker.getIllegalSegments(false, vIllegal);
    EXPECT_EQ(vIllegal, (Pointers{&b, &a}));
    const std::string heard = messages.output();
    EXPECT_TRUE(heard.find(", WARNING: ") != std::string::npos); // of a null and a bad one
    EXPECT_EQ(checker.getIndex(&foreign), -1);
    EXPECT_EQ(messages.output(),
              heard + "      [Kivo2D-Message] SegmentChecker::getIndex(), WARNING: No such segment\n");
    EXPECT_THROW(checker.getSegment(5), KivoException);
    EXPECT_TRUE(messages.output().find("i<pSCD->vSegments.size()") != std::string::npos);
}

TEST(SegmentChecker, findsNothingAmongTooFewAndWarnsOfWhatMayBeAMistake) {
    Segment2 only({1, 1}, {2, 2}), point({5, 5}, {5, 5});
    for (const Pointers& v : {Pointers{}, Pointers{&only, &only}, Pointers{&only}, Pointers{&point},
                              Pointers{&only, &point}, Pointers{&point, &only, &point}}) {
        const CapturedMessages messages;
        const SegmentChecker checker(v);
        EXPECT_EQ(checker.getNumberOfSegments(), v.size());
        Pointers vIllegal;
        Intersectors vFound;
        checker.getIllegalSegments(true, vIllegal);
        const std::string heard = messages.output();
        checker.getIntersectors(&only, true, vFound);
        checker.getIllegalSegments(false, vIllegal);
        EXPECT_TRUE(vIllegal.empty() && vFound.empty());
        const bool bSuspicious = v.empty() || std::count(v.begin(), v.end(), v.front()) > 1;
        EXPECT_EQ(heard.find(", WARNING: ") != std::string::npos, bSuspicious) << heard;
        EXPECT_TRUE(v.empty() || messages.output() == heard) << messages.output();
    }
}

TEST(SegmentChecker, refusesToLookForWhatIsNoSegment) {
    Segment2 a({0, 0}, {1, 1}), b({0, 1}, {1, 0}), infinite({0, 0}, {HUGE_VAL, 1}),
        none({std::nan(""), 0}, {1, 1});
    SegmentChecker checker({&a, &b});
    for (const Segment2* pBad :
         {static_cast<const Segment2*>(nullptr), static_cast<const Segment2*>(&infinite),
          static_cast<const Segment2*>(&none)}) {
        const CapturedMessages messages;
        Intersectors vFound = {{&a, SIT_POINT}};
        checker.getIntersectors(pBad, true, vFound);
        EXPECT_EQ(vFound.size(), 1u);
        EXPECT_FALSE(messages.output().empty());
        EXPECT_EQ(checker.getIndex(pBad), -1);
    }
}

TEST(SegmentCheckerProgress, risesToExactlyOneOneAQuery) {
    Rng rng(44);
    for (const auto& kind : segmentSets::all()) {
        for (const int num : {0, 1, 2, 99, 400}) {
            Segments segments = kind.make(rng, num);
            SegmentChecker checker(pointers(segments));
            Listener listener;
            checker.subscribe(MSG_PROGRESS, &listener);
            for (const bool alsoEndPoints : {false, true}) {
                Pointers vIllegal;
                listener.vHeard.clear();
                checker.getIllegalSegments(alsoEndPoints, vIllegal);
                const auto& v = listener.vHeard;
                EXPECT_TRUE(std::is_sorted(v.begin(), v.end()));
                EXPECT_EQ(std::count(v.begin(), v.end(), 1.0), 1) << kind.name << num;
                EXPECT_TRUE(!v.empty() && v.front() >= 0 && v.back() == 1.0);
                EXPECT_GE(v.size(), num == 400 ? 10u : 1u) << kind.name; // it is heard of on the way, too
            }
            checker.unsubscribe(MSG_PROGRESS, &listener);
        }
    }
}

TEST(SegmentCheckerProgress, endsAQueryByAnExceptionWithoutATrace) {
    Rng rng(45);
    for (const auto& kind : segmentSets::all()) {
        Segments segments = kind.make(rng, 150);
        SegmentChecker checker(pointers(segments));
        Listener listener;
        checker.subscribe(MSG_PROGRESS, &listener);
        Pointers vExpected;
        SegmentChecker(pointers(segments)).getIllegalSegments(true, vExpected);
        for (const std::size_t num : {0u, 1u, 5u, 9u}) {
            Segment2 before;
            Pointers vIllegal = {&before};
            listener.vHeard.clear();
            listener.numBeforeThrow = num;
            EXPECT_THROW(checker.getIllegalSegments(true, vIllegal), int);
            EXPECT_EQ(vIllegal, Pointers{&before});
            listener.numBeforeThrow = SIZE_MAX;
            vIllegal.clear();
            checker.getIllegalSegments(true, vIllegal);
            EXPECT_EQ(vIllegal, vExpected);
        }
        checker.unsubscribe(MSG_PROGRESS, &listener);
    }
}

TEST(SegmentCheckerProgress, isHeardByNobodyWhoLeftAndNeedsASubscription) {
    Segment2 a({0, 0}, {1, 1});
    SegmentChecker checker({&a});
    Listener listener;
    const CapturedMessages messages;
    checker.unsubscribe(MSG_PROGRESS, &listener);
    const std::string warning =
        "      [Kivo2D-Message] SegmentChecker::unsubscribe(), WARNING: No publisher present\n";
    EXPECT_EQ(messages.output(), warning);
    checker.subscribe(MSG_PROGRESS, &listener);
    checker.unsubscribe(MSG_PROGRESS, &listener);
    Pointers vIllegal;
    checker.getIllegalSegments(true, vIllegal);
    EXPECT_TRUE(listener.vHeard.empty());
    EXPECT_EQ(messages.output(), warning);
}
