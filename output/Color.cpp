#include "Color.h"

#include "kernel/messages.h"

#include <atomic>
#include <cmath>
#include <iterator>

namespace TESK_KIVO2D {
namespace {

struct Rgb {
    float r, g, b;
};

constexpr Rgb aNamedColors[] = {
    {1, 0, 0},                // CRED
    {0, 1, 0},                // CGREEN
    {0, 0, 1},                // CBLUE
    {0, 0, 0},                // CBLACK
    {1, 0.4F, 0.7F},          // CPINK
    {0.3F, 0.3F, 0.3F},       // CGRAY
    {1, 0.627F, 0},           // CORANGE
    {0, 0.749F, 1},           // CLIGHTBLUE
    {0.823F, 0.705F, 0.549F}, // CLIGHTBROWN
    {0.545F, 0.271F, 0.074F}, // CDARKBROWN
    {0.627F, 0.125F, 0.941F}, // CPURPLE
    {0.5F, 0.5F, 0},          // COLIVE
    {0.49F, 0.99F, 0},        // CLAWNGREEN
    {0.6F, 0.98F, 0.6F},      // CPALEGREEN
    {0, 1, 1},                // CCYAN
    {1, 1, 0},                // CYELLOW
    {1, 1, 1},                // CWHITE
};
constexpr int numNamedColors = static_cast<int>(std::size(aNamedColors));

int getNextIndex(int current) {
    int next = current + 1;
    if (next == CYELLOW || next == CWHITE) ++next;
    return next % CYELLOW; // 15 becomes 16 becomes 1: the cycle never comes back to red
}

// -1, 0, 1. Not-a-number comes before every number, so that all fields have a strict weak order.
int compare(float a, float b) {
    if (std::isnan(a) || std::isnan(b))
        return static_cast<int>(std::isnan(b)) - static_cast<int>(std::isnan(a));
    return static_cast<int>(a > b) - static_cast<int>(a < b);
}

} // namespace

Color::Color(Colorname colorName, float width_, bool bFill_) : width(width_), bFill(bFill_) {
    const int index = static_cast<int>(colorName);
    if (index < 0 || index >= numNamedColors) {
        reportError("Color::Color", "Colorname unknown, returning black");
        return;
    }
    r = aNamedColors[index].r;
    g = aNamedColors[index].g;
    b = aNamedColors[index].b;
}

Colorname Color::getNextColorName() {
    static std::atomic<int> currentColorName{0};
    int current = currentColorName.load();
    int next = getNextIndex(current);
    while (!currentColorName.compare_exchange_weak(current, next))
        next = getNextIndex(current);
    if (next < 0 || next >= numNamedColors) {
        reportError("Color::getNextColorName()", "undefined color index, returning CBLACK");
        return CBLACK;
    }
    return static_cast<Colorname>(next);
}

bool Color::operator<(const Color& other) const {
    if (const int order = compare(r, other.r); order != 0) return order < 0;
    if (const int order = compare(g, other.g); order != 0) return order < 0;
    if (const int order = compare(b, other.b); order != 0) return order < 0;
    if (const int order = compare(width, other.width); order != 0) return order < 0;
    return !bFill && other.bFill;
}

} // namespace TESK_KIVO2D
