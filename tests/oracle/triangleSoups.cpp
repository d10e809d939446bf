#include "tests/oracle/triangleSoups.h"

#include "tests/oracle/exact.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>

namespace oracle {

using namespace TESK_KIVO2D;

namespace {

using Index = std::size_t;
using Xy = std::pair<double, double>;
using Kind = SoupFault::Kind;

std::string textOf(double x, double y) {
    char buffer[80];
    std::snprintf(buffer, sizeof buffer, "(%.17g, %.17g)", x, y);
    return buffer;
}
std::string textOf(const Point2& p) { return textOf(p.x(), p.y()); }
std::string textOf(const Edge& e) {
    return textOf(e.first.first, e.first.second) + " " + textOf(e.second.first, e.second.second);
}
bool isFinite(const Point2& p) { return std::isfinite(p.x()) && std::isfinite(p.y()); }

bool boxesMeet(const Point2* p, Index num, const Point2* q, Index otherNum) {
    return Bbox2(p, p + num).doIntersect(Bbox2(q, q + otherNum));
}

class FaultSearch {
public:
    FaultSearch(const Points& vItsCorners, const Points& vVertices, const Segments& vConstraints)
        : vCorners(vItsCorners), numTriangles(vItsCorners.size() / 3) {
        vPoints = vCorners;
        vPoints.insert(vPoints.end(), vVertices.begin(), vVertices.end());
        for (const Segment2& s : vConstraints)
            vPoints.insert(vPoints.end(), {s.getSrc(), s.getTrg()});
        Points vFinite = vPoints;
        std::replace_if(
            vFinite.begin(), vFinite.end(), [](const Point2& p) { return !isFinite(p); }, Point2(0, 0));
        vExact = exactPoints(vFinite);
        firstSegment = vCorners.size() + vVertices.size();
    }

    std::vector<SoupFault> run() {
        for (Index t = 0; t < numTriangles; ++t)
            sortOut(t);
        for (const auto& [edge, vTriangles] : mEdges)
            if (vTriangles.size() > 2) addShared(edge, vTriangles);
        for (Index i = 0; i < firstSegment; ++i)
            if (i >= vCorners.size() || bGood[i / 3]) findAround(i);
        for (Index t = 0; t < numTriangles; ++t)
            for (Index u = 0; u < t; ++u)
                if (bGood[t] && bGood[u] && overlap(t, u))
                    add(Kind::OVERLAP, u, nameOf(u) + " and triangle" + nameOf(t).substr(8) + " overlap");
        for (Index i = firstSegment; i < vPoints.size(); i += 2)
            findCrossed(i);
        std::stable_sort(vFaults.begin(), vFaults.end(), [](const SoupFault& one, const SoupFault& other) {
            return std::pair(one.kind, one.triangle) < std::pair(other.kind, other.triangle);
        });
        return vFaults;
    }

private:
    std::string nameOf(Index t) const {
        return "Triangle " + std::to_string(t) + " " + textOf(vCorners[3 * t]) + " " +
               textOf(vCorners[3 * t + 1]) + " " + textOf(vCorners[3 * t + 2]);
    }
    void add(Kind kind, Index triangle, const std::string& text, const Point2& point = {}) {
        vFaults.push_back({kind, triangle, text, point, true});
    }
    int turn(Index i, Index j, Index k) const { return orientation(vExact[i], vExact[j], vExact[k]); }

    void sortOut(Index t) {
        const Point2* const p = &vCorners[3 * t];
        const bool bFinite = isFinite(p[0]) && isFinite(p[1]) && isFinite(p[2]);
        const int direction = turn(3 * t, 3 * t + 1, 3 * t + 2);
        bGood.push_back(bFinite && direction != 0);
        vDirections.push_back(direction);
        if (!bFinite) {
            add(Kind::NOT_FINITE, t, nameOf(t) + " has a coordinate that is not finite");
        } else if (direction == 0) {
            add(Kind::DEGENERATE, t, nameOf(t) + " is degenerate");
        } else {
            for (Index i = 0; i < 3; ++i)
                mEdges[edgeOf(p[i], p[(i + 1) % 3])].push_back(t);
        }
    }

    void addShared(const Edge& edge, const std::vector<Index>& vTriangles) {
        std::string text =
            "The edge " + textOf(edge) + " is shared by " + std::to_string(vTriangles.size()) + " triangles:";
        for (Index i = 0; i < std::min<Index>(vTriangles.size(), 10); ++i)
            text += (i == 0 ? " " : ", ") + std::to_string(vTriangles[i]);
        add(Kind::SHARED_EDGE, vTriangles[0], text + (vTriangles.size() > 10 ? ", ..." : ""));
    }

    // The edges and triangles that have the corner or vertex inside; of equal ones the first one counts.
    void findAround(Index i) {
        const bool bCorner = i < vCorners.size();
        const Point2& p = vPoints[i];
        if (!sSeen.insert({p.x(), p.y()}).second) return;
        for (Index t = 0; t < numTriangles; ++t) {
            if (!bGood[t] || !boxesMeet(&p, 1, &vCorners[3 * t], 3)) continue;
            int aTurns[3];
            for (Index k = 0; k < 3; ++k)
                aTurns[k] = vDirections[t] * turn(3 * t + k, 3 * t + (k + 1) % 3, i);
            const bool bOutside = std::any_of(aTurns, aTurns + 3, [](int side) { return side < 0; });
            const Index numOn = static_cast<Index>(std::count(aTurns, aTurns + 3, 0));
            if (bOutside || numOn > 1) continue; // beyond, or a corner
            if (numOn == 0) {
                if (!bCorner)
                    add(Kind::VERTEX_IN_TRIANGLE, t,
                        "The vertex " + textOf(p) + " lies inside triangle" + nameOf(t).substr(8), p);
                continue;
            }
            const Index k = static_cast<Index>(std::find(aTurns, aTurns + 3, 0) - aTurns);
            const Edge edge = edgeOf(vCorners[3 * t + k], vCorners[3 * t + (k + 1) % 3]);
            if (mEdges.at(edge)[0] != t) continue;
            add(bCorner ? Kind::CORNER_IN_EDGE : Kind::VERTEX_IN_EDGE, t,
                (bCorner ? "The corner " : "The vertex ") + textOf(p) + " lies inside the edge " +
                    textOf(edge) + " of triangle " + std::to_string(t),
                p);
        }
    }

    // No line along an edge of one has the other one beyond it.
    bool overlap(Index t, Index u) const {
        if (!boxesMeet(&vCorners[3 * t], 3, &vCorners[3 * u], 3)) return false;
        for (int swapped = 0; swapped < 2; ++swapped, std::swap(t, u)) {
            for (Index k = 0; k < 3; ++k) {
                bool bBeyond = true;
                for (Index i = 0; i < 3 && bBeyond; ++i)
                    bBeyond = vDirections[t] * turn(3 * t + k, 3 * t + (k + 1) % 3, 3 * u + i) <= 0;
                if (bBeyond) return false;
            }
        }
        return true;
    }

    void findCrossed(Index i) {
        const auto [low, high] = std::minmax({vPoints[i], vPoints[i + 1]});
        std::vector<std::pair<RationalPoint, SoupFault>> vCrossings;
        for (Index t = 0; t < numTriangles; ++t) {
            if (!bGood[t] || !boxesMeet(&vPoints[i], 2, &vCorners[3 * t], 3)) continue;
            for (Index k = 0; k < 3; ++k) {
                const Index a = 3 * t + k, b = 3 * t + (k + 1) % 3;
                const Edge edge = edgeOf(vCorners[a], vCorners[b]);
                if (mEdges.at(edge)[0] != t || turn(i, i + 1, a) * turn(i, i + 1, b) >= 0 ||
                    turn(a, b, i) * turn(a, b, i + 1) >= 0)
                    continue;
                const std::string text = "The constraint segment " + textOf(low) + " " + textOf(high) +
                                         " crosses the edge " + textOf(edge) + " of triangle ";
                vCrossings.push_back({lineIntersection(low, high, vCorners[a], vCorners[b]),
                                      {Kind::CROSSED_EDGE, t, text + std::to_string(t), low, true}});
            }
        }
        const auto isBefore = [](const auto& one, const auto& other) {
            return cmp(one.first.x, other.first.x) < 0 ||
                   (one.first.x == other.first.x && cmp(one.first.y, other.first.y) < 0);
        };
        std::sort(vCrossings.begin(), vCrossings.end(), isBefore);
        for (auto& [point, fault] : vCrossings) {
            fault.bFirst = &fault == &vCrossings[0].second;
            vFaults.push_back(fault);
        }
    }

    const Points& vCorners;
    const Index numTriangles;
    Points vPoints; // corners, then vertices, then ends of segments
    Index firstSegment;
    std::vector<ExactPoint> vExact;
    std::vector<bool> bGood;
    std::vector<int> vDirections;
    std::map<Edge, std::vector<Index>> mEdges; // of good triangles
    std::set<Xy> sSeen;
    std::vector<SoupFault> vFaults;
};

} // namespace

std::vector<SoupFault> soupFaults(const Points& vCorners, const Points& vVertices,
                                  const Segments& vConstraints) {
    return FaultSearch(vCorners, vVertices, vConstraints).run();
}

SoupFacts soupFacts(const Points& vCorners) {
    SoupFacts facts;
    std::set<Xy> sCorners;
    std::map<std::pair<Xy, Xy>, Index> mLeft; // a directed edge, and the triangle on its left
    for (Index i = 0; i < vCorners.size(); i += 3) {
        Corners c;
        for (Index k = 0; k < 3; ++k)
            c[k] = {vCorners[i + k].x() + 0.0, vCorners[i + k].y() + 0.0}; // one zero only
        if (orientation(vCorners[i], vCorners[i + 1], vCorners[i + 2]) < 0) {
            ++facts.numTurned;
            std::swap(c[1], c[2]);
        }
        std::rotate(c.begin(), std::min_element(c.begin(), c.end()), c.end());
        sCorners.insert(c.begin(), c.end());
        for (Index k = 0; k < 3; ++k)
            mLeft[{c[k], c[(k + 1) % 3]}] = facts.vTriangles.size();
        facts.vTriangles.push_back(c);
    }
    const auto pointOf = [](const Xy& xy) { return Point2(xy.first, xy.second); };
    for (const auto& [edge, t] : mLeft) {
        const Edge name = std::minmax(edge.first, edge.second);
        const auto right = mLeft.find({edge.second, edge.first});
        if (right == mLeft.end()) {
            facts.sBorder.insert(name);
        } else if (edge.first < edge.second) {
            const Corners &c = facts.vTriangles[t], &other = facts.vTriangles[right->second];
            const auto isFar = [&name](const Xy& xy) { return xy != name.first && xy != name.second; };
            const Xy far = *std::find_if(other.begin(), other.end(), isFar);
            if (inCircle(pointOf(c[0]), pointOf(c[1]), pointOf(c[2]), pointOf(far)) > 0)
                facts.sNotDelaunay.insert(name);
        }
    }
    facts.numCorners = sCorners.size();
    std::sort(facts.vTriangles.begin(), facts.vTriangles.end());
    return facts;
}

} // namespace oracle
