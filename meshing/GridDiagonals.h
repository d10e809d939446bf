#pragma once

#include "Triangle2.h"
#include "constraints/ConstraintMgr.h"
#include "kernel/TeskTest.h"
#include "meshing/GridFrame.h"
#include "meshing/TriangleMarks.h"

#include <vector>

namespace TESK_KIVO2D {

// Turns the diagonals of a grid's squares so that all run the same way, from the lower left to the upper
// right in the frame of the grid. (Which one a square has got depends on the order of insertion.) Squares
// whose corners are not exactly on a circle stay as they are. The marks are those of the triangles.
void turnDiagonals(const std::vector<Triangle2*>& vTriangles, const GridFrame& frame, TriangleMarks& marks,
                   TeskTest& tests);

} // namespace TESK_KIVO2D
