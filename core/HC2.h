#pragma once

#include "Bbox2.h"
#include "Point2.h"

namespace TESK_KIVO2D {

// Keys along a Hilbert curve over a box: points that are near on the curve are near in the plane. Keys only
// guide locality; any key of any point, also outside the box, is fine for correctness.
class HC2 {
public:
    static constexpr int numKeyBits = 30; // 15 levels, two bits a level

    // A number of bits that is odd or above 32 is reported; the usual number is taken instead.
    explicit HC2(int numBits = numKeyBits);
    HC2(const Bbox2& box, int numBits = numKeyBits);

    // The box that keys refer to. Any box will do: axes without extent give key bits 0.
    void setBox(const Bbox2& box);

    unsigned int key(const Point2& p) const { return key(p.x(), p.y()); }
    unsigned int key(double x, double y) const {
        return keyOfCell(axisX.cell(x, gridSize), axisY.cell(y, gridSize));
    }

private:
    // Maps a coordinate to a cell number.
    struct Axis {
        double preScale = 1; // a power of two that keeps extents within the range of doubles; nearly always 1
        double min = 0;      // of the box, times preScale
        double scale = 0;    // cells a unit, after preScale

        void set(double minCoord, double maxCoord, double gridSize);
        // The comparisons are false for what is not a number, and the result is in range for everything.
        unsigned int cell(double coord, double gridSize) const {
            const double v = (coord * preScale - min) * scale;
            return v > 0 ? static_cast<unsigned int>(v < gridSize ? v : gridSize) : 0;
        }
    };

    unsigned int keyOfCell(unsigned int ix, unsigned int iy) const;

    Axis axisX, axisY;
    double gridSize; // cells an axis, 2^(bits / 2)
    int numLevels;
};

} // namespace TESK_KIVO2D
