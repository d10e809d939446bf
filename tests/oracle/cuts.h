#pragma once

#include "tests/oracle/constraints.h"
#include "tests/oracle/exact.h"
#include "tests/oracle/zones.h"

#include <array>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

// The laws of cutting, checked from outside: where knives meet a triangulation is found by brute force, in
// rationals.
namespace oracle {

// What a graph was made of, in its directions.
Segments originalsOf(TESK_KIVO2D::ConstraintGraph2* pGraph);

// Remembers a triangulation before knives cut it, and compares it with what it is afterwards.
class CutWitness {
public:
    // The graphs must be all that the triangulation has, apart from those of the zones. All must be applied.
    CutWitness(const TESK_KIVO2D::Kivo_2D& kivo, const Segments& vKnives,
               const std::vector<GivenGraph>& vGraphs, const std::vector<TESK_KIVO2D::Zone2*>& vZones = {});

    CutWitness(const CutWitness&) = delete;
    CutWitness& operator=(const CutWitness&) = delete;

    // The warnings that the call must give.
    std::string warnings() const;

    // The first of these laws that is broken, in words, or an empty text:
    //   - there is no graph exactly when no knife is left;
    //   - all vertices are still there, where they were;
    //   - each stop has a vertex at the exact point rounded to nearest, or hardly further away; on the hull:
    //     at most one step further in each coordinate, on the hull edge or beyond it;
    //   - the originals of the graph join successive stops, in the order and direction of the knives;
    //   - constraint segments that are met pass through the vertices at the stops on them;
    //   - triangles that are more than slivers belong to a zone exactly when their centre did.
    // Where stops are no more than some units in the last place apart from each other, or from vertices and
    // edges that they do not lie on, one may be taken for the other.
    std::string findLoss(TESK_KIVO2D::ConstraintGraph2* pGraph) const { return findFirst(pGraph, false); }

    // The same where there is no such thing, and:
    //   - each new vertex is at a stop;
    //   - triangles that no knife meets, and whose circles hold no new vertex, stay as they were;
    //   - constraint segments that no knife meets stay;
    //   - corners of the hull stay on the hull, and what is new there was on it but for rounding.
    std::string findFault(TESK_KIVO2D::ConstraintGraph2* pGraph) const { return findFirst(pGraph, true); }

private:
    using Point2 = TESK_KIVO2D::Point2;
    using Corners = std::array<Point2*, 3>; // counter-clockwise, the smallest address first
    using Places = std::map<std::pair<double, double>, Point2*>;
    using PointPair = std::pair<Point2*, Point2*>;

    struct Stop {
        RationalPoint at;
        PointPair hullEdge = {nullptr, nullptr}; // that it lies on, with the triangulation on the left
    };
    struct Knife {
        Point2 source, target;
        mpq_class first, last; // the part of it in the hull
        std::vector<Stop> vStops;

        mpq_class parameterOf(const RationalPoint& p) const;
    };
    using Membership = std::map<Corners, std::vector<bool>>; // of all triangles in the zones

    std::string findFirst(TESK_KIVO2D::ConstraintGraph2* pGraph, bool bApart) const;
    void sortOut(const Segments& vGiven);
    void addStops(Knife& knife) const;
    static bool meets(const Knife& knife, const Corners& corners);

    std::vector<Point2*> verticesAt(const Stop& stop, const Places& mPlaces, bool bApart) const;
    void checkVertices(const std::vector<Point2*>& vNew, const Places& mPlaces, bool bApart) const;
    void checkPieces(TESK_KIVO2D::ConstraintGraph2* pGraph, const Places& mPlaces) const;
    static bool isShort(const Knife& knife);
    static bool isOn(const Knife& knife, const Point2& p);
    void checkReach(TESK_KIVO2D::ConstraintGraph2* pGraph, const Places& mPlaces) const;
    void checkLeaves(TESK_KIVO2D::ConstraintGraph2* pGraph, const Places& mPlaces, bool bApart) const;
    Membership membership() const;
    void checkZones() const;
    void checkOldTriangles(const std::vector<Point2*>& vNew) const;
    void checkHull() const;

    const TESK_KIVO2D::Kivo_2D& kivo;
    std::size_t numNotFinite = 0, numNoLength = 0, numApart = 0;
    bool bNoneGiven, bWas2D;
    std::vector<Point2*> vVertices, vHull;
    std::map<Point2*, Point2> mVertices; // and where they were
    std::vector<Corners> vTriangles;
    std::vector<PointPair> vEdges, vHullEdges;
    std::vector<Knife> vKnives;
    std::set<TESK_KIVO2D::ConstraintSegment2*> sLeaves;
    std::vector<TESK_KIVO2D::Zone2*> vZones;
    Membership mBefore;
};

} // namespace oracle
