#pragma once

#include "tests/oracle/constraints.h"
#include "tests/oracle/zones.h"

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

// The laws of refinement, checked from outside: through the public interface, by brute force.
namespace oracle {

// What is measured of a triangle, in extended precision.
struct Measures {
    long double minAngle, maxAngle; // degrees
    long double shortest, longest;  // edges
    long double area;
};
Measures measuresOf(const TESK_KIVO2D::Triangle2* pT);

// Remembers a triangulation before one of its zones is refined, and compares it with what it is afterwards.
class MeshWitness {
public:
    // The graphs must be all that the triangulation has, apart from those of the zone. All must be applied.
    MeshWitness(const TESK_KIVO2D::Kivo_2D& kivo, const TESK_KIVO2D::Zone2* pZone, Graphs vGraphs);

    // The first of these laws that is broken, in words, or an empty text. However the run ended:
    //   - all vertices are still there, where they were;
    //   - constraints are kept, and the triangulation is Delaunay but for them (see findConstraintFault);
    //   - the zone has the area that it had, to 1e-9;
    //   - each new vertex is one of the zone; those that triangles outside have lie on constraints;
    //   - a triangle outside without a new vertex was there before;
    //   - the report knows how many vertices were inserted, in the interior and on constraints.
    std::string findLoss() const;

    // The same, and the laws of a run that was not abandoned:
    //   - the report knows the number of triangles, and how many of them break which rule;
    //   - it names only obstacles that there are: small angles, the edge limit, segments not to be split;
    //   - where edges may be split every rule holds, the angles to 1e-4 degrees, but for triangles that touch
    //     both sides of a small corner, whose neighbours may grow too fast. Beside parts of a domain that are
    //     as thin as doubles are dense, some are left for arithmetic's sake.
    std::string findFault(const TESK_KIVO2D::MeshGenParams& params) const;

    // Whether two constraints enclose less than 60 degrees of the zone.
    bool hasSmallAngle() const { return !vSmallCorners.empty(); }
    // The triangles outside whose corners are all old.
    std::size_t numUntouched() const;

private:
    using Original = TESK_KIVO2D::ConstraintSegment2*; // as it was given
    using Lines = std::map<TESK_KIVO2D::Point2*, std::set<Original>>;

    void findSmallCorners(const Triangles& vTriangles);
    bool isAtSmallCorner(const TESK_KIVO2D::Triangle2* pT, const Lines& mOn) const;
    bool isBesideSmallCorner(const TESK_KIVO2D::Triangle2* pT, const Lines& mOn) const;
    Lines linesThroughVertices() const;
    void checkOutside() const;
    void checkCounts() const;
    void checkRules(const TESK_KIVO2D::MeshGenParams& params) const;
    bool isOld(TESK_KIVO2D::Point2* p) const { return mVertices.count(p) != 0; }

    const TESK_KIVO2D::Kivo_2D& kivo;
    const TESK_KIVO2D::Zone2* pZone;
    std::vector<GivenGraph> vGiven;
    std::map<TESK_KIVO2D::Point2*, TESK_KIVO2D::Point2> mVertices;
    std::set<std::vector<TESK_KIVO2D::Point2*>> sOutside; // corners, the smallest address first
    std::set<Original> sOriginals;
    std::vector<std::pair<Original, Original>> vSmallCorners;
    double area, areaError;
    bool bThin = false;
};

} // namespace oracle
