#include "fuzz/check.h"

#include "Kivo_2D.h"
#include "tests/oracle/cuts.h"
#include "tests/oracle/triangleSoups.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <set>

// Soups of triangles and knives, into nothing and into what points, constraints, earlier soups and knives
// left. Soups are any triangles, or come from a triangulation and have faults then or not. Whether one is
// imported, and which faults are found, is compared with brute force, and what knives do with rationals. The
// first byte says what coordinates are.

using namespace TESK_KIVO2D;
using oracle::Points;
using oracle::Segments;
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

// What a triangulation is: addresses and coordinates, in its own order.
struct State {
    explicit State(const Kivo_2D& kivo) {
        std::vector<Triangle2*> vTriangles;
        kivo.getVertexPointers(vVertices);
        kivo.getTrianglePointers(vTriangles);
        for (Point2* const pVtx : vVertices) {
            vPoints.push_back(*pVtx);
            vIsConstraint.push_back(kivo.isConstraint(pVtx));
        }
        for (Triangle2* pT : vTriangles) {
            for (int i = 0; i < 3; ++i) {
                vLinks.insert(vLinks.end(), {pT->getCorner(i), pT->getOppositeTriangle(i)});
                vIsConstraint.push_back(kivo.isConstraint(pT, i));
            }
        }
    }
    bool operator==(const State& other) const {
        return vVertices == other.vVertices && vPoints == other.vPoints && vLinks == other.vLinks &&
               vIsConstraint == other.vIsConstraint;
    }

    std::vector<Point2*> vVertices;
    Points vPoints;
    std::vector<const void*> vLinks;
    std::vector<bool> vIsConstraint;
};

// Rounding may turn the border of a zone as wide as that inside out.
Triangles trianglesOf(const Zone2* pZone, bool bMayBeLost) {
    Triangles v;
    try {
        pZone->getTriangles(v);
    } catch (const KivoException&) {
        CHECK(bMayBeLost);
    }
    return v;
}

std::string heard; // since it was cleared

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
            constrain(kivo);
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

    void constrain(Kivo_2D& target) {
        Segments vSegments;
        const std::uint8_t bits = input.byte();
        for (int num = bits % 4; num >= 0; --num)
            vSegments.push_back(knife());
        ConstraintGraph2* const pGraph = target.createConstraint(
            vSegments, bits & 16 ? CIS_CONFORMING_DELAUNAY : CIS_CONSTRAINED_DELAUNAY);
        if (&target == &kivo) vGraphs.push_back({pGraph, vSegments});
    }
    void importAny() {
        Points vCorners;
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
        Points vCorners = someCorners(source);
        for (int num = bits >> 7; num > 0 && !vCorners.empty(); --num)
            spoil(vCorners);
        import(vCorners);
    }
    // There already, so nothing can be wrong with them.
    void importOwn() {
        const Points vCorners = someCorners(kivo);
        CHECK(import(vCorners) || vCorners.empty());
    }
    Points someCorners(const Kivo_2D& source) {
        Points vCorners;
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
    void spoil(Points& vCorners) {
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

    bool import(const Points& vCorners) {
        const State before(kivo);
        const std::vector<double> vAreas = areas();
        const Segments vConstraints = constraints();
        const bool bWhole = !vCorners.empty() && vCorners.size() % 3 == 0;
        std::vector<oracle::SoupFault> vFaults;
        if (bWhole) vFaults = oracle::soupFaults(vCorners, before.vPoints, vConstraints);
        heard.clear();
        Zone2* const pZone = kivo.importTriangles(vCorners, (input.byte() & 1) != 0);
        CHECK((pZone != nullptr) == (bWhole && vFaults.empty()));
        if (pZone == nullptr) {
            if (bWhole) checkReport(vFaults);
            CHECK(State(kivo) == before);
        }
        CHECK(areas() == vAreas);
        if (pZone == nullptr) return false;
        checkImported(pZone, oracle::soupFacts(vCorners), vConstraints);
        const std::set<Point2*> sVertices = vertices();
        for (Point2* const pVtx : before.vVertices)
            CHECK(sVertices.count(pVtx) == 1);
        vZones.push_back(pZone);
        return true;
    }
    // A constraint that crosses edges with other faults may go unnoticed.
    static void checkReport(const std::vector<oracle::SoupFault>& vFaults) {
        std::size_t numCertain = 0, numLines = 0;
        for (const oracle::SoupFault& fault : vFaults)
            if (fault.kind != oracle::SoupFault::CROSSED_EDGE) ++numCertain;
        for (std::size_t at = heard.find("ERROR"); at != std::string::npos; at = heard.find("ERROR", at + 1))
            ++numLines;
        bool bTrue = numCertain >= 100 || numLines > std::max<std::size_t>(numCertain, 1);
        for (const oracle::SoupFault& fault : vFaults)
            if (fault.kind != oracle::SoupFault::CROSSED_EDGE && numCertain < 100)
                bTrue = bTrue && heard.find("ERROR: " + fault.text + "\n") != std::string::npos;
        if (!bTrue) std::fprintf(stderr, "%s", heard.c_str());
        CHECK(bTrue);
    }
    void checkImported(const Zone2* pZone, const oracle::SoupFacts& facts, const Segments& vConstraints) {
        const Triangles vTriangles = trianglesOf(pZone, false);
        std::vector<oracle::Corners> vCorners;
        for (Triangle2* pT : vTriangles) {
            vCorners.push_back(cornersOf(pT));
            for (int i = 0; i < 3; ++i) {
                Point2 *const p = pT->getCorner((i + 1) % 3), *const q = pT->getCorner((i + 2) % 3);
                const oracle::Edge edge = oracle::edgeOf(*p, *q);
                CHECK(kivo.getAdjacentTriangle(p, q) == pT);
                CHECK(kivo.isConstraint(p, q) ==
                      (facts.sBorder.count(edge) == 1 || facts.sNotDelaunay.count(edge) == 1 ||
                       isPartOf(Segment2(*p, *q), vConstraints)));
            }
        }
        std::sort(vCorners.begin(), vCorners.end());
        CHECK(vCorners == facts.vTriangles);
    }
    static oracle::Corners cornersOf(const Triangle2* pT) {
        oracle::Corners corners;
        for (std::size_t i = 0; i < 3; ++i)
            corners[i] = {pT->getCorner(int(i))->x(), pT->getCorner(int(i))->y()};
        std::rotate(corners.begin(), std::min_element(corners.begin(), corners.end()), corners.end());
        return corners;
    }
    static bool isPartOf(const Segment2& edge, const Segments& vSegments) {
        return std::any_of(vSegments.begin(), vSegments.end(), [&](const Segment2& s) {
            const auto common = oracle::commonPoints(edge.getSrc(), edge.getTrg(), s.getSrc(), s.getTrg());
            return common && common->first == rational(edge.getSrc()) &&
                   common->last == rational(edge.getTrg());
        });
    }
    static oracle::RationalPoint rational(const Point2& p) { return {p.x(), p.y()}; }

    Segment2 knife() {
        const Point2 source = input.point();
        return {source, input.point()};
    }
    void cutSeveral() {
        Segments vKnives;
        for (int num = input.byte() % 6; num >= 0; --num)
            vKnives.push_back(knife());
        cut(vKnives);
    }
    void cut(const Segments& vKnives) {
        if (kivo.is2D()) kivo.applyConstraintsAndZones();
        const State before(kivo);
        const std::vector<double> vAreas = areas();
        const oracle::CutWitness witness(kivo, vKnives, vGraphs,
                                         input.isCoarse() ? vZones : std::vector<Zone2*>());
        heard.clear();
        ConstraintGraph2* const pGraph =
            vKnives.size() == 1 ? kivo.cutTriangles(vKnives.front()) : kivo.cutTriangles(vKnives);
        const std::string said = heard;
        const bool bApart = input.areIntegers() &&
                            std::all_of(before.vPoints.begin(), before.vPoints.end(), [](const Point2& p) {
                                return p.x() == std::floor(p.x()) && p.y() == std::floor(p.y());
                            });
        // Where rounding is as coarse as the lattice, stops change places.
        const std::string fault = bApart             ? witness.findFault(pGraph)
                                  : input.isCoarse() ? witness.findLoss(pGraph)
                                                     : "";
        if (!fault.empty()) std::fprintf(stderr, "%s\n", fault.c_str());
        CHECK(fault.empty());
        CHECK(!bApart || said == witness.warnings());
        CHECK(pGraph != nullptr || State(kivo) == before);
        if (pGraph != nullptr) vGraphs.push_back({pGraph, oracle::originalsOf(pGraph)});
        const std::vector<double> vNow = areas();
        for (std::size_t i = 0; i < vAreas.size() && input.isCoarse(); ++i)
            CHECK(std::fabs(vNow[i] - vAreas[i]) < 1e-6);
    }

    void removeOne() {
        std::vector<Point2*> v;
        kivo.getVertexPointers(v);
        kivo.remove(input.any(v));
    }
    void refine() {
        Zone2* const pZone = input.any(vZones);
        if (pZone == nullptr || trianglesOf(pZone, !input.isCoarse()).empty()) return;
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

    std::set<Point2*> vertices() const {
        std::vector<Point2*> v;
        kivo.getVertexPointers(v);
        return {v.begin(), v.end()};
    }
    // The live ones: edges, and what is pending.
    Segments constraints() const {
        Segments v;
        std::set<oracle::Edge> sEdges;
        const auto add = [&](const Point2* p, const Point2* q) {
            if (sEdges.insert(oracle::edgeOf(*p, *q)).second) v.emplace_back(*p, *q);
        };
        for (Triangle2* pT : oracle::allTriangles(kivo))
            for (int i = 0; i < 3; ++i)
                if (kivo.isConstraint(pT, i)) add(pT->getCorner((i + 1) % 3), pT->getCorner((i + 2) % 3));
        std::vector<ConstraintSegment2*> vLeaves;
        for (const oracle::GivenGraph& graph : vGraphs)
            graph.pGraph->getChildConstraintSegments(vLeaves);
        for (const ConstraintSegment2* pLeaf : vLeaves)
            add(pLeaf->getSrc(), pLeaf->getTrg());
        return v;
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
    std::vector<Zone2*> vZones;              // of the soups
    std::vector<oracle::GivenGraph> vGraphs; // but for those of zones, and of edges inside soups
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pBytes, std::size_t num) {
    Input input(pBytes, num);
    setMessageSink([](MessageChannel, const std::string& text) { heard += text; });
    try {
        Soup(input).run();
    } catch (const KivoException&) {
        std::fprintf(stderr, "%s", heard.c_str()); // names the condition
        throw;
    }
    setMessageSink({});
    return 0;
}
