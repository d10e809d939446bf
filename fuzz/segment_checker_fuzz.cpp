#include "fuzz/check.h"

#include "Segment2.h"
#include "SegmentChecker.h"
#include "checker/SegmentQueries.h"
#include "checker/finite.h"
#include "functions.h"
#include "tests/oracle/exact.h"

#include <array>
#include <cmath>
#include <cstring>

// Sets of segments. What two of them have in common is what rationals say, whichever is named first and
// however they are directed; the queries find what comparing each with each finds, by boxes and by lines. The
// first byte says what coordinates are: small integers (half a byte each, everything touches everything),
// those at any scale, or any doubles, also such as are not finite. Some objects are in the set twice.

using namespace TESK_KIVO2D;

namespace {

constexpr std::size_t maxSegments = 40;

class Input {
public:
    Input(const std::uint8_t* pBytes, std::size_t num) : pNext(pBytes), pEnd(pBytes + num), mode(byte()) {}
    bool atEnd() const { return pNext == pEnd; }
    bool isToBeDrawn() const { return (mode & 8) != 0; }
    Segment2 segment() {
        const Point2 source = point();
        return {source, point()};
    }

private:
    std::uint8_t byte() { return atEnd() ? std::uint8_t(0) : *pNext++; }
    Point2 point() {
        if ((mode & 1) != 0) {
            const int both = byte(), exponent = mode & 2 ? 128 * (mode >> 4) - 1024 : 0;
            return {std::ldexp(both >> 4, exponent), std::ldexp(both & 15, exponent)};
        }
        const double x = anyDouble();
        return {x, anyDouble()};
    }
    double anyDouble() {
        double value = 0;
        const std::size_t num = std::min<std::size_t>(sizeof value, static_cast<std::size_t>(pEnd - pNext));
        if (num != 0) std::memcpy(&value, pNext, num);
        pNext += num;
        return value;
    }

    const std::uint8_t *pNext, *pEnd;
    const std::uint8_t mode;
};

Segment2 reversed(Segment2 s) {
    s.swapSrcTrg();
    return s;
}

bool isWithin1Ulp(double value, const mpq_class& exact) {
    const double infinity = std::numeric_limits<double>::infinity();
    const double below = std::nextafter(value, -infinity), above = std::nextafter(value, infinity);
    return (std::isinf(below) || below <= exact) && (std::isinf(above) || above >= exact);
}

class Run {
public:
    explicit Run(Input& input) {
        while (!input.atEnd() && vSegments.size() < maxSegments)
            vSegments.push_back(input.segment());
        for (Segment2& s : vSegments)
            vGiven.push_back(&s);
        if (!vGiven.empty()) vGiven.insert(vGiven.end(), {vGiven.front(), vGiven.back()});
        checker.addSegments(vGiven);
        for (std::size_t i = 0; i < vSegments.size(); ++i)
            if (isFinite(vSegments[i])) vPlaces.push_back(i);
    }

    void checkPairs() {
        for (const std::size_t i : vPlaces) {
            CHECK(checker.getIntersectionType(vGiven[i], vGiven[i]) == SIT_SEGMENT);
            for (std::size_t j = 0; j < i; ++j)
                if (isFinite(vSegments[j]))
                    aTypes[i][j] = aTypes[j][i] = checkPair(vSegments[i], vSegments[j]);
        }
    }

    void checkQueries(bool alsoEndPoints) {
        std::vector<Segment2*> vExpected, vFound;
        for (const std::size_t i : vPlaces) {
            std::vector<std::pair<Segment2*, SegmentIntersectionType>> vAll, vIntersectors, vOfCopy;
            const Segment2 copy = reversed(vSegments[i]);
            checker.getIntersectors(vGiven[i], alsoEndPoints, vIntersectors);
            checker.getIntersectors(&copy, alsoEndPoints, vOfCopy);
            for (const std::size_t j : vPlaces) {
                const SegmentIntersectionType type = aTypes[i][j];
                const bool bCounts = type != SIT_NONE && (type != SIT_ENDPOINT || alsoEndPoints);
                if (j != i && bCounts) vAll.emplace_back(vGiven[j], type);
            }
            CHECK(vIntersectors == vAll);
            CHECK(vOfCopy.size() - vAll.size() <= 1); // its original may be among them
            if (!vAll.empty()) vExpected.push_back(vGiven[i]);
        }
        checker.getIllegalSegments(alsoEndPoints, vFound);
        CHECK(vFound == vExpected);
        SegmentQueries queries(vGiven, {vPlaces.begin(), vPlaces.end()});
        for (const std::size_t maxMisses : {std::size_t(0), std::size_t(1) << 40}) { // lines, boxes
            std::vector<Segment2*> vMarked;
            const std::vector<char> vMarks = queries.findIllegal(alsoEndPoints, nullptr, maxMisses);
            for (const std::size_t i : vPlaces)
                if (vMarks[i] != 0) vMarked.push_back(vGiven[i]);
            CHECK(vMarked == vExpected);
        }
    }

    void show() const {
        checker.showSegments("/dev/null");
        for (const bool alsoEndPoints : {false, true})
            checker.showIllegalSegments(alsoEndPoints, "/dev/null");
    }

private:
    SegmentIntersectionType checkPair(const Segment2& a, const Segment2& b) const {
        const SegmentIntersectionType type = checker.getIntersectionType(&a, &b);
        CHECK(type == checker.getIntersectionType(&b, &a));
        const Segment2 otherWay = reversed(a);
        CHECK(type == checker.getIntersectionType(&otherWay, &b));
        const auto exact = oracle::commonPoints(a.getSrc(), a.getTrg(), b.getSrc(), b.getTrg());
        CHECK((type == SIT_NONE) == !exact);
        if (!exact) return type;
        CHECK((type == SIT_SEGMENT) == !(exact->first == exact->last));
        if (type == SIT_POINT) checkPoint(a, b, exact->first);
        if (type == SIT_SEGMENT) checkSegment(a, b, *exact);
        if (type == SIT_ENDPOINT) {
            const Point2 src = a.getSrc(), trg = a.getTrg();
            CHECK(src == b.getSrc() || src == b.getTrg() || trg == b.getSrc() || trg == b.getTrg());
        }
        return type;
    }

    void checkPoint(const Segment2& a, const Segment2& b, const oracle::RationalPoint& exact) const {
        Point2 point(-1, -1);
        CHECK(checker.getIntersectionPoint(SIT_POINT, &a, &b, point));
        CHECK(isWithin1Ulp(point.x(), exact.x) && isWithin1Ulp(point.y(), exact.y));
    }

    void checkSegment(const Segment2& a, const Segment2& b, const oracle::RationalSegment& exact) const {
        Segment2 common;
        CHECK(checker.getIntersectionSegment(&a, &b, common));
        const Point2 src = common.getSrc(), trg = common.getTrg();
        CHECK(src.x() == exact.first.x && src.y() == exact.first.y);
        CHECK(trg.x() == exact.last.x && trg.y() == exact.last.y);
    }

    std::vector<Segment2> vSegments;
    std::vector<Segment2*> vGiven;
    std::vector<std::size_t> vPlaces; // of those that are finite
    std::array<std::array<SegmentIntersectionType, maxSegments>, maxSegments> aTypes{};
    SegmentChecker checker;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pBytes, std::size_t num) {
    Input input(pBytes, num);
    setMessageSink([](MessageChannel, const std::string& text) {
        CHECK(text.find("ERROR") == std::string::npos);
        CHECK(text.find("left out") == std::string::npos);
    });
    Run run(input);
    run.checkPairs();
    run.checkQueries(false);
    run.checkQueries(true);
    if (input.isToBeDrawn()) run.show();
    setMessageSink({});
    return 0;
}
