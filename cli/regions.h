#pragma once

#include "cli/constraints.h"

#include <Kivo_2D.h>

#include <string>
#include <unordered_map>
#include <vector>

namespace cli {

// Which region each triangle lies in: the first of those from whose points it can be reached without crossing
// a piece of a segment; cuts and edges of a mesh are no borders. Vertices have the custom indices by which
// the edges name them. Valid while the triangulation and the regions stay as they are. Linear.
class RegionMap {
public:
    RegionMap(const TESK_KIVO2D::Kivo_2D& triangulation, const std::vector<ConstraintEdge>& vEdges,
              const std::vector<Region>& vRegions);

    // Null for a triangle of none.
    const Region* regionOf(const TESK_KIVO2D::Triangle2* pT) const { return vRegionOf[mNumberOf.at(pT)]; }
    // Region points that count for nothing, on standard error, under the name.
    void tellOfIdlePoints(const std::string& name) const;

private:
    struct Idle {
        const Region* pRegion;
        bool bOutside; // else in a region that has an earlier point
    };
    bool isBorder(const TESK_KIVO2D::Triangle2& t, int i) const;
    void fill(TESK_KIVO2D::Triangle2* pStart, const Region& region);

    std::unordered_map<const TESK_KIVO2D::Triangle2*, std::size_t> mNumberOf; // only asked, never listed
    std::vector<const Region*> vRegionOf;                                     // by the number of the triangle
    std::vector<PositionPair> vBorders;                                       // ascending
    std::vector<Idle> vIdle;
};

// The attribute of each of the triangles wanted: that of its region, 0 where there is none. Points that count
// for nothing are told.
std::vector<double> attributesOfTriangles(const RegionMap& regionMap,
                                          const std::vector<TESK_KIVO2D::Triangle2*>& vWanted,
                                          const std::string& name);

} // namespace cli
