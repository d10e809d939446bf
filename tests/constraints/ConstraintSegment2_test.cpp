#include "ConstraintSegment2.h"

#include "tests/constraints/FakeHost.h"

#include <limits>
#include <sstream>
#include <stdexcept>

using namespace TESK_KIVO2D;
using CSegs = std::vector<ConstraintSegment2*>;

namespace {

constexpr auto CDT = CIS_CONSTRAINED_DELAUNAY;

struct ConstraintSegment2_ : testing::Test {
    FakeHost host;
    Point2* a = host.at(0, 0);
    Point2* b = host.at(4, 2);
    ConstraintGraph2* pGraph = host.mgr.createConstraint({{b, a}}, CDT, true);
    ConstraintSegment2* pCSeg = host.mgr.getConstraintSegment(a, b);

    static CSegs childrenOf(const ConstraintSegment2* p) {
        CSegs v(2);
        Point2* pSplit = nullptr;
        p->getChildrenAndSplitPoint(v[0], v[1], pSplit);
        return v;
    }
    static std::string linesOf(const ConstraintSegment2* p, const std::string& state, const char* length) {
        std::ostringstream text, label;
        label << *p; // the label is known to this text alone
        const std::string number = label.str().substr(0, label.str().find(','));
        text << number << ", " << static_cast<const void*>(p) << ": (" << static_cast<void*>(p->getSrc())
             << "," << static_cast<void*>(p->getTrg()) << ")" << state << "\n"
             << *p->getSrc() << "\n"
             << *p->getTrg() << "\nlength=" << length;
        return text.str();
    }
};

} // namespace

TEST_F(ConstraintSegment2_, diesWithTwoChildrenThatShareTheSplitPoint) {
    std::ostringstream before, after;
    before << *pCSeg;
    EXPECT_EQ(linesOf(pCSeg, " [alive]", "4.47214"), before.str());
    EXPECT_EQ(0u, before.str().rfind("ConstraintSegment2 label ", 0));
    EXPECT_EQ(a, pCSeg->getSrc());
    EXPECT_EQ(std::numeric_limits<double>::max(), pCSeg->getAdjacentArea());

    Point2* const s = host.at(2, 1);
    EXPECT_TRUE(pCSeg->split_combinatorialOnly(s));
    EXPECT_FALSE(pCSeg->isAlive());
    after << *pCSeg;
    EXPECT_EQ(linesOf(pCSeg, " [DEAD, numChildren=2]", "4.47214"), after.str());
    ConstraintSegment2 *p0 = nullptr, *p1 = nullptr;
    Point2* pSplit = nullptr;
    pCSeg->getChildrenAndSplitPoint(p0, p1, pSplit);
    EXPECT_EQ(host.mgr.getConstraintSegment(s, a), p0);
    EXPECT_EQ(host.mgr.getConstraintSegment(s, b), p1);
    EXPECT_EQ(s, pSplit);
    EXPECT_EQ(b, p1->getSrc()); // by address, as s is the younger one
    EXPECT_EQ(CDT, p1->getCIS());
    EXPECT_TRUE(*p0 < *p1);
    EXPECT_FALSE(*p0 < *p0);
    EXPECT_TRUE(host.mgr.isConstraint(s));

    ASSERT_TRUE(p1->split_combinatorialOnly(host.at(3, 1)));
    CSegs vLeaves;
    pCSeg->getChildrenRec(vLeaves);
    EXPECT_EQ((CSegs{p0, childrenOf(p1)[0], childrenOf(p1)[1]}), vLeaves);
}

TEST_F(ConstraintSegment2_, refusesWhatIsNoSplit) {
    expectFails("pSplit!=0", [&] { pCSeg->split_combinatorialOnly(nullptr); });
    expectFails("p0!=pSplit && p1!=pSplit", [&] { pCSeg->split_combinatorialOnly(b); });
    expectFails("vChildren.size()==2", [&] {
        CSegs v;
        pCSeg->getChildrenRec(v);
    });
    {
        const CapturedMessages messages;
        EXPECT_FALSE(pCSeg->split_combinatorialOnly(host.at(2, 2.5)));
        EXPECT_EQ((CSegs{nullptr, nullptr}), childrenOf(pCSeg));
        EXPECT_EQ(
            "      [Kivo2D-Message] ConstraintSegment2::split_combinatorialOnly(), WARNING: Ignoring a split "
            "point outside the box of the constraint segment\n"
            "      [Kivo2D-Message] ConstraintSegment2::getChildrenAndSplitPoint(), WARNING: *this is still "
            "alive!\n",
            messages.output());
    }
    EXPECT_TRUE(pCSeg->isAlive());
    ConstraintSegment2* const pUnowned = host.mgr.createConstraint(host.at(9, 9), host.at(8, 8), CDT);
    expectFails("!sOwners.empty()", [&] { pUnowned->split_combinatorialOnly(a); });
    pCSeg->split_combinatorialOnly(host.at(1, 1));
    expectFails("isAlive()", [&] { pCSeg->split_combinatorialOnly(host.at(2, 1)); });
    expectFails("bAlive", [&] { pCSeg->insertAndSplit(Point2(2, 1)); });
    expectFails("p0<p1", [&] { host.mgr.createConstraint(a, a, CDT); });
}

TEST_F(ConstraintSegment2_, insertsAPointAndThenThePiecesFromTheTarget) {
    bool bReleased = false;
    host.beforePoint = [&](const Point2&) { bReleased = !pCSeg->isAlive() && !host.mgr.isConstraint(a, b); };
    host.vInserted.clear();
    Point2 beyond(1, 77);
    beyond.setCustomIndex(5);
    Point2* const s = pCSeg->insertAndSplit(beyond);
    ASSERT_NE(nullptr, s);
    EXPECT_TRUE(bReleased);
    EXPECT_EQ(Point2(1, 2), *s); // moved into the box
    EXPECT_EQ(5, s->getCustomIndex());
    EXPECT_EQ((std::vector<std::pair<Point2*, Point2*>>{{b, s}, {a, s}}), host.vInserted);
    EXPECT_EQ(std::vector<Point2*>{s}, host.vLegalized);
}

TEST_F(ConstraintSegment2_, isUnchangedWhenThePointIsAnEndOrNotFiniteOrTheInsertionThrows) {
    {
        const CapturedMessages messages;
        EXPECT_EQ(nullptr, pCSeg->insertAndSplit(Point2(-1, -1)));
        EXPECT_EQ(nullptr, pCSeg->insertAndSplit(Point2(std::nan(""), 1)));
        EXPECT_EQ(
            "      [Kivo2D-Message] ConstraintSegment2::insertAndSplit, WARNING: Trying to split a "
            "Constraint "
            "segment at one of its endpoints\n"
            "      [Kivo2D-Message] ConstraintSegment2::insertAndSplit, WARNING: Ignoring a point with a "
            "coordinate that is not finite\n",
            messages.output());
    }
    EXPECT_TRUE(pCSeg->isAlive());
    host.beforePoint = [](const Point2&) { throw std::runtime_error("full"); };
    EXPECT_THROW(pCSeg->insertAndSplit(Point2(2, 1)), std::runtime_error);
    EXPECT_TRUE(pCSeg->isAlive());

    // Thrown between the two pieces: the one that is missing is made up for.
    host.beforePoint = [](const Point2&) {};
    host.beforeSegment = [&](ConstraintSegment2* p) {
        if (p->getSrc() == a) throw std::runtime_error("full");
    };
    EXPECT_THROW(pCSeg->insertAndSplit(Point2(2, 1)), std::runtime_error);
    EXPECT_TRUE(host.mgr.hasPending());
    EXPECT_FALSE(host.isEdge(a, host.at(2, 1)));
    host.beforeSegment = [](ConstraintSegment2*) {};
    host.mgr.createConstraint({{host.at(5, 5), host.at(6, 6)}}, CDT, true);
    EXPECT_TRUE(host.isEdge(a, host.at(2, 1)));
    EXPECT_FALSE(host.mgr.hasPending());
}

TEST_F(ConstraintSegment2_, allOwnersOwnAllDescendants) {
    ConstraintGraph2* const pSecond =
        host.mgr.createConstraint({{a, b}, {b, a}}, CIS_CONFORMING_DELAUNAY, true);
    Point2* const s = host.at(2, 1);
    pCSeg->split_combinatorialOnly(s);
    ConstraintGraph2* const pThird = host.mgr.createConstraint({{a, b}}, CDT, true); // dead by now
    const CSegs vKids = childrenOf(pCSeg);
    vKids[1]->split_combinatorialOnly(host.at(3, 1));
    for (ConstraintSegment2* p :
         {pCSeg, vKids[0], vKids[1], childrenOf(vKids[1])[0], childrenOf(vKids[1])[1]}) {
        EXPECT_EQ(3u, p->getNumberOfOwners());
        EXPECT_EQ(CDT, p->getCIS()); // that of the first who asked
        for (ConstraintGraph2* pOwner : {pGraph, pSecond, pThird})
            EXPECT_EQ(p->isAlive(), pOwner->isConstraint(p));
    }
}

TEST(ConstraintSegment2, aChainOfAHundredThousandSplitsIsNoDepth) {
    constexpr int num = 100000;
    for (const bool bFromSource : {true, false}) {
        FakeHost host;
        Point2 *const a = host.at(0, 0), *const b = host.at(num, 0);
        ConstraintGraph2* const pGraph = host.mgr.createConstraint({{a, b}}, CDT, true);
        Point2* pEnd = bFromSource ? a : b;
        for (int i = 1; i < num; ++i) {
            Point2* const s = host.at(bFromSource ? i : num - i, 0);
            host.mgr.wasSplit(bFromSource ? pEnd : a, bFromSource ? b : pEnd, s);
            pEnd = s;
        }
        const std::vector<Segment2> vBack{Segment2(*b, *a)};
        ConstraintGraph2* const pLate = host.mgr.createConstraint_oriented(vBack, CDT);
        for (const ConstraintGraph2* p : {pGraph, pLate}) {
            std::vector<Point2*> v;
            p->getPolygonVertices(v);
            ASSERT_EQ(2u * num, v.size());
            for (int i = 0; i < num; ++i) {
                ASSERT_EQ(p == pLate ? num - i : i, v[2 * static_cast<std::size_t>(i)]->x());
                ASSERT_EQ(p == pLate ? num - i - 1 : i + 1, v[2 * static_cast<std::size_t>(i) + 1]->x());
            }
        }
        EXPECT_EQ(static_cast<std::size_t>(num), host.sEdges.size() - 1); // the undivided edge came first
    }
}
