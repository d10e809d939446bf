#pragma once

#include "tests/oracle/zones.h"
#include "tests/support/capture.h"
#include "tests/support/doubles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <set>
#include <utility>

// What tests of zones share: ways to make graphs, and the laws that all queries of a zone follow.
namespace zoned {

using namespace TESK_KIVO2D;
using oracle::Points;
using oracle::Segments;
using oracle::Triangles;
using oracle::VertexPair;

inline Segments ringOf(const Points& vCorners) {
    Segments vRing;
    for (std::size_t i = 0; i < vCorners.size(); ++i)
        vRing.emplace_back(vCorners[i], vCorners[(i + 1) % vCorners.size()]);
    return vRing;
}
inline Segments reversed(Segments vRing) {
    std::reverse(vRing.begin(), vRing.end());
    for (Segment2& s : vRing)
        s.swapSrcTrg();
    return vRing;
}
inline Segments square(double x, double y, double size) {
    return ringOf({{x, y}, {x + size, y}, {x + size, y + size}, {x, y + size}});
}
inline Segments joined(Segments v, const Segments& vMore) {
    v.insert(v.end(), vMore.begin(), vMore.end());
    return v;
}
// A ring whose copies of up to 0.6 of its size about its centre lie inside it.
inline Segments star(doubles::Rng& rng, int numCorners, const Point2& center, double radius) {
    Points vCorners;
    for (int i = 0; i < numCorners; ++i) {
        const double angle = 6.283185307179586 * (i + doubles::uniform(rng, 0, 0.5)) / numCorners;
        const double r = radius * doubles::uniform(rng, 0.8, 1);
        vCorners.emplace_back(center.x() + r * std::cos(angle), center.y() + r * std::sin(angle));
    }
    return ringOf(vCorners);
}
inline Segments scaledAbout(const Point2& center, double factor, Segments v) {
    const auto scaled = [&](const Point2& p) {
        return Point2(center.x() + factor * (p.x() - center.x()), center.y() + factor * (p.y() - center.y()));
    };
    for (Segment2& s : v)
        s = Segment2(scaled(s.getSrc()), scaled(s.getTrg()));
    return v;
}

inline ConstraintGraph2* add(Kivo_2D& kivo, Segments vSegments, bool bOriented = true,
                             ConstraintInsertionStrategy cis = CIS_CONSTRAINED_DELAUNAY) {
    const CapturedMessages captured;
    ConstraintGraph2* const pGraph = kivo.createConstraint(vSegments, cis, bOriented);
    EXPECT_NE(nullptr, pGraph);
    return pGraph;
}
inline Points randomPoints(doubles::Rng& rng, int num, double low, double high) {
    Points vPoints;
    while (num-- > 0) {
        const double x = doubles::uniform(rng, low, high);
        vPoints.emplace_back(x, doubles::uniform(rng, low, high));
    }
    return vPoints;
}
// Points inserted later may ask for more Steiner points on conforming segments; applying constraints adds
// them.
inline void settle(Kivo_2D& kivo) {
    const CapturedMessages captured;
    if (kivo.is2D()) kivo.applyConstraintsAndZones();
}
// A stand-in for refinement: more points, some of them on constraints, and constraints across.
inline void disturb(Kivo_2D& kivo, doubles::Rng& rng, const std::vector<ConstraintGraph2*>& vGraphs,
                    int num) {
    Points vPoints = randomPoints(rng, num, -12, 12);
    for (const Segment2& s : oracle::leavesOf(vGraphs))
        if (rng() % 4 == 0)
            vPoints.emplace_back((s.getSrc().x() + s.getTrg().x()) / 2,
                                 (s.getSrc().y() + s.getTrg().y()) / 2);
    kivo.insert(vPoints);
    for (int i = 0; i < num / 8; ++i) {
        const Points v = randomPoints(rng, 2, -12, 12);
        add(kivo, {{v[0], v[1]}}, false);
    }
    settle(kivo);
}

inline Triangles sorted(Triangles v) {
    std::sort(v.begin(), v.end(), std::less<>());
    return v;
}
// As a set: grown zones list region by region.
inline Triangles trianglesOf(const Zone2* pZone) {
    Triangles v;
    pZone->getTriangles(v);
    return pZone->getZoneLocation() == ZL_GROW ? sorted(v) : v;
}
using SetOperation = Triangles (*)(const Triangles&, const Triangles&);
template<class Algorithm>
Triangles combined(const Triangles& v0, const Triangles& v1, Algorithm algorithm) {
    Triangles v;
    algorithm(v0.begin(), v0.end(), v1.begin(), v1.end(), std::back_inserter(v), std::less<>());
    return v;
}
inline Triangles unionOf(const Triangles& v0, const Triangles& v1) {
    return combined(v0, v1, [](auto... a) { std::set_union(a...); });
}
inline Triangles intersectionOf(const Triangles& v0, const Triangles& v1) {
    return combined(v0, v1, [](auto... a) { std::set_intersection(a...); });
}
inline Triangles differenceOf(const Triangles& v0, const Triangles& v1) {
    return combined(v0, v1, [](auto... a) { std::set_difference(a...); });
}
inline Triangles symDifferenceOf(const Triangles& v0, const Triangles& v1) {
    return combined(v0, v1, [](auto... a) { std::set_symmetric_difference(a...); });
}

inline void expectNearArea(double expected, double actual) {
    EXPECT_NEAR(expected, actual, 1e-9 * std::abs(expected)) << "area";
}

// Rings that pass a vertex keep to their own parts of the turn round it.
inline void expectNoCrossingAt(const Kivo_2D& kivo, Point2* pVtx, const std::vector<VertexPair>& vPasses) {
    std::vector<Triangle2*> vAround;
    kivo.getIncidentTriangles(pVtx, vAround);
    std::map<const Point2*, std::size_t> mTurn; // neighbours counter-clockwise
    for (const Triangle2* pT : vAround)
        for (int step : {1, 2})
            mTurn.emplace(pT->getCorner((pT->getIntraTriangleIndex(pVtx) + step) % 3), mTurn.size());
    for (const auto& [pIn, pOut] : vPasses) {
        const auto [low, high] = std::minmax(mTurn.at(pIn), mTurn.at(pOut));
        for (const auto& [pOtherIn, pOtherOut] : vPasses) {
            const auto isBetween = [&, l = low, h = high](Point2* p) {
                return l < mTurn.at(p) && mTurn.at(p) < h;
            };
            EXPECT_TRUE(pOtherIn == pIn || isBetween(pOtherIn) == isBetween(pOtherOut)) << "rings cross";
        }
    }
}

inline void expectBorder(const Kivo_2D& kivo, const Zone2* pZone, const Triangles& vExpected) {
    const std::set<Triangle2*> sExpected(vExpected.begin(), vExpected.end());
    const std::vector<VertexPair> vBorder = oracle::borderOf(vExpected);
    const auto pairsOf = [&](const std::vector<Edge2>& vEdges) {
        std::vector<VertexPair> v;
        for (const Edge2& edge : vEdges) {
            EXPECT_EQ(1u, sExpected.count(edge.getTriangle())) << "an edge of a triangle elsewhere";
            v.emplace_back(edge.getSrc(), edge.getTrg());
        }
        return v;
    };
    std::vector<Edge2> vEdges, vRingEdges;
    std::vector<Segment2> vSegments;
    pZone->getBorderEdges(vEdges);
    pZone->getBoundaryEdges(vRingEdges);
    pZone->getBoundarySegments(vSegments);
    std::vector<VertexPair> vPairs = pairsOf(vEdges);
    const std::vector<VertexPair> vRings = pairsOf(vRingEdges);
    std::sort(vPairs.begin(), vPairs.end());
    EXPECT_EQ(vBorder, vPairs);
    vPairs = vRings;
    std::sort(vPairs.begin(), vPairs.end());
    EXPECT_EQ(vBorder, vPairs);
    ASSERT_EQ(vRings.size(), vSegments.size());
    std::map<Point2*, std::vector<VertexPair>> mPasses;
    for (std::size_t i = 0, start = 0; i < vRings.size(); ++i) {
        const auto& [p, q] = vRings[i];
        EXPECT_TRUE(vSegments[i].getSrc() == *p && vSegments[i].getTrg() == *q);
        const bool bEnd = q == vRings[start].first;
        ASSERT_TRUE(bEnd || (i + 1 < vRings.size() && vRings[i + 1].first == q)) << "a ring is not closed";
        mPasses[q].emplace_back(p, vRings[bEnd ? start : i + 1].second);
        if (!bEnd) continue;
        std::set<Point2*> sSeen;
        for (; start <= i; ++start)
            EXPECT_TRUE(sSeen.insert(vRings[start].first).second) << "a ring passes a vertex twice";
    }
    for (const auto& [pVtx, vPasses] : mPasses)
        if (vPasses.size() > 1) expectNoCrossingAt(kivo, pVtx, vPasses);
}

inline void expectArrays(const Kivo_2D& kivo, const Zone2* pZone, const Triangles& vExpected,
                         const std::vector<Point2*>& vVertices) {
    MeshArrays arrays;
    arrays.vCorners = {1, 2, 3};
    kivo.getMeshArrays(arrays, pZone);
    EXPECT_EQ(vVertices, arrays.vVertices);
    ASSERT_EQ(2 * vVertices.size(), arrays.vCoordinates.size());
    ASSERT_EQ(3 * vExpected.size(), arrays.vCorners.size());
    ASSERT_EQ(3 * vExpected.size(), arrays.vNeighbours.size());
    for (std::size_t i = 0; i < vVertices.size(); ++i)
        EXPECT_TRUE(arrays.vCoordinates[2 * i] == vVertices[i]->x() &&
                    arrays.vCoordinates[2 * i + 1] == vVertices[i]->y());
    for (std::size_t i = 0; i < arrays.vCorners.size(); ++i) {
        const Triangle2* const pT = vExpected[i / 3];
        EXPECT_EQ(pT->getCorner(int(i % 3)), arrays.vVertices.at(arrays.vCorners[i]));
        Triangle2* const pOther = pT->getOppositeTriangle(int(i % 3));
        const std::uint32_t number = arrays.vNeighbours[i];
        if (number == MeshArrays::noTriangle) {
            EXPECT_FALSE(pOther != nullptr &&
                         std::binary_search(vExpected.begin(), vExpected.end(), pOther, std::less<>()));
        } else {
            EXPECT_EQ(pOther, vExpected.at(number));
        }
    }
}

// All queries agree with this set of triangles.
inline void expectZone(const Kivo_2D& kivo, const Zone2* pZone, const Triangles& vExpected) {
    ASSERT_NE(nullptr, pZone);
    Triangles vListed = {nullptr};
    pZone->getTriangles(vListed);
    ASSERT_TRUE(!vListed.empty() && vListed.front() == nullptr) << "the list is not appended";
    vListed.erase(vListed.begin());
    if (pZone->getZoneLocation() == ZL_GROW) vListed = sorted(vListed); // region by region
    ASSERT_EQ(vExpected, vListed);
    EXPECT_EQ(vExpected.size(), pZone->getNumberOfTriangles());
    expectNearArea(oracle::areaOf(vExpected), pZone->getArea2D());
    std::vector<Point2*> vVertices, vNamed;
    std::set<Point2*> sNamed;
    Bbox2 box;
    for (const Triangle2* pT : vExpected) {
        for (int i = 0; i < 3; ++i) {
            box.add(*pT->getCorner(i));
            if (sNamed.insert(pT->getCorner(i)).second) vNamed.push_back(pT->getCorner(i));
        }
    }
    pZone->getVertices(vVertices);
    EXPECT_EQ(vNamed, vVertices);
    const Bbox2 found = pZone->getBoundingBox();
    EXPECT_TRUE(box.getMinPoint() == found.getMinPoint() && box.getMaxPoint() == found.getMaxPoint());
    expectBorder(kivo, pZone, vExpected);
    expectArrays(kivo, pZone, vExpected, vNamed);
}

} // namespace zoned
