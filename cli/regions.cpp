#include "cli/regions.h"

#include <cstdio>
#include <unordered_map>

namespace cli {

namespace {

using TESK_KIVO2D::Kivo_2D;
using TESK_KIVO2D::Triangle2;

class RegionFill {
public:
    explicit RegionFill(const Kivo_2D& triangulation_) : triangulation(triangulation_) {
        std::vector<Triangle2*> vTriangles;
        triangulation.getTrianglePointers(vTriangles);
        mNumberOf.reserve(vTriangles.size());
        for (const Triangle2* pT : vTriangles)
            mNumberOf.emplace(pT, mNumberOf.size());
        vAttributes.assign(vTriangles.size(), 0.0);
        vReached.assign(vTriangles.size(), false);
    }

    bool isReached(const Triangle2* pT) const { return vReached[mNumberOf.at(pT)]; }

    void fill(Triangle2* pStart, double attribute) {
        std::vector<Triangle2*> vStack;
        reach(pStart, attribute, vStack);
        while (!vStack.empty()) {
            Triangle2* const pT = vStack.back();
            vStack.pop_back();
            for (int i = 0; i < 3; ++i) {
                Triangle2* const pNext = pT->getOppositeTriangle(i);
                if (pNext == nullptr || isReached(pNext) || triangulation.isConstraint(pT, i)) continue;
                reach(pNext, attribute, vStack);
            }
        }
    }

    double getAttribute(const Triangle2* pT) const { return vAttributes[mNumberOf.at(pT)]; }

private:
    void reach(Triangle2* pT, double attribute, std::vector<Triangle2*>& vStack) {
        const std::size_t number = mNumberOf.at(pT);
        vReached[number] = true;
        vAttributes[number] = attribute;
        vStack.push_back(pT);
    }

    const Kivo_2D& triangulation;
    std::unordered_map<const Triangle2*, std::size_t> mNumberOf; // only asked, never listed
    std::vector<double> vAttributes;
    std::vector<bool> vReached;
};

} // namespace

std::vector<double> attributesOfTriangles(const Kivo_2D& triangulation,
                                          const std::vector<Triangle2*>& vWanted,
                                          const std::vector<Region>& vRegions, const std::string& name) {
    RegionFill regionFill(triangulation);
    for (const Region& region : vRegions) {
        Triangle2* const pT = triangulation.locate(region.point);
        if (pT != nullptr && !regionFill.isReached(pT)) {
            regionFill.fill(pT, region.attribute);
            continue;
        }
        std::fprintf(stderr, "kivo2d: %s: the region point (%.17g, %.17g) %s\n", name.c_str(),
                     region.point.x(), region.point.y(),
                     pT == nullptr ? "lies in no triangle" : "lies in a region that has an earlier one");
    }
    std::vector<double> vAttributes;
    vAttributes.reserve(vWanted.size());
    for (const Triangle2* pT : vWanted)
        vAttributes.push_back(regionFill.getAttribute(pT));
    return vAttributes;
}

} // namespace cli
