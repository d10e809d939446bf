#pragma once

#include "fwd.h"

#include <cstdint>
#include <vector>

namespace TESK_KIVO2D {

/// How one measure is distributed: its extremes, its mean and a histogram.
struct QualityDistribution {
    std::uint64_t count = 0; ///< Number of values.
    double smallest = 0.0;   ///< Smallest value.
    double largest = 0.0;    ///< Largest value.
    double mean = 0.0;       ///< Arithmetic mean.
    /// Limits of the bins, ascending, one more than there are bins.
    std::vector<double> vLimits;
    /// Bin i holds the number of values from vLimits[i] to below vLimits[i + 1]; the last one holds those at
    /// its upper limit too.
    std::vector<std::uint64_t> vCounts;
};

/// What the triangles of a zone are like (see `Kivo_2D::checkZoneQuality`). Angles are in degrees, lengths
/// and areas in the unit of the points. All figures are zero, and all lists empty, for a zone without
/// triangles.
struct ZoneQuality {
    std::uint64_t numVertices = 0;  ///< Of the triangles, each once.
    std::uint64_t numTriangles = 0; ///< Each once.
    std::uint64_t numEdges = 0;     ///< Of the triangles, each once.
    /// All interior angles, three a triangle, in bins of 10 degrees from 0 to 180. What misses a limit by
    /// less than 1e-9 degrees counts as at the limit, so that rounding does not deal out the angles of a
    /// grid.
    QualityDistribution angles;
    /// The smallest angle of each triangle, in bins of 5 degrees from 0 to 60, as above.
    QualityDistribution smallestAngles;
    /// Areas, in bins that end at powers of two, at most 33: each spans one or more factors of two. What is
    /// below the normal doubles, 0 for example, has a bin for itself; areas beyond doubles are the largest
    /// one.
    QualityDistribution areas;
    /// Lengths of edges, each once, in bins like those of the areas.
    QualityDistribution edgeLengths;
    /// Longest edge by the height on it, in bins that end at 1, 1.25, 1.5, 2, 3, 5, 10, 100, 1000, 10000
    /// and the largest double. At least 1.1547, that of an equilateral triangle.
    QualityDistribution aspectRatios;
    /// The sum of all areas.
    double totalArea = 0.0;
    /// The triangles with the smallest angles, smallest first, at most 100 (equal ones in the order of
    /// records). Owned by the triangulation; valid until it changes.
    std::vector<Triangle2*> vWorst;
};

} // namespace TESK_KIVO2D
