#include "constraints/ConstraintMgr.h"

#include "functions.h"
#include "tests/constraints/FakeHost.h"
#include "tests/support/doubles.h"
#include "tests/support/files.h"

#include <algorithm>
#include <cmath>
#include <sstream>
#include <stdexcept>

using namespace TESK_KIVO2D;
using CSegs = std::vector<ConstraintSegment2*>;
using Pairs = std::vector<PointerPair>;

namespace {

constexpr auto CDT = CIS_CONSTRAINED_DELAUNAY;
const std::string prefix = "      [Kivo2D-Message] ";
const std::string skipped = " Identical source and endpoint, a constraint segment has been skipped.\n";

struct Listener : MsgBase {
    std::vector<double> vHeard;
    std::set<std::string> sLabels;
    std::function<void(double)> then = [](double) {};
    void update(MsgType, const char* label, double progress) override {
        vHeard.push_back(progress);
        sLabels.insert(label);
        then(progress);
    }
};

std::size_t numLeaves(const ConstraintGraph2* pGraph) {
    CSegs v;
    pGraph->getChildConstraintSegments(v);
    return v.size();
}

} // namespace

TEST(ConstraintMgr, hasOneSegmentForAPairOfVertices) {
    FakeHost host;
    Point2 *const a = host.at(0, 0), *const b = host.at(1, 1);
    EXPECT_FALSE(host.mgr.isConstraint(a, b));
    EXPECT_FALSE(host.mgr.isConstraint(a));
    const ConstraintGraph2* const pGraph = host.mgr.createConstraint({{a, b}, {b, a}}, CDT, true);
    const ConstraintGraph2* const pOther = host.mgr.createConstraint({{b, a}}, CIS_CONFORMING_DELAUNAY, true);
    CSegs v, vOther;
    pGraph->getOriginalConstraintSegments(v);
    pOther->getOriginalConstraintSegments(vOther);
    EXPECT_EQ((CSegs{vOther[0], vOther[0]}), v);
    EXPECT_EQ(2u, v[0]->getNumberOfOwners());
    EXPECT_EQ(CDT, v[0]->getCIS());
    EXPECT_EQ(CIS_CONFORMING_DELAUNAY, pOther->getInsertionStrategy());
    EXPECT_TRUE(host.mgr.isConstraint(b, a));
    EXPECT_TRUE(host.mgr.isFixed(a, b));
    EXPECT_TRUE(host.mgr.isConstraint(b));
}

TEST(ConstraintMgr, skipsPairsOfEqualVertices) {
    FakeHost host;
    Point2 *const a = host.at(0.5, -7), *const b = host.at(1, 1);
    std::ostringstream point;
    point << *a;
    const Segment2 dot(*a, *a), segment(*b, *a);
    const CapturedMessages messages;
    EXPECT_EQ(0u, numLeaves(host.mgr.createConstraint({{a, a}}, CDT, true)));
    EXPECT_EQ(1u, numLeaves(host.mgr.createConstraint_directed({{a, a}, {b, a}}, CDT)));
    const ConstraintGraph2* const pOriented = host.mgr.createConstraint_oriented({dot, segment, dot}, CDT);
    EXPECT_EQ(prefix + "ConstraingMgr::createConstraint, WARNING: (0)" + skipped + point.str() + " <-> " +
                  point.str() + "\n" + prefix + "ConstraingMgr::createConstraint(), WARNING: (1)" + skipped +
                  prefix + "ConstraingMgr::createConstraint_oriented(vSegments,...), WARNING: (2)" + skipped +
                  prefix + "ConstraingMgr::createConstraint_oriented(vSegments,...), WARNING: (2)" + skipped,
              messages.output());
    std::vector<Point2*> v;
    pOriented->getPolygonVertices(v);
    EXPECT_EQ((std::vector<Point2*>{b, a}), v);
    EXPECT_EQ(0u, numLeaves(host.mgr.createConstraint(std::vector<Segment2>{}, CDT)));
}

// The first one has an owner when the second one's end divides it.
TEST(ConstraintMgr, insertsAllEndsBeforeTheFirstSegment) {
    FakeHost host;
    const std::vector<Segment2> vSegments{{Point2(0, 0), Point2(2, 0)}, {Point2(1, 0), Point2(1, 5)}};
    host.beforePoint = [&](const Point2&) { EXPECT_TRUE(host.mgr.empty()); };
    EXPECT_EQ(2u, numLeaves(host.mgr.createConstraint_oriented(vSegments, CDT)));
    EXPECT_EQ(4u, host.numberOfPoints());
}

TEST(ConstraintMgr, theFilterHidesNoConstraint) {
    FakeHost host;
    doubles::Rng rng(5);
    std::vector<Point2*> v;
    const auto addPoints = [&](std::size_t num) {
        while (v.size() < num)
            v.push_back(host.at(doubles::uniform(rng), static_cast<double>(v.size())));
    };
    std::set<PointerPair> sPairs;
    const auto addPairs = [&](int num) {
        Pairs vPairs;
        for (int i = 0; i < num; ++i)
            vPairs.push_back(std::minmax(v[rng() % v.size()], v[rng() % v.size()]));
        std::erase_if(vPairs, [](const PointerPair& pair) { return pair.first == pair.second; });
        sPairs.insert(vPairs.begin(), vPairs.end());
        host.mgr.createConstraint(vPairs, CDT, false);
    };
    addPoints(9000); // no filter yet
    addPairs(3000);
    addPoints(20000);
    addPairs(4000);
    ConstraintSegment2* const pCSeg =
        host.mgr.getConstraintSegment(sPairs.begin()->first, sPairs.begin()->second);
    Point2* const s = host.at(pCSeg->getSrc()->x(), pCSeg->getTrg()->y());
    pCSeg->split_combinatorialOnly(s);
    EXPECT_TRUE(host.mgr.isConstraint(pCSeg->getTrg(), s));
    EXPECT_FALSE(host.mgr.isConstraint(pCSeg->getSrc(), pCSeg->getTrg()));
    sPairs.erase(sPairs.begin());
    std::set<Point2*> sEnds;
    for (const auto& [p, q] : sPairs) {
        ASSERT_TRUE(host.mgr.isConstraint(q, p) && host.mgr.isConstraint(p, q));
        sEnds.insert({p, q});
    }
    sEnds.insert({pCSeg->getSrc(), pCSeg->getTrg()});
    for (Point2* p : v) {
        ASSERT_EQ(sEnds.count(p) > 0, host.mgr.isConstraint(p));
        Point2* const q = v[rng() % v.size()];
        const bool bExpected =
            p != pCSeg->getSrc() && p != pCSeg->getTrg() && sPairs.count(std::minmax(p, q)) > 0;
        if (q != pCSeg->getSrc() && q != pCSeg->getTrg()) {
            ASSERT_EQ(bExpected, host.mgr.isConstraint(p, q));
        }
    }
    EndpointFilter filter;
    EXPECT_FALSE(filter.exists() || filter.excludes(v[0]));
    filter.build();
    filter.set(v[0]);
    EXPECT_TRUE(filter.excludes(v[1]));
    EXPECT_FALSE(filter.excludes(v[0]));
    EXPECT_FALSE(filter.excludes(v[0] + 262144)); // the hashes come round again
}

TEST(ConstraintMgr, pendingSegmentsAreInsertedOnceThereAreTriangles) {
    FakeHost host;
    host.b2D = false;
    Point2 *const a = host.at(0, 0), *const b = host.at(1, 0), *const c = host.at(2, 0);
    EXPECT_FALSE(host.mgr.hasPending());
    host.mgr.apply();
    host.mgr.createConstraint({{b, c}, {a, b}}, CDT, true);
    host.mgr.apply();
    EXPECT_TRUE(host.vInserted.empty());
    EXPECT_TRUE(host.mgr.hasPending());
    host.b2D = true;
    host.mgr.createConstraint({{a, c}}, CDT, true);
    EXPECT_EQ((Pairs{{a, b}, {b, c}, {a, c}}), host.vInserted); // pending ones first, by address
    EXPECT_FALSE(host.mgr.hasPending());
}

TEST(ConstraintMgr, passesGoOnUntilOneSplitsNothing) {
    FakeHost host;
    Point2 *const a = host.at(0, 0), *const b = host.at(0, 2), *const c = host.at(2, 0),
                  *const d = host.at(2, 2);
    std::vector<ConstraintSegment2*> vAsked;
    host.beforeSegment = [&](ConstraintSegment2* p) { vAsked.push_back(p); };
    host.mgr.createConstraint({{a, b}, {c, d}}, CDT, false);
    host.mgr.apply();
    EXPECT_EQ(2u, vAsked.size()); // nothing was split: one pass
    host.mgr.createConstraint({{b, c}, {a, d}}, CDT, false);
    host.beforeSegment = [&](ConstraintSegment2* p) {
        vAsked.push_back(p);
        ConstraintSegment2* const pFirst = host.mgr.getConstraintSegment(a, d);
        if (p->getSrc() != b || p->getTrg() != c || !p->isAlive() || pFirst == nullptr) return;
        p->split_combinatorialOnly(host.at(1, 1));
        pFirst->split_combinatorialOnly(host.at(1, 1));
    };
    vAsked.clear();
    Listener listener;
    host.hub.subscribe(MSG_PROGRESS, &listener);
    host.mgr.apply();
    // ab, ad, bc and its halves, cd; the same without ad, which is dead; and then the six leaves, without a
    // split
    EXPECT_EQ(6 + 4 + 6u, vAsked.size());
    host.mgr.forEachLiveSegment(
        [&](ConstraintSegment2* p) { EXPECT_TRUE(host.isEdge(p->getSrc(), p->getTrg())); });
    EXPECT_EQ((std::set<std::string>{"apply"}), listener.sLabels);
    EXPECT_EQ((std::vector<double>{0.25, 0.5, 1}), listener.vHeard);
    host.hub.unsubscribe(MSG_PROGRESS, &listener);

    // A segment that is split again in each pass, for ever.
    int numSplits = 0;
    ConstraintSegment2* pNew = nullptr; // asked for within the call that made it
    host.beforeSegment = [&](ConstraintSegment2* p) {
        if (p->getSrc() != host.at(0, 9) || !p->isAlive() || std::exchange(pNew, nullptr) == p) return;
        Point2* const s = host.at(std::ldexp(1, -++numSplits), 9);
        p->split_combinatorialOnly(s);
        pNew = host.mgr.getConstraintSegment(p->getSrc(), s);
    };
    host.mgr.createConstraint({{host.at(0, 9), host.at(1, 9)}}, CDT, false);
    const CapturedMessages messages;
    host.mgr.apply();
    EXPECT_EQ(499, numSplits);
    EXPECT_EQ(
        prefix +
            "ConstraintMgr::apply(), WARNING: insufficient numeric accuracy, need to skip last insertions\n",
        messages.output());
}

TEST(ConstraintMgr, reportsProgressOfCreationAndApplication) {
    FakeHost host;
    Pairs vPairs;
    for (int i = 0; i < 100; ++i)
        vPairs.emplace_back(host.at(i, 0), host.at(i, 1));
    Listener listener;
    host.hub.subscribe(MSG_PROGRESS, &listener);
    std::size_t numBefore = 0;
    host.beforeSegment = [&](ConstraintSegment2*) {
        if (host.vInserted.empty()) numBefore = listener.vHeard.size();
        ProgressHub::Operation inner(host.hub, "inner", 1);
        inner.finish();
    };
    host.mgr.createConstraint(vPairs, CDT, true);
    EXPECT_EQ((std::set<std::string>{"establish constraints"}), listener.sLabels);
    EXPECT_EQ(33u, numBefore); // a third of it
    EXPECT_EQ(1, std::count(listener.vHeard.begin(), listener.vHeard.end(), 1.0));
    EXPECT_EQ(1.0, listener.vHeard.back());
}

TEST(ConstraintMgr, aListenerThatThrowsLeavesNoSegmentThatIsNoEdge) {
    FakeHost host;
    Pairs vPairs;
    for (int i = 0; i < 200; ++i)
        vPairs.emplace_back(host.at(i, 0), host.at(i, 1));
    host.mgr.createConstraint({vPairs[0], vPairs[199]}, CDT, false); // pending, of another graph
    Listener listener;
    host.hub.subscribe(MSG_PROGRESS, &listener);
    for (const double when : {0.2, 0.5, 0.9}) {
        listener.then = [when](double progress) {
            if (progress >= when) throw std::runtime_error("cancelled");
        };
        EXPECT_THROW(host.mgr.createConstraint(vPairs, CDT, true), std::runtime_error);
        std::size_t numLive = 0;
        host.mgr.forEachLiveSegment([&](ConstraintSegment2* p) {
            ++numLive;
            EXPECT_TRUE(host.isEdge(p->getSrc(), p->getTrg()) || host.mgr.hasPending());
        });
        EXPECT_EQ(when < 1 / 3.0 ? 2 : host.vInserted.size(), numLive);
    }
    listener.then = [](double) {};
    // Children of a dead segment that were withdrawn come back with it.
    host.beforeSegment = [&](ConstraintSegment2* p) {
        if (p->isAlive() && p->getSrc() == host.at(0, 5) && p->getTrg() == host.at(9, 5)) {
            p->split_combinatorialOnly(host.at(4, 5));
            throw std::runtime_error("full");
        }
    };
    const Pairs vLong{{host.at(0, 5), host.at(9, 5)}};
    EXPECT_THROW(host.mgr.createConstraint(vLong, CDT, true), std::runtime_error);
    EXPECT_FALSE(host.mgr.isConstraint(host.at(0, 5), host.at(4, 5)));
    const ConstraintGraph2* const pAgain = host.mgr.createConstraint(vLong, CDT, true);
    EXPECT_EQ(2u, numLeaves(pAgain));
    EXPECT_TRUE(host.isEdge(host.at(0, 5), host.at(4, 5)) && host.isEdge(host.at(4, 5), host.at(9, 5)));
    const ConstraintGraph2* const pGraph = host.mgr.createConstraint(vPairs, CDT, true);
    EXPECT_EQ(200u, numLeaves(pGraph));
    for (const auto& [p, q] : vPairs)
        EXPECT_TRUE(host.isEdge(p, q) && pGraph->isConstraint(p, q));
}

TEST(ConstraintMgr, rejectsAnUnknownStrategy) {
    FakeHost host;
    Point2 *const a = host.at(0, 0), *const b = host.at(1, 0);
    const CapturedMessages messages;
    EXPECT_THROW(host.mgr.createConstraint({{a, b}}, static_cast<ConstraintInsertionStrategy>(7), true),
                 KivoException);
    EXPECT_EQ(0u, messages.output().find(prefix + "ConstraintMgr::apply(), ERROR: Unknown CIS\n"));
    EXPECT_NE(std::string::npos, messages.output().find("Condition [ false failed ]"));
    EXPECT_FALSE(host.mgr.isConstraint(a, b));
}

TEST(ConstraintMgr, writesTheLeavesOfEachGraph) {
    FakeHost host;
    Point2 *const a = host.at(0.1, -2), *const b = host.at(3, 1e-300), *const c = host.at(0, 5);
    {
        const CapturedMessages silent;
        host.mgr.writeConstraints(pathOf("none"));
        EXPECT_EQ("", silent.output());
    }
    host.mgr.createConstraint({{b, a}}, CDT, true);
    host.mgr.createConstraint({{b, c}}, CDT, true);
    host.mgr.wasSplit(b, c, host.at(1, 2));
    const std::string out = pathOf("out");
    const CapturedMessages messages;
    host.mgr.writeConstraints(out);
    host.mgr.writeConstraintsBIN(out);
    const std::string text = prefix + "ConstraintMgr::writeConstraints(), INFO: writes ";
    const std::string binary = prefix + "ConstraintMgr::writeConstraintsBIN(), INFO: writes ";
    EXPECT_EQ(text + "1 child segments to " + out + "_c0.con\n" + text + "2 child segments to " + out +
                  "_c1.con\n" + binary + "1 child segments to " + out + "_c0_con.bin\n" + binary +
                  "2 child segments to " + out + "_c1_con.bin\n",
              messages.output());
    std::ostringstream tiny;
    tiny.precision(70);
    tiny << 1e-300;
    EXPECT_EQ("0.1000000000000000055511151231257827021181583404541015625\t-2\t3\t" + tiny.str() + "\n",
              readFile(out + "_c0.con"));
    EXPECT_EQ("3\t" + tiny.str() + "\t1\t2\n0\t5\t1\t2\n", readFile(out + "_c1.con"));
    std::vector<Segment2> vSegments;
    EXPECT_TRUE(readSegmentsBIN((out + "_c1_con.bin").c_str(), vSegments));
    EXPECT_EQ((std::vector<Segment2>{{*b, Point2(1, 2)}, {*c, Point2(1, 2)}}), vSegments);
    host.mgr.writeConstraints("/no/such/folder/x");
    EXPECT_NE(std::string::npos,
              messages.output().find(prefix + "ConstraintMgr::writeConstraints(), WARNING: "
                                              "/no/such/folder/x_c1.con can't be written\n"));
}
