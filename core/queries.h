#pragma once

#include "Triangle2.h"

#include <vector>

namespace TESK_KIVO2D {

// Appends the triangles around the vertex counter-clockwise; around a hull vertex from one end of its fan to
// the other.
void getIncidentTriangles(Point2* pVtx, std::vector<Triangle2*>& vIncidentT);

// The triangle in which p1 directly follows p0, or null.
Triangle2* getAdjacentTriangle(Point2* p0, Point2* p1);

} // namespace TESK_KIVO2D
