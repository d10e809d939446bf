#pragma once

#include <cstdint>

namespace TESK_KIVO2D {

// Maps a coordinate to the number of a cell, for coordinates over the whole range of doubles. Cells only
// guide locality; any cell is fine for correctness.
class GridAxis {
public:
    // numCells cells between the two coordinates. Without extent between them every coordinate has cell 0.
    void set(double minCoord, double maxCoord, double numCells);

    // Coordinates beyond the ends have cell 0 or maxCell, and so has what is not a number.
    std::uint64_t cell(double coord, double maxCell) const {
        const double v = (coord * preScale - min) * scale;
        return v > 0 ? static_cast<std::uint64_t>(v < maxCell ? v : maxCell) : 0;
    }

private:
    double preScale = 1; // a power of two that keeps extents within the range of doubles; nearly always 1
    double min = 0;      // times preScale
    double scale = 0;    // cells a unit, after preScale
};

} // namespace TESK_KIVO2D
