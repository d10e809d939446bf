#include "tests/oracle/cuts.h"

#include <algorithm>
#include <cmath>
#include <limits>
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

// The doubles that are nearest, or hardly further away, and so many neighbours on either side.
std::set<double> nearestTo(const mpq_class& exact, int numSteps) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    double low = exact.get_d(); // rounds towards zero
    if (low > exact) low = std::nextafter(low, -infinity);
    double high = low == exact ? low : std::nextafter(low, infinity);
    const mpq_class below = exact - low, above = high - exact, slack = mpq_class(0x1p-20) * (above + below);
    if (high - low > std::numeric_limits<double>::denorm_min()) {
        if (below > above + slack) low = high;
        if (above > below + slack) high = low;
    }
    std::set<double> s = {low, high};
    for (; numSteps > 0; --numSteps) {
        low = std::nextafter(low, -infinity);
        high = std::nextafter(high, infinity);
        s.insert({low, high});
    }
    return s;
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
    const auto [minX, maxX] = std::minmax({corners[0]->x(), corners[1]->x(), corners[2]->x()});
    const auto [minY, maxY] = std::minmax({corners[0]->y(), corners[1]->y(), corners[2]->y()});
    if (p.x() < minX || p.x() > maxX || p.y() < minY || p.y() > maxY) return false;
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

using PointPair = std::pair<Point2*, Point2*>;

std::vector<PointPair> pairsOf(ConstraintGraph2* pGraph, const std::vector<ConstraintSegment2*>& vSegments) {
    std::vector<PointPair> vPairs;
    for (ConstraintSegment2* s : vSegments) {
        vPairs.emplace_back(s->getSrc(), s->getTrg());
        if (pGraph->isReverse(s)) std::swap(vPairs.back().first, vPairs.back().second);
    }
    return vPairs;
}
std::vector<PointPair> originalPairs(ConstraintGraph2* pGraph) {
    std::vector<ConstraintSegment2*> v;
    pGraph->getOriginalConstraintSegments(v);
    return pairsOf(pGraph, v);
}
std::vector<PointPair> leafPairs(ConstraintGraph2* pGraph) {
    std::vector<ConstraintSegment2*> v;
    pGraph->getChildConstraintSegments(v);
    return pairsOf(pGraph, v);
}

// Or null. There is one zero only.
Point2* vertexAt(const std::map<std::pair<double, double>, Point2*>& mPlaces, double x, double y) {
    const auto it = mPlaces.find({x + 0.0, y + 0.0});
    return it != mPlaces.end() ? it->second : nullptr;
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
    : kivo(itsKivo), bNoneGiven(vGiven.empty()), bWas2D(itsKivo.is2D()), vZones(vItsZones) {
    kivo.getVertexPointers(vVertices);
    for (Point2* p : vVertices)
        mVertices.emplace(p, *p);
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
    for (const GivenGraph& given : vGraphs) {
        std::vector<ConstraintSegment2*> v;
        given.pGraph->getChildConstraintSegments(v);
        sLeaves.insert(v.begin(), v.end());
    }
    mBefore = membership();
}

// Keeps the knives that have more than a point in common with the hull.
void CutWitness::sortOut(const Segments& vGiven) {
    for (const Segment2& s : vGiven) {
        Knife knife{s.getSrc(), s.getTrg(), 0, 1, {}};
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
    const auto sideOf = [&](Point2* p) { return orientation(knife.source, knife.target, *p); };
    for (const auto& [p, q] : vEdges) {
        if (!boxesMeet(*p, *q, knife.source, knife.target)) continue;
        const int ofP = sideOf(p), ofQ = sideOf(q);
        if (ofP == 0) add(rational(*p));
        if (ofQ == 0) add(rational(*q));
        if (ofP * ofQ < 0) add(lineIntersection(knife.source, knife.target, *p, *q));
    }
    for (const Knife& other : vKnives) {
        if (&other == &knife || meeting(knife.source, knife.target, other.source, other.target) == 0)
            continue;
        const auto common = commonPoints(knife.source, knife.target, other.source, other.target);
        add(common->first);
        add(common->last);
    }
    for (const auto& [t, at] : mStops) {
        knife.vStops.push_back({at});
        for (const PointPair& edge : vHullEdges)
            if (isInside(*edge.first, *edge.second, at)) knife.vStops.back().hullEdge = edge;
    }
}

std::string CutWitness::warnings() const {
    const std::string start = "      [Kivo2D-Message] Dt2::cutTriangles(..), WARNING: ";
    if (bNoneGiven) return start + "vKnives is empty, returning NULL\n";
    if (!bWas2D) return start + "The triangulation has no triangles yet, returning NULL\n";
    std::string text;
    const auto warnOf = [&](std::size_t num, const std::string& one, const std::string& several) {
        if (num == 1) text += start + "1 knife " + one + " ignored\n";
        if (num > 1) text += start + std::to_string(num) + " knives " + several + " ignored\n";
    };
    warnOf(numNotFinite, "with a coordinate that is not finite", "with a coordinate that is not finite");
    warnOf(numNoLength, "of no length", "of no length");
    warnOf(numApart, "that meets the triangulation in no more than a point",
           "that meet the triangulation in no more than a point");
    return vKnives.empty() ? text + start + "No knife is left, returning NULL\n" : text;
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
            if (mVertices.count(p) == 0) vNew.push_back(p);
        }
        checkVertices(vNew, mPlaces, bApart);
        if (pGraph != nullptr) bApart ? checkPieces(pGraph, mPlaces) : checkReach(pGraph, mPlaces);
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
            Point2* const pVtx = vertexAt(mPlaces, x, y);
            if (pVtx != nullptr && (p == nullptr || orientation(*p, *q, *pVtx) <= 0)) v.push_back(pVtx);
        }
    }
    return v;
}

void CutWitness::checkVertices(const std::vector<Point2*>& vNew, const Places& mPlaces, bool bApart) const {
    for (const auto& [pVtx, place] : mVertices)
        demand(vertexAt(mPlaces, place.x(), place.y()) == pVtx, "a vertex is gone");
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

// A ring has an order of its own. A piece has the direction of the first knife that it is part of.
void CutWitness::checkPieces(ConstraintGraph2* pGraph, const Places& mPlaces) const {
    std::vector<PointPair> vPieces = originalPairs(pGraph), vExpected;
    for (const Knife& knife : vKnives) {
        Point2* pHere = verticesAt(knife.vStops.front(), mPlaces, true).front();
        for (const Stop& stop : knife.vStops) {
            Point2* const pThere = verticesAt(stop, mPlaces, true).front();
            const PointPair piece = {pHere, pThere}, back = {pThere, pHere};
            if (pThere != pHere) vExpected.push_back(contains(vExpected, back) ? back : piece);
            pHere = pThere;
        }
    }
    demand(pGraph->isPolygon() || pGraph->isOriented(), "the graph has no directions");
    for (std::vector<PointPair>* pList : {&vPieces, &vExpected}) {
        if (!pGraph->isPolygon()) break;
        for (PointPair& piece : *pList)
            if (piece.second < piece.first) std::swap(piece.first, piece.second);
        std::sort(pList->begin(), pList->end());
    }
    demand(vPieces == vExpected, "the pieces are not those between stops");
}

// All stops may be rounded to one vertex; then there is nothing to cut.
bool CutWitness::isShort(const Knife& knife) {
    const RationalPoint &front = knife.vStops.front().at, &back = knife.vStops.back().at;
    const auto isNear = [](const mpq_class& a, const mpq_class& b) {
        return nearestTo(a, 3).count(*nearestTo(b, 0).begin()) != 0;
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
    const std::vector<PointPair> vPieces = leafPairs(pGraph);
    for (const Knife& knife : vKnives) {
        if (isShort(knife)) continue;
        std::map<Point2*, std::vector<Point2*>> mNeighbours;
        for (const auto& [p, q] : vPieces) {
            if (!isOn(knife, *p) || !isOn(knife, *q)) continue;
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

// The vertex of the stop is one between the pieces of the segment. Or, where other vertices are near, the two
// chains meet beside it.
void CutWitness::checkLeaves(ConstraintGraph2* pGraph, const Places& mPlaces, bool bApart) const {
    std::set<Point2*> sCut;
    if (pGraph != nullptr)
        for (const auto& [p, q] : leafPairs(pGraph))
            sCut.insert({p, q});
    for (ConstraintSegment2* pLeaf : sLeaves) {
        const Point2 &source = *pLeaf->getSrc(), &target = *pLeaf->getTrg();
        std::vector<ConstraintSegment2*> vPieces;
        if (!pLeaf->isAlive()) pLeaf->getChildrenRec(vPieces);
        std::set<Point2*> sEnds = {pLeaf->getSrc(), pLeaf->getTrg()};
        for (const ConstraintSegment2* s : vPieces)
            sEnds.insert({s->getSrc(), s->getTrg()});
        bool bIsMet = false;
        for (const Knife& knife : vKnives) {
            if (!boxesMeet(source, target, knife.source, knife.target) || (!bApart && isShort(knife)))
                continue;
            for (const Stop& stop : knife.vStops) {
                if (!isInside(source, target, stop.at)) continue;
                bIsMet = true;
                const std::vector<Point2*> v = verticesAt(stop, mPlaces, bApart);
                const bool bThere = std::any_of(sEnds.begin(), sEnds.end(), [&](Point2* p) {
                    return contains(v, p) || (!bApart && sCut.count(p) != 0 && isOn(knife, *p));
                });
                if (!bThere) throw Fault{"no stop of a knife on the constraint" + textOf({&source, &target})};
            }
        }
        demand(!bApart || bIsMet || pLeaf->isAlive(), "a constraint that no knife meets is split");
    }
}

CutWitness::Membership CutWitness::membership() const {
    Membership mZones;
    for (const Triangle2* pT : allTriangles(kivo))
        mZones[cornersOf(pT)].resize(vZones.size());
    for (std::size_t i = 0; i < vZones.size(); ++i) {
        Triangles vTs;
        vZones[i]->getTriangles(vTs);
        for (const Triangle2* pT : vTs)
            mZones.at(cornersOf(pT))[i] = true;
    }
    return mZones;
}

void CutWitness::checkZones() const {
    if (vZones.empty()) return;
    const Membership mNow = membership();
    Membership mGone;
    std::set_difference(mBefore.begin(), mBefore.end(), mNow.begin(), mNow.end(),
                        std::inserter(mGone, mGone.end()), mBefore.value_comp());
    for (const auto& [corners, zones] : mNow) {
        const auto third = [&, &a = corners](auto get) {
            return get(a[0]) / 3 + get(a[1]) / 3 + get(a[2]) / 3;
        };
        const Point2 center(third([](const Point2* p) { return p->x(); }),
                            third([](const Point2* p) { return p->y(); }));
        const auto stayed = mBefore.find(corners);
        bool bSame = stayed == mBefore.end() || stayed->second == zones;
        if (stayed == mBefore.end() && isInTriangle(corners, center, 1))
            for (const auto& [old, oldZones] : mGone) // two of them where the centre lies on an edge
                bSame = bSame && (oldZones == zones || !isInTriangle(old, center, 0));
        if (!bSame && !isSliver(corners))
            throw Fault{"not in its zones:" + textOf({corners[0], corners[1], corners[2]})};
    }
}

// Whether they have a point in common.
bool CutWitness::meets(const Knife& knife, const Corners& corners) {
    for (std::size_t i = 0; i < 3; ++i)
        if (boxesMeet(knife.source, knife.target, *corners[i], *corners[(i + 1) % 3]) &&
            meeting(knife.source, knife.target, *corners[i], *corners[(i + 1) % 3]) != 0)
            return true;
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
        if (mVertices.count(p) == 0 && !bAtHull)
            throw Fault{"a new vertex of the hull was not on it:" + textOf({p})};
    }
}

} // namespace oracle
