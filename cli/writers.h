#pragma once

#include "cli/Mesh.h"

#include <Kivo_2D.h>

#include <string>

namespace cli {

// Throws `FileError` unless the file can be created or extended.
void checkWritable(const std::string& filename);
// Throws `FileError` when the format asks for heights and the input had none.
void checkHolds(const std::string& filename, const PointTable& table);

// Writes a file of the kind that its extension names; numbers are the shortest that read back to the same
// double. Throws `FileError` unless every byte arrived. Not for drawings.
void writeMesh(const std::string& filename, const Mesh& mesh);
// Lets the triangulation draw itself and checks that the drawing is complete.
void writeDrawing(const std::string& filename, const TESK_KIVO2D::Kivo_2D& triangulation);

} // namespace cli
