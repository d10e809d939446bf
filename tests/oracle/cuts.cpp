#include "tests/oracle/cuts.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>
#include <sstream>

namespace oracle {

using namespace TESK_KIVO2D;

namespace {

struct Fault {
    std::string text;
};

void demand(bool bCondition, const char* text) {
    if (!bCondition) throw Fault{text};
}

std::string textOf(std::initializer_list<const Point2*> points) {
    std::ostringstream stream;
    for (const Point2* p : points)
        stream << " (" << std::hexfloat << p->x() << ", " << p->y() << ")";
    return stream.str();
}

bool isFinite(const Point2& p) { return std::isfinite(p.x()) && std::isfinite(p.y()); }

RationalPoint rational(const Point2& p) { return {p.x(), p.y()}; }

bool boxesMeet(const Point2& a, const Point2& b, const Point2& p, const Point2& q) {
    return std::max(a.x(), b.x()) >= std::min(p.x(), q.x()) &&
           std::max(p.x(), q.x()) >= std::min(a.x(), b.x()) &&
           std::max(a.y(), b.y()) >= std::min(p.y(), q.y()) &&
           std::max(p.y(), q.y()) >= std::min(a.y(), b.y());
}

// Twice the signed area.
mpq_class side(const Point2& a, const Point2& b, const RationalPoint& p) {
    return (mpq_class(b.x()) - a.x()) * (p.y - a.y()) - (mpq_class(b.y()) - a.y()) * (p.x - a.x());
}

bool isInside(const Point2& a, const Point2& b, const RationalPoint& p) {
    const auto isWithin = [](double v0, double v1, const mpq_class& v) {
        return std::min(v0, v1) <= v && v <= std::max(v0, v1);
    };
    return isWithin(a.x(), b.x(), p.x) && isWithin(a.y(), b.y(), p.y) && p != rational(a) &&
           p != rational(b) && side(a, b, p) == 0;
}

// The doubles on either side; the same one twice where the number is one.
std::pair<double, double> around(const mpq_class& exact) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    double low = exact.get_d(); // rounds towards zero
    while (low > exact)
        low = std::nextafter(low, -infinity);
    return {low, low == exact ? low : std::nextafter(low, infinity)};
}

// Those of them that are nearest, or hardly further away, and so many neighbours on either side.
std::vector<double> nearestTo(const mpq_class& exact, int numSteps) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    auto [low, high] = around(exact);
    const mpq_class below = exact - low, above = high - exact, slack = mpq_class(0x1p-20) * (above + below);
    if (high - low > std::numeric_limits<double>::denorm_min()) {
        if (below > above + slack) low = high;
        if (above > below + slack) high = low;
    }
    std::vector<double> v = {low};
    if (high != low) v.push_back(high);
    for (; numSteps > 0; --numSteps) {
        low = std::nextafter(low, -infinity);
        high = std::nextafter(high, infinity);
        v.insert(v.end(), {low, high});
    }
    return v;
}

template<class Value>
bool contains(const std::vector<Value>& v, const Value& value) {
    return std::find(v.begin(), v.end(), value) != v.end();
}

std::array<Point2*, 3> cornersOf(const Triangle2* pT) {
    std::array<Point2*, 3> a = {pT->getCorner(0), pT->getCorner(1), pT->getCorner(2)};
    std::rotate(a.begin(), std::min_element(a.begin(), a.end(), std::less<>()), a.end());
    return a;
}

bool isInTriangle(const std::array<Point2*, 3>& corners, const Point2& p, int leastSide) {
    for (std::size_t i = 0; i < 3; ++i)
        if (orientation(*corners[i], *corners[(i + 1) % 3], p) < leastSide) return false;
    return true;
}

// In the last place.
double unitOf(double value) { return std::ldexp(1.0, std::max(std::ilogb(value) - 52, -1074)); }

// So low that rounding may have moved borders across its centre.
bool isSliver(const std::array<Point2*, 3>& corners) {
    double largest = 0;
    for (const Point2* p : corners)
        largest = std::max(largest, p->getMaxAbs());
    const auto p = exactPoints({*corners[0], *corners[1], *corners[2], Point2(unitOf(largest), 0)});
    mpz_class longest = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        const ExactPoint &a = p[i], &b = p[(i + 1) % 3];
        longest = std::max<mpz_class>(longest, abs(a.x - b.x) + abs(a.y - b.y));
    }
    return abs(twiceArea(p[0], p[1], p[2])) <= 16 * p[3].x * longest;
}

std::vector<std::pair<Point2*, Point2*>> originalPairs(ConstraintGraph2* pGraph) {
    std::vector<ConstraintSegment2*> vOriginals;
    pGraph->getOriginalConstraintSegments(vOriginals);
    std::vector<std::pair<Point2*, Point2*>> vPairs;
    for (ConstraintSegment2* s : vOriginals) {
        vPairs.emplace_back(s->getSrc(), s->getTrg());
        if (pGraph->isReverse(s)) std::swap(vPairs.back().first, vPairs.back().second);
    }
    return vPairs;
}

} // namespace

Segments originalsOf(ConstraintGraph2* pGraph) {
    Segments v;
    for (const auto& [p, q] : originalPairs(pGraph))
        v.emplace_back(*p, *q);
    return v;
}

mpq_class CutWitness::Knife::parameterOf(const RationalPoint& p) const {
    if (source.x() == target.x()) return (p.y - source.y()) / (mpq_class(target.y()) - source.y());
    return (p.x - source.x()) / (mpq_class(target.x()) - source.x());
}

CutWitness::CutWitness(const Kivo_2D& itsKivo, const Segments& vGiven, const std::vector<GivenGraph>& vGraphs,
                       const std::vector<Zone2*>& vItsZones)
    : kivo(itsKivo), bNoneGiven(vGiven.empty()), bWas2D(itsKivo.is2D()) {
    kivo.getVertexPointers(vVertices);
    for (Point2* p : vVertices) {
        vPlaces.emplace_back(p, *p);
        mIndex.emplace(p, mIndex.size());
    }
    kivo.getConvexHull(false, vHull);
    for (const Triangle2* pT : allTriangles(kivo)) {
        vTriangles.push_back(cornersOf(pT));
        for (int i = 0; i < 3; ++i) {
            const PointPair edge = {pT->getCorner((i + 1) % 3), pT->getCorner((i + 2) % 3)};
            const bool bHull = pT->getOppositeTriangle(i) == nullptr;
            if (bHull) vHullEdges.push_back(edge);
            if (bHull || edge.first < edge.second) vEdges.push_back(edge);
        }
    }
    if (bWas2D) sortOut(vGiven);
    for (Knife& knife : vKnives)
        addStops(knife);
    std::set<ConstraintSegment2*> sLeaves;
    for (const GivenGraph& given : vGraphs) {
        std::vector<ConstraintSegment2*> v;
        given.pGraph->getChildConstraintSegments(v);
        sLeaves.insert(v.begin(), v.end());
    }
    for (ConstraintSegment2* s : sLeaves) {
        vLeaves.push_back({s, {}});
        for (const Knife& knife : vKnives) {
            if (!boxesMeet(*s->getSrc(), *s->getTrg(), knife.source, knife.target)) continue;
            for (const Stop& stop : knife.vStops)
                if (isInside(*s->getSrc(), *s->getTrg(), stop.at))
                    vLeaves.back().vStops.emplace_back(&knife, stop);
        }
    }
    for (const Zone2* pZone : vItsZones) {
        vZones.push_back({pZone, {}});
        for (const Corners& corners : vTriangles)
            vZones.back().mHas[corners] = false;
        Triangles vTs;
        pZone->getTriangles(vTs);
        for (const Triangle2* pT : vTs)
            vZones.back().mHas[cornersOf(pT)] = true;
    }
}

// Keeps the knives that have more than a point in common with the hull.
void CutWitness::sortOut(const Segments& vGiven) {
    for (const Segment2& s : vGiven) {
        Knife knife{s.getSrc(), s.getTrg(), 0, 1, {}, {}};
        if (!isFinite(knife.source) || !isFinite(knife.target)) {
            ++numNotFinite;
            continue;
        }
        if (knife.source == knife.target) {
            ++numNoLength;
            continue;
        }
        bool bApart = false;
        for (std::size_t i = 0; i < vHull.size(); ++i) {
            const Point2 &p = *vHull[i], &q = *vHull[(i + 1) % vHull.size()];
            const mpq_class start = side(p, q, rational(knife.source));
            const mpq_class slope = side(p, q, rational(knife.target)) - start;
            if (slope > 0) knife.first = std::max<mpq_class>(knife.first, -start / slope);
            if (slope < 0) knife.last = std::min<mpq_class>(knife.last, -start / slope);
            bApart = bApart || (slope == 0 && start < 0);
        }
        if (bApart || knife.first >= knife.last) {
            ++numApart;
            continue;
        }
        for (const Point2* p : vVertices)
            knife.vSides.push_back(orientation(knife.source, knife.target, *p));
        vKnives.push_back(std::move(knife));
    }
}

void CutWitness::addStops(Knife& knife) const {
    std::map<mpq_class, RationalPoint> mStops;
    const auto add = [&](const RationalPoint& p) {
        const mpq_class t = knife.parameterOf(p);
        if (knife.first <= t && t <= knife.last) mStops.emplace(t, p);
    };
    add(rational(knife.source));
    add(rational(knife.target));
    for (std::size_t i = 0; i < vVertices.size(); ++i)
        if (knife.vSides[i] == 0) add(rational(*vVertices[i]));
    for (const auto& [p, q] : vEdges)
        if (knife.vSides[mIndex.at(p)] * knife.vSides[mIndex.at(q)] < 0 &&
            boxesMeet(*p, *q, knife.source, knife.target))
            add(lineIntersection(knife.source, knife.target, *p, *q));
    for (const Knife& other : vKnives) {
        if (&other == &knife || meeting(knife.source, knife.target, other.source, other.target) == 0)
            continue;
        const auto common = commonPoints(knife.source, knife.target, other.source, other.target);
        add(common->first);
        add(common->last);
    }
    for (const auto& [t, at] : mStops) {
        knife.vStops.push_back({at});
        findHullEdge(knife.vStops.back());
    }
}

void CutWitness::findHullEdge(Stop& stop) const {
    for (const PointPair& edge : vHullEdges)
        if (isInside(*edge.first, *edge.second, stop.at)) stop.hullEdge = edge;
}

std::string CutWitness::warnings() const {
    std::string text;
    const auto warn = [&](const std::string& what) {
        text += "      [Kivo2D-Message] Dt2::cutTriangles(..), WARNING: " + what + "\n";
    };
    const auto warnOf = [&](std::size_t num, const char* one, const char* several) {
        if (num == 1) warn("1 knife " + std::string(one) + " ignored");
        if (num > 1) warn(std::to_string(num) + " knives " + several + " ignored");
    };
    const char *const pNotFinite = "with a coordinate that is not finite", *const pNoLength = "of no length";
    if (bNoneGiven) {
        warn("vKnives is empty, returning NULL");
    } else if (!bWas2D) {
        warn("The triangulation has no triangles yet, returning NULL");
    } else {
        warnOf(numNotFinite, pNotFinite, pNotFinite);
        warnOf(numNoLength, pNoLength, pNoLength);
        warnOf(numApart, "that meets the triangulation in no more than a point",
               "that meet the triangulation in no more than a point");
        if (vKnives.empty()) warn("No knife is left, returning NULL");
    }
    return text;
}

std::string CutWitness::findFirst(ConstraintGraph2* pGraph, bool bApart) const {
    try {
        const bool bMayCut = !vKnives.empty();
        const bool bMustCut = bApart ? bMayCut : !std::all_of(vKnives.begin(), vKnives.end(), isShort);
        demand(pGraph != nullptr ? bMayCut : !bMustCut, "a graph without a knife, or the other way round");
        Places mPlaces;
        std::vector<Point2*> v, vNew;
        kivo.getVertexPointers(v);
        for (Point2* p : v) {
            mPlaces[{p->x() + 0.0, p->y() + 0.0}] = p; // one zero only
            if (mIndex.count(p) == 0) vNew.push_back(p);
        }
        checkVertices(vNew, mPlaces, bApart);
        if (pGraph != nullptr && !bApart) {
            checkReach(pGraph, mPlaces);
        } else if (pGraph != nullptr) {
            pGraph->isPolygon() ? checkRing(pGraph, mPlaces) : checkPieces(pGraph, mPlaces);
        }
        checkLeaves(pGraph, mPlaces, bApart);
        checkZones();
        if (bApart) checkOldTriangles(vNew);
        if (bApart) checkHull();
        return "";
    } catch (const Fault& fault) {
        return fault.text;
    }
}

// What the stop may have been rounded to. Where things are near it may have been taken for another one.
std::vector<Point2*> CutWitness::verticesAt(const Stop& stop, const Places& mPlaces, bool bApart) const {
    const auto& [p, q] = stop.hullEdge;
    const int numSteps = !bApart ? 3 : p == nullptr ? 0 : 1;
    std::vector<Point2*> v;
    for (const double x : nearestTo(stop.at.x, numSteps)) {
        for (const double y : nearestTo(stop.at.y, numSteps)) {
            const auto it = mPlaces.find({x + 0.0, y + 0.0});
            if (it != mPlaces.end() && (p == nullptr || orientation(*p, *q, *it->second) <= 0))
                v.push_back(it->second);
        }
    }
    return v;
}

void CutWitness::checkVertices(const std::vector<Point2*>& vNew, const Places& mPlaces, bool bApart) const {
    for (const auto& [pVtx, place] : vPlaces) {
        const auto it = mPlaces.find({place.x() + 0.0, place.y() + 0.0});
        demand(it != mPlaces.end() && it->second == pVtx, "a vertex is gone");
    }
    std::set<Point2*> sAtStops;
    for (const Knife& knife : vKnives) {
        if (!bApart && isShort(knife)) continue;
        for (const Stop& stop : knife.vStops) {
            const std::vector<Point2*> vThere = verticesAt(stop, mPlaces, bApart);
            sAtStops.insert(vThere.begin(), vThere.end());
            const Point2 at(stop.at.x.get_d(), stop.at.y.get_d());
            if (vThere.empty()) throw Fault{"no vertex at the stop at" + textOf({&at})};
        }
    }
    for (Point2* p : vNew)
        if (bApart && sAtStops.count(p) == 0) throw Fault{"a new vertex is at no stop:" + textOf({p})};
}

void CutWitness::checkPieces(ConstraintGraph2* pGraph, const Places& mPlaces) const {
    demand(pGraph->isOriented(), "the graph has no directions");
    const std::vector<PointPair> vPieces = originalPairs(pGraph);
    std::set<PointPair> sSeen;
    std::size_t k = 0;
    // Where the next piece leads from here. It has the direction of the first knife that it is part of.
    const auto next = [&](Point2* pHere) -> Point2* {
        if (k == vPieces.size()) return nullptr;
        const auto& [p, q] = vPieces[k];
        if (p == pHere) return q;
        return q == pHere && sSeen.count(vPieces[k]) != 0 ? p : nullptr;
    };
    for (const Knife& knife : vKnives) {
        std::vector<Point2*> vHere = verticesAt(knife.vStops.front(), mPlaces, true);
        for (const Stop& stop : knife.vStops) {
            const std::vector<Point2*> vThere = verticesAt(stop, mPlaces, true);
            std::vector<Point2*> vSame, vNext;
            for (Point2* pHere : vHere) {
                if (contains(vThere, next(pHere))) vNext.push_back(next(pHere));
                if (contains(vThere, pHere)) vSame.push_back(pHere);
            }
            const bool bStays = vNext.empty() || &stop == &knife.vStops.front();
            if (bStays && vSame.empty())
                throw Fault{"no piece from" + textOf({vHere.front()}) + " to" + textOf({vThere.front()})};
            if (!bStays) sSeen.insert(vPieces[k++]);
            vHere = bStays ? vSame : vNext;
        }
    }
    demand(k == vPieces.size(), "more pieces than between stops");
}

// All stops may be rounded to one vertex; then there is nothing to cut.
bool CutWitness::isShort(const Knife& knife) {
    const RationalPoint &front = knife.vStops.front().at, &back = knife.vStops.back().at;
    const auto isNear = [](const mpq_class& a, const mpq_class& b) {
        return contains(nearestTo(a, 3), nearestTo(b, 0).front());
    };
    return isNear(front.x, back.x) && isNear(front.y, back.y);
}

// But for some units in the last place.
bool CutWitness::isOn(const Knife& knife, const Point2& p) {
    const Point2 &a = knife.source, &b = knife.target;
    const mpq_class reach = abs(mpq_class(a.x()) - b.x()) + abs(mpq_class(a.y()) - b.y());
    return abs(side(a, b, rational(p))) <= 4 * unitOf(std::max(a.getMaxAbs(), b.getMaxAbs())) * reach;
}

// Along edges of the graph near the knife, all its stops can be reached, but for some units in the last
// place.
void CutWitness::checkReach(ConstraintGraph2* pGraph, const Places& mPlaces) const {
    const Segments vPieces = leavesOf({pGraph});
    const auto vertexAt = [&](const Point2& p) { return mPlaces.at({p.x() + 0.0, p.y() + 0.0}); };
    for (const Knife& knife : vKnives) {
        if (isShort(knife)) continue;
        std::map<Point2*, std::vector<Point2*>> mNeighbours;
        for (const Segment2& s : vPieces) {
            if (!isOn(knife, s.getSrc()) || !isOn(knife, s.getTrg())) continue;
            Point2 *const p = vertexAt(s.getSrc()), *const q = vertexAt(s.getTrg());
            mNeighbours[p].push_back(q);
            mNeighbours[q].push_back(p);
        }
        std::vector<Point2*> vStack = verticesAt(knife.vStops.front(), mPlaces, false);
        std::set<Point2*> sReached(vStack.begin(), vStack.end());
        while (!vStack.empty()) {
            Point2* const pHere = vStack.back();
            vStack.pop_back();
            for (Point2* pNext : mNeighbours[pHere])
                if (sReached.insert(pNext).second) vStack.push_back(pNext);
        }
        for (const Stop& stop : knife.vStops) {
            const std::vector<Point2*> v = verticesAt(stop, mPlaces, false);
            if (std::none_of(v.begin(), v.end(), [&](Point2* p) { return sReached.count(p) != 0; }))
                throw Fault{"no way along the knife to" + textOf({v.front()})};
        }
    }
}

void CutWitness::checkRing(ConstraintGraph2* pGraph, const Places& mPlaces) const {
    std::vector<PointPair> vPieces, vExpected;
    for (const auto& [p, q] : originalPairs(pGraph))
        vPieces.push_back(std::minmax(p, q));
    for (const Knife& knife : vKnives) {
        Point2* pHere = verticesAt(knife.vStops.front(), mPlaces, true).front();
        for (const Stop& stop : knife.vStops) {
            Point2* const pThere = verticesAt(stop, mPlaces, true).front();
            if (pThere != pHere) vExpected.push_back(std::minmax(pHere, pThere));
            pHere = pThere;
        }
    }
    std::sort(vPieces.begin(), vPieces.end());
    std::sort(vExpected.begin(), vExpected.end());
    demand(vPieces == vExpected, "the ring is not the one between stops");
}

// The vertex of the stop is one between the pieces of the segment. Or, where other vertices are near, the two
// chains meet beside it.
void CutWitness::checkLeaves(ConstraintGraph2* pGraph, const Places& mPlaces, bool bApart) const {
    std::set<Point2*> sCut;
    if (pGraph != nullptr)
        for (const Segment2& s : leavesOf({pGraph}))
            for (const Point2& p : {s.getSrc(), s.getTrg()})
                sCut.insert(mPlaces.at({p.x() + 0.0, p.y() + 0.0}));
    for (const Leaf& leaf : vLeaves) {
        std::vector<ConstraintSegment2*> vPieces;
        if (!leaf.pSegment->isAlive()) leaf.pSegment->getChildrenRec(vPieces);
        std::set<Point2*> sEnds = {leaf.pSegment->getSrc(), leaf.pSegment->getTrg()};
        for (const ConstraintSegment2* s : vPieces) {
            demand(s->isAlive(), "a piece of a constraint segment is no leaf");
            sEnds.insert({s->getSrc(), s->getTrg()});
        }
        demand(!bApart || !leaf.vStops.empty() || leaf.pSegment->isAlive(),
               "a constraint segment that no knife meets is split");
        for (const auto& [pKnife, stop] : leaf.vStops) {
            const Knife& knife = *pKnife;
            if (!bApart && isShort(knife)) continue;
            const std::vector<Point2*> v = verticesAt(stop, mPlaces, bApart);
            const bool bMeets = std::any_of(sEnds.begin(), sEnds.end(), [&](Point2* p) {
                return contains(v, p) || (!bApart && sCut.count(p) != 0 && isOn(knife, *p));
            });
            if (!bMeets)
                throw Fault{"the constraint segment" +
                            textOf({leaf.pSegment->getSrc(), leaf.pSegment->getTrg()}) +
                            " does not pass through a stop on it"};
        }
    }
}

void CutWitness::checkZones() const {
    std::vector<std::set<Corners>> vAfter;
    for (const ZoneBefore& zone : vZones) {
        Triangles vTs;
        zone.pZone->getTriangles(vTs);
        vAfter.emplace_back();
        for (const Triangle2* pT : vTs)
            vAfter.back().insert(cornersOf(pT));
    }
    if (vZones.empty()) return;
    const std::set<Corners> sOld(vTriangles.begin(), vTriangles.end());
    std::set<Corners> sNow;
    for (const Triangle2* pT : allTriangles(kivo))
        sNow.insert(cornersOf(pT));
    std::vector<Corners> vGone;
    std::set_difference(sOld.begin(), sOld.end(), sNow.begin(), sNow.end(), std::back_inserter(vGone));
    for (const Corners& corners : sNow) {
        const bool bStayed = sOld.count(corners) != 0;
        const auto third = [&](auto get) {
            return get(corners[0]) / 3 + get(corners[1]) / 3 + get(corners[2]) / 3;
        };
        const Point2 center(third([](const Point2* p) { return p->x(); }),
                            third([](const Point2* p) { return p->y(); }));
        if (!bStayed && !isInTriangle(corners, center, 1)) continue;
        std::vector<Corners> vHolding; // more than one where the centre lies on an edge
        if (bStayed) vHolding = {corners};
        for (const Corners& old : vGone) {
            const auto [minX, maxX] = std::minmax({old[0]->x(), old[1]->x(), old[2]->x()});
            const auto [minY, maxY] = std::minmax({old[0]->y(), old[1]->y(), old[2]->y()});
            if (bStayed || center.x() < minX || center.x() > maxX || center.y() < minY || center.y() > maxY)
                continue;
            if (isInTriangle(old, center, 0)) vHolding.push_back(old);
        }
        for (std::size_t i = 0; i < vZones.size(); ++i) {
            bool bIn = true, bOut = true;
            for (const Corners& old : vHolding)
                (vZones[i].mHas.at(old) ? bOut : bIn) = false;
            const bool bIs = vAfter[i].count(corners) != 0;
            if (!(bIs ? bIn : bOut) && !isSliver(corners))
                throw Fault{(bIs ? "a zone has grown by" : "a zone has lost") +
                            textOf({corners[0], corners[1], corners[2]})};
        }
    }
}

// Whether they have a point in common.
bool CutWitness::meets(const Knife& knife, const Corners& corners) const {
    int aSides[3];
    for (std::size_t i = 0; i < 3; ++i)
        aSides[i] = knife.vSides[mIndex.at(corners[i])];
    if (aSides[0] != 0 && aSides[0] == aSides[1] && aSides[1] == aSides[2]) return false;
    for (std::size_t i = 0; i < 3; ++i)
        if (meeting(knife.source, knife.target, *corners[i], *corners[(i + 1) % 3]) != 0) return true;
    return isInTriangle(corners, knife.source, 0);
}

void CutWitness::checkOldTriangles(const std::vector<Point2*>& vNew) const {
    std::set<Corners> sNow;
    for (const Triangle2* pT : allTriangles(kivo))
        sNow.insert(cornersOf(pT));
    for (const Corners& corners : vTriangles) {
        if (sNow.count(corners) != 0) continue;
        const auto isMet = [&](const Knife& knife) { return meets(knife, corners); };
        const auto isInCircle = [&](const Point2* p) {
            return inCircle(*corners[0], *corners[1], *corners[2], *p) > 0;
        };
        if (std::none_of(vKnives.begin(), vKnives.end(), isMet) &&
            std::none_of(vNew.begin(), vNew.end(), isInCircle))
            throw Fault{"a triangle is gone that no knife meets, and whose circle holds no new vertex:" +
                        textOf({corners[0], corners[1], corners[2]})};
    }
}

void CutWitness::checkHull() const {
    std::vector<Point2*> vNow;
    kivo.getConvexHull(true, vNow);
    const std::set<Point2*> sNow(vNow.begin(), vNow.end());
    for (Point2* p : vHull) { // where it is hardly a corner, the vertex next to it may go beyond it
        bool bStays = sNow.count(p) != 0;
        for (std::size_t i = 0; i < vNow.size() && !bStays; ++i)
            bStays = isSliver({vNow[i], vNow[(i + 1) % vNow.size()], p});
        demand(bStays, "a corner of the hull left it");
    }
    for (Point2* p : vNow) {
        const bool bAtHull = std::any_of(vHullEdges.begin(), vHullEdges.end(), [&](const PointPair& edge) {
            return isSliver({edge.first, edge.second, p});
        });
        if (mIndex.count(p) == 0 && !bAtHull)
            throw Fault{"a new vertex of the hull was not on it:" + textOf({p})};
    }
}

} // namespace oracle
