#include "core/HC2.h"

#include "kernel/assertion.h"
#include "kernel/messages.h"

#include <array>
#include <cmath>

namespace TESK_KIVO2D {
namespace {

// Indexed by state * 4 + quadrant, where quadrant = 2 * (bit of x) + (bit of y).
constexpr unsigned char keyDigit[16] = {0, 1, 3, 2, 0, 3, 1, 2, 2, 1, 3, 0, 2, 3, 1, 0};
constexpr unsigned char nextState[16] = {1, 0, 2, 0, 0, 3, 1, 1, 2, 2, 0, 3, 3, 1, 3, 2};

// Three levels at once: state and three bits of each coordinate give six key bits and the state after them.
struct Step {
    unsigned char digits;
    unsigned char state;
};
constexpr int stepLevels = 3;

constexpr std::array<Step, 4 * 64> makeSteps() {
    std::array<Step, 4 * 64> steps{};
    for (unsigned int state = 0; state < 4; ++state) {
        for (unsigned int x = 0; x < 8; ++x) {
            for (unsigned int y = 0; y < 8; ++y) {
                unsigned int s = state, digits = 0;
                for (int bit = stepLevels - 1; bit >= 0; --bit) {
                    const unsigned int q = s * 4 + 2 * ((x >> bit) & 1) + ((y >> bit) & 1);
                    digits = digits * 4 + keyDigit[q];
                    s = nextState[q];
                }
                steps[state * 64 + x * 8 + y] = {static_cast<unsigned char>(digits),
                                                 static_cast<unsigned char>(s)};
            }
        }
    }
    return steps;
}
constexpr std::array<Step, 4 * 64> steps = makeSteps();

} // namespace

HC2::HC2(int numBits) : gridSize(0), maxCell(0), numLevels(numBits / 2) {
    if (numBits >= 33 || numBits % 2 != 0) {
        reportError("HC2::HC2(..)", "invalid bitlength");
        numLevels = numKeyBits / 2;
    }
    KIVO_ASSERT(numLevels > 0, "numBits>0");
    gridSize = std::ldexp(1.0, numLevels);
    maxCell = gridSize;
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

unsigned int HC2::keyOfCell(unsigned int ix, unsigned int iy) const {
    // Only the lower bits of a cell number count: the cell at the box's maximum deliberately has the digits
    // of the minimum.
    unsigned int key = 0, state = 0;
    int level = numLevels;
    for (; level >= stepLevels; level -= stepLevels) {
        const int shift = level - stepLevels;
        const Step& step = steps[state * 64 + ((ix >> shift) & 7) * 8 + ((iy >> shift) & 7)];
        key = (key << (2 * stepLevels)) + step.digits;
        state = step.state;
    }
    while (level-- > 0) {
        const unsigned int q = state * 4 + 2 * ((ix >> level) & 1) + ((iy >> level) & 1);
        key = (key << 2) + keyDigit[q];
        state = nextState[q];
    }
    return key;
}

} // namespace TESK_KIVO2D
