#pragma once

#include "tests/oracle/meshes.h"
#include "tests/support/zoned.h"

#include <cmath>
#include <string>

// What tests of meshing share: domains to mesh, and runs that are checked against the state before.
namespace meshed {

using namespace zoned;
using oracle::MeshWitness;

inline constexpr double pi = 3.14159265358979323846;

// Angles between the edges of a ring are between 60 and 300 degrees, so there is no small one on either side.
inline bool isBlunt(const Segments& vRing) {
    for (std::size_t i = 0; i < vRing.size(); ++i) {
        const Segment2 &s = vRing[i], &t = vRing[(i + 1) % vRing.size()];
        const double ax = s.getSrc().x() - s.getTrg().x(), ay = s.getSrc().y() - s.getTrg().y();
        const double bx = t.getTrg().x() - t.getSrc().x(), by = t.getTrg().y() - t.getSrc().y();
        if (std::abs(std::atan2(ax * by - ay * bx, ax * bx + ay * by)) < pi / 3) return false;
    }
    return true;
}
// A ring with no small angle, of which copies of up to 0.5 of its size about the centre lie inside.
inline Segments bluntStar(doubles::Rng& rng, int numCorners, const Point2& center, double radius) {
    for (double low = 0.55;; low += 0.01) {
        Points vCorners;
        for (int i = 0; i < numCorners; ++i) {
            const double angle = 2 * pi * (i + doubles::uniform(rng, 0, 0.3)) / numCorners;
            const double r = radius * doubles::uniform(rng, std::min(low, 1.0), 1);
            vCorners.emplace_back(center.x() + r * std::cos(angle), center.y() + r * std::sin(angle));
        }
        const Segments vRing = ringOf(vCorners);
        if (isBlunt(vRing)) return vRing;
    }
}
// A ring, holes in it, islands in these, and so on; the rings as one graph, all counter-clockwise.
inline Segments nestedStars(doubles::Rng& rng, int numCorners, const Point2& center, double radius,
                            int depth) {
    Segments v;
    for (; depth >= 0; --depth, radius *= 0.5)
        v = joined(v, bluntStar(rng, numCorners, center, radius));
    return v;
}

// Vertices of a shaken square lattice, and the ring round each of its cells.
struct Cells {
    Cells(doubles::Rng& rng, int itsNum, double shake) : num(itsNum) {
        for (int i = 0; i <= num; ++i)
            for (int j = 0; j <= num; ++j)
                vPoints.emplace_back(i + doubles::uniform(rng, -shake, shake),
                                     j + doubles::uniform(rng, -shake, shake));
    }
    Segments ring(int i, int j) const {
        const auto at = [&](int x, int y) { return vPoints[std::size_t(x * (num + 1) + y)]; };
        return ringOf({at(i, j), at(i + 1, j), at(i + 1, j + 1), at(i, j + 1)});
    }
    int num;
    Points vPoints;
};

// Only angles count, as in most tests.
inline MeshGenParams onlyAngles(Zone2* pZone, double minAngleDegree) {
    MeshGenParams params(pZone);
    params.minAngleDegree = minAngleDegree;
    params.minEdgeLength = 0;
    return params;
}

inline std::string said(Kivo_2D& kivo, MeshGenParams& params) {
    const CapturedMessages captured;
    kivo.refineAdvanced(&params);
    return captured.output() + captured.error();
}

// Refines and demands all laws (see oracle::MeshWitness). Returns what was said.
inline std::string expectMeshed(Kivo_2D& kivo, MeshGenParams& params, const oracle::Graphs& vGraphs) {
    const MeshWitness witness(kivo, params.pZone, vGraphs);
    std::string messages = said(kivo, params);
    EXPECT_EQ("", witness.findFault(params)) << messages;
    const CapturedMessages captured;
    EXPECT_TRUE(kivo.checkValidity(true, "meshed"));
    return messages;
}

} // namespace meshed
