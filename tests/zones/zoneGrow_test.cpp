#include "tests/support/zoned.h"

// Zones grown from points, made of triangles, peeled, and converted.

using namespace zoned;
using doubles::Rng;

namespace {

struct Predicate : UserPredicateT {
    explicit Predicate(std::function<bool(const Triangle2*)> itsAnswer) : answer(std::move(itsAnswer)) {}
    bool operator()(const Triangle2* pT) override {
        ++numAsked;
        return answer(pT);
    }
    std::function<bool(const Triangle2*)> answer;
    std::size_t numAsked = 0;
};

// By sweeping over the set until nothing goes any more.
Triangles peeled(const Triangles& vTriangles, const std::function<bool(const Triangle2*)>& isGone) {
    std::set<Triangle2*> s(vTriangles.begin(), vTriangles.end());
    const auto isAtBorder = [&](const Triangle2* pT) {
        for (int i = 0; i < 3; ++i)
            if (s.count(pT->getOppositeTriangle(i)) == 0) return true;
        return false;
    };
    for (bool bMore = true; bMore;) {
        bMore = false;
        for (auto it = s.begin(); it != s.end();) {
            const bool bGone = isAtBorder(*it) && isGone(*it);
            it = bGone ? s.erase(it) : std::next(it);
            bMore = bMore || bGone;
        }
    }
    return {s.begin(), s.end()};
}

Zone2* globalZone(Kivo_2D& kivo) {
    return kivo.createZone(static_cast<ConstraintGraph2*>(nullptr), ZL_GLOBAL);
}

Triangles someTriangles(const Kivo_2D& kivo, Rng& rng, int percent) {
    Triangles v;
    for (Triangle2* pT : oracle::allTriangles(kivo))
        if (doubles::below(rng, 100) < percent) v.push_back(pT);
    return v;
}

// What hangs together by edges, in the order of the first triangles.
std::vector<Triangles> partsOf(const Triangles& vTriangles) {
    std::set<Triangle2*> s(vTriangles.begin(), vTriangles.end());
    std::vector<Triangles> vParts;
    while (!s.empty()) {
        vParts.emplace_back();
        for (std::vector<Triangle2*> vStack = {*s.begin()}; !vStack.empty();) {
            Triangle2* const pT = vStack.back();
            vStack.pop_back();
            if (s.erase(pT) == 0) continue;
            vParts.back().push_back(pT);
            for (int i = 0; i < 3; ++i)
                vStack.push_back(pT->getOppositeTriangle(i));
        }
        vParts.back() = sorted(vParts.back());
    }
    return vParts;
}

} // namespace

TEST(GrownZone, isWhatCanBeReachedAndListsARegionOnceForEachStart) {
    for (unsigned int seed = 1; seed <= 12 && !HasFailure(); ++seed) {
        Rng rng(seed);
        Kivo_2D kivo;
        kivo.insert(randomPoints(rng, 30, -12, 12));
        std::vector<ConstraintGraph2*> vGraphs;
        for (int i = 0; i < 3; ++i)
            vGraphs.push_back(add(kivo, star(rng, 7, Point2(3 * i - 3, i % 2), 5), i % 2 != 0));
        vGraphs.push_back(add(kivo, {{{-13, 0.1}, {1, 0.2}}, {{0, -13}, {0.2, 13}}}, false));
        const Point2 start(doubles::uniform(rng, -5, 5), doubles::uniform(rng, -5, 5));
        Zone2* const pZone = kivo.createZone(vGraphs, ZL_GROW, start);
        Zone2* const pOfOne = kivo.createZone(vGraphs[3], ZL_GROW, start);
        Zone2* const pFree = kivo.createZone(std::vector<ConstraintGraph2*>(), ZL_GROW, start);
        for (int round = 0; round < 2; ++round) {
            Triangle2* const pStart = kivo.locate(start);
            expectZone(kivo, pZone, oracle::reachedFrom(pStart, vGraphs));
            expectZone(kivo, pOfOne, oracle::reachedFrom(pStart, {vGraphs[3]}));
            expectZone(kivo, pFree, oracle::allTriangles(kivo));
            disturb(kivo, rng, vGraphs, 30);
        }
    }
}

TEST(GrownZone, whoseStartsHaveComeIntoOneRegionListsItOnceForEach) {
    Kivo_2D kivo;
    kivo.insert({{-40, -40}, {60, -40}, {10, 70}});
    add(kivo, ringOf({{0, 0}, {12, 0}, {12, 12}}));
    add(kivo, ringOf({{0, -1}, {12, -13}, {12, -1}}));
    Zone2* const pZone = kivo.createZone({kivo.locate({8, 4}), kivo.locate({8, -5})});
    EXPECT_EQ(2u, pZone->getNumberOfTriangles());
    // Bends a side of each triangle so far inwards that its centre, where it grows from, is left outside.
    const auto bend = [&](const Point2& p, const Point2& q, const Point2& to) {
        kivo.getConstraintSegment(kivo.insert(p), kivo.insert(q))->insertAndSplit(to);
    };
    bend({0, 0}, {12, 12}, {11, 2});
    bend({0, -1}, {12, -13}, {11, -3});
    const Triangles vOutside = oracle::reachedFrom(kivo.locate({8, 4}), {pZone->getConstraintGraph()});
    Triangles vListed, vTwice = vOutside;
    vTwice.insert(vTwice.end(), vOutside.begin(), vOutside.end());
    pZone->getTriangles(vListed);
    EXPECT_EQ(vTwice, vListed);
    EXPECT_EQ(vTwice.size(), pZone->getNumberOfTriangles());
    expectNearArea(2 * oracle::areaOf(vOutside), pZone->getArea2D());
    expectZone(kivo, zoneUnion(pZone, pZone), vOutside); // once
    expectZone(kivo, pZone->convertToBoundedZone(), vOutside);
}

TEST(ZoneOfTriangles, hasExactlyTheseAndSurvivesConversion) {
    for (unsigned int seed = 1; seed <= 16 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Rng rng(seed);
        Kivo_2D kivo;
        kivo.insert(randomPoints(rng, 8 + int(seed) * 12, -12, 12));
        if (seed % 2 == 0) add(kivo, star(rng, 9, Point2(0, 0), 8), true);
        Triangles vGiven = someTriangles(kivo, rng, int(10 + seed * 17 % 90));
        if (vGiven.empty()) vGiven.push_back(kivo.locate({0, 0}));
        Triangles vShuffled = vGiven;
        vShuffled.insert(vShuffled.end(), {nullptr, vGiven.front()});
        std::shuffle(vShuffled.begin(), vShuffled.end(), rng);
        const double area = oracle::areaOf(vGiven);
        Zone2* const pZone = kivo.createZone(vShuffled);
        ASSERT_NE(nullptr, pZone);
        EXPECT_EQ(ZL_GROW, pZone->getZoneLocation());
        expectZone(kivo, pZone, vGiven);
        Zone2* const pBounded = pZone->convertToBoundedZone();
        expectZone(kivo, pBounded, vGiven);
        EXPECT_EQ(ZL_BOUNDED, pBounded->getZoneLocation());
        disturb(kivo, rng, {pBounded->getConstraintGraph()}, 30);
        const Triangles vNow = trianglesOf(pZone);
        expectNearArea(area, oracle::areaOf(vNow));
        expectZone(kivo, pZone, vNow);
        expectZone(kivo, pBounded, vNow);
        expectZone(kivo, pBounded->convertToBoundedZone(), vNow);
        EXPECT_TRUE(kivo.checkValidity(true, "zone"));
    }
}

TEST(ZoneOfTriangles, mayHaveTenThousandParts) {
    Rng rng(5);
    Kivo_2D kivo;
    kivo.insert(randomPoints(rng, 40000, 0, 1));
    const Triangles vGiven = someTriangles(kivo, rng, 22);
    const std::vector<Triangles> vParts = partsOf(vGiven);
    ASSERT_LT(10000u, vParts.size());
    Zone2* const pZone = kivo.createZone(vGiven);
    Triangles vExpected, vListed;
    for (const Triangles& vPart : vParts)
        vExpected.insert(vExpected.end(), vPart.begin(), vPart.end());
    pZone->getTriangles(vListed);
    EXPECT_EQ(vExpected, vListed);
    expectZone(kivo, pZone, vGiven);
    expectZone(kivo, pZone->convertToBoundedZone(), vGiven);
}

TEST(ZoneOfTriangles, keepsFiguresThatTouchThemselvesInAVertex) {
    Kivo_2D kivo;
    kivo.insert({{0, 0}, {4, 1}, {1, 4}, {-4, 1}, {-1, -4}, {5, 5}, {-5, 4}, {-3, -5}, {6, -4}});
    std::vector<Triangle2*> vAround;
    kivo.getIncidentTriangles(kivo.insert(Point2(0, 0)), vAround);
    for (unsigned bits = 1; bits < 1u << vAround.size(); ++bits) {
        Triangles vGiven;
        for (std::size_t i = 0; i < vAround.size(); ++i)
            if (bits >> i & 1) vGiven.push_back(vAround[i]);
        Zone2* const pZone = kivo.createZone(vGiven);
        expectZone(kivo, pZone, sorted(vGiven));
        expectZone(kivo, pZone->convertToBoundedZone(), sorted(vGiven));
        if (HasFailure()) break;
    }
}

TEST(ZoneOfTriangles, mayLieBetweenASegmentAndThePiecesThatItWasSplitInto) {
    Kivo_2D kivo;
    kivo.insert({{0, 0}, {10, 4}, {5, -100}, {5, 60}});
    std::vector<ConstraintSegment2*> vLeaves;
    add(kivo, {{{0, 0}, {10, 4}}})->getChildConstraintSegments(vLeaves);
    Point2 *const p = vLeaves[0]->getSrc(), *const q = vLeaves[0]->getTrg();
    Point2* const pBeside = vLeaves[0]->insertAndSplit({5, 3});
    Triangle2* const pT = kivo.getAdjacentTriangle(p->x() == 0 ? p : q, p->x() == 0 ? q : p);
    ASSERT_TRUE(pT != nullptr && pT->hasVertex(pBeside)) << "the segment is no edge any more";
    for (const Triangles& vGiven : {Triangles{pT}, differenceOf(oracle::allTriangles(kivo), {pT})}) {
        Zone2* const pZone = kivo.createZone(vGiven);
        expectZone(kivo, pZone, vGiven);
        expectZone(kivo, pZone->convertToBoundedZone(), vGiven);
    }
    EXPECT_TRUE(kivo.checkValidity(true, "between"));
}

TEST(Conversion, keepsTheTrianglesOfEveryKindOfZone) {
    for (unsigned int seed = 1; seed <= 8 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Rng rng(seed);
        Kivo_2D kivo;
        kivo.insert(randomPoints(rng, 60, -12, 12));
        const Segments vStar = star(rng, 11, Point2(0, 0), 8);
        ConstraintGraph2* const pRing = add(kivo, vStar);
        ConstraintGraph2* const pHoled =
            add(kivo, joined(vStar, reversed(scaledAbout(Point2(0, 0), 0.5, vStar))));
        ConstraintGraph2* const pOpen = add(kivo, {{{-20, 1}, {0, 0.5}}, {{0, 0.5}, {3, -20}}}, false);
        Zone2* const pInside = kivo.createZone(pRing, ZL_INSIDE);
        Zone2* const pOutside = kivo.createZone(pRing, ZL_OUTSIDE);
        EXPECT_EQ(pInside, pInside->convertToBoundedZone());
        const std::vector<Zone2*> vZones = {globalZone(kivo),
                                            pOutside,
                                            kivo.createZone(pHoled, ZL_BOUNDED),
                                            kivo.createZone(pHoled, ZL_OUTSIDE),
                                            kivo.createZone(pOpen, ZL_GROW, Point2(1, 1)),
                                            zoneDifference(pInside, kivo.createZone(pHoled, ZL_OUTSIDE)),
                                            zoneUnion(pOutside, kivo.createZone(pHoled, ZL_INSIDE)),
                                            kivo.createZone(someTriangles(kivo, rng, 40))};
        for (Zone2* pZone : vZones) {
            const Triangles vBefore = trianglesOf(pZone);
            const ZoneLocation location = pZone->getZoneLocation();
            Zone2* const pBounded = pZone->convertToBoundedZone();
            expectZone(kivo, pBounded, vBefore);
            EXPECT_NE(pZone, pBounded);
            EXPECT_EQ(ZL_BOUNDED, pBounded->getZoneLocation());
            EXPECT_TRUE(pBounded->getConstraintGraph()->isOriented());
            EXPECT_EQ(location, pZone->getZoneLocation());
            expectZone(kivo, pZone, vBefore);
        }
        disturb(kivo, rng, {pRing}, 40);
        expectZone(kivo, vZones[1]->convertToBoundedZone(), trianglesOf(vZones[1]));
    }
}

TEST(PeelOffIf, takesWhatHangsTogetherWithTheBorder) {
    for (unsigned int seed = 1; seed <= 10 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Rng rng(seed);
        Kivo_2D kivo;
        kivo.insert(randomPoints(rng, 90, -12, 12));
        Zone2* const pZone = seed % 2 != 0
                                 ? globalZone(kivo)
                                 : kivo.createZone(add(kivo, star(rng, 9, Point2(0, 0), 9)), ZL_INSIDE);
        const Triangles vBefore = trianglesOf(pZone);
        const double largest = seed % 3 == 0 ? 9 : 4;
        const auto isSmall = [=](const Triangle2* pT) { return pT->getArea2D() < largest; };
        Predicate predicate(isSmall), never([](const Triangle2*) { return false; }),
            always([](const Triangle2*) { return true; });
        Zone2* const pRest = peelOffIf(pZone, &predicate, false);
        const Triangles vRest = peeled(vBefore, isSmall);
        if (vRest.empty()) {
            EXPECT_EQ(nullptr, pRest);
        } else {
            expectZone(kivo, pRest, vRest);
        }
        Zone2* const pAll = peelOffIf(pZone, &never, false);
        EXPECT_NE(pZone, pAll);
        expectZone(kivo, pAll, vBefore);
        EXPECT_GE(3 * vBefore.size(), never.numAsked);
        const CapturedMessages captured;
        EXPECT_EQ(nullptr, peelOffIf(pZone, &always, false));
        EXPECT_EQ(vBefore.size(), always.numAsked);
        expectZone(kivo, pZone, vBefore);
    }
}

TEST(PeelOffIf, refusesAPredicateThatInsertsPoints) {
    Rng rng(6);
    Kivo_2D kivo;
    kivo.insert(randomPoints(rng, 50, 0, 1));
    Predicate inserting([&](const Triangle2* pT) {
        kivo.insert(pT->getBarycenter());
        return inserting.numAsked % 3 == 0;
    });
    const CapturedMessages captured;
    EXPECT_EQ(nullptr, peelOffIf(globalZone(kivo), &inserting, false));
    EXPECT_NE(std::string::npos, captured.output().find("The predicate has changed the triangulation"));
}

TEST(PeelOffIf, isNotConfusedByAPredicateThatThrowsOrChangesItsMind) {
    for (int numCalls = 0; numCalls < 40 && !HasFailure(); numCalls += 3) {
        std::vector<std::vector<std::pair<double, double>>> vRests;
        for (int run = 0; run < 2; ++run) {
            Rng rng(4);
            Kivo_2D kivo;
            kivo.insert(randomPoints(rng, 60, -12, 12));
            Zone2* const pZone = globalZone(kivo);
            Predicate throwing([&](const Triangle2*) -> bool {
                if (throwing.numAsked > std::size_t(numCalls)) throw std::runtime_error("enough");
                return true;
            });
            EXPECT_THROW(peelOffIf(pZone, &throwing, false), std::runtime_error);
            for (Triangle2* pT : oracle::allTriangles(kivo))
                for (int i = 0; i < 3; ++i)
                    EXPECT_FALSE(kivo.isConstraint(pT, i)) << "something has changed";
            expectZone(kivo, pZone, oracle::allTriangles(kivo));
            Rng moods(static_cast<std::uint64_t>(numCalls));
            Predicate moody([&](const Triangle2*) { return moods() % 2 != 0; });
            const Zone2* const pRest = peelOffIf(pZone, &moody, false);
            vRests.emplace_back();
            if (pRest == nullptr) continue;
            expectZone(kivo, pRest, trianglesOf(pRest));
            for (const Triangle2* pT : trianglesOf(pRest))
                vRests.back().emplace_back(pT->getBarycenter().x(), pT->getBarycenter().y());
        }
        EXPECT_EQ(vRests[0], vRests[1]) << "equal calls, different results";
    }
}
