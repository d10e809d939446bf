#pragma once

#include <string>

namespace cli {

enum FileFormat {
    FORMAT_XY,
    FORMAT_XYZ,
    FORMAT_BIN,
    FORMAT_NODE,
    FORMAT_POLY,
    FORMAT_SEG,
    FORMAT_ELE,
    FORMAT_EDGE,
    FORMAT_PS,
    FORMAT_SVG,
    FORMAT_OBJ,
    FORMAT_GEOJSON,
    FORMAT_VTU,
    FORMAT_MSH,
    FORMAT_SCENE
};

// The format that a file's extension names, in either case; FORMAT_SCENE for a name that ends with a slash,
// or names a folder that exists. Throws `UsageError` for any other.
FileFormat formatOf(const std::string& filename);

// True when a file of this kind can hold bare points and nothing else.
bool holdsBarePoints(FileFormat format);

// True when an input of this kind may bring segments along.
bool canHoldSegments(FileFormat format);

// True when there is nothing to write without triangles.
bool isPicture(FileFormat format);

// True when the file is written from the arrays of the mesh's triangles.
bool needsTriangles(FileFormat format);

} // namespace cli
