#include "core/HC2.h"

#include "kernel/assertion.h"
#include "kernel/messages.h"

#include <cmath>

namespace TESK_KIVO2D {
namespace {

// Indexed by state * 4 + quadrant, where quadrant = 2 * (bit of x) + (bit of y).
constexpr unsigned char keyDigit[16] = {0, 1, 3, 2, 0, 3, 1, 2, 2, 1, 3, 0, 2, 3, 1, 0};
constexpr unsigned char nextState[16] = {1, 0, 2, 0, 0, 3, 1, 1, 2, 2, 0, 3, 3, 1, 3, 2};

} // namespace

constexpr HC2::Steps HC2::steps = [] {
    Steps table{};
    for (unsigned int i = 0; i < table.size(); ++i) {
        const unsigned int x = i >> stepLevels, y = i;
        unsigned int state = i / numStepCells, digits = 0;
        for (int bit = stepLevels - 1; bit >= 0; --bit) {
            const unsigned int q = state * 4 + 2 * ((x >> bit) & 1) + ((y >> bit) & 1);
            digits = digits * 4 + keyDigit[q];
            state = nextState[q];
        }
        table[i] = static_cast<unsigned short>(state * numStepCells + digits);
    }
    return table;
}();

HC2::HC2(int numBits) {
    if (numBits >= 33 || numBits % 2 != 0) {
        reportError("HC2::HC2(..)", "invalid bitlength");
        numBits = numKeyBits;
    }
    KIVO_ASSERT(numBits > 0, "numBits>0");
    const int numLevels = numBits / 2;
    const int numSteps = (numLevels + stepLevels - 1) / stepLevels;
    firstShift = (numSteps - 1) * stepLevels;
    // Levels in front of the first one, whose bits are 0, give no digits and exchange the states 0 and 1.
    startState = (numSteps * stepLevels - numLevels) % 2 == 0 ? 0 : numStepCells;
    gridSize = std::ldexp(1.0, numLevels);
    maxCell = gridSize;
    cellMask = static_cast<unsigned int>(gridSize) - 1;
}

HC2::HC2(const Bbox2& box, int numBits) : HC2(numBits) { setBox(box); }

void HC2::setBox(const Bbox2& box) {
    const double size = box.getMaxRange();
    axisX.set(box.get_minX(), box.get_minX() + size, gridSize);
    axisY.set(box.get_minY(), box.get_minY() + size, gridSize);
}

HC2 HC2::withoutWrap() const {
    HC2 curve(*this);
    curve.maxCell = gridSize - 1;
    return curve;
}

} // namespace TESK_KIVO2D
