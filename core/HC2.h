#pragma once

#include "Bbox2.h"
#include "Point2.h"
#include "core/GridAxis.h"

#include <array>

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
    // Several levels at once: state and so many bits of each coordinate give twice as many key bits and the
    // state after them, which stands above those, where the next index has it.
    static constexpr int stepLevels = 5;
    static constexpr unsigned int numStepCells = 1u << (2 * stepLevels);
    using Steps = std::array<unsigned short, 4 * numStepCells>;
    static const Steps steps;

    unsigned int keyOfCell(unsigned int ix, unsigned int iy) const {
        // Only the lower bits of a cell number count: the cell at the box's maximum deliberately has the
        // digits of the minimum.
        ix &= cellMask;
        iy &= cellMask;
        unsigned int key = 0, state = startState;
        for (int shift = firstShift; shift >= 0; shift -= stepLevels) {
            constexpr unsigned int mask = (1u << stepLevels) - 1;
            const unsigned int step =
                steps[state + (((ix >> shift) & mask) << stepLevels) + ((iy >> shift) & mask)];
            key = (key << (2 * stepLevels)) + step % numStepCells;
            state = step - step % numStepCells;
        }
        return key;
    }

    GridAxis axisX, axisY;
    double gridSize; // cells an axis, 2^(bits / 2)
    double maxCell;  // the number of a cell at the maximum
    unsigned int cellMask;
    int firstShift;
    unsigned int startState;
};

} // namespace TESK_KIVO2D
