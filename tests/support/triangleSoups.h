#pragma once

#include "tests/oracle/exact.h"
#include "tests/oracle/triangleSoups.h"
#include "tests/support/constrained.h"
#include "tests/support/frames.h"
#include "tests/support/zoned.h"

#include <algorithm>
#include <set>
#include <string>
#include <vector>

// What tests of imports share: soups, and what must become of them.
namespace triangleSoups {

using namespace TESK_KIVO2D;
using doubles::below;
using doubles::Points;
using doubles::Rng;
using oracle::Edge;
using oracle::SoupFault;
using Soup = Points; // three corners a triangle

inline const std::string prefix = "      [Kivo2D-Message] ";
inline const std::string location = prefix + "Dt2::importTriangles(..), ";

inline std::size_t any(Rng& rng, std::size_t size) { return rng() % size; }

inline std::string counted(std::size_t num, const std::string& what) {
    return std::to_string(num) + " " + what + (num == 1 ? "" : "s");
}

// The corner behind this one in its triangle.
inline std::size_t next(std::size_t corner) { return corner / 3 * 3 + (corner + 1) % 3; }

// Clockwise triangles among others, in any order, each with any corner first.
inline Soup shuffled(Rng& rng, Soup v) {
    for (std::size_t i = 0; i < v.size(); i += 3) {
        std::shuffle(&v[i], &v[i] + 3, rng);
        std::swap_ranges(&v[i], &v[i] + 3, &v[3 * any(rng, i / 3 + 1)]);
    }
    return v;
}

inline Soup soupOf(const std::vector<Triangle2*>& vTriangles) {
    Soup v;
    for (const Triangle2* pT : vTriangles)
        v.insert(v.end(), {*pT->getCorner(0), *pT->getCorner(1), *pT->getCorner(2)});
    return v;
}
inline Soup soupOf(const Kivo_2D& kivo) {
    std::vector<Triangle2*> v;
    kivo.getTrianglePointers(v);
    return soupOf(v);
}

// Flips edges of counter-clockwise triangles where that leaves two of them: Delaunay or not.
inline void flipSome(Rng& rng, Soup& v, std::size_t num) {
    while (num-- > 0) {
        const std::size_t i = any(rng, v.size());
        const Point2 c = v[i], a = v[next(i)], b = v[next(next(i))];
        std::size_t j = 0;
        while (j < v.size() && (v[j] != b || v[next(j)] != a))
            ++j;
        if (j == v.size()) continue;
        const Point2 d = v[next(next(j))];
        if (oracle::orientation(c, a, d) <= 0 || oracle::orientation(c, d, b) <= 0) continue;
        v[next(next(i))] = d;
        v[next(j)] = c;
    }
}

// Squares with either diagonal, as good as the other one.
inline Soup gridSoup(Rng& rng, int num) {
    Soup v;
    for (int i = 0; i < num * num; ++i) {
        const double x = i % num, y = i / num;
        const Point2 a(x, y), b(x + 1, y), c(x + 1, y + 1), d(x, y + 1);
        const bool bRising = rng() % 2 == 0;
        v.insert(v.end(), {a, b, bRising ? c : d, c, d, bRising ? a : b});
    }
    return v;
}

inline Point2 anyPoint(Rng& rng, const Frame& frame, int size, bool bLattice) {
    const double x = bLattice ? below(rng, size) : doubles::uniform(rng, 0, size);
    return frame.place(x, bLattice ? below(rng, size) : doubles::uniform(rng, 0, size));
}
inline Segments anySegments(Rng& rng, const Points& vPoints, int num) {
    Segments v;
    while (num-- > 0)
        if (const Segment2 s(vPoints[any(rng, vPoints.size())], vPoints[any(rng, vPoints.size())]);
            s.getSrc() != s.getTrg())
            v.push_back(s);
    return v;
}

// Triangles that fit, with holes, islands and edges that are not Delaunay.
inline Soup goodSoup(Rng& rng, const Frame& frame, int maxPoints) {
    for (;;) {
        const int numPoints = 3 + below(rng, maxPoints - 2), size = 3 + below(rng, 10);
        const bool bLattice = rng() % 2 == 0;
        Points vPoints;
        while (vPoints.size() < std::size_t(numPoints))
            vPoints.push_back(anyPoint(rng, frame, size, bLattice));
        Kivo_2D kivo;
        kivo.insert(vPoints);
        if (!kivo.is2D()) continue;
        if (const Segments v = anySegments(rng, vPoints, below(rng, 4)); !v.empty())
            zoned::add(kivo, v, false);
        Soup vSoup = soupOf(kivo);
        flipSome(rng, vSoup, any(rng, 4) * vSoup.size());
        vSoup = shuffled(rng, vSoup);
        if (rng() % 2 == 0) vSoup.resize(3 + any(rng, vSoup.size() / 3) * 3);
        return vSoup;
    }
}

// All that clients can see of a triangulation, addresses and orders included.
struct State {
    std::vector<const void*> vAddresses;
    std::vector<double> vNumbers;
    bool operator==(const State&) const = default;
};
inline State stateOf(const Constrained& c) {
    std::vector<Point2*> vVertices;
    std::vector<Triangle2*> vTriangles;
    std::vector<ConstraintSegment2*> vLeaves;
    c.kivo.getVertexPointers(vVertices);
    c.kivo.getTrianglePointers(vTriangles);
    for (const oracle::GivenGraph& graph : c.vGraphs)
        graph.pGraph->getChildConstraintSegments(vLeaves);
    State state = {{vLeaves.begin(), vLeaves.end()}, {}};
    auto& [vAddresses, vNumbers] = state;
    for (const Point2* p : vVertices) {
        vAddresses.insert(vAddresses.end(), {p, p->getIncidentTriangle()});
        vNumbers.insert(vNumbers.end(), {p->x(), p->y(), double(p->getCustomIndex())});
    }
    for (const Triangle2* pT : vTriangles)
        for (int i = 0; i < 3; ++i)
            vAddresses.insert(vAddresses.end(), {pT, pT->getCorner(i), pT->getOppositeTriangle(i)});
    return state;
}

inline Points verticesOf(const Kivo_2D& kivo) {
    std::vector<Point2*> v;
    kivo.getVertexPointers(v);
    Points vPoints;
    for (const Point2* p : v)
        vPoints.push_back(*p);
    return vPoints;
}
inline std::set<Edge> constraintEdges(const Kivo_2D& kivo) {
    std::set<Edge> s;
    for (Triangle2* pT : oracle::allTriangles(kivo))
        for (int i = 0; i < 3; ++i)
            if (kivo.isConstraint(pT, i))
                s.insert(oracle::edgeOf(*pT->getCorner((i + 1) % 3), *pT->getCorner((i + 2) % 3)));
    return s;
}
// With those that wait until they are applied.
inline std::set<Edge> constraintEdges(const Constrained& c) {
    const std::vector<Edge> vLeaves = oracle::leafEdges(c.vGraphs);
    std::set<Edge> s = constraintEdges(c.kivo);
    s.insert(vLeaves.begin(), vLeaves.end());
    return s;
}
inline Segments segmentsOf(const std::set<Edge>& sEdges) {
    Segments v;
    for (const auto& [p, q] : sEdges)
        v.emplace_back(Point2(p.first, p.second), Point2(q.first, q.second));
    return v;
}
// The edges divided at the points that lie on them.
inline std::set<Edge> dividedAt(const Points& vPoints, const std::set<Edge>& sEdges) {
    std::set<Edge> sDivided;
    for (const Segment2& s : segmentsOf(sEdges)) {
        const Points vEnds = {s.getSrc(), s.getTrg()};
        const Bbox2 box(vEnds.data(), vEnds.data() + 2);
        std::set<Point2> sOn(vEnds.begin(), vEnds.end());
        for (const Point2& p : vPoints)
            if (box.isInBox(p) && oracle::orientation(vEnds[0], vEnds[1], p) == 0) sOn.insert(p);
        for (auto i = sOn.begin(); std::next(i) != sOn.end(); ++i)
            sDivided.insert(oracle::edgeOf(*i, *std::next(i)));
    }
    return sDivided;
}

// The zone has the triangles of the soup and nothing else of the triangulation.
inline void expectZoneOf(const Kivo_2D& kivo, const Zone2* pZone, const oracle::SoupFacts& facts) {
    ASSERT_NE(nullptr, pZone);
    EXPECT_EQ(ZL_BOUNDED, pZone->getZoneLocation());
    const std::vector<oracle::Corners> vCorners = oracle::triangleList(kivo);
    std::vector<Triangle2*> vAll, vExpected;
    kivo.getTrianglePointers(vAll);
    for (std::size_t i = 0; i < vAll.size(); ++i)
        if (std::binary_search(facts.vTriangles.begin(), facts.vTriangles.end(), vCorners[i]))
            vExpected.push_back(vAll[i]);
    EXPECT_EQ(facts.vTriangles.size(), vExpected.size()) << "triangles of the soup are missing";
    EXPECT_EQ(vExpected, zoned::trianglesOf(pZone));
    if (vExpected.size() < 1000) zoned::expectBorder(kivo, pZone, vExpected);
}

// Imports a soup without faults, and demands of the result:
//   - it is said how much there was of what;
//   - the soup's triangles are triangles, and the zone has these and no others;
//   - constraints are what were before, divided at corners on them, the soup's border, and those of its inner
//   edges that are not Delaunay; the graphs from before are what they were given;
//   - vertices from before stay, and corners that are none yet become vertices;
//   - the triangulation is sound, and Delaunay but for constraints.
inline Zone2* expectImported(Constrained& c, const Soup& vSoup) {
    const std::string text = vSoup.size() < 200 ? doubles::hex(vSoup) + c.given() : "";
    const oracle::SoupFacts facts = oracle::soupFacts(vSoup);
    const Points vBefore = verticesOf(c.kivo);
    std::vector<Point2*> vOld, vNew;
    c.kivo.getVertexPointers(vOld);
    Points vAll = vBefore;
    vAll.insert(vAll.end(), vSoup.begin(), vSoup.end());
    std::set<Edge> sExpected = dividedAt(vAll, constraintEdges(c));
    sExpected.insert(facts.sBorder.begin(), facts.sBorder.end());
    sExpected.insert(facts.sNotDelaunay.begin(), facts.sNotDelaunay.end());
    Zone2* pZone = nullptr;
    {
        const CapturedMessages captured;
        pZone = c.kivo.importTriangles(vSoup);
        EXPECT_EQ(location + "INFO: " + counted(vSoup.size() / 3, "triangle") + " with " +
                      counted(facts.numCorners, "corner") + " imported, " + std::to_string(facts.numTurned) +
                      " turned round, " + counted(facts.sBorder.size(), "border edge") + ", " +
                      counted(facts.sNotDelaunay.size(), "inner constraint edge") + "\n",
                  captured.output() + captured.error())
            << text;
        if (pZone == nullptr) return nullptr;
        EXPECT_TRUE(c.kivo.checkValidity(true, "imported")) << text;
    }
    expectZoneOf(c.kivo, pZone, facts);
    EXPECT_EQ(sExpected, constraintEdges(c)) << text;
    EXPECT_EQ("", oracle::findGraphFault(c.kivo, c.vGraphs)) << text;
    c.kivo.getVertexPointers(vNew);
    EXPECT_EQ(std::set<Point2>(vAll.begin(), vAll.end()).size(), vNew.size()) << text;
    for (std::size_t i = 0; i < vOld.size(); ++i)
        EXPECT_TRUE(std::count(vNew.begin(), vNew.end(), vOld[i]) == 1 && *vOld[i] == vBefore[i]) << text;
    const auto isConstraint = [&](Point2* p, Point2* q) { return c.kivo.isConstraint(p, q); };
    EXPECT_EQ("", oracle::findFault(c.kivo, isConstraint)) << text;
    return pZone;
}

} // namespace triangleSoups
