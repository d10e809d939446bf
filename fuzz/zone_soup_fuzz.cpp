#include "fuzz/check.h"

#include "Kivo_2D.h"
#include "tests/oracle/bruteForce.h"
#include "tests/oracle/zones.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>

// Zones of all kinds over points and segments on a small grid, made, combined, peeled, converted and deleted
// in any order, while more is inserted, refined, split and moved onto grids. Each zone is compared with the
// set that the slow means find, and what it says of its border, its vertices and its arrays with its
// triangles.

using namespace TESK_KIVO2D;
using oracle::Triangles;

namespace {

constexpr int MAX_OPERATIONS = 40;
constexpr std::size_t MANY_POINTS = 400;

class Input : public Bytes {
public:
    Input(const std::uint8_t* pBytes, std::size_t num) : Bytes(pBytes, num) {
        const std::uint8_t mode = byte();
        unit = mode & 1 ? 1 : 0.1; // tenths leave their lines by rounding
        offset = mode & 2 ? 4e6 : 0;
    }
    Point2 point() {
        const std::uint8_t xy = byte();
        return {(xy & 15) * unit + offset, (xy >> 4) * unit};
    }
    // From a hundredth of the grid to more than all of it.
    double size() {
        const std::uint8_t bits = byte();
        return unit * std::array{0.01, 0.3, 0.5, 1.0, 1.5, 2.0, 5.0, 40.0}[bits & 7];
    }

private:
    double unit, offset;
};

struct Peel : UserPredicateT {
    explicit Peel(std::uint8_t itsBits) : bits(itsBits) {}
    bool operator()(const Triangle2*) override { return (bits >> (num++ % 8) & 1) != 0; }
    std::uint8_t bits;
    std::size_t num = 0;
};

Triangles asSet(std::vector<Triangle2*> v) {
    std::sort(v.begin(), v.end(), std::less<>());
    v.erase(std::unique(v.begin(), v.end()), v.end());
    return v;
}
Triangles trianglesOf(const Zone2* pZone) {
    std::vector<Triangle2*> v;
    pZone->getTriangles(v);
    CHECK(pZone->getZoneLocation() == ZL_GROW || v == asSet(v));
    return asSet(v);
}

std::string heard; // since it was cleared

class Soup {
public:
    void run(Input& input) {
        for (int i = 0; i < MAX_OPERATIONS && !input.atEnd() && kivo.numberOfPoints() < MANY_POINTS; ++i) {
            step(input);
            if (kivo.is2D() && !vZones.empty()) checkQueries(vZones[std::size_t(i) % vZones.size()]);
        }
        if (!kivo.is2D()) return;
        for (const Zone2* pZone : vZones)
            checkQueries(pZone);
        kivo.applyConstraintsAndZones();
        CHECK(kivo.checkValidity(true, "zones"));
    }

private:
    void step(Input& input) {
        const int operation = input.byte() % 14;
        switch (operation) {
        case 0:
            for (int num = input.byte() % 8; num >= 0; --num)
                kivo.insert(input.point());
            break;
        case 1:
        case 2:
            addGraph(input, operation == 1);
            break;
        case 3:
            keep(make(input));
            break;
        case 4:
            combine(input);
            break;
        case 5:
            peelOrConvert(input);
            break;
        case 6:
            makeOfTriangles(input);
            break;
        case 7:
        case 8:
            makeEnclosed(input, operation == 7);
            break;
        case 9:
            splitSegment(input);
            break;
        case 10:
            kivo.insert(input.point());
            break;
        case 11:
            unify(input);
            break;
        case 12:
            refineAndSplit(input);
            break;
        default:
            if (Zone2* const pZone = input.any(vZones)) {
                vZones.erase(std::find(vZones.begin(), vZones.end(), pZone));
                kivo.deleteZone(pZone);
            }
        }
    }

    void addGraph(Input& input, bool bRing) {
        std::vector<Segment2> vSegments;
        const bool bOriented = (input.byte() & 1) != 0;
        const Point2 first = input.point();
        Point2 p = first;
        for (int num = input.byte() % 8; num >= 0; --num) {
            const Point2 q = num == 0 && bRing ? first : input.point();
            vSegments.emplace_back(p, q);
            p = bRing || num % 3 != 0 ? q : input.point();
        }
        vGraphs.push_back(kivo.createConstraint(vSegments, CIS_CONSTRAINED_DELAUNAY, bOriented));
    }

    Zone2* make(Input& input) {
        ConstraintGraph2* const pGraph = input.any(vGraphs);
        const ZoneLocation location =
            std::array{ZL_GLOBAL, ZL_INSIDE, ZL_OUTSIDE, ZL_BOUNDED, ZL_GROW}[input.byte() % 5];
        if (location == ZL_GLOBAL) return kivo.createZone(static_cast<ConstraintGraph2*>(nullptr), location);
        if (pGraph == nullptr) return nullptr;
        if (location == ZL_GROW) return kivo.createZone(vGraphs, location, input.point());
        std::vector<ConstraintGraph2*> vTwo = {pGraph, input.any(vGraphs)};
        return location == ZL_BOUNDED ? kivo.createZone(pGraph, location) : kivo.createZone(vTwo, location);
    }

    void combine(Input& input) {
        Zone2 *const p0 = input.any(vZones), *const p1 = input.any(vZones);
        if (p0 == nullptr) return;
        constexpr std::array combiners = {zoneUnion, zoneIntersection, zoneDifference,
                                          zoneSymmetricDifference};
        const std::size_t which = input.byte() % combiners.size();
        Zone2* const pZone = combiners[which](p0, p1);
        CHECK((pZone != nullptr) == kivo.is2D());
        Triangles v0, v1, vResult, vExpected;
        if (pZone == nullptr || !evaluate(pZone, vResult)) return keep(pZone);
        keep(pZone);
        if (vResult.empty() && (hasLostOperand(p0) || hasLostOperand(p1))) return;
        CHECK(evaluate(p0, v0) && evaluate(p1, v1));
        for (Triangle2* pT : oracle::allTriangles(kivo)) {
            const bool b0 = std::binary_search(v0.begin(), v0.end(), pT, std::less<>());
            const bool b1 = std::binary_search(v1.begin(), v1.end(), pT, std::less<>());
            if (std::array{b0 || b1, b0 && b1, b0 && !b1, b0 != b1}[which]) vExpected.push_back(pT);
        }
        CHECK(vResult == vExpected);
    }
    // Of the zone or of what it is made of.
    static bool hasLostOperand(const Zone2* pZone) {
        heard.clear();
        Triangles v;
        evaluate(pZone, v);
        return heard.find("deleted") != std::string::npos;
    }

    void peelOrConvert(Input& input) {
        if (kivo.is2D()) kivo.applyConstraintsAndZones(); // what is pending may change the zone
        Zone2* const pZone = input.any(vZones);
        Triangles vBefore;
        if (pZone == nullptr || !evaluate(pZone, vBefore)) return;
        if (input.byte() % 2 == 0) {
            Peel peel(input.byte());
            Zone2* const pRest = peelOffIf(pZone, &peel, false);
            if (pRest != nullptr) {
                const Triangles vRest = trianglesOf(pRest);
                CHECK(
                    std::includes(vBefore.begin(), vBefore.end(), vRest.begin(), vRest.end(), std::less<>()));
            }
            keep(pRest);
        } else {
            Zone2* const pBounded = pZone->convertToBoundedZone();
            CHECK((pBounded == nullptr) == vBefore.empty());
            CHECK(vBefore.empty() || trianglesOf(pBounded) == vBefore);
            if (pBounded != pZone) keep(pBounded);
        }
        CHECK(trianglesOf(pZone) == vBefore);
    }

    void makeOfTriangles(Input& input) {
        Triangles vGiven;
        const std::uint8_t bits = input.byte();
        std::size_t i = input.byte();
        for (Triangle2* pT : oracle::allTriangles(kivo))
            if (++i; (bits >> (i * i % 11 % 8) & 1) != 0) vGiven.push_back(pT);
        heard.clear();
        Zone2* const pZone = kivo.createZone(vGiven);
        const bool bAll = heard.find("almost degenerate") == std::string::npos;
        CHECK(vGiven.empty() || !bAll || trianglesOf(pZone) == vGiven);
        keep(pZone);
    }

    void makeEnclosed(Input& input, bool bParity) {
        if (!kivo.is2D()) return;
        for (const Zone2* pZone : vZones)
            checkQueries(pZone);
        kivo.applyConstraintsAndZones();
        std::vector<ConstraintGraph2*> vSome;
        const std::uint8_t bits = input.byte();
        for (std::size_t i = 0; i < vGraphs.size(); ++i)
            if ((bits >> i % 8 & 1) != 0) vSome.push_back(vGraphs[i]);
        Triangles vExpected = bParity ? oracle::oddlyEnclosed(kivo, vSome) : oracle::enclosed(kivo, vSome);
        std::vector<Point2> vHoles;
        if (input.byte() % 2 != 0) {
            const Point2 p = input.point();
            vHoles = {{p.x() + 0.017, p.y() + 0.031}};
            if (Triangle2* const pT = kivo.locate(vHoles[0])) {
                Triangles vRest;
                const Triangles vHole = oracle::reachedFrom(pT, vSome);
                std::set_difference(vExpected.begin(), vExpected.end(), vHole.begin(), vHole.end(),
                                    std::back_inserter(vRest), std::less<>());
                vExpected = vRest;
            }
        }
        Zone2* const pZone =
            bParity ? kivo.createParityZone(vSome, vHoles) : kivo.createEnclosedZone(vSome, vHoles);
        CHECK((pZone == nullptr) == vExpected.empty());
        CHECK(vExpected.empty() || trianglesOf(pZone) == vExpected);
        keep(pZone);
    }

    // Beside its line, too.
    void splitSegment(Input& input) {
        ConstraintGraph2* const pGraph = input.any(vGraphs);
        std::vector<ConstraintSegment2*> vLeaves;
        if (pGraph != nullptr && kivo.is2D()) pGraph->getChildConstraintSegments(vLeaves);
        if (ConstraintSegment2* const pLeaf = input.any(vLeaves)) pLeaf->insertAndSplit(input.point());
    }

    // A second time nothing may change; and no vertex comes or goes but by falling onto another.
    void unify(Input& input) {
        Zone2* const pZone = input.any(vZones);
        if (pZone == nullptr || !kivo.is2D()) return;
        kivo.applyConstraintsAndZones();
        Triangles v;
        if (!evaluate(pZone, v)) return;
        const double width = input.size();
        const std::size_t numPoints = kivo.numberOfPoints(), num = pZone->unifyGrid(width);
        CHECK(kivo.numberOfPoints() <= numPoints);
        checkAll();
        if (!evaluate(pZone, v) || v.empty()) return; // a start point that the border has passed
        const auto before = placesOfCorners();
        CHECK(pZone->unifyGrid(width) == num);
        CHECK(placesOfCorners() == before);
        std::vector<Point2*> vVertices;
        pZone->getVertices(vVertices);
        const auto isBeside = [&](const Point2* p) {
            return std::nearbyint(p->x() / width) * width != p->x() ||
                   std::nearbyint(p->y() / width) * width != p->y();
        };
        CHECK(num == std::size_t(std::count_if(vVertices.begin(), vVertices.end(), isBeside)));
    }

    void refineAndSplit(Input& input) {
        if (!kivo.is2D()) return;
        kivo.applyConstraintsAndZones();
        Zone2* const pZone = input.any(vZones);
        Triangles v;
        if (pZone == nullptr || !evaluate(pZone, v) || v.empty()) return;
        const ZoneLocation location = pZone->getZoneLocation();
        if (location == ZL_INSIDE || location == ZL_BOUNDED) {
            MeshGenParams params(pZone);
            params.minAngleDegree = 20;
            params.minEdgeLength = input.size();
            params.maxInsertedPoints = 30;
            kivo.refineAdvanced(&params);
        }
        ConstraintGraph2* const pGraph = input.any(vGraphs);
        std::vector<ConstraintSegment2*> vLeaves;
        if (pGraph != nullptr) pGraph->getChildConstraintSegments(vLeaves);
        if (ConstraintSegment2* const pLeaf = input.any(vLeaves)) pLeaf->splitAndRemovePrev(input.point());
        checkAll();
    }

    // Sound, Delaunay but for the constraints, and all of these are edges.
    void checkAll() {
        CHECK(kivo.checkValidity(true, "zones"));
        const std::string fault =
            oracle::findFault(kivo, [&](Point2* p, Point2* q) { return kivo.isConstraint(p, q); });
        CHECK(fault.empty());
        for (const ConstraintGraph2* pGraph : vGraphs)
            CHECK(pGraph == nullptr || isApplied(pGraph));
    }

    std::vector<std::pair<const void*, std::pair<double, double>>> placesOfCorners() const {
        std::vector<Triangle2*> v;
        kivo.getTrianglePointers(v);
        std::vector<std::pair<const void*, std::pair<double, double>>> vPlaces;
        for (const Triangle2* pT : v)
            for (int i = 0; i < 3; ++i)
                vPlaces.push_back({pT->getCorner(i), {pT->getCorner(i)->x(), pT->getCorner(i)->y()}});
        return vPlaces;
    }

    void keep(Zone2* pZone) {
        if (pZone != nullptr) vZones.push_back(pZone);
    }

    // False where an inside zone has no edge to start from.
    static bool evaluate(const Zone2* pZone, Triangles& v) {
        try {
            v = trianglesOf(pZone);
            return true;
        } catch (const KivoException&) {
            return false;
        }
    }

    void checkQueries(const Zone2* pZone) const {
        Triangles v;
        if (!evaluate(pZone, v)) return;
        std::vector<Edge2> vEdges, vRings;
        pZone->getBorderEdges(vEdges);
        pZone->getBoundaryEdges(vRings);
        std::vector<oracle::VertexPair> vPairs;
        for (const Edge2& edge : vEdges)
            vPairs.emplace_back(edge.getSrc(), edge.getTrg());
        std::sort(vPairs.begin(), vPairs.end());
        CHECK(vPairs == oracle::borderOf(v));
        CHECK(vRings.size() == vEdges.size());
        for (std::size_t i = 0, start = 0; i < vRings.size(); ++i) {
            const bool bEnd = vRings[i].getTrg() == vRings[start].getSrc();
            CHECK(bEnd || (i + 1 < vRings.size() && vRings[i].getTrg() == vRings[i + 1].getSrc()));
            if (bEnd) start = i + 1;
        }
        MeshArrays arrays;
        kivo.getMeshArrays(arrays, pZone);
        CHECK(arrays.vCorners.size() == 3 * v.size());
        checkRule(pZone, v);
    }

    bool isApplied(const ConstraintGraph2* pGraph) const {
        std::vector<Point2*> v;
        pGraph->getPolygonVertices(v);
        for (std::size_t i = 0; i < v.size(); i += 2) {
            if (kivo.getAdjacentTriangle(v[i], v[i + 1]) == nullptr &&
                kivo.getAdjacentTriangle(v[i + 1], v[i]) == nullptr)
                return false;
        }
        return true;
    }

    // A ring encloses by parity, whichever way rounded cuts have turned it; so does a border of several
    // rings. Of other graphs inside and outside are the sides of the leaves.
    void checkRule(const Zone2* pZone, const Triangles& v) const {
        const ZoneLocation location = pZone->getZoneLocation();
        if (location != ZL_INSIDE && location != ZL_OUTSIDE && location != ZL_BOUNDED) return;
        std::vector<ConstraintGraph2*> vOwn;
        pZone->getConstraintGraphs(vOwn);
        if (vOwn.front() != vOwn.back()) return; // one may be a ring turned round
        if (!isApplied(vOwn.front())) return;    // an open ring has no inside
        const Triangles vOdd = oracle::oddlyEnclosed(kivo, {vOwn.front()});
        if (vOwn.front()->isPolygon()) {
            CHECK(location == ZL_OUTSIDE ? v.size() + vOdd.size() == kivo.numberOfTriangles() : v == vOdd);
            return;
        }
        const Triangles vSide =
            oracle::reachedFrom(location == ZL_OUTSIDE ? oracle::RIGHT : oracle::LEFT, kivo, vOwn);
        CHECK(v == vSide || (location == ZL_BOUNDED && v == vOdd));
    }

    Kivo_2D kivo;
    std::vector<ConstraintGraph2*> vGraphs;
    std::vector<Zone2*> vZones;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pBytes, std::size_t num) {
    Input input(pBytes, num);
    Soup soup;
    setMessageSink([](MessageChannel, const std::string& text) { heard += text; });
    soup.run(input);
    setMessageSink({});
    return 0;
}
