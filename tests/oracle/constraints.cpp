#include "tests/oracle/constraints.h"

#include "tests/oracle/bruteForce.h"
#include "tests/oracle/exact.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <sstream>

namespace oracle {

using namespace TESK_KIVO2D;

namespace {

using Segments = std::vector<ConstraintSegment2*>;

struct Fault {
    std::string text;
};

void demand(bool bCondition, const char* text) {
    if (!bCondition) throw Fault{text};
}

bool isFinite(const Point2& p) { return std::isfinite(p.x()) && std::isfinite(p.y()); }

bool isUsable(const Segment2& s) {
    return isFinite(s.getSrc()) && isFinite(s.getTrg()) && s.getSrc() != s.getTrg();
}

bool isWithin(double value, double a, double b) { return std::min(a, b) <= value && value <= std::max(a, b); }

// Whether v lies within that many units in the last place of the line ab, where one is that of the largest
// coordinate; the distance is the larger one of those in x and in y.
bool isNearLine(const Point2& a, const Point2& b, const Point2& v, std::size_t numUnits) {
    if (v == a || v == b) return true;
    const double largest = std::max(a.getMaxAbs(), b.getMaxAbs());
    const double unit = std::ldexp(1.0, std::max(std::ilogb(largest) - 52, -1074));
    const auto p = exactPoints({a, b, v, Point2(unit, 0)});
    return abs(twiceArea(p[0], p[1], p[2])) <=
           p[3].x * mpz_class(numUnits) * (abs(p[1].x - p[0].x) + abs(p[1].y - p[0].y));
}

std::string numberOf(const ConstraintSegment2& segment) {
    std::ostringstream stream;
    stream << segment;
    return stream.str().substr(0, stream.str().find(','));
}

class Checker {
public:
    explicit Checker(const Kivo_2D& itsKivo) : kivo(itsKivo) {}

    void check(const GivenGraph& given) {
        pGraph = given.pGraph;
        bRunsOn = true;
        Segments vOriginals, vLeaves, vChildren;
        pGraph->getOriginalConstraintSegments(vOriginals);
        checkOriginals(given, vOriginals);
        for (ConstraintSegment2* pOriginal : vOriginals)
            checkTree(pOriginal, vLeaves);
        checkPolygonVertices(vLeaves);
        pGraph->getChildConstraintSegments(vChildren);
        std::sort(vChildren.begin(), vChildren.end());
        std::sort(vLeaves.begin(), vLeaves.end());
        demand(vChildren == vLeaves, "getChildConstraintSegments does not give the leaves");
        // Where originals overlap, what they share can run along one of them only.
        const bool bOverlap = std::adjacent_find(vLeaves.begin(), vLeaves.end()) != vLeaves.end();
        demand(bRunsOn || bOverlap || !pGraph->isOriented(), "the leaves do not run along their original");
        sLeaves.insert(vLeaves.begin(), vLeaves.end());
    }

    void checkTriangulation(bool bSomeMayBeMissing) {
        for (ConstraintSegment2* pLeaf : sLeaves)
            sPairs.insert(std::minmax(pLeaf->getSrc(), pLeaf->getTrg()));
        demand(sPairs.size() == sLeaves.size(), "two live segments between one pair of vertices");
        for (const auto& [p, q] : sPairs)
            demand(bSomeMayBeMissing || !kivo.is2D() || isEdge(p, q), "a leaf is no edge");
        checkWhatEdgesAreConstraints();
        const std::string fault =
            findFault(kivo, [this](Point2* p, Point2* q) { return sPairs.count(std::minmax(p, q)) != 0; });
        if (!fault.empty()) throw Fault{fault};
    }

private:
    void checkOriginals(const GivenGraph& given, const Segments& vOriginals) const {
        std::vector<Edge> vGiven, vKept;
        bool bSameDirections = true;
        for (const Segment2& s : given.vSegments) {
            if (!isUsable(s)) continue;
            const std::size_t i = vGiven.size();
            vGiven.push_back(edgeOf(s.getSrc(), s.getTrg()));
            if (i < vOriginals.size() && *startOf(vOriginals[i]) != s.getSrc()) bSameDirections = false;
        }
        for (const ConstraintSegment2* s : vOriginals)
            vKept.push_back(edgeOf(*s->getSrc(), *s->getTrg()));
        if (!pGraph->isPolygon())
            demand(vGiven == vKept, "the originals are not those given, in their order");
        std::sort(vGiven.begin(), vGiven.end());
        std::sort(vKept.begin(), vKept.end());
        demand(vGiven == vKept, "the originals are not those given");
        const bool bRepeated = std::adjacent_find(vKept.begin(), vKept.end()) != vKept.end();
        demand(bSameDirections || bRepeated || pGraph->isPolygon() || !pGraph->isOriented(),
               "the graph does not keep the directions");
    }

    Point2* startOf(ConstraintSegment2* s) const { return pGraph->isReverse(s) ? s->getTrg() : s->getSrc(); }
    Point2* endOf(ConstraintSegment2* s) const { return pGraph->isReverse(s) ? s->getSrc() : s->getTrg(); }

    void checkPolygonVertices(const Segments& vLeaves) {
        std::vector<Point2*> vVertices, vExpected;
        pGraph->getPolygonVertices(vVertices);
        for (ConstraintSegment2* pLeaf : vLeaves)
            vExpected.insert(vExpected.end(), {startOf(pLeaf), endOf(pLeaf)});
        bRunsOn = bRunsOn && vVertices == vExpected;
        std::sort(vVertices.begin(), vVertices.end());
        std::sort(vExpected.begin(), vExpected.end());
        demand(vVertices == vExpected, "getPolygonVertices does not give the ends of the leaves");
    }

    // Appends the leaves in order along the original.
    void checkTree(ConstraintSegment2* pOriginal, Segments& vLeaves) {
        Point2 *pStart = startOf(pOriginal), *pEnd = endOf(pOriginal), *pHere = pStart;
        std::vector<Point2*> vChain;
        Segments vStack = {pOriginal};
        while (!vStack.empty()) {
            ConstraintSegment2* s = vStack.back();
            vStack.pop_back();
            checkKnown(s);
            demand(s->getSrc() == pHere || s->getTrg() == pHere, "the leaves are no chain");
            bRunsOn = bRunsOn && startOf(s) == pHere;
            if (s->isAlive()) {
                pHere = s->getSrc() == pHere ? s->getTrg() : s->getSrc();
                vLeaves.push_back(s);
                vChain.push_back(pHere);
                continue;
            }
            Segments vKids = checkedChildren(s);
            if (s->getSrc() == pHere) std::swap(vKids[0], vKids[1]);
            vStack.insert(vStack.end(), vKids.begin(), vKids.end());
        }
        demand(pHere == pEnd, "the leaves do not join the ends");
        for (const Point2* p : vChain)
            demand(isNearLine(*pStart, *pEnd, *p, vChain.size()), "a leaf strays from its original");
    }

    void checkKnown(ConstraintSegment2* s) {
        if (sSeen.insert(s).second) demand(sNumbers.insert(numberOf(*s)).second, "equal numbers");
        demand(kivo.isConstraint(s->getSrc()) && kivo.isConstraint(s->getTrg()), "an end is none");
        demand(pGraph->isConstraint(s) == s->isAlive(), "its graph does not know a segment");
    }

    Segments checkedChildren(ConstraintSegment2* pParent) const {
        ConstraintSegment2 *pKid0 = nullptr, *pKid1 = nullptr;
        Point2 *pSplit = nullptr, *p = pParent->getSrc(), *q = pParent->getTrg();
        pParent->getChildrenAndSplitPoint(pKid0, pKid1, pSplit);
        demand(pKid0 != nullptr && pKid1 != nullptr && pSplit != nullptr, "a dead segment without children");
        demand(pSplit != p && pSplit != q, "split at an end");
        demand(isWithin(pSplit->x(), p->x(), q->x()) && isWithin(pSplit->y(), p->y(), q->y()),
               "split outside the box");
        const auto joins = [&](const ConstraintSegment2* pKid, const Point2* pEnd) {
            return std::minmax<const Point2*>(pKid->getSrc(), pKid->getTrg()) ==
                   std::minmax<const Point2*>(pEnd, pSplit);
        };
        demand(joins(pKid0, p) && joins(pKid1, q), "a child does not join an end and the split point");
        const std::size_t numOwners = pParent->getNumberOfOwners();
        demand(numOwners > 0 && pKid0->getNumberOfOwners() >= numOwners &&
                   pKid1->getNumberOfOwners() >= numOwners,
               "a child lacks an owner");
        ConstraintSegment2 *pFirst = nullptr, *pSecond = nullptr;
        pGraph->getDirectChildren(pParent, pFirst, pSecond);
        if (pGraph->isReverse(pParent)) std::swap(pFirst, pSecond);
        demand(pFirst == pKid0 && pSecond == pKid1, "getDirectChildren does not follow the direction");
        return {pKid0, pKid1};
    }

    bool isEdge(Point2* p, Point2* q) const {
        const Triangle2 *pLeft = kivo.getAdjacentTriangle(p, q), *pRight = kivo.getAdjacentTriangle(q, p);
        for (const Triangle2* pT : {pLeft, pRight})
            demand(pT == nullptr || (pT->hasVertex(p) && pT->hasVertex(q)), "not adjacent");
        return pLeft != pRight;
    }

    void checkWhatEdgesAreConstraints() const {
        std::vector<Triangle2*> vTriangles;
        kivo.getTrianglePointers(vTriangles);
        for (Triangle2* pT : vTriangles) {
            for (int i = 0; i < 3; ++i) {
                Point2 *p = pT->getCorner((i + 1) % 3), *q = pT->getCorner((i + 2) % 3);
                ConstraintSegment2* const s = kivo.getConstraintSegment(p, q);
                const bool bLeaf = sPairs.count(std::minmax(p, q)) != 0;
                demand(bLeaf == kivo.isConstraint(p, q) && bLeaf == kivo.isConstraint(q, p) &&
                           bLeaf == kivo.isConstraint(pT, i) && bLeaf == (sLeaves.count(s) != 0),
                       bLeaf ? "a leaf is no constraint" : "a constraint is no leaf");
            }
        }
    }

    const Kivo_2D& kivo;
    ConstraintGraph2* pGraph = nullptr;
    bool bRunsOn = true; // all that was seen of this graph runs the way of its original
    std::set<ConstraintSegment2*> sLeaves, sSeen;
    std::set<std::string> sNumbers;
    std::set<std::pair<Point2*, Point2*>> sPairs;
};

template<class MoreChecks>
std::string faultOf(const Kivo_2D& kivo, const std::vector<GivenGraph>& vGraphs, MoreChecks checkMore) {
    try {
        Checker checker(kivo);
        for (const GivenGraph& given : vGraphs)
            checker.check(given);
        checkMore(checker);
        return "";
    } catch (const Fault& fault) {
        return fault.text;
    }
}

} // namespace

std::string findConstraintFault(const Kivo_2D& kivo, const std::vector<GivenGraph>& vGraphs,
                                bool bSomeMayBeMissing) {
    return faultOf(kivo, vGraphs, [=](Checker& checker) { checker.checkTriangulation(bSomeMayBeMissing); });
}

std::string findGraphFault(const Kivo_2D& kivo, const std::vector<GivenGraph>& vGraphs) {
    return faultOf(kivo, vGraphs, [](Checker&) {});
}

Edge edgeOf(const Point2& p, const Point2& q) {
    const std::pair<double, double> a{p.x() + 0.0, p.y() + 0.0}, b{q.x() + 0.0, q.y() + 0.0}; // one zero only
    return {std::min(a, b), std::max(a, b)};
}

std::vector<Edge> leafEdges(const std::vector<GivenGraph>& vGraphs) {
    std::vector<Edge> vEdges;
    for (const GivenGraph& given : vGraphs) {
        Segments vLeaves;
        given.pGraph->getChildConstraintSegments(vLeaves);
        for (const ConstraintSegment2* pLeaf : vLeaves)
            vEdges.push_back(edgeOf(*pLeaf->getSrc(), *pLeaf->getTrg()));
    }
    std::sort(vEdges.begin(), vEdges.end());
    vEdges.erase(std::unique(vEdges.begin(), vEdges.end()), vEdges.end());
    return vEdges;
}

} // namespace oracle
