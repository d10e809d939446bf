#pragma once

#include <Kivo_2D.h>

#include <string>

namespace cli {

// Lets the triangulation write a drawing, an OBJ file or a web scene, whichever the name asks for: of the
// zone, or of all triangles where it is null; drawings show cuts, if there are some. Throws `FileError`
// unless all of it arrived. False for other formats.
bool writeByLibrary(const std::string& filename, const TESK_KIVO2D::Kivo_2D& triangulation,
                    const TESK_KIVO2D::Zone2* pZone, const TESK_KIVO2D::ConstraintGraph2* pCuts);

// True when the library has written a drawing to its end.
bool isCompleteDrawing(const std::string& filename);

} // namespace cli
