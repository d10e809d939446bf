#include "tests/support/zoned.h"

// Zones combined of two others: as sets, by area, nested, and while what they are made of comes and goes.

using namespace zoned;
using doubles::Rng;

namespace {

struct Operation {
    Zone2* (*combine)(Zone2*, Zone2*);
    SetOperation onSets;
};
constexpr Operation aOperations[] = {{zoneUnion, unionOf},
                                     {zoneIntersection, intersectionOf},
                                     {zoneDifference, differenceOf},
                                     {zoneSymmetricDifference, symDifferenceOf}};

// Rings that overlap, and a zone of every other kind.
std::vector<Zone2*> makeZones(Kivo_2D& kivo, Rng& rng) {
    kivo.insert(randomPoints(rng, 40, -12, 12));
    std::vector<Zone2*> vZones = {kivo.createZone(static_cast<ConstraintGraph2*>(nullptr), ZL_GLOBAL)};
    std::vector<ConstraintGraph2*> vGraphs;
    for (int i = 0; i < 4; ++i) {
        const Point2 center(doubles::uniform(rng, -4, 4), doubles::uniform(rng, -4, 4));
        vGraphs.push_back(add(kivo, star(rng, 9, center, 6)));
        vZones.push_back(kivo.createZone(vGraphs.back(), i == 3 ? ZL_OUTSIDE : ZL_INSIDE));
    }
    vZones.push_back(kivo.createZone(vGraphs, ZL_GROW, Point2(11, 11)));
    vZones.push_back(kivo.createZone(vGraphs[0], ZL_BOUNDED));
    return vZones;
}

Zone2* globalZone(Kivo_2D& kivo) {
    return kivo.createZone(static_cast<ConstraintGraph2*>(nullptr), ZL_GLOBAL);
}

// What a query says.
std::string saidBy(const Zone2* pZone, std::size_t numExpected) {
    const CapturedMessages captured;
    EXPECT_EQ(numExpected, trianglesOf(pZone).size());
    return captured.output() + captured.error();
}

} // namespace

TEST(SetOperations, giveTheSetsAndAddUpByArea) {
    for (unsigned int seed = 1; seed <= 6 && !HasFailure(); ++seed) {
        Rng rng(seed);
        Kivo_2D kivo;
        std::vector<Zone2*> vZones = makeZones(kivo, rng);
        std::vector<ConstraintGraph2*> vGraphs;
        for (int round = 0; round < 2; ++round) {
            for (int i = 0; i < 12 && !HasFailure(); ++i) {
                Zone2 *const p0 = vZones[rng() % vZones.size()], *const p1 = vZones[rng() % vZones.size()];
                double aAreas[4];
                for (int k = 0; k < 4; ++k) {
                    Zone2* const pResult = aOperations[k].combine(p0, p1);
                    expectZone(kivo, pResult, aOperations[k].onSets(trianglesOf(p0), trianglesOf(p1)));
                    EXPECT_EQ(static_cast<int>(ZL_RESULT_UNION) + k,
                              static_cast<int>(pResult->getZoneLocation()));
                    EXPECT_EQ(0u, pResult->numberOfConstraintGraphs());
                    EXPECT_EQ(p0->getDelaunayTriangulation(), pResult->getDelaunayTriangulation());
                    aAreas[k] = pResult->getArea2D();
                    kivo.deleteZone(pResult);
                }
                const double area0 = p0->getArea2D(), area1 = p1->getArea2D(),
                             tolerance = 1e-9 * (area0 + area1);
                EXPECT_NEAR(area0 + area1, aAreas[0] + aAreas[1], tolerance);
                EXPECT_NEAR(area0 - aAreas[1], aAreas[2], tolerance);
                EXPECT_NEAR(aAreas[0] - aAreas[1], aAreas[3], tolerance);
            }
            disturb(kivo, rng, vGraphs, 40);
        }
    }
}

TEST(SetOperations, nestedTenDeepGiveWhatTheirOperationsGiveOneByOne) {
    for (unsigned int seed = 1; seed <= 8 && !HasFailure(); ++seed) {
        Rng rng(seed);
        Kivo_2D kivo;
        std::vector<Zone2*> vZones = makeZones(kivo, rng);
        std::function<std::pair<Zone2*, std::function<Triangles()>>(int)> make = [&](int depth) {
            if (depth == 0) {
                Zone2* const pZone = vZones[rng() % vZones.size()];
                return std::pair(pZone, std::function<Triangles()>([pZone] { return trianglesOf(pZone); }));
            }
            const auto deep = make(depth - 1), flat = make(doubles::below(rng, std::min(depth, 3)));
            const Operation operation = aOperations[rng() % 4];
            const bool bSwap = rng() % 2 != 0;
            const auto &first = bSwap ? flat : deep, &second = bSwap ? deep : flat;
            return std::pair(operation.combine(first.first, second.first),
                             std::function<Triangles()>([f = first.second, s = second.second, operation] {
                                 return operation.onSets(f(), s());
                             }));
        };
        const auto [pZone, evaluate] = make(10);
        expectZone(kivo, pZone, evaluate());
        disturb(kivo, rng, {}, 40);
        expectZone(kivo, pZone, evaluate());
    }
}

TEST(SetOperations, costWhatTheZonesCostHoweverOftenOneIsUsedAndHoweverDeep) {
    Kivo_2D kivo;
    kivo.insert({{0, 0}, {1, 0}, {0, 1}, {1, 1.5}});
    Zone2 *const pGlobal = globalZone(kivo), *pTwice = pGlobal, *pDeep = pGlobal;
    for (int i = 0; i < 64; ++i)
        pTwice = zoneUnion(pTwice, pTwice);
    EXPECT_EQ("", saidBy(pTwice, 2));
    for (int i = 0; i < 100000; ++i)
        pDeep = i % 2 == 0 ? zoneUnion(pDeep, pGlobal) : zoneIntersection(pGlobal, pDeep);
    EXPECT_EQ("", saidBy(pDeep, 2));
    expectZone(kivo, zoneDifference(pTwice, pTwice), {});
}

TEST(SetOperations, withADeletedOperandSaySoAndGiveNothing) {
    Kivo_2D kivo;
    kivo.insert({{0, 0}, {1, 0}, {0, 1}, {1, 1.5}});
    Zone2 *const pGlobal = globalZone(kivo), *const pOther = globalZone(kivo);
    for (const Operation& operation : aOperations) {
        for (const bool bFirst : {true, false}) {
            Zone2* const pShortLived = globalZone(kivo);
            Zone2* const pResult =
                bFirst ? operation.combine(pShortLived, pGlobal) : operation.combine(pGlobal, pShortLived);
            Zone2* const pAbove = zoneUnion(pResult, pOther);
            kivo.deleteZone(pShortLived);
            std::vector<Zone2*> vAtTheSameAddress;
            for (int i = 0; i < 3; ++i) {
                EXPECT_NE(std::string::npos, saidBy(pResult, 0).find("WARNING")) << i;
                EXPECT_NE(std::string::npos, saidBy(pAbove, 0).find("WARNING")) << i;
                for (int k = 0; k < 8; ++k)
                    vAtTheSameAddress.push_back(globalZone(kivo));
            }
            const CapturedMessages captured;
            expectZone(kivo, pResult, {});
            EXPECT_EQ(nullptr, pResult->convertToBoundedZone());
            for (Zone2* pZone : vAtTheSameAddress)
                kivo.deleteZone(pZone);
            EXPECT_EQ(nullptr, peelOffIf(pResult, nullptr, false));
            kivo.deleteZone(pAbove); // before what it is made of
            kivo.deleteZone(pResult);
        }
    }
    EXPECT_EQ("", saidBy(zoneUnion(pGlobal, pOther), 2));
}

TEST(SetOperations, passOnThatAnOperandHasNoEdgesYet) {
    Kivo_2D kivo;
    ConstraintGraph2* const pPending = add(kivo, {{{0, 0}, {1, 0}}, {{1, 0}, {0, 0}}});
    kivo.insert({{0, 0}, {4, 0}, {0, 4}});
    Zone2* const pInside = kivo.createZone(pPending, ZL_INSIDE);
    Zone2* const pUnion = zoneUnion(globalZone(kivo), pInside);
    const CapturedMessages captured;
    Triangles v = {nullptr};
    EXPECT_THROW(pUnion->getTriangles(v), KivoException);
    EXPECT_EQ(Triangles{nullptr}, v);
    EXPECT_THROW(pUnion->convertToBoundedZone(), KivoException);
    EXPECT_THROW(kivo.writeObj("never.obj", pUnion), KivoException);
}
