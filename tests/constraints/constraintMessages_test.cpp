#include "Kivo_2D.h"
#include "tests/support/constrained.h"

#include <algorithm>
#include <limits>
#include <map>
#include <sstream>
#include <stdexcept>

using namespace TESK_KIVO2D;
using doubles::Rng;

namespace {

const std::string prefix = "      [Kivo2D-Message] ";

template<class Value>
std::string textOf(const Value& value) {
    std::ostringstream stream;
    stream << value;
    return stream.str();
}

// What a call says.
template<class Call>
std::string said(Call call) {
    const CapturedMessages captured;
    call();
    return captured.output() + captured.error();
}

// Counts what it hears, and stops the operation after so many messages.
struct Listener : MsgBase {
    explicit Listener(int numMessages = -1) : numLeft(numMessages) {}
    void update(MsgType, const char* label, double progress) override {
        if (numLeft-- == 0) throw std::runtime_error("enough");
        EXPECT_LE(mLast[label], progress) << label;
        mLast[label] = progress;
        if (progress >= 1) ++mNumEnds[label], mLast[label] = 0;
    }
    int numLeft;
    std::map<std::string, double> mLast;
    std::map<std::string, int> mNumEnds;
};

Segments manySegments() {
    Segments vSegments;
    generateRandomSegments(40, 0, 1, 0.4, vSegments, 3);
    return vSegments;
}

const std::vector<Point2> vSquare = {{-1, -1}, {2, -1}, {2, 2}, {-1, 2}};

} // namespace

TEST(CreateConstraint, ofNothingSaysSoAndReturnsNull) {
    Kivo_2D kivo;
    Segments vNone;
    EXPECT_EQ(
        prefix + "Kivo_2D::createConstraint(), ERROR: You have not supplied any segments. Returning NULL!\n",
        said([&] { EXPECT_EQ(nullptr, kivo.createConstraint(vNone, CIS_CONSTRAINED_DELAUNAY, false)); }));
}

TEST(CreateConstraint, skipsSegmentsWithoutLengthWithAWarning) {
    Constrained c;
    c.kivo.insert(vSquare);
    const std::string point = textOf(*c.kivo.insert(Point2(1, 1)));
    const std::string text = "Identical source and endpoint, a constraint segment has been skipped.\n";
    c.add({{{1, 1}, {1, 1}}}, CIS_CONSTRAINED_DELAUNAY);
    EXPECT_EQ(prefix + "ConstraingMgr::createConstraint, WARNING: (0) " + text + point + " <-> " + point +
                  "\n",
              c.messages);
    c.messages.clear();
    c.add({{{0, 0}, {1, 0}}, {{1, 1}, {1, 1}}, {{0, 1}, {0.5, 1}}}, CIS_CONFORMING_DELAUNAY, true);
    EXPECT_EQ(prefix + "ConstraingMgr::createConstraint_oriented(vSegments,...), WARNING: (2) " + text,
              c.messages);
    expectConstrained(c);
    EXPECT_EQ(2u, oracle::leafEdges(c.vGraphs).size());
}

TEST(CreateConstraint, skipsSegmentsThatAreNotFiniteWithAWarning) {
    const double nan = std::numeric_limits<double>::quiet_NaN(),
                 infinity = std::numeric_limits<double>::infinity();
    for (const ConstraintInsertionStrategy cis : {CIS_CONFORMING_DELAUNAY, CIS_CONSTRAINED_DELAUNAY}) {
        for (const bool bOriented : {false, true}) {
            Constrained c;
            c.kivo.insert(vSquare);
            c.add(
                {{{0, nan}, {1, 1}}, {{0, 0}, {1, 1}}, {{1, 0}, {infinity, 0}}, {{-infinity, nan}, {nan, 0}}},
                cis, bOriented);
            EXPECT_EQ(prefix + "Kivo_2D::createConstraint(), WARNING: 3 segments with a coordinate that is "
                               "not finite ignored\n",
                      c.messages);
            c.add({{{nan, nan}, {nan, nan}}}, cis, bOriented);
            EXPECT_EQ(6u, c.kivo.numberOfPoints());
            expectConstrained(c);
        }
    }
}

TEST(CreateConstraint, saysWhereDoublesAreTooCoarseAndStaysValid) {
    const double origin = 0x1p52;
    const auto at = [=](double x, double y) { return Point2(origin + x, origin + y); };
    Constrained c;
    c.kivo.insert({at(-900, -800), at(900, -700), at(0, 990)});
    c.add({{at(0, 0), at(7, 6)}, {at(0, 5), at(6, 0)}}, CIS_CONSTRAINED_DELAUNAY);
    EXPECT_TRUE(c.hasSaid(prefix + "Dt2::treatConstraintZone(), WARNING: intersection point of two "
                                   "constraints has bad numerica accuracy!\n"))
        << c.messages;
    expectConstrained(c);
    c.messages.clear();
    c.kivo.insert({at(53, 51), at(54, 50)});
    c.add({{at(50, 50), at(57, 51)}}, CIS_CONFORMING_DELAUNAY);
    EXPECT_EQ(
        prefix +
            "Dt2::insertSegmentConformingDelaunay(), WARNING: Double precision arithmetic does not allow "
            "to split a segment further, giving up. Incorrect result!\n",
        c.messages);
    EXPECT_EQ("", oracle::findConstraintFault(c.kivo, c.vGraphs, true));
}

TEST(CreateConstraint, reportsProgressThatEndsOnceForEachOperation) {
    for (const bool bOriented : {false, true}) {
        Constrained c;
        Listener listener;
        c.kivo.subscribe(MSG_PROGRESS, &listener);
        c.add(manySegments(), CIS_CONSTRAINED_DELAUNAY, bOriented);
        c.kivo.applyConstraintsAndZones();
        c.kivo.unsubscribe(MSG_PROGRESS, &listener);
        EXPECT_EQ(1, listener.mNumEnds["establish constraints"]);
        EXPECT_EQ(1, listener.mNumEnds["apply"]);
        for (const auto& [label, num] : listener.mNumEnds)
            EXPECT_EQ(1, num) << label;
        expectConstrained(c);
    }
}

TEST(CreateConstraint, thatAListenerStopsLeavesAValidTriangulation) {
    const Segments vSegments = manySegments();
    bool bStopped = true;
    for (int numMessages = 0; bStopped; numMessages += 5) {
        for (int way = 0; way < 4 && !testing::Test::HasFailure(); ++way) {
            SCOPED_TRACE(numMessages);
            Constrained c;
            if (way % 2 != 0) c.kivo.insert(vSquare);
            Listener listener(numMessages);
            c.kivo.subscribe(MSG_PROGRESS, &listener);
            bStopped = false;
            try {
                Segments vCopy = vSegments;
                c.kivo.createConstraint(vCopy, ConstraintInsertionStrategy(way % 2), way >= 2);
            } catch (const std::runtime_error&) {
                bStopped = true;
            }
            c.kivo.unsubscribe(MSG_PROGRESS, &listener);
            said([&] { EXPECT_TRUE(c.kivo.checkValidity(true, "stopped")); });
            for (const Segment2& s : vSegments) // on what may be in already
                c.kivo.insert(
                    Point2((s.getSrc().x() + s.getTrg().x()) / 2, (s.getSrc().y() + s.getTrg().y()) / 2));
            c.add(vSegments, CIS_CONSTRAINED_DELAUNAY);
            expectConstrained(c);
        }
    }
}
