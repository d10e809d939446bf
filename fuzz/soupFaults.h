#pragma once

#include "Kivo_2D.h"
#include "tests/oracle/exact.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <set>
#include <vector>

// What keeps a soup of triangles out of a triangulation, found by comparing all with all.
namespace soupFaults {

using namespace TESK_KIVO2D;

inline bool isFinite(const Point2& p) { return std::isfinite(p.x()) && std::isfinite(p.y()); }

inline int sideOf(const Point2& a, const Point2& b, const Point2& c) {
    const auto areSmallIntegers = [](const Point2& p) {
        return std::max(std::fabs(p.x()), std::fabs(p.y())) < 0x1p20 && p.x() == std::nearbyint(p.x()) &&
               p.y() == std::nearbyint(p.y());
    };
    if (!areSmallIntegers(a) || !areSmallIntegers(b) || !areSmallIntegers(c))
        return oracle::orientation(a, b, c);
    const auto difference = [](double v, double w) { return std::int64_t(v) - std::int64_t(w); };
    const std::int64_t area = difference(b.x(), a.x()) * difference(c.y(), a.y()) -
                              difference(b.y(), a.y()) * difference(c.x(), a.x());
    return (area > 0) - (area < 0);
}

// Of three points on a line.
inline bool isBetween(const Point2& p, const Point2& a, const Point2& b) {
    return (a < p && p < b) || (b < p && p < a);
}
inline bool isInsideEdge(const Point2& p, const Point2& a, const Point2& b) {
    return sideOf(a, b, p) == 0 && isBetween(p, a, b);
}

struct Trio {
    Point2 a, b, c; // counter-clockwise
    std::array<Segment2, 3> edges() const { return {Segment2(a, b), Segment2(b, c), Segment2(c, a)}; }
    std::array<Point2, 3> corners() const { return {a, b, c}; }
    // True when all of them are to the right of an edge, or on its line.
    template<class Points>
    bool hasBeyondAnEdge(const Points& points) const {
        for (const Segment2& edge : edges())
            if (std::all_of(points.begin(), points.end(),
                            [&](const Point2& p) { return sideOf(edge.getSrc(), edge.getTrg(), p) <= 0; }))
                return true;
        return false;
    }
    bool overlaps(const Trio& other) const {
        return !hasBeyondAnEdge(other.corners()) && !other.hasBeyondAnEdge(corners());
    }
    bool isEntered(const Point2& p, const Point2& q) const {
        const int sides[] = {sideOf(p, q, a), sideOf(p, q, b), sideOf(p, q, c)};
        const auto [lowest, highest] = std::minmax_element(std::begin(sides), std::end(sides));
        return *lowest < 0 && *highest > 0 && !hasBeyondAnEdge(std::array{p, q});
    }
    // Inside or on an edge, but no corner.
    bool holds(const Point2& p) const {
        const int s0 = sideOf(a, b, p), s1 = sideOf(b, c, p), s2 = sideOf(c, a, p);
        return std::min({s0, s1, s2}) > 0 || (s0 == 0 && isBetween(p, a, b)) ||
               (s1 == 0 && isBetween(p, b, c)) || (s2 == 0 && isBetween(p, c, a));
    }
    // Rotated so that the smallest comes first.
    std::array<Point2, 3> rotated() const {
        return a < b && a < c   ? std::array{a, b, c}
               : b < c && b < a ? std::array{b, c, a}
                                : std::array{c, a, b};
    }
    bool operator<(const Trio& other) const { return rotated() < other.rotated(); }
    bool operator==(const Trio& other) const { return rotated() == other.rotated(); }
};

inline Trio trioOf(const Triangle2* pT) { return {*pT->getCorner(0), *pT->getCorner(1), *pT->getCorner(2)}; }
inline std::set<Trio> triosOf(const std::vector<Triangle2*>& v) {
    std::set<Trio> s;
    for (const Triangle2* pT : v)
        s.insert(trioOf(pT));
    return s;
}
// What a triangulation is: addresses and coordinates, in its own order.
struct State {
    State(const Kivo_2D& kivo, const std::vector<ConstraintGraph2*>& vGraphs) {
        std::vector<Triangle2*> vTriangles;
        kivo.getVertexPointers(vVertices);
        kivo.getTrianglePointers(vTriangles);
        for (Point2* const pVtx : vVertices) {
            vPoints.push_back(*pVtx);
            vIsConstraint.push_back(kivo.isConstraint(pVtx));
        }
        for (Triangle2* pT : vTriangles) {
            vTrios.push_back(trioOf(pT));
            for (int i = 0; i < 3; ++i) {
                Point2 *const p = pT->getCorner((i + 1) % 3), *const q = pT->getCorner((i + 2) % 3);
                vLinks.insert(vLinks.end(), {p, pT->getOppositeTriangle(i)});
                vIsConstraint.push_back(kivo.isConstraint(pT, i));
                if (vIsConstraint.back()) vConstraints.emplace_back(*p, *q);
                if (pT->getOppositeTriangle(i) == nullptr || *p < *q) vEdges.emplace_back(*p, *q);
            }
        }
        takeLeaves(vGraphs);
    }
    // Some may be pending, and no edges yet.
    void takeLeaves(const std::vector<ConstraintGraph2*>& vGraphs) {
        std::vector<ConstraintSegment2*> vLeaves;
        for (const ConstraintGraph2* pGraph : vGraphs)
            pGraph->getChildConstraintSegments(vLeaves);
        for (const ConstraintSegment2* pLeaf : vLeaves)
            vConstraints.emplace_back(*pLeaf->getSrc(), *pLeaf->getTrg());
    }
    bool operator==(const State& other) const {
        return vVertices == other.vVertices && vPoints == other.vPoints && vLinks == other.vLinks &&
               vIsConstraint == other.vIsConstraint;
    }

    std::vector<Point2*> vVertices;
    std::vector<Point2> vPoints;
    std::vector<const void*> vLinks;
    std::vector<bool> vIsConstraint;
    std::vector<Trio> vTrios;
    std::vector<Segment2> vEdges, vConstraints;
};

// The faults of a soup, by looking at all there is.
struct Faults {
    Faults(const std::vector<Point2>& vCorners, const State& state) {
        for (std::size_t i = 0; i + 2 < vCorners.size(); i += 3)
            take(vCorners[i], vCorners[i + 1], vCorners[i + 2]);
        for (const auto& [edge, num] : mEdges)
            if (num > 2) ++numShared;
        for (std::size_t i = 0; i < vTrios.size(); ++i) {
            for (std::size_t j = 0; j < i; ++j)
                if (vTrios[i].overlaps(vTrios[j])) ++numOverlaps;
            for (const Point2& p : state.vPoints)
                if (vTrios[i].holds(p)) bBeside = true;
            for (const Segment2& s : state.vConstraints)
                if (vTrios[i].isEntered(s.getSrc(), s.getTrg())) bBeside = true;
        }
        for (const auto& [edge, num] : mEdges)
            for (const Point2& p : sCorners)
                if (isInsideEdge(p, edge.first, edge.second)) ++numInEdges;
    }
    void take(const Point2& a, const Point2& b, const Point2& c) {
        if (!isFinite(a) || !isFinite(b) || !isFinite(c)) {
            ++numNotFinite;
        } else if (const int side = sideOf(a, b, c); side == 0) {
            ++numDegenerate;
        } else {
            vTrios.push_back(side > 0 ? Trio{a, b, c} : Trio{a, c, b});
            sCorners.insert({a, b, c});
            for (const Segment2& s : vTrios.back().edges())
                ++mEdges[std::minmax(s.getSrc(), s.getTrg())];
        }
    }
    std::size_t numCertain() const {
        return numNotFinite + numDegenerate + numShared + numOverlaps + numInEdges;
    }
    bool isFree() const { return numCertain() == 0 && !bBeside; }

    std::size_t numNotFinite = 0, numDegenerate = 0, numShared = 0, numOverlaps = 0, numInEdges = 0;
    bool bBeside = false; // a fault of the soup and what was there
    std::vector<Trio> vTrios;
    std::set<Point2> sCorners;
    std::map<std::pair<Point2, Point2>, std::size_t> mEdges;
};

} // namespace soupFaults
