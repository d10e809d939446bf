#pragma once

#include "cli/PointTable.h"
#include "cli/formats.h"

#include <Kivo_2D.h>

#include <string>
#include <vector>

namespace cli {

// A triangulation in the order of its input, ready for files: vertex k is the k-th different point, and point
// and triangle files of one run use the same numbers.
struct Mesh {
    std::vector<const TESK_KIVO2D::Point2*> vVertices;
    std::vector<std::size_t> vNumberOf; // by custom index: position in vVertices
    std::vector<TESK_KIVO2D::Triangle2*> vTriangles;
};

// The points of the table as they stand, equal ones included, with no triangles.
Mesh meshOfPoints(const PointTable& table);
Mesh meshOf(const TESK_KIVO2D::Kivo_2D& triangulation, const PointTable& table);

// Throws `FileError` unless the file can be created or extended.
void checkWritable(const std::string& filename);
// Throws `FileError` when the format asks for heights and the input had none.
void checkHolds(const std::string& filename, const PointTable& table);

// Writes a file of the kind that its extension names; numbers are the shortest that read back to the same
// double. Throws `FileError` unless every byte arrived. Not for drawings.
void writeMesh(const std::string& filename, const Mesh& mesh, const PointTable& table);
// Lets the triangulation draw itself and checks that the drawing is complete.
void writeDrawing(const std::string& filename, const TESK_KIVO2D::Kivo_2D& triangulation);

} // namespace cli
