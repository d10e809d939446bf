#pragma once

#include "cli/Domain.h"
#include "cli/insertion.h"
#include "cli/report.h"

#include <Kivo_2D.h>

#include <string>

namespace cli {

// Makes the triangles that the input has from a mesh file triangles of the triangulation, beside what was
// inserted before, and adds what of their corners equals an earlier one to the duplicates. Returns their
// zone; null, after lines about the reasons, when they can't be. What is lost on the way is told under the
// name.
TESK_KIVO2D::Zone2* importMesh(TESK_KIVO2D::Kivo_2D& triangulation, const Input& input, Insertion& insertion,
                               const std::string& name);

// Of the zone that was just made.
ImportReport measureImport(const TESK_KIVO2D::Kivo_2D& triangulation, const Input& input,
                           const TESK_KIVO2D::Zone2& zone);

} // namespace cli
