#pragma once

#include "cli/Domain.h"

#include <Kivo_2D.h>

#include <string>
#include <vector>

namespace cli {

// The zone of exactly the triangles that the input has from a mesh file. vHandles has the vertex of each
// point of the table, and the triangulation holds nothing else. Edges that are not there become constraints.
// Throws `FileError` under the name unless the triangles lie beside each other, edge to edge, and have areas.
TESK_KIVO2D::Zone2* createZoneOfMesh(TESK_KIVO2D::Kivo_2D& triangulation, const Input& input,
                                     const std::vector<TESK_KIVO2D::Point2*>& vHandles,
                                     const std::string& name);

} // namespace cli
