#pragma once

#include <Kivo_2D.h>

#include <array>
#include <vector>

namespace cli {

struct WorstTriangle {
    std::array<TESK_KIVO2D::Point2, 3> aCorners;
    double smallestAngle = 0.0;
};

// The figures of triangles, without what dies with the triangulation.
struct Measurement {
    TESK_KIVO2D::ZoneQuality figures;
    std::vector<WorstTriangle> vWorst; // those with the smallest angles, smallest first
};

// Of a zone, or of all triangles where it is null. Prints nothing.
Measurement measure(TESK_KIVO2D::Kivo_2D& triangulation, const TESK_KIVO2D::Zone2* pZone);

} // namespace cli
