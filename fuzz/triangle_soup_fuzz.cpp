#include "fuzz/check.h"
#include "fuzz/soupFaults.h"

#include "Kivo_2D.h"
#include "tests/oracle/bruteForce.h"
#include "tests/oracle/exact.h"
#include "tests/oracle/zones.h"

#include <array>
#include <cmath>
#include <set>

// Soups of triangles and knives, into nothing and into what points, constraints, earlier soups and knives
// left. Soups are any triangles, or come from a triangulation and have faults then or not. Whether one is
// imported, and which faults are found, is compared with each triangle against each other, each vertex and
// each constraint. What knives do to integers is compared with rationals. The first byte says what
// coordinates are.

using namespace soupFaults;
using oracle::Triangles;

namespace {

constexpr int MAX_OPERATIONS = 16;
constexpr std::size_t MANY_POINTS = 150;
constexpr std::size_t MAX_TRIANGLES = 24;

class Input : public Bytes {
public:
    Input(const std::uint8_t* pBytes, std::size_t num) : Bytes(pBytes, num), mode(byte() % 6) {}
    // Integers of 0 to 15, tenths that leave their lines by rounding, those far from the origin, neighbouring
    // doubles, any doubles, and such that are finite and of moderate size.
    Point2 point() {
        if (mode >= 4) {
            const double x = coordinate();
            return {x, coordinate()};
        }
        constexpr std::array<double, 4> units = {1, 0.1, 0.1, 0x1p-52}, offsets = {0, 0, 4e6, 1};
        const std::uint8_t xy = byte();
        return {(xy & 15) * units[mode] + offsets[mode], (xy >> 4) * units[mode] + offsets[mode]};
    }
    bool areIntegers() const { return mode == 0; }
    // What rounding does is small beside all distances.
    bool isCoarse() const { return mode < 3; }

private:
    double coordinate() {
        const double value = anyDouble();
        return mode == 4 || std::fabs(value) < 1e140 ? value : 0.5;
    }

    const std::size_t mode;
};

// Rounding may turn the border of a zone as wide as that inside out.
Triangles trianglesOf(const Zone2* pZone, bool bMayBeLost = false) {
    Triangles v;
    try {
        pZone->getTriangles(v);
    } catch (const KivoException&) {
        CHECK(bMayBeLost);
    }
    return v;
}

std::string heard; // since it was cleared

std::size_t numHeard(const std::string& text) {
    std::size_t num = 0;
    for (std::size_t at = heard.find(text); at != std::string::npos; at = heard.find(text, at + 1))
        ++num;
    return num;
}

class Soup {
public:
    explicit Soup(Input& itsInput) : input(itsInput) {}
    void run() {
        for (int i = 0; i < MAX_OPERATIONS && !input.atEnd() && kivo.numberOfPoints() < MANY_POINTS; ++i) {
            step();
            check();
        }
    }

private:
    void step() {
        switch (input.byte() % 14) {
        case 0:
            for (int num = input.byte() % 8; num >= 0; --num)
                kivo.insert(input.point());
            break;
        case 1:
            vGraphs.push_back(constrain(kivo));
            break;
        case 2:
        case 3:
            importAny();
            break;
        case 4:
        case 5:
            importCarved();
            break;
        case 6:
            importOwn();
            break;
        case 7:
        case 8:
            cut({knife()});
            break;
        case 9:
        case 10:
            cutSeveral();
            break;
        case 11:
            removeOne();
            break;
        case 12:
            refine();
            break;
        default:
            splitSegment();
        }
    }

    ConstraintGraph2* constrain(Kivo_2D& target) {
        std::vector<Segment2> vSegments;
        const std::uint8_t bits = input.byte();
        for (int num = bits % 4; num >= 0; --num)
            vSegments.push_back(knife());
        return target.createConstraint(vSegments,
                                       bits & 16 ? CIS_CONFORMING_DELAUNAY : CIS_CONSTRAINED_DELAUNAY);
    }

    void importAny() {
        std::vector<Point2> vCorners;
        const std::uint8_t bits = input.byte();
        for (int num = 3 * (bits % 8) + (bits < 16 ? bits % 3 : 0); num > 0; --num)
            vCorners.push_back(bits & 32 && num % 3 == 0 && vCorners.size() > 3 ? vCorners[bits % 3]
                                                                                : input.point());
        import(vCorners);
    }
    // Some triangles of a triangulation, with a few changes.
    void importCarved() {
        Kivo_2D source;
        const std::uint8_t bits = input.byte();
        for (int num = 2 + bits % 8; num >= 0; --num)
            source.insert(input.point());
        if (bits & 64) constrain(source);
        if (source.is2D()) source.applyConstraintsAndZones();
        std::vector<Point2> vCorners = someCorners(source);
        for (int num = bits >> 7; num > 0 && !vCorners.empty(); --num)
            spoil(vCorners);
        import(vCorners);
    }
    // There already, so nothing can be wrong with them.
    void importOwn() {
        const std::vector<Point2> vCorners = someCorners(kivo);
        CHECK(import(vCorners) || vCorners.empty());
    }
    std::vector<Point2> someCorners(const Kivo_2D& source) {
        std::vector<Point2> vCorners;
        const std::uint8_t bits = input.byte();
        std::size_t i = 0;
        for (const Triangle2* pT : oracle::allTriangles(source)) {
            ++i;
            if ((bits >> i * i % 11 % 8 & 1) == 0 || vCorners.size() >= 3 * MAX_TRIANGLES) continue;
            for (std::size_t j = 0; j < 3; ++j)
                vCorners.push_back(*pT->getCorner(int(i % 2 == 0 ? (i + j) % 3 : 2 - (i + j) % 3)));
        }
        return vCorners;
    }
    void spoil(std::vector<Point2>& vCorners) {
        const std::uint8_t bits = input.byte();
        const std::size_t i = input.byte() % vCorners.size();
        if (bits % 4 == 0) {
            vCorners[i] = input.point();
        } else if (bits % 4 == 1) { // once more
            for (std::size_t j = 0; j < 3; ++j)
                vCorners.push_back(vCorners[i / 3 * 3 + j]);
        } else if (bits % 4 == 2) {
            vCorners[i] = vCorners[bits % vCorners.size()];
        } else {
            for (int j = 0; j < 3; ++j)
                vCorners.push_back(input.point());
        }
    }

    bool import(const std::vector<Point2>& vCorners) {
        const State before(kivo, vGraphs);
        const std::vector<double> vAreas = areas();
        const Faults faults(vCorners, before);
        heard.clear();
        Zone2* const pZone = kivo.importTriangles(vCorners, (input.byte() & 1) != 0);
        const bool bExpected = !vCorners.empty() && vCorners.size() % 3 == 0 && faults.isFree();
        CHECK((pZone != nullptr) == bExpected);
        if (pZone == nullptr) {
            if (!vCorners.empty() && vCorners.size() % 3 == 0) checkReport(faults);
            CHECK(State(kivo, vGraphs) == before);
        }
        CHECK(areas() == vAreas);
        if (pZone == nullptr) return false;
        checkImported(pZone, faults, before);
        vZones.push_back(pZone);
        return true;
    }
    static void checkReport(const Faults& faults) {
        const std::size_t numLines = numHeard("ERROR") - 1;
        const bool bTrue = numHeard(" not finite\n") == faults.numNotFinite &&
                           numHeard(" is degenerate\n") == faults.numDegenerate &&
                           numHeard(" is shared by ") == faults.numShared &&
                           numHeard("The corner ") == faults.numInEdges &&
                           numHeard(" overlap\n") == faults.numOverlaps &&
                           (faults.bBeside || numLines == faults.numCertain()) &&
                           numHeard(" " + std::to_string(numLines) + " fault") == 1;
        const bool bTooMany = numLines >= 100; // not all have a line
        if (!bTrue && !bTooMany) std::fprintf(stderr, "%s", heard.c_str());
        CHECK(bTrue || bTooMany);
    }
    void checkImported(const Zone2* pZone, const Faults& faults, const State& before) {
        const Triangles vTriangles = trianglesOf(pZone);
        CHECK(vTriangles.size() == faults.vTrios.size());
        CHECK(triosOf(vTriangles) == std::set<Trio>(faults.vTrios.begin(), faults.vTrios.end()));
        for (Triangle2* pT : vTriangles) {
            for (int i = 0; i < 3; ++i) {
                Point2 *const p = pT->getCorner((i + 1) % 3), *const q = pT->getCorner((i + 2) % 3);
                const Triangle2* const pOpp = pT->getOppositeTriangle(i);
                CHECK(kivo.getAdjacentTriangle(p, q) == pT);
                const bool bInside =
                    std::find(vTriangles.begin(), vTriangles.end(), pOpp) != vTriangles.end();
                CHECK(kivo.isConstraint(p, q) == (!bInside || isNotDelaunay(pT, pOpp) ||
                                                  isPartOf(Segment2(*p, *q), before.vConstraints)));
            }
        }
        std::vector<Point2*> vVertices;
        kivo.getVertexPointers(vVertices);
        const std::set<Point2*> sVertices(vVertices.begin(), vVertices.end());
        for (Point2* const pVtx : before.vVertices)
            CHECK(sVertices.count(pVtx) == 1);
    }
    static bool isNotDelaunay(const Triangle2* pT, const Triangle2* pOpp) {
        const Trio t = trioOf(pT);
        return oracle::inCircle(t.a, t.b, t.c, *pOpp->getCorner(pOpp->getIntraTriangleIndex(pT))) > 0;
    }
    static bool isPartOf(const Segment2& edge, const std::vector<Segment2>& vSegments) {
        const auto isOn = [](const Point2& p, const Segment2& s) {
            return p == s.getSrc() || p == s.getTrg() || isInsideEdge(p, s.getSrc(), s.getTrg());
        };
        return std::any_of(vSegments.begin(), vSegments.end(), [&](const Segment2& s) {
            return isOn(edge.getSrc(), s) && isOn(edge.getTrg(), s);
        });
    }

    Segment2 knife() {
        const Point2 source = input.point();
        return {source, input.point()};
    }
    void cutSeveral() {
        std::vector<Segment2> vKnives;
        for (int num = input.byte() % 6; num >= 0; --num)
            vKnives.push_back(knife());
        cut(vKnives);
    }
    void cut(const std::vector<Segment2>& vKnives) {
        const State before(kivo, vGraphs);
        const std::vector<double> vAreas = areas();
        std::vector<Segment2> vSharp; // those that cut
        std::copy_if(vKnives.begin(), vKnives.end(), std::back_inserter(vSharp),
                     [&](const Segment2& s) { return isSharp(s, before); });
        ConstraintGraph2* const pGraph =
            vKnives.size() == 1 ? kivo.cutTriangles(vKnives.front()) : kivo.cutTriangles(vKnives);
        CHECK(pGraph == nullptr ? vSharp.empty() || !input.isCoarse() : !vSharp.empty());
        if (pGraph == nullptr) {
            CHECK(State(kivo, vGraphs) == before);
            return;
        }
        vGraphs.push_back(pGraph);
        if (input.isCoarse()) {
            const std::vector<double> vNow = areas();
            for (std::size_t i = 0; i < vAreas.size(); ++i)
                CHECK(std::fabs(vNow[i] - vAreas[i]) < 1e-6);
        }
        if (vSharp.size() == 1) checkChain(pGraph, vSharp.front(), before);
        std::vector<ConstraintSegment2*> vLeaves;
        pGraph->getChildConstraintSegments(vLeaves);
        CHECK(!vLeaves.empty());
        for (const ConstraintSegment2* pLeaf : vLeaves)
            CHECK(kivo.getAdjacentTriangle(pLeaf->getSrc(), pLeaf->getTrg()) != nullptr ||
                  kivo.getAdjacentTriangle(pLeaf->getTrg(), pLeaf->getSrc()) != nullptr);
        const auto isInteger = [](const Point2& p) {
            return p.x() == std::floor(p.x()) && p.y() == std::floor(p.y());
        };
        if (input.areIntegers() && std::all_of(before.vPoints.begin(), before.vPoints.end(), isInteger))
            checkStops(vSharp, before);
    }
    // More than a point in common with the hull.
    static bool isSharp(const Segment2& s, const State& state) {
        const Point2 p = s.getSrc(), q = s.getTrg();
        if (!isFinite(p) || !isFinite(q)) return false;
        return std::any_of(state.vTrios.begin(), state.vTrios.end(),
                           [&](const Trio& t) { return t.isEntered(p, q); }) ||
               std::any_of(state.vEdges.begin(), state.vEdges.end(), [&](const Segment2& edge) {
                   const Point2 a = edge.getSrc(), b = edge.getTrg();
                   return sideOf(a, b, p) == 0 && sideOf(a, b, q) == 0 &&
                          std::max(std::min(a, b), std::min(p, q)) < std::min(std::max(a, b), std::max(p, q));
               });
    }
    using Stop = std::pair<mpq_class, mpq_class>;
    static Stop stopAt(const Point2& p) { return {p.x(), p.y()}; }
    static bool isCovered(const Stop& stop, const State& state) {
        const auto isLeft = [&](const Segment2& s) {
            const Stop p = stopAt(s.getSrc()), q = stopAt(s.getTrg());
            return (q.first - p.first) * (stop.second - p.second) >=
                   (q.second - p.second) * (stop.first - p.first);
        };
        return std::any_of(state.vTrios.begin(), state.vTrios.end(), [&](const Trio& t) {
            const auto edges = t.edges();
            return std::all_of(edges.begin(), edges.end(), isLeft);
        });
    }
    // From head to tail, in the direction of the knife, and between its ends where these are in the hull.
    void checkChain(const ConstraintGraph2* pGraph, const Segment2& s, const State& before) const {
        std::vector<Point2*> v;
        pGraph->getPolygonVertices(v);
        for (std::size_t i = 2; i < v.size(); i += 2)
            CHECK(v[i - 1] == v[i]);
        CHECK(pGraph->isOriented());
        CHECK(!isCovered(stopAt(s.getSrc()), before) || *v.front() == s.getSrc());
        CHECK(!isCovered(stopAt(s.getTrg()), before) || *v.back() == s.getTrg());
        if (!input.areIntegers()) return;
        const Vector2 direction(s.getTrg().x() - s.getSrc().x(), s.getTrg().y() - s.getSrc().y());
        for (std::size_t i = 0; i < v.size(); i += 2)
            CHECK((v[i + 1]->x() - v[i]->x()) * direction.x() + (v[i + 1]->y() - v[i]->y()) * direction.y() >
                  0);
    }
    // On integers as small as these, different stops round to different doubles, far from all else. So there
    // is a new vertex for each point that rationals find, and triangles change for these alone.
    void checkStops(const std::vector<Segment2>& vSharp, const State& before) const {
        std::set<Stop> sStops;
        const auto addCommon = [&](const Segment2& s, const Segment2& other) {
            const auto common = oracle::commonPoints(s.getSrc(), s.getTrg(), other.getSrc(), other.getTrg());
            if (!common) return;
            sStops.insert({common->first.x, common->first.y});
            sStops.insert({common->last.x, common->last.y});
        };
        for (const Segment2& s : vSharp) {
            for (const Segment2& edge : before.vEdges)
                addCommon(s, edge);
            for (const Segment2& other : vSharp) // itself, too: that gives its ends
                addCommon(s, other);
        }
        std::erase_if(sStops, [&](const Stop& stop) { return !isCovered(stop, before); });
        for (const Point2& p : before.vPoints)
            sStops.erase(stopAt(p));
        CHECK(kivo.numberOfPoints() == before.vPoints.size() + sStops.size());

        std::vector<Point2*> vNew;
        kivo.getVertexPointers(vNew);
        std::erase_if(vNew, [&](const Point2* pVtx) {
            return std::find(before.vVertices.begin(), before.vVertices.end(), pVtx) !=
                   before.vVertices.end();
        });
        const std::set<Trio> sNow = triosOf(oracle::allTriangles(kivo));
        for (const Trio& t : before.vTrios) {
            const bool bMet = std::any_of(vSharp.begin(), vSharp.end(), [&](const Segment2& s) {
                const auto edges = t.edges();
                return !t.hasBeyondAnEdge(std::array{s.getSrc()}) ||
                       std::any_of(edges.begin(), edges.end(), [&](const Segment2& edge) {
                           return oracle::meeting(s.getSrc(), s.getTrg(), edge.getSrc(), edge.getTrg()) != 0;
                       });
            });
            const bool bEntered = std::any_of(vNew.begin(), vNew.end(), [&](const Point2* pVtx) {
                return oracle::inCircle(t.a, t.b, t.c, *pVtx) > 0;
            });
            CHECK(bMet || bEntered || sNow.count(t) == 1);
        }
    }

    void removeOne() {
        std::vector<Point2*> v;
        kivo.getVertexPointers(v);
        kivo.remove(input.any(v));
    }
    void refine() {
        Zone2* const pZone = input.any(vZones);
        if (pZone == nullptr) return;
        MeshGenParams params(pZone);
        params.minAngleDegree = input.byte() % 31;
        params.maxInsertedPoints = 20;
        kivo.refineAdvanced(&params);
    }
    void splitSegment() {
        std::vector<ConstraintSegment2*> vLeaves;
        if (const Zone2* const pZone = input.any(vZones))
            pZone->getConstraintGraph()->getChildConstraintSegments(vLeaves);
        if (ConstraintSegment2* const pLeaf = input.any(vLeaves)) {
            const Point2 p = *pLeaf->getSrc(), q = *pLeaf->getTrg();
            pLeaf->insertAndSplit({p.x() / 2 + q.x() / 2, p.y() / 2 + q.y() / 2});
        }
    }

    // Of the soups, each rounded once.
    std::vector<double> areas() const {
        std::vector<double> v;
        for (const Zone2* pZone : vZones)
            v.push_back(oracle::areaOf(trianglesOf(pZone, !input.isCoarse())));
        return v;
    }
    void check() {
        if (!kivo.is2D() || input.byte() > 223) return; // constraints may go on pending
        kivo.applyConstraintsAndZones();
        CHECK(kivo.checkValidity(true, "triangles"));
        const std::string fault =
            oracle::findFault(kivo, [&](Point2* p, Point2* q) { return kivo.isConstraint(p, q); });
        if (!fault.empty()) std::fprintf(stderr, "%s\n", fault.c_str());
        CHECK(fault.empty());
        for (const Zone2* pZone : vZones)
            CHECK(!trianglesOf(pZone, !input.isCoarse()).empty() || !input.isCoarse());
    }

    Input& input;
    Kivo_2D kivo;
    std::vector<Zone2*> vZones; // of the soups
    std::vector<ConstraintGraph2*> vGraphs;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pBytes, std::size_t num) {
    Input input(pBytes, num);
    setMessageSink([](MessageChannel, const std::string& text) { heard += text; });
    Soup(input).run();
    setMessageSink({});
    return 0;
}
