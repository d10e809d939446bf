#pragma once

#include "MeshArrays.h"

#include <string>

namespace TESK_KIVO2D {

// Writes a Wavefront OBJ mesh in the plane z = 0: a line for each vertex, then one for each triangle, as they
// are numbered in the arrays, but from 1. Neighbours are not looked at. Returns false, after a message with
// the file name, when the file can't be written.
bool writeObjFile(const std::string& filename, const MeshArrays& mesh);

} // namespace TESK_KIVO2D
