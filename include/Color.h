#pragma once

#include "export.h"

namespace TESK_KIVO2D {

/// The colours that have a name.
enum Colorname : int {
    CRED = 0,
    CGREEN = 1,
    CBLUE = 2,
    CBLACK = 3,
    CPINK = 4,
    CGRAY = 5,
    CORANGE = 6,
    CLIGHTBLUE = 7,
    CLIGHTBROWN = 8,
    CDARKBROWN = 9,
    CPURPLE = 10,
    COLIVE = 11,
    CLAWNGREEN = 12,
    CPALEGREEN = 13,
    CCYAN = 14,
    CYELLOW = 15,
    CWHITE = 16
};

/// How an object is drawn: colour, line width, filled or not.
class KIVO_API Color {
public:
    /// Black, the thinnest line, not filled.
    Color() = default;
    /// \param r_,g_,b_ red, green and blue in [0, 1]
    /// \param width_   line width in page units (1/72 inch); 0 is the thinnest line of the device
    /// \param bFill_   fills triangles and circles, marks the ends of segments
    Color(double r_, double g_, double b_, double width_, bool bFill_)
        : r(static_cast<float>(r_)), g(static_cast<float>(g_)), b(static_cast<float>(b_)),
          width(static_cast<float>(width_)), bFill(bFill_) {}
    /// The colour of that name. An unknown name gives black and an error line.
    explicit Color(Colorname colorName, float width_ = 0.F, bool bFill_ = false);

    /// The names from `CGREEN` to `CCYAN` in turn, over and over; red, yellow and white are left out, to
    /// stand out where they are chosen on purpose. One sequence for the whole process; safe in any thread.
    static Colorname getNextColorName();

    /// Exact comparison of all five fields.
    bool operator==(const Color& other) const {
        return r == other.r && g == other.g && b == other.b && width == other.width && bFill == other.bFill;
    }
    /// The opposite of `==`.
    bool operator!=(const Color& other) const { return !(*this == other); }
    /// Lexicographic by the fields in their order, so that a colour can be a key of a map.
    bool operator<(const Color& other) const;

    /// Red, in [0, 1].
    float r = 0;
    /// Green, in [0, 1].
    float g = 0;
    /// Blue, in [0, 1].
    float b = 0;
    /// Line width in page units (1/72 inch); 0 is the thinnest line of the device.
    float width = 0;
    /// Fills triangles and circles, marks the ends of segments.
    bool bFill = false;
};

} // namespace TESK_KIVO2D
