#include "tests/oracle/meshes.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <numbers>

namespace oracle {

using namespace TESK_KIVO2D;

namespace {

struct Fault {
    std::string text;
};

void demand(bool bCondition, const std::string& text) {
    if (!bCondition) throw Fault{text};
}

std::vector<Point2*> cornersOf(const Triangle2* pT) {
    std::vector<Point2*> v = {pT->getCorner(0), pT->getCorner(1), pT->getCorner(2)};
    std::rotate(v.begin(), std::min_element(v.begin(), v.end(), std::less<>()), v.end());
    return v;
}

// Of the corner between the directions to p and q, counter-clockwise, from 0 to 360.
long double angleAt(const Point2* pVtx, const Point2* p, const Point2* q) {
    const long double ax = (long double)p->x() - pVtx->x(), ay = (long double)p->y() - pVtx->y();
    const long double bx = (long double)q->x() - pVtx->x(), by = (long double)q->y() - pVtx->y();
    const long double degrees =
        std::atan2(ax * by - ay * bx, ax * bx + ay * by) * 180 / std::numbers::pi_v<long double>;
    return degrees < 0 ? degrees + 360 : degrees;
}

Segments borderSegments(const Triangles& vTriangles) {
    Segments vBorder;
    for (const auto& [p, q] : borderOf(vTriangles))
        vBorder.emplace_back(*p, *q);
    return vBorder;
}

// What rounding the vertices of the border may add to the area, and what counts as none anyway.
double areaErrorOf(const Segments& vBorder, double area) {
    double error = 0;
    for (const Segment2& s : vBorder) {
        const double largest = std::max(s.getSrc().getMaxAbs(), s.getTrg().getMaxAbs());
        error += 2 * largest * DBL_EPSILON *
                 std::hypot(s.getSrc().x() - s.getTrg().x(), s.getSrc().y() - s.getTrg().y());
    }
    return std::max(1e-9 * area, error);
}

// All that lies below a segment.
std::vector<ConstraintSegment2*> piecesOf(ConstraintSegment2* pSegment) {
    std::vector<ConstraintSegment2*> v = {pSegment};
    if (!pSegment->isAlive()) pSegment->getChildrenRec(v);
    return v;
}

Triangles trianglesOf(const Zone2* pZone) {
    Triangles v;
    pZone->getTriangles(v);
    return v;
}

bool isLimit(double value) { return value > 0 && value < DBL_MAX; }

// Surely, and possibly, more than the limit: the library rounds.
struct Excess {
    bool bSure = false, bMaybe = false;
    Excess() = default;
    Excess(long double value, long double limit)
        : bSure(value > limit * (1 + 1e-9L)), bMaybe(value > limit * (1 - 1e-9L)) {}
    Excess operator||(const Excess& other) const {
        Excess result;
        result.bSure = bSure || other.bSure;
        result.bMaybe = bMaybe || other.bMaybe;
        return result;
    }
};

Excess breaksAngle(const Measures& m, const MeshGenParams& params) {
    if (!isLimit(params.minAngleDegree)) return {};
    const Excess angle(params.minAngleDegree, m.minAngle);
    if (m.maxAngle <= 150 || !isLimit(params.capAspectLimit)) return angle;
    return angle || Excess(m.longest * m.longest, 2 * m.area * params.capAspectLimit);
}

// Of what the library computes.
long double areaError(const Measures& m) { return 1e-9L * m.area + 4 * DBL_EPSILON * m.longest * m.longest; }

Excess breaksGrowth(const Triangle2* pT, const Measures& m, const MeshGenParams& params,
                    const Triangles& vZone) {
    Excess result;
    if (!(params.growFactor > 1 && params.growFactor < DBL_MAX)) return result;
    const double minArea = params.growFactorMinArea > 0 ? params.growFactorMinArea : 0;
    for (int i = 0; i < 3; ++i) {
        Triangle2* const pOther = pT->getOppositeTriangle(i);
        if (pOther == nullptr || !std::binary_search(vZone.begin(), vZone.end(), pOther, std::less<>()))
            continue;
        const Measures other = measuresOf(pOther);
        const long double error = areaError(m), otherError = areaError(other);
        Excess excess;
        excess.bSure = m.area - error > (other.area + otherError) * params.growFactor &&
                       other.area - otherError >= minArea;
        excess.bMaybe = m.area + error > (other.area - otherError) * params.growFactor &&
                        other.area + otherError >= minArea;
        result = result || excess;
    }
    return result;
}

// So thin that points between its corners may be too few for a mesh.
bool isThin(const Triangle2* pT) {
    const double largest = std::max(
        {pT->getCorner(0)->getMaxAbs(), pT->getCorner(1)->getMaxAbs(), pT->getCorner(2)->getMaxAbs()});
    const Measures m = measuresOf(pT);
    return 2 * m.area < m.longest * std::max(largest * 0x1p-36L, DBL_MIN * 0x1p36L);
}

std::uint64_t numArithmetic(const RefinementReport& report) {
    std::uint64_t num = 0;
    for (std::size_t i = 0; i < RefinementReport::numRules; ++i)
        num += report.numBad(MeshRule(i), MeshObstacle::ARITHMETIC);
    return num;
}

struct Tally {
    std::uint64_t numSure = 0, numMaybe = 0;
    void add(const Excess& excess) {
        numSure += excess.bSure ? 1 : 0;
        numMaybe += excess.bMaybe ? 1 : 0;
    }
    void check(std::uint64_t num, const std::string& what) const {
        demand(numSure <= num && num <= numMaybe, "the report counts " + std::to_string(num) + " " + what +
                                                      ", there are " + std::to_string(numSure) + " to " +
                                                      std::to_string(numMaybe));
    }
};

} // namespace

Measures measuresOf(const Triangle2* pT) {
    Measures m{360, 0, INFINITY, 0, 0};
    for (int i = 0; i < 3; ++i) {
        const Point2 *p = pT->getCorner(i), *q = pT->getCorner((i + 1) % 3), *r = pT->getCorner((i + 2) % 3);
        const long double ax = (long double)q->x() - p->x(), ay = (long double)q->y() - p->y();
        const long double angle = angleAt(p, q, r), length = std::hypot(ax, ay);
        m.minAngle = std::min(m.minAngle, angle);
        m.maxAngle = std::max(m.maxAngle, angle);
        m.shortest = std::min(m.shortest, length);
        m.longest = std::max(m.longest, length);
        m.area = (ax * ((long double)r->y() - p->y()) - ay * ((long double)r->x() - p->x())) / 2;
    }
    return m;
}

MeshWitness::MeshWitness(const Kivo_2D& itsKivo, const Zone2* pItsZone, Graphs vGraphs)
    : kivo(itsKivo), pZone(pItsZone) {
    Graphs vOwn;
    pZone->getConstraintGraphs(vOwn);
    vGraphs.insert(vGraphs.end(), vOwn.begin(), vOwn.end());
    std::set<ConstraintGraph2*> sSeen;
    for (ConstraintGraph2* pGraph : vGraphs) {
        if (!sSeen.insert(pGraph).second) continue;
        std::vector<Original> vSegments;
        pGraph->getOriginalConstraintSegments(vSegments);
        sOriginals.insert(vSegments.begin(), vSegments.end());
        vGiven.push_back({pGraph, {}});
        for (Original s : vSegments) {
            vGiven.back().vSegments.emplace_back(*s->getSrc(), *s->getTrg());
            if (pGraph->isReverse(s)) vGiven.back().vSegments.back().swapSrcTrg();
        }
    }
    std::vector<Point2*> vVertices;
    kivo.getVertexPointers(vVertices);
    for (Point2* p : vVertices)
        mVertices.emplace(p, *p);
    const Triangles vInside = trianglesOf(pZone);
    const Segments vBorder = borderSegments(vInside);
    area = areaOf(vBorder);
    areaError = areaErrorOf(vBorder, area);
    for (const Triangle2* pT : allTriangles(kivo)) {
        bThin = bThin || isThin(pT);
        if (!std::binary_search(vInside.begin(), vInside.end(), pT, std::less<>()))
            sOutside.insert(cornersOf(pT));
    }
    findSmallCorners(vInside);
}

MeshWitness::Lines MeshWitness::linesThroughVertices() const {
    Lines mOn;
    for (Original s : sOriginals) {
        for (const ConstraintSegment2* pPiece : piecesOf(s)) {
            mOn[pPiece->getSrc()].insert(s);
            mOn[pPiece->getTrg()].insert(s);
        }
    }
    return mOn;
}

void MeshWitness::findSmallCorners(const Triangles& vTriangles) {
    std::map<Point2*, std::vector<std::pair<Point2*, Original>>> mSpokes;
    for (Original s : sOriginals) {
        for (const ConstraintSegment2* pPiece : piecesOf(s)) {
            if (!pPiece->isAlive()) continue;
            mSpokes[pPiece->getSrc()].emplace_back(pPiece->getTrg(), s);
            mSpokes[pPiece->getTrg()].emplace_back(pPiece->getSrc(), s);
        }
    }
    for (const auto& [pVtx, vSpokes] : mSpokes) {
        for (const auto& [p, pOriginal] : vSpokes) {
            Triangle2* const pT = kivo.getAdjacentTriangle(pVtx, p);
            if (!std::binary_search(vTriangles.begin(), vTriangles.end(), pT, std::less<>())) continue;
            for (const auto& [q, pOther] : vSpokes)
                if (q != p && angleAt(pVtx, p, q) < 60 - 1e-9L) vSmallCorners.emplace_back(pOriginal, pOther);
        }
    }
}

bool MeshWitness::isAtSmallCorner(const Triangle2* pT, const Lines& mOn) const {
    std::set<Original> sTouched;
    for (int i = 0; i < 3; ++i)
        if (const auto on = mOn.find(pT->getCorner(i)); on != mOn.end())
            sTouched.insert(on->second.begin(), on->second.end());
    return std::any_of(vSmallCorners.begin(), vSmallCorners.end(), [&](const auto& corner) {
        return sTouched.count(corner.first) != 0 && sTouched.count(corner.second) != 0;
    });
}

bool MeshWitness::isBesideSmallCorner(const Triangle2* pT, const Lines& mOn) const {
    for (int i = 0; i < 3; ++i)
        if (const Triangle2* const pOther = pT->getOppositeTriangle(i))
            if (isAtSmallCorner(pOther, mOn)) return true;
    return false;
}

std::size_t MeshWitness::numUntouched() const {
    const Triangles vAll = allTriangles(kivo), vInside = trianglesOf(pZone);
    return static_cast<std::size_t>(std::count_if(vAll.begin(), vAll.end(), [&](const Triangle2* pT) {
        return !std::binary_search(vInside.begin(), vInside.end(), pT, std::less<>()) &&
               isOld(pT->getCorner(0)) && isOld(pT->getCorner(1)) && isOld(pT->getCorner(2));
    }));
}

void MeshWitness::checkOutside() const {
    const Triangles vInside = trianglesOf(pZone);
    std::set<Point2*> sInside;
    for (const Triangle2* pT : vInside)
        for (int i = 0; i < 3; ++i)
            sInside.insert(pT->getCorner(i));
    std::vector<Point2*> vVertices;
    kivo.getVertexPointers(vVertices);
    for (Point2* p : vVertices)
        demand(isOld(p) || sInside.count(p) != 0, "a new vertex is none of the zone");
    for (const Triangle2* pT : allTriangles(kivo)) {
        if (std::binary_search(vInside.begin(), vInside.end(), pT, std::less<>())) continue;
        bool bOld = true;
        for (int i = 0; i < 3; ++i) {
            bOld = bOld && isOld(pT->getCorner(i));
            demand(isOld(pT->getCorner(i)) || kivo.isConstraint(pT->getCorner(i)),
                   "a triangle outside has a new vertex that is on no constraint");
        }
        demand(!bOld || sOutside.count(cornersOf(pT)) != 0, "a new triangle outside has no new vertex");
    }
}

void MeshWitness::checkCounts() const {
    std::vector<Point2*> vVertices;
    kivo.getVertexPointers(vVertices);
    const auto numOnConstraints = std::count_if(vVertices.begin(), vVertices.end(),
                                                [&](Point2* p) { return !isOld(p) && kivo.isConstraint(p); });
    const RefinementReport report = kivo.getRefinementReport();
    demand(report.numGridPoints + report.numInnerPoints + report.numSegmentPoints ==
               vVertices.size() - mVertices.size(),
           "the report counts other points than there are");
    const auto num = static_cast<std::uint64_t>(numOnConstraints); // grid points may be either
    demand(report.numSegmentPoints <= num && num <= report.numSegmentPoints + report.numGridPoints,
           "the report counts other points on constraints than there are");
}

std::string MeshWitness::findLoss() const {
    try {
        std::vector<Point2*> vVertices;
        kivo.getVertexPointers(vVertices);
        const std::set<Point2*> sVertices(vVertices.begin(), vVertices.end());
        demand(sVertices.size() == kivo.numberOfPoints(), "the number of vertices");
        for (const auto& [p, coordinates] : mVertices)
            demand(sVertices.count(p) != 0 && *p == coordinates, "a vertex is gone or moved");
        if (const std::string fault = findConstraintFault(kivo, vGiven); !fault.empty()) return fault;
        const double areaNow = areaOf(borderSegments(trianglesOf(pZone)));
        demand(std::abs(areaNow - area) <= areaError || areaNow == area, "the area of the zone");
        checkOutside();
        checkCounts();
        return "";
    } catch (const Fault& fault) {
        return fault.text;
    }
}

void MeshWitness::checkRules(const MeshGenParams& params) const {
    const RefinementReport report = kivo.getRefinementReport();
    const Triangles vZone = trianglesOf(pZone);
    demand(report.numTriangles == vZone.size(), "the report's number of triangles");
    std::array<Tally, RefinementReport::numRules> aTallies;
    Tally bad;
    const bool bEdgesMaySplit = params.bAllowConstraintSplitting && !(params.minEdgeLength > 0);
    const bool bFinished = report.end == RefinementEnd::COMPLETE;
    const Lines mOn = linesThroughVertices();
    std::uint64_t numUnexplained = 0;
    long double smallest = 180;
    for (Triangle2* pT : vZone) {
        const Measures m = measuresOf(pT);
        const double maxEdge = params.getMaxEdgeLength(pT), maxArea = params.getMaxTriangleArea(pT);
        const std::array<Excess, RefinementReport::numRules> aExcess = {
            breaksAngle(m, params), isLimit(maxEdge) ? Excess(m.longest, maxEdge) : Excess(),
            isLimit(maxArea) ? Excess(m.area, maxArea) : Excess(), breaksGrowth(pT, m, params, vZone)};
        for (std::size_t i = 0; i < aExcess.size(); ++i)
            aTallies[i].add(aExcess[i]);
        bad.add(aExcess[0] || aExcess[1] || aExcess[2] || aExcess[3]);
        const bool bSmall = isLimit(params.minAngleDegree) && m.minAngle < params.minAngleDegree - 1e-4L;
        if (!bSmall && !aExcess[1].bSure && !aExcess[2].bSure && !aExcess[3].bSure) continue;
        if (isAtSmallCorner(pT, mOn) || (aExcess[3].bSure && isBesideSmallCorner(pT, mOn))) continue;
        ++numUnexplained;
        smallest = std::min(smallest, m.minAngle);
    }
    demand(numUnexplained == 0 || !bFinished || !bEdgesMaySplit ||
               (bThin && numUnexplained <= numArithmetic(report)),
           std::to_string(numUnexplained) + " bad triangles for no reason, one with an angle of " +
               std::to_string(double(smallest)));
    const char* const aNames[] = {"angles", "lengths", "areas", "growths"};
    for (std::size_t i = 0; i < aTallies.size(); ++i)
        aTallies[i].check(report.numBad(MeshRule(i)), aNames[i]);
    bad.check(report.numBadTriangles, "bad triangles");
    const bool bForbidden = !params.bAllowConstraintSplitting;
    for (std::size_t i = 0; i < aTallies.size(); ++i) {
        const auto num = [&](MeshObstacle obstacle) { return report.numBad(MeshRule(i), obstacle); };
        demand(hasSmallAngle() || num(MeshObstacle::SMALL_INPUT_ANGLE) == 0, "a small angle that is none");
        demand(params.minEdgeLength > 0 || num(MeshObstacle::MIN_EDGE_LENGTH) == 0, "an edge limit");
        demand(bForbidden || num(MeshObstacle::SPLITTING_FORBIDDEN) == 0, "splitting was not forbidden");
        demand(!bFinished || num(MeshObstacle::NOT_REACHED) == 0, "a finished run that left something");
        // Beside a small angle, areas on both sides of a segment have a ratio that does not depend on their
        // size.
        const bool bGrowthToTheEnd = hasSmallAngle() && params.growFactor < DBL_MAX;
        demand(bThin || bGrowthToTheEnd || !bFinished || !bEdgesMaySplit ||
                   num(MeshObstacle::ARITHMETIC) == 0,
               "room for more points");
        demand(num(MeshObstacle::OPEN_BORDER) == 0, "an open border where all are constraints");
    }
}

std::string MeshWitness::findFault(const MeshGenParams& params) const {
    try {
        demand(kivo.getRefinementReport().end != RefinementEnd::ABANDONED, "the run was abandoned");
        if (const std::string loss = findLoss(); !loss.empty()) return loss;
        checkRules(params);
        return "";
    } catch (const Fault& fault) {
        return fault.text;
    }
}

} // namespace oracle
