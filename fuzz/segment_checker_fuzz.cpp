#include "fuzz/check.h"

#include "functions.h"
#include "tests/support/segmentOracle.h"

// Sets of segments. What two of them have in common is what rationals say, whichever is named first and
// however they are directed; the queries find what comparing each with each finds, by boxes and by lines. The
// first byte says what coordinates are: small integers (half a byte each, everything touches everything),
// those at any scale, or any doubles, also such as are not finite. Some objects are in the set twice.

using namespace segmentOracle;

namespace {

constexpr std::size_t maxSegments = 40;
constexpr std::size_t maxExact = 12; // rationals take too long for all

class Input : public Bytes {
public:
    Input(const std::uint8_t* pBytes, std::size_t num) : Bytes(pBytes, num), mode(byte()) {}
    bool isToBeDrawn() const { return (mode & 12) == 12; } // seldom: it takes long
    Segment2 segment() {
        const Point2 source = point();
        return {source, point()};
    }

private:
    Point2 point() {
        if ((mode & 1) != 0) {
            const int both = byte(), exponent = mode & 2 ? 128 * (mode >> 4) - 1024 : 0;
            return {std::ldexp(both >> 4, exponent), std::ldexp(both & 15, exponent)};
        }
        const double x = anyDouble();
        return {x, anyDouble()};
    }

    const std::uint8_t mode;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pBytes, std::size_t num) {
    Input input(pBytes, num);
    setMessageSink([](MessageChannel, const std::string& text) {
        CHECK(text.find("ERROR") == std::string::npos);
        CHECK(text.find("left out") == std::string::npos);
    });
    std::vector<Segment2> vSegments;
    while (!input.atEnd() && vSegments.size() < maxSegments)
        vSegments.push_back(input.segment());
    Pointers v;
    for (Segment2& s : vSegments)
        v.push_back(&s);
    if (!v.empty()) v.insert(v.end(), {v.front(), v.back()});
    const SegmentChecker checker(v);
    Points vEnds; // of the first ones, two by two
    for (std::size_t i = 0; i < std::min(maxExact, vSegments.size()); ++i)
        if (isFinite(vSegments[i])) vEnds.insert(vEnds.end(), {vSegments[i].getSrc(), vSegments[i].getTrg()});
    for (std::size_t i = 0; i < vEnds.size(); i += 2)
        for (std::size_t j = 0; j < i; j += 2)
            CHECK(findFault(checker, {vEnds[i], vEnds[i + 1], vEnds[j], vEnds[j + 1]}).empty());
    CHECK(findFault(checker, v).empty());
    if (input.isToBeDrawn()) {
        checker.showSegments("/dev/null");
        for (const bool alsoEndPoints : {false, true})
            checker.showIllegalSegments(alsoEndPoints, "/dev/null");
    }
    setMessageSink({});
    return 0;
}
