#pragma once

#include <Point2.h>

#include <cstddef>
#include <limits>
#include <vector>

namespace cli {

// Points are numbered by an int, and so are the corners of triangles in the files that number them.
constexpr std::size_t MAX_POINTS = std::numeric_limits<int>::max();

// The points of one file with all that the file says about them. A point's custom index is its position here;
// the triangulation carries it along, and so leads from a vertex back to its heights, attributes and marker.
struct PointTable {
    std::vector<TESK_KIVO2D::Point2> vPoints;
    std::size_t numAttributes = 0;   // of each point; the first one is the height where an output asks for it
    std::vector<double> vAttributes; // numAttributes for each point
    bool bWithMarkers = false;
    std::vector<int> vMarkers;  // one for each point when bWithMarkers
    std::size_t firstIndex = 1; // the number of the first point in formats that number them

    const double* getAttributes(std::size_t position) const {
        return vAttributes.data() + position * numAttributes;
    }
};

} // namespace cli
