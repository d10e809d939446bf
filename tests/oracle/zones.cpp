#include "tests/oracle/zones.h"

#include "tests/oracle/exact.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

namespace oracle {

using namespace TESK_KIVO2D;

namespace {

using EdgeCounts = std::map<VertexPair, std::size_t>; // undirected
using TriangleSet = std::set<Triangle2*>;

VertexPair undirected(Point2* p, Point2* q) { return std::minmax(p, q); }
VertexPair edgeAt(const Triangle2* pT, int i) {
    return {pT->getCorner((i + 1) % 3), pT->getCorner((i + 2) % 3)};
}
Triangles listOf(const TriangleSet& sTriangles) { return {sTriangles.begin(), sTriangles.end()}; }

std::vector<VertexPair> directedLeaves(const ConstraintGraph2* pGraph) {
    std::vector<Point2*> v;
    pGraph->getPolygonVertices(v);
    std::vector<VertexPair> vLeaves;
    for (std::size_t i = 0; i + 1 < v.size(); i += 2)
        vLeaves.emplace_back(v[i], v[i + 1]);
    return vLeaves;
}

EdgeCounts countsOf(const Graphs& vGraphs) {
    EdgeCounts mCounts;
    for (const ConstraintGraph2* pGraph : vGraphs)
        for (const auto& [p, q] : directedLeaves(pGraph))
            ++mCounts[undirected(p, q)];
    return mCounts;
}

Triangles flood(std::vector<Triangle2*> vStack, const EdgeCounts& mBlocking) {
    TriangleSet sReached;
    while (!vStack.empty()) {
        Triangle2* const pT = vStack.back();
        vStack.pop_back();
        if (pT == nullptr || !sReached.insert(pT).second) continue;
        for (int i = 0; i < 3; ++i)
            if (const auto [p, q] = edgeAt(pT, i); mBlocking.count(undirected(p, q)) == 0)
                vStack.push_back(pT->getOppositeTriangle(i));
    }
    return listOf(sReached);
}

// How often rings run round centres of triangles: the signed crossings of a ray to the right, and all of
// them.
class Rings {
public:
    Rings(const Triangles& vTriangles, const Segments& vSegments) {
        std::vector<Point2> vPoints;
        for (const Segment2& s : vSegments)
            vPoints.insert(vPoints.end(), {s.getSrc(), s.getTrg()});
        for (const Triangle2* pT : vTriangles)
            vPoints.insert(vPoints.end(), {*pT->getCorner(0), *pT->getCorner(1), *pT->getCorner(2)});
        vExact = exactPoints(vPoints);
        numEnds = 2 * vSegments.size();
        for (std::size_t i = 0; i < numEnds; ++i)
            vExact[i] = {3 * vExact[i].x, 3 * vExact[i].y};
    }
    struct Crossings {
        int winding = 0, all = 0;
    };
    Crossings around(std::size_t ithTriangle) const {
        const ExactPoint* const p = &vExact[numEnds + 3 * ithTriangle];
        return around({p[0].x + p[1].x + p[2].x, p[0].y + p[1].y + p[2].y});
    }

private:
    Crossings around(const ExactPoint& c) const {
        Crossings result;
        for (std::size_t i = 0; i < numEnds; i += 2) {
            const ExactPoint &p = vExact[i], &q = vExact[i + 1];
            const bool bUpwards = p.y <= c.y;
            if (bUpwards == (q.y <= c.y)) continue;
            if (orientation(p, q, c) != (bUpwards ? 1 : -1)) continue;
            result.winding += bUpwards ? 1 : -1;
            ++result.all;
        }
        return result;
    }

    std::vector<ExactPoint> vExact; // ends times 3, then corners
    std::size_t numEnds;
};

template<class Predicate>
Triangles selected(const Triangles& vTriangles, const Segments& vSegments, Predicate isInside) {
    const Rings rings(vTriangles, vSegments);
    Triangles vInside;
    for (std::size_t i = 0; i < vTriangles.size(); ++i)
        if (isInside(rings.around(i))) vInside.push_back(vTriangles[i]);
    return vInside;
}

// Of all ways from outside the hull the one that crosses the fewest edges that block.
std::map<Triangle2*, std::size_t> depths(const Kivo_2D& kivo, const Graphs& vGraphs,
                                         bool (*blocks)(std::size_t)) {
    const EdgeCounts mCounts = countsOf(vGraphs);
    std::map<Triangle2*, std::size_t> mDepths;
    std::multimap<std::size_t, Triangle2*> mQueue;
    const auto push = [&](std::size_t depth, const VertexPair& edge, Triangle2* pT) {
        const auto count = mCounts.find(undirected(edge.first, edge.second));
        if (pT != nullptr)
            mQueue.emplace(depth + (count != mCounts.end() && blocks(count->second) ? 1 : 0), pT);
    };
    for (Triangle2* pT : allTriangles(kivo))
        for (int i = 0; i < 3; ++i)
            if (pT->getOppositeTriangle(i) == nullptr) push(0, edgeAt(pT, i), pT);
    while (!mQueue.empty()) {
        const auto [depth, pT] = *mQueue.begin();
        mQueue.erase(mQueue.begin());
        if (!mDepths.emplace(pT, depth).second) continue;
        for (int i = 0; i < 3; ++i)
            push(depth, edgeAt(pT, i), pT->getOppositeTriangle(i));
    }
    return mDepths;
}

} // namespace

Triangles allTriangles(const Kivo_2D& kivo) {
    std::vector<Triangle2*> v;
    kivo.getTrianglePointers(v);
    return listOf({v.begin(), v.end()});
}

Segments leavesOf(const Graphs& vGraphs) {
    Segments vSegments;
    for (const ConstraintGraph2* pGraph : vGraphs)
        for (const auto& [p, q] : directedLeaves(pGraph))
            vSegments.emplace_back(*p, *q);
    return vSegments;
}

Triangles withWindingNumber(const Triangles& vTriangles, const Segments& vRings, bool (*isInside)(int)) {
    return selected(vTriangles, vRings, [=](const auto& crossings) { return isInside(crossings.winding); });
}

Triangles withOddCrossings(const Triangles& vTriangles, const Segments& vRings) {
    return selected(vTriangles, vRings, [](const auto& crossings) { return crossings.all % 2 != 0; });
}

Triangles reachedFrom(Side side, const Kivo_2D& kivo, const Graphs& vGraphs) {
    std::map<VertexPair, Triangle2*> mLeft;
    for (Triangle2* pT : allTriangles(kivo))
        for (int i = 0; i < 3; ++i)
            mLeft[edgeAt(pT, i)] = pT;
    std::vector<Triangle2*> vStarts;
    for (ConstraintGraph2* pGraph : vGraphs) {
        EdgeCounts mCounts = countsOf({pGraph});
        for (auto [p, q] : directedLeaves(pGraph)) {
            if (mCounts[undirected(p, q)] > 1) continue;
            if (side == RIGHT) std::swap(p, q);
            if (const auto left = mLeft.find({p, q}); left != mLeft.end()) vStarts.push_back(left->second);
        }
    }
    return flood(vStarts, countsOf(vGraphs));
}

Triangles reachedFrom(Triangle2* pStart, const Graphs& vGraphs) { return flood({pStart}, countsOf(vGraphs)); }

Triangles oddlyEnclosed(const Kivo_2D& kivo, const Graphs& vGraphs) {
    Triangles vInside;
    for (const auto& [pT, depth] : depths(kivo, vGraphs, [](std::size_t count) { return count % 2 != 0; }))
        if (depth % 2 != 0) vInside.push_back(pT);
    return vInside;
}

Triangles enclosed(const Kivo_2D& kivo, const Graphs& vGraphs) {
    Triangles vInside;
    for (const auto& [pT, depth] : depths(kivo, vGraphs, [](std::size_t) { return true; }))
        if (depth != 0) vInside.push_back(pT);
    return vInside;
}

std::vector<VertexPair> borderOf(const Triangles& vTriangles) {
    std::set<VertexPair> sEdges;
    for (const Triangle2* pT : vTriangles)
        for (int i = 0; i < 3; ++i)
            sEdges.insert(edgeAt(pT, i));
    std::vector<VertexPair> vBorder;
    for (const auto& [p, q] : sEdges)
        if (sEdges.count({q, p}) == 0) vBorder.emplace_back(p, q);
    return vBorder;
}

double areaOf(const Triangles& vTriangles) {
    Segments vEdges;
    for (const Triangle2* pT : vTriangles)
        for (int i = 0; i < 3; ++i)
            vEdges.emplace_back(*edgeAt(pT, i).first, *edgeAt(pT, i).second);
    return areaOf(vEdges);
}

double areaOf(const Segments& vRing) {
    mpq_class twice = 0;
    for (const Segment2& s : vRing) {
        const mpq_class x0 = s.getSrc().x(), y0 = s.getSrc().y(), x1 = s.getTrg().x(), y1 = s.getTrg().y();
        twice += x0 * y1 - x1 * y0;
    }
    return mpq_class(twice / 2).get_d();
}

double parityArea(const std::vector<Segments>& vRings) {
    double area = 0;
    for (const Segments& ring : vRings) {
        const Point2 p = ring[0].getSrc(), q = ring[0].getTrg();
        const Point2 middle((p.x() + q.x()) / 2, (p.y() + q.y()) / 2);
        bool bHole = false;
        for (const Segments& other : vRings) {
            if (&other == &ring) continue;
            for (const Segment2& s : other) {
                const bool bUpwards = s.getSrc().y() <= middle.y();
                if (bUpwards != (s.getTrg().y() <= middle.y()) &&
                    orientation(s.getSrc(), s.getTrg(), middle) == (bUpwards ? 1 : -1))
                    bHole = !bHole;
            }
        }
        area += (bHole ? -1 : 1) * std::abs(areaOf(ring));
    }
    return area;
}

} // namespace oracle
