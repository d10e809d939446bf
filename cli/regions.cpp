#include "cli/regions.h"

#include <algorithm>
#include <cstdio>

namespace cli {

namespace {

using TESK_KIVO2D::Kivo_2D;
using TESK_KIVO2D::Triangle2;

} // namespace

RegionMap::RegionMap(const Kivo_2D& triangulation, const std::vector<ConstraintEdge>& vEdges,
                     const std::vector<Region>& vRegions) {
    for (const ConstraintEdge& edge : vEdges) {
        if (edge.bOfSegment) vBorders.push_back(pairOf(edge));
    }
    std::sort(vBorders.begin(), vBorders.end());
    std::vector<Triangle2*> vTriangles;
    triangulation.getTrianglePointers(vTriangles);
    mNumberOf.reserve(vTriangles.size());
    for (const Triangle2* pT : vTriangles)
        mNumberOf.emplace(pT, mNumberOf.size());
    vRegionOf.assign(vTriangles.size(), nullptr);
    for (const Region& region : vRegions) {
        Triangle2* const pT = triangulation.locate(region.point);
        if (pT != nullptr && regionOf(pT) == nullptr) {
            fill(pT, region);
        } else {
            vIdle.push_back({&region, pT == nullptr});
        }
    }
}

bool RegionMap::isBorder(const Triangle2& t, int i) const {
    const PositionPair edge =
        pairOf(t.getCorner(Triangle2::incIndexBy1(i)), t.getCorner(Triangle2::incIndexBy2(i)));
    return std::binary_search(vBorders.begin(), vBorders.end(), edge);
}

void RegionMap::fill(Triangle2* pStart, const Region& region) {
    std::vector<Triangle2*> vStack{pStart};
    vRegionOf[mNumberOf.at(pStart)] = &region;
    while (!vStack.empty()) {
        Triangle2* const pT = vStack.back();
        vStack.pop_back();
        for (int i = 0; i < 3; ++i) {
            Triangle2* const pNext = pT->getOppositeTriangle(i);
            if (pNext == nullptr) continue;
            const Region*& pRegionOfNext = vRegionOf[mNumberOf.at(pNext)];
            if (pRegionOfNext != nullptr || isBorder(*pT, i)) continue;
            pRegionOfNext = &region;
            vStack.push_back(pNext);
        }
    }
}

void RegionMap::tellOfIdlePoints(const std::string& name) const {
    for (const Idle& idle : vIdle) {
        std::fprintf(stderr, "kivo2d: %s: the region point (%.17g, %.17g) %s\n", name.c_str(),
                     idle.pRegion->point.x(), idle.pRegion->point.y(),
                     idle.bOutside ? "lies in no triangle" : "lies in a region that has an earlier one");
    }
}

std::vector<double> attributesOfTriangles(const RegionMap& regionMap, const std::vector<Triangle2*>& vWanted,
                                          const std::string& name) {
    regionMap.tellOfIdlePoints(name);
    std::vector<double> vAttributes;
    vAttributes.reserve(vWanted.size());
    for (const Triangle2* pT : vWanted) {
        const Region* const pRegion = regionMap.regionOf(pT);
        vAttributes.push_back(pRegion == nullptr ? 0.0 : pRegion->attribute);
    }
    return vAttributes;
}

} // namespace cli
