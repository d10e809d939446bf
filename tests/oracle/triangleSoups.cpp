#include "tests/oracle/triangleSoups.h"

#include "tests/oracle/exact.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <map>

namespace oracle {

using namespace TESK_KIVO2D;

namespace {

using Index = std::size_t;
using Xy = std::pair<double, double>;
using Kind = SoupFault::Kind;

std::string textOf(const Xy& xy) {
    char buffer[80];
    std::snprintf(buffer, sizeof buffer, "(%.17g, %.17g)", xy.first, xy.second);
    return buffer;
}
std::string textOf(const Point2& p) { return textOf(Xy(p.x(), p.y())); }
std::string textOf(const Edge& e) { return textOf(e.first) + " " + textOf(e.second); }
bool isFinite(const Point2& p) { return std::isfinite(p.x()) && std::isfinite(p.y()); }

class FaultSearch {
public:
    FaultSearch(const Points& vCorners, const Points& vVertices, const Segments& vConstraints)
        : vPoints(vCorners), numCorners(vCorners.size()), firstSegment(numCorners + vVertices.size()) {
        vPoints.insert(vPoints.end(), vVertices.begin(), vVertices.end());
        for (const Segment2& s : vConstraints)
            vPoints.insert(vPoints.end(), {s.getSrc(), s.getTrg()});
        Points vFinite = vPoints;
        std::replace_if(
            vFinite.begin(), vFinite.end(), [](const Point2& p) { return !isFinite(p); }, Point2(0, 0));
        vExact = exactPoints(vFinite);
    }

    std::vector<SoupFault> run() {
        for (Index t = 0; t < numCorners / 3; ++t)
            sortOut(t);
        for (const auto& [edge, vTriangles] : mEdges)
            if (vTriangles.size() > 2) addShared(edge, vTriangles);
        std::set<Point2> sSeen; // of equal ones the first one counts
        for (Index i = 0; i < firstSegment; ++i)
            if ((i >= numCorners || vDirections[i / 3] != 0) && sSeen.insert(vPoints[i]).second)
                findAround(i);
        for (const Index t : vGood)
            for (const Index u : vGood)
                if (t < u && vBoxes[t].doIntersect(vBoxes[u]) && !isBeside(t, u) && !isBeside(u, t))
                    add(Kind::OVERLAP, t, "Triangle" + nameOf(t) + " and triangle" + nameOf(u) + " overlap");
        for (Index i = firstSegment; i < vPoints.size(); i += 2)
            findCrossed(i);
        std::stable_sort(vFaults.begin(), vFaults.end(), [](const SoupFault& one, const SoupFault& other) {
            return std::pair(one.kind, one.triangle) < std::pair(other.kind, other.triangle);
        });
        return vFaults;
    }

private:
    static Index next(Index corner) { return corner / 3 * 3 + (corner + 1) % 3; }
    Edge edgeFrom(Index corner) const { return edgeOf(vPoints[corner], vPoints[next(corner)]); }
    int turn(Index i, Index j, Index k) const { return orientation(vExact[i], vExact[j], vExact[k]); }
    // Positive on the inner side of the edge.
    int sideOf(Index corner, Index i) const {
        return vDirections[corner / 3] * turn(corner, next(corner), i);
    }
    std::string nameOf(Index t) const {
        std::string text = " " + std::to_string(t);
        for (Index i = 3 * t; i < 3 * t + 3; ++i)
            text += " " + textOf(vPoints[i]);
        return text;
    }
    void add(Kind kind, Index triangle, const std::string& text, const Point2& point = {}) {
        vFaults.push_back({kind, triangle, text, point, true});
    }

    void sortOut(Index t) {
        const Point2* const p = &vPoints[3 * t];
        const bool bFinite = std::all_of(p, p + 3, isFinite);
        vDirections.push_back(bFinite ? turn(3 * t, 3 * t + 1, 3 * t + 2) : 0);
        vBoxes.push_back(bFinite ? Bbox2(p, p + 3) : Bbox2());
        if (vDirections[t] != 0) {
            vGood.push_back(t);
            for (Index i = 3 * t; i < 3 * t + 3; ++i)
                mEdges[edgeFrom(i)].push_back(t);
        } else if (bFinite) {
            add(Kind::DEGENERATE, t, "Triangle" + nameOf(t) + " is degenerate");
        } else {
            add(Kind::NOT_FINITE, t, "Triangle" + nameOf(t) + " has a coordinate that is not finite");
        }
    }

    void addShared(const Edge& edge, const std::vector<Index>& vTriangles) {
        std::string text =
            "The edge " + textOf(edge) + " is shared by " + std::to_string(vTriangles.size()) + " triangles:";
        for (Index i = 0; i < std::min<Index>(vTriangles.size(), 10); ++i)
            text += (i == 0 ? " " : ", ") + std::to_string(vTriangles[i]);
        add(Kind::SHARED_EDGE, vTriangles[0], text + (vTriangles.size() > 10 ? ", ..." : ""));
    }

    // The edges and triangles that have the corner or vertex inside.
    void findAround(Index i) {
        const Point2& p = vPoints[i];
        const bool bCorner = i < numCorners;
        const std::string inside = (bCorner ? "The corner " : "The vertex ") + textOf(p) + " lies inside ";
        for (const Index t : vGood) {
            if (!vBoxes[t].doIntersect(Bbox2(&p, &p + 1))) continue;
            const std::array<int, 3> aSides = {sideOf(3 * t, i), sideOf(3 * t + 1, i), sideOf(3 * t + 2, i)};
            const auto numOn = std::count(aSides.begin(), aSides.end(), 0);
            if (*std::min_element(aSides.begin(), aSides.end()) < 0) continue;
            if (numOn == 0 && !bCorner) add(Kind::VERTEX_IN_TRIANGLE, t, inside + "triangle" + nameOf(t), p);
            if (numOn != 1) continue; // 2: a corner of it
            const Edge edge =
                edgeFrom(3 * t + Index(std::find(aSides.begin(), aSides.end(), 0) - aSides.begin()));
            if (mEdges.at(edge)[0] == t)
                add(bCorner ? Kind::CORNER_IN_EDGE : Kind::VERTEX_IN_EDGE, t,
                    inside + "the edge " + textOf(edge) + " of triangle " + std::to_string(t), p);
        }
    }

    // The line along one of its edges has the other one beyond it.
    bool isBeside(Index t, Index other) const {
        for (Index i = 3 * t; i < 3 * t + 3; ++i)
            if (sideOf(i, 3 * other) <= 0 && sideOf(i, 3 * other + 1) <= 0 && sideOf(i, 3 * other + 2) <= 0)
                return true;
        return false;
    }

    void findCrossed(Index i) {
        const auto [low, high] = std::minmax({vPoints[i], vPoints[i + 1]});
        std::multimap<std::pair<mpq_class, mpq_class>, SoupFault> mCrossings; // by their places
        for (const Index t : vGood) {
            if (!vBoxes[t].doIntersect(Bbox2(&vPoints[i], &vPoints[i] + 2))) continue;
            for (Index a = 3 * t; a < 3 * t + 3; ++a) {
                const Index b = next(a);
                const Edge edge = edgeFrom(a);
                if (mEdges.at(edge)[0] != t || turn(i, i + 1, a) * turn(i, i + 1, b) >= 0 ||
                    turn(a, b, i) * turn(a, b, i + 1) >= 0)
                    continue;
                const auto [x, y] = lineIntersection(low, high, vPoints[a], vPoints[b]);
                const std::string text = "The constraint segment " + textOf(low) + " " + textOf(high) +
                                         " crosses the edge " + textOf(edge) + " of triangle ";
                mCrossings.insert({{x, y}, {Kind::CROSSED_EDGE, t, text + std::to_string(t), low, false}});
            }
        }
        if (!mCrossings.empty()) mCrossings.begin()->second.bFirst = true;
        for (const auto& [place, fault] : mCrossings)
            vFaults.push_back(fault);
    }

    Points vPoints; // corners, then vertices, then ends of segments
    const Index numCorners, firstSegment;
    std::vector<ExactPoint> vExact;
    std::vector<int> vDirections; // of triangles; 0 where they are not finite or degenerate
    std::vector<Bbox2> vBoxes;
    std::vector<Index> vGood;                  // the other triangles
    std::map<Edge, std::vector<Index>> mEdges; // of these
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
    std::map<Edge, Xy> mApexes; // of the triangles on the left of directed edges
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
            mApexes[{c[k], c[(k + 1) % 3]}] = c[(k + 2) % 3];
        facts.vTriangles.push_back(c);
    }
    const auto pointOf = [](const Xy& xy) { return Point2(xy.first, xy.second); };
    for (const auto& [edge, apex] : mApexes) {
        const auto& [p, q] = edge;
        const auto right = mApexes.find({q, p});
        if (right == mApexes.end()) {
            facts.sBorder.insert(std::minmax(p, q));
        } else if (p < q && inCircle(pointOf(p), pointOf(q), pointOf(apex), pointOf(right->second)) > 0) {
            facts.sNotDelaunay.insert(edge);
        }
    }
    facts.numCorners = sCorners.size();
    std::sort(facts.vTriangles.begin(), facts.vTriangles.end());
    return facts;
}

} // namespace oracle
