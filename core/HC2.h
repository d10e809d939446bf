#pragma once

#include "Bbox2.h"
#include "Point2.h"
#include "core/GridAxis.h"

namespace TESK_KIVO2D {

// Keys along a Hilbert curve over a box: points that are near on the curve are near in the plane. Keys only
// guide locality; any key of any point, also outside the box, is fine for correctness.
class HC2 {
public:
    static constexpr int numKeyBits = 30; // 15 levels, two bits a level

    // A number of bits that is odd or above 32 is reported; the usual number is taken instead.
    explicit HC2(int numBits = numKeyBits);
    HC2(const Bbox2& box, int numBits = numKeyBits);

    // The box that keys refer to. Cells are square, the longer range of the box over the whole curve: keys
    // that stretch one axis put points side by side that are far apart, where they are dense in a long box. A
    // box without extent gives every point the key 0.
    void setBox(const Bbox2& box);
    // The same curve, but points at the maximum of the box and beyond have keys of the last cells. Then keys
    // that agree above some bit fill a rectangle, which that bit halves: so points that it tells apart lie on
    // either side of a line.
    HC2 withoutWrap() const;

    unsigned int key(const Point2& p) const { return key(p.x(), p.y()); }
    unsigned int key(double x, double y) const {
        return keyOfCell(static_cast<unsigned int>(axisX.cell(x, maxCell)),
                         static_cast<unsigned int>(axisY.cell(y, maxCell)));
    }

private:
    unsigned int keyOfCell(unsigned int ix, unsigned int iy) const;

    GridAxis axisX, axisY;
    double gridSize; // cells an axis, 2^(bits / 2)
    double maxCell;  // the number of a cell at the maximum
    int numLevels;
};

} // namespace TESK_KIVO2D
