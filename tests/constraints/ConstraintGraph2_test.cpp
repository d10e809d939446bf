#include "ConstraintGraph2.h"

#include "Color.h"
#include "Visualizer2.h"
#include "tests/constraints/FakeHost.h"
#include "tests/support/doubles.h"
#include "tests/support/files.h"

#include <algorithm>
#include <sstream>

using namespace TESK_KIVO2D;
using CSegs = std::vector<ConstraintSegment2*>;
using Pairs = std::vector<PointerPair>;
using Vertices = std::vector<Point2*>;

namespace {

constexpr auto CDT = CIS_CONSTRAINED_DELAUNAY;

Vertices verticesOf(const ConstraintGraph2* pGraph) {
    Vertices v;
    pGraph->getPolygonVertices(v);
    return v;
}

Pairs ringOf(const Vertices& vRing) {
    Pairs v;
    for (std::size_t i = 0; i < vRing.size(); ++i)
        v.emplace_back(vRing[i], vRing[(i + 1) % vRing.size()]);
    return v;
}

// The ring in pairs as it should come back: the first segment in the list that meets the lowest vertex is
// left along when the corner there turns left, otherwise the second.
Vertices expectedRing(Vertices vRing, const Pairs& vPairs) {
    const auto isLower = [](const Point2* p, const Point2* q) { return *p < *q; };
    std::rotate(vRing.begin(), std::min_element(vRing.begin(), vRing.end(), isLower), vRing.end());
    Vertices vCandidates;
    for (const auto& [p, q] : vPairs) {
        if (p == vRing[0]) vCandidates.push_back(q);
        if (q == vRing[0]) vCandidates.push_back(p);
    }
    const bool bFirst = getOrientation2(vRing[0], vCandidates[0], vCandidates[1]) == ORIENTATION2_CCW;
    if (vRing[1] != vCandidates[bFirst ? 0 : 1]) std::reverse(vRing.begin() + 1, vRing.end());
    Vertices vExpected;
    for (const auto& [p, q] : ringOf(vRing))
        vExpected.insert(vExpected.end(), {p, q});
    return vExpected;
}

} // namespace

TEST(ConstraintGraph2, sortsAnyRingFromItsLowestVertex) {
    doubles::Rng rng(1);
    for (int round = 0; round < 3000; ++round) {
        FakeHost host;
        Vertices vRing;
        const int num = 3 + doubles::below(rng, round % 100 == 0 ? 500 : 12);
        while (vRing.size() < static_cast<std::size_t>(num)) {
            // Few columns, so that the corner at the start is often straight.
            Point2* const p = host.at(doubles::below(rng, 3), doubles::below(rng, 3 * num));
            if (std::find(vRing.begin(), vRing.end(), p) == vRing.end()) vRing.push_back(p);
        }
        Pairs vPairs = ringOf(vRing);
        if (round % 3 == 1) std::reverse(vPairs.begin(), vPairs.end());
        if (round % 3 == 2) std::shuffle(vPairs.begin(), vPairs.end(), rng);
        for (auto& [p, q] : vPairs) {
            if (rng() % 4 == 0) std::swap(p, q);
        }
        const CapturedMessages messages;
        const bool bEdges = rng() % 2 == 0; // nothing to apply
        const ConstraintGraph2* const pGraph = bEdges ? host.mgr.createConstraint_directed(vPairs, CDT)
                                                      : host.mgr.createConstraint(vPairs, CDT, true);
        EXPECT_TRUE(pGraph->isPolygon() && pGraph->isOriented());
        ASSERT_EQ(expectedRing(vRing, vPairs), verticesOf(pGraph)) << "round " << round;
        // Applied in the order given.
        Pairs vOrdered = vPairs;
        for (auto& [p, q] : vOrdered) {
            if (q < p) std::swap(p, q);
        }
        EXPECT_EQ(bEdges ? Pairs() : vOrdered, host.vInserted);
        EXPECT_EQ("", messages.output() + messages.error());
    }
}

TEST(ConstraintGraph2, takesNothingElseForAPolygon) {
    FakeHost host;
    Vertices v;
    for (int i = 0; i < 9; ++i)
        v.push_back(host.at(i % 3, i / 3));
    const Pairs vTriangle = ringOf({v[0], v[1], v[3]}), vOther = ringOf({v[4], v[5], v[8]});
    std::vector<Pairs> vSets{
        {},
        {{v[0], v[1]}},
        {{v[0], v[1]}, {v[1], v[0]}},                             // a doubled edge
        {{v[0], v[1]}, {v[1], v[2]}, {v[2], v[5]}},               // open
        {{v[0], v[1]}, {v[1], v[0]}, {v[4], v[5]}, {v[5], v[4]}}, // repeated
        {{v[0], v[1]}, {v[1], v[3]}, {v[3], v[0]}, {v[0], v[1]}}, // closed, one repeated
        {{v[0], v[1]}, {v[1], v[3]}, {v[3], v[1]}, {v[1], v[0]}}, // there and back
        ringOf({v[0], v[1], v[4], v[8], v[7], v[4]}),             // touches itself
        {{v[0], v[1]}, {v[1], v[3]}, {v[3], v[0]}, {v[0], v[8]}}, // with a tail
    };
    vSets.push_back(vTriangle); // two rings, one after the other and mixed
    vSets.back().insert(vSets.back().end(), vOther.begin(), vOther.end());
    vSets.push_back(vSets.back());
    std::swap(vSets.back()[1], vSets.back()[4]);
    for (const Pairs& vPairs : vSets) {
        const CapturedMessages messages;
        const ConstraintGraph2* const pGraph = host.mgr.createConstraint(vPairs, CDT, true);
        EXPECT_FALSE(pGraph->isPolygon() || pGraph->isOriented());
        const ConstraintGraph2* const pDirected = host.mgr.createConstraint_directed(vPairs, CDT);
        EXPECT_FALSE(pDirected->isPolygon());
        EXPECT_TRUE(pDirected->isOriented());
        Vertices vStored, vGiven;
        for (const auto& [p, q] : vPairs) {
            vStored.insert(vStored.end(), {std::min(p, q), std::max(p, q)});
            // An edge has one direction: the one given first.
            const bool bBack = std::find(vPairs.begin(), vPairs.end(), PointerPair(q, p)) <
                               std::find(vPairs.begin(), vPairs.end(), PointerPair(p, q));
            vGiven.insert(vGiven.end(), {bBack ? q : p, bBack ? p : q});
        }
        EXPECT_EQ(vStored, verticesOf(pGraph));
        EXPECT_EQ(vGiven, verticesOf(pDirected));
        EXPECT_EQ("", messages.output() + messages.error());
    }
}

TEST(ConstraintGraph2, answersForSplitSegments) {
    FakeHost host;
    Point2 *const a = host.at(0, 0), *const b = host.at(0, 2), *const c = host.at(2, 2),
                  *const d = host.at(2, 0);
    ConstraintGraph2* const pSquare = host.mgr.createConstraint(ringOf({a, b, c, d}), CDT, true); // clockwise
    EXPECT_EQ((Vertices{a, d, d, c, c, b, b, a}), verticesOf(pSquare));
    ConstraintSegment2* const pTop = host.mgr.getConstraintSegment(b, c);
    EXPECT_TRUE(pSquare->isReverse(pTop)); // from c to b
    Point2* const s = host.at(1, 2);
    host.mgr.wasSplit(c, b, s);
    EXPECT_EQ((Vertices{a, d, d, c, c, s, s, b, b, a}), verticesOf(pSquare));
    ConstraintSegment2 *pKid0 = nullptr, *pKid1 = nullptr;
    pSquare->getDirectChildren(pTop, pKid0, pKid1);
    EXPECT_EQ(host.mgr.getConstraintSegment(c, s), pKid0);
    EXPECT_EQ(host.mgr.getConstraintSegment(b, s), pKid1);
    for (const bool bSwap : {false, true}) {
        EXPECT_FALSE(bSwap ? pSquare->isConstraint(b, c) : pSquare->isConstraint(c, b));
        EXPECT_TRUE(bSwap ? pSquare->isConstraint(s, c) : pSquare->isConstraint(c, s));
        EXPECT_FALSE(bSwap ? pSquare->isConstraint(a, c) : pSquare->isConstraint(c, a));
    }
    EXPECT_FALSE(pSquare->isConstraint(a, a));
    EXPECT_FALSE(pSquare->isConstraint(pTop));
    EXPECT_FALSE(pSquare->isConstraint(nullptr));
    CSegs vOriginals(7, nullptr);
    pSquare->getOriginalConstraintSegments(vOriginals);
    EXPECT_EQ(4u, vOriginals.size());
    EXPECT_EQ(pTop, vOriginals[2]);
    ConstraintGraph2* const pOther = host.mgr.createConstraint({{a, c}}, CDT, true);
    expectFails("q_it!=mCSegReverse.end()", [&] { pOther->isReverse(pTop); });
    pSquare->getDirectChildren(pKid0, pKid0, pKid1);
    EXPECT_EQ(nullptr, pKid0);
    EXPECT_EQ(nullptr, pKid1);
}

// Each question for two different vertices takes a number.
TEST(ConstraintGraph2, askingForAPairTakesALabel) {
    FakeHost host;
    Point2 *const a = host.at(0, 0), *const b = host.at(1, 0);
    const auto labelOf = [&](Point2* p) {
        std::ostringstream text;
        text << *host.mgr.createConstraint(a, p, CDT);
        return std::stoul(text.str().substr(25));
    };
    const ConstraintGraph2* const pGraph = host.mgr.createConstraint({{a, b}}, CDT, true);
    const auto label = labelOf(host.at(2, 0));
    pGraph->isConstraint(a, b);
    pGraph->isConstraint(b, host.at(2, 0));
    pGraph->isConstraint(a, a);
    EXPECT_EQ(label + 3, labelOf(host.at(3, 0)));
}

TEST(ConstraintGraph2, drawsItsLeaves) {
    FakeHost host;
    const ConstraintGraph2* const pGraph =
        host.mgr.createConstraint(ringOf({host.at(0, 0), host.at(1, 0), host.at(0, 1)}), CDT, true);
    host.mgr.wasSplit(host.at(0, 0), host.at(1, 0), host.at(0.5, 0));
    pGraph->show(pathOf("graph.ps"));
    {
        Visualizer2 vis(pathOf("graph2.ps"));
        CSegs vLeaves;
        pGraph->getChildConstraintSegments(vLeaves);
        EXPECT_EQ(4u, vLeaves.size());
        for (const ConstraintSegment2* p : vLeaves)
            vis.addObject(Segment2(*p->getSrc(), *p->getTrg()), Color(CRED));
    }
    std::string expected = readFile(pathOf("graph2.ps"));
    for (std::size_t at = 0; (at = expected.find("graph2.ps")) != std::string::npos;)
        expected.replace(at, 9, "graph.ps");
    EXPECT_EQ(expected, readFile(pathOf("graph.ps")));
    const CapturedMessages messages;
    pGraph->show(nullptr, Color());
    EXPECT_EQ(
        "      [Kivo2D-Message] ConstraintGraph2::show(), WARNING: No drawing given, nothing is drawn\n",
        messages.output());
}

namespace {

// The same laws in ordered maps, by recursion.
struct Model {
    struct Node {
        Point2* pSplit = nullptr;
        std::map<int, bool> mReverse; // owner -> direction
    };
    std::map<PointerPair, Node> mNodes;
    std::vector<std::pair<Pairs, bool>> vGraphs; // pairs in address order, oriented

    static PointerPair key(Point2* p, Point2* q) { return std::minmax(p, q); }

    void own(int g, PointerPair k) {
        Node& node = mNodes[k];
        if (!node.mReverse.emplace(g, false).second || node.pSplit == nullptr) return;
        own(g, key(k.first, node.pSplit));
        own(g, key(k.second, node.pSplit));
    }
    // Directions of what is not in the set of those that have one.
    void direct(int g, PointerPair k, bool bAlong, std::set<PointerPair>& sKnown) {
        const Node node = mNodes[k];
        if (node.pSplit == nullptr) return;
        const bool bReverse = node.mReverse.at(g);
        Point2 *const pStart = bReverse ? k.second : k.first, *const pEnd = bReverse ? k.first : k.second;
        for (const PointerPair& run : {PointerPair(pStart, node.pSplit), PointerPair(node.pSplit, pEnd)}) {
            const PointerPair kid = key(run.first, run.second);
            if (!sKnown.insert(kid).second) continue;
            mNodes[kid].mReverse[g] = bAlong && kid.first != run.first;
            direct(g, kid, bAlong, sKnown);
        }
    }
    std::set<PointerPair> known(int g) const {
        std::set<PointerPair> s;
        for (const auto& [k, node] : mNodes) {
            if (node.mReverse.count(g)) s.insert(k);
        }
        return s;
    }
    void add(const Pairs& vPairs, bool bOriented) {
        const int g = static_cast<int>(vGraphs.size());
        std::set<PointerPair> sKnown;
        Pairs vKeys;
        for (const auto& [p, q] : vPairs) {
            vKeys.push_back(key(p, q));
            own(g, vKeys.back());
            if (sKnown.insert(vKeys.back()).second) mNodes[vKeys.back()].mReverse[g] = bOriented && q < p;
        }
        for (const PointerPair& k : vKeys)
            direct(g, k, bOriented, sKnown);
        vGraphs.emplace_back(vKeys, bOriented);
    }
    void split(PointerPair k, Point2* s) {
        Node& node = mNodes[k];
        node.pSplit = s;
        mNodes[key(k.first, s)], mNodes[key(k.second, s)];
        for (const auto& [g, bReverse] : node.mReverse) {
            std::set<PointerPair> sKnown = known(g);
            own(g, key(k.first, s));
            own(g, key(k.second, s));
            direct(g, k, true, sKnown);
        }
    }
    void expand(int g, PointerPair k, Vertices& v) const {
        const Node& node = mNodes.at(k);
        const bool bReverse = node.mReverse.at(g);
        Point2 *const pStart = bReverse ? k.second : k.first, *const pEnd = bReverse ? k.first : k.second;
        if (node.pSplit == nullptr) {
            v.insert(v.end(), {pStart, pEnd});
            return;
        }
        expand(g, key(pStart, node.pSplit), v);
        expand(g, key(node.pSplit, pEnd), v);
    }
};

std::vector<Segment2> segmentsOf(const Pairs& vPairs) {
    std::vector<Segment2> vSegments;
    for (const auto& [p, q] : vPairs)
        vSegments.emplace_back(*p, *q);
    return vSegments;
}

} // namespace

TEST(ConstraintGraph2, sharedTreesAgreeWithASimpleModel) {
    doubles::Rng rng(7);
    for (int round = 0; round < 150; ++round) {
        FakeHost host;
        Model model;
        std::vector<ConstraintGraph2*> vGraphs;
        const int side = 2 + round % 5;
        const auto anyVertex = [&] { return host.at(doubles::below(rng, side), doubles::below(rng, side)); };
        for (int step = 0; step < 60; ++step) {
            if (step == 0 || rng() % 6 == 0) {
                Pairs vPairs;
                for (int i = doubles::below(rng, 3); i >= 0; --i) {
                    Point2 *const p = anyVertex(), *const q = anyVertex();
                    if (p != q) vPairs.emplace_back(p, q);
                }
                const bool bOriented = rng() % 2 == 0;
                vGraphs.push_back(bOriented ? host.mgr.createConstraint_oriented(segmentsOf(vPairs), CDT)
                                            : host.mgr.createConstraint(vPairs, CDT, true));
                if (vGraphs.back()->isPolygon()) break; // sorted: other tests
                model.add(vPairs, bOriented);
            }
            CSegs vLive;
            host.mgr.forEachLiveSegment([&](ConstraintSegment2* p) { vLive.push_back(p); });
            if (vLive.empty()) continue;
            ConstraintSegment2* const pCSeg = vLive[rng() % vLive.size()];
            Point2 *const pSrc = pCSeg->getSrc(), *const pTrg = pCSeg->getTrg(), *const s = anyVertex();
            const auto between = [](double v, double p, double q) {
                return std::min(p, q) <= v && v <= std::max(p, q);
            };
            if (s == pSrc || s == pTrg || !between(s->x(), pSrc->x(), pTrg->x()) ||
                !between(s->y(), pSrc->y(), pTrg->y()))
                continue;
            ASSERT_TRUE(pCSeg->split_combinatorialOnly(s));
            model.split({pSrc, pTrg}, s);

            for (std::size_t g = 0; g < vGraphs.size(); ++g) {
                Vertices vExpected;
                for (const PointerPair& k : model.vGraphs[g].first)
                    model.expand(static_cast<int>(g), k, vExpected);
                ASSERT_EQ(vExpected, verticesOf(vGraphs[g])) << "round " << round << " step " << step;
            }
            for (const auto& [k, node] : model.mNodes) {
                ConstraintSegment2* const p = host.mgr.createConstraint(k.first, k.second, CDT);
                ASSERT_EQ(node.pSplit == nullptr, p->isAlive());
                ASSERT_EQ(node.mReverse.size(), p->getNumberOfOwners());
                for (const auto& [g, bReverse] : node.mReverse)
                    ASSERT_EQ(bReverse, vGraphs[static_cast<std::size_t>(g)]->isReverse(p));
            }
        }
    }
}
