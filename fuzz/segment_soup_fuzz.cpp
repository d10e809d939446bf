#include "fuzz/check.h"

#include "Kivo_2D.h"
#include "tests/oracle/constraints.h"

#include <cmath>

// Points and segments in any order, by both strategies, with directions and without. After each call the
// triangulation is valid, and all laws of constraints hold. The first byte says what coordinates are: small
// integers (one byte each, everything touches everything) or any doubles, and at which scale.

using namespace TESK_KIVO2D;

namespace {

constexpr int MAX_OPERATIONS = 24;
constexpr std::size_t MANY_POINTS = 200; // rationals take too long for more, but for once at the end

class Input : public Bytes {
public:
    Input(const std::uint8_t* pBytes, std::size_t num) : Bytes(pBytes, num) {
        const std::uint8_t mode = byte();
        bIntegers = mode & 1;
        offset = mode & 2 ? 4e6 : 0;
        exponent = mode & 4 ? 400 - 100 * (mode >> 4) : 0;
    }
    Point2 point() {
        const double x = coordinate();
        return {x, coordinate()};
    }

private:
    double coordinate() { return bIntegers ? std::ldexp(byte() % 16 + offset, exponent) : anyDouble(); }

    bool bIntegers;
    double offset;
    int exponent;
};

class Soup {
public:
    void run(Input& input) {
        for (int i = 0; i < MAX_OPERATIONS && !input.atEnd(); ++i) {
            const int operation = input.byte() % 7;
            if (operation < 3) {
                const Point2 source = input.point();
                vNext.emplace_back(source, input.point());
                continue;
            }
            switch (operation) {
            case 3:
            case 4:
                constrain(ConstraintInsertionStrategy(operation - 3), input.byte() % 2 != 0);
                break;
            case 5:
                kivo.insert(input.point());
                break;
            case 6:
                insertEnds();
                break;
            }
            check(kivo.numberOfPoints() < MANY_POINTS);
        }
        constrain(CIS_CONSTRAINED_DELAUNAY, false);
        kivo.insert({{0, 0}, {15, 0}, {0, 15}}); // now it is 2-D
        if (kivo.is2D()) kivo.applyConstraintsAndZones();
        bSomePending = !kivo.is2D();
        check(kivo.numberOfPoints() < 10 * MANY_POINTS);
    }

private:
    void constrain(ConstraintInsertionStrategy cis, bool bOriented) {
        if (vNext.empty()) return;
        vGraphs.push_back({kivo.createConstraint(vNext, cis, bOriented), vNext});
        vNext.clear();
        bSomePending = !kivo.is2D();
    }

    // As a batch, so that later constraints find all their ends there.
    void insertEnds() {
        std::vector<Point2> vPoints;
        for (const Segment2& s : vNext)
            vPoints.insert(vPoints.end(), {s.getSrc(), s.getTrg()});
        kivo.insert(vPoints);
    }

    void check(bool bAllLaws) const {
        const std::string fault = bAllLaws ? oracle::findConstraintFault(kivo, vGraphs, bSomePending) : "";
        if (!fault.empty()) std::fprintf(stderr, "%s\n", fault.c_str());
        CHECK(fault.empty());
        CHECK(bSomePending || kivo.checkValidity(true, "soup"));
    }

    Kivo_2D kivo;
    std::vector<oracle::GivenGraph> vGraphs;
    std::vector<Segment2> vNext; // for the next call
    bool bSomePending = false;   // some of those given wait for the triangulation to become 2-D
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pBytes, std::size_t num) {
    Input input(pBytes, num);
    Soup soup;
    setMessageSink([](MessageChannel, const std::string& text) {
        CHECK(text.find("insufficient") == std::string::npos);
        CHECK(text.find("ERROR") == std::string::npos);
    });
    soup.run(input);
    setMessageSink({});
    return 0;
}
