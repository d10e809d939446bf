#pragma once

#include "export.h"

namespace TESK_KIVO2D {

/// The colours that have a name; as (red, green, blue).
enum Colorname : int {
    CRED = 0,        ///< (1, 0, 0)
    CGREEN = 1,      ///< (0, 1, 0)
    CBLUE = 2,       ///< (0, 0, 1)
    CBLACK = 3,      ///< (0, 0, 0)
    CPINK = 4,       ///< (1, 0.4, 0.7)
    CGRAY = 5,       ///< (0.3, 0.3, 0.3)
    CORANGE = 6,     ///< (1, 0.627, 0)
    CLIGHTBLUE = 7,  ///< (0, 0.749, 1)
    CLIGHTBROWN = 8, ///< (0.823, 0.705, 0.549)
    CDARKBROWN = 9,  ///< (0.545, 0.271, 0.074)
    CPURPLE = 10,    ///< (0.627, 0.125, 0.941)
    COLIVE = 11,     ///< (0.5, 0.5, 0)
    CLAWNGREEN = 12, ///< (0.49, 0.99, 0)
    CPALEGREEN = 13, ///< (0.6, 0.98, 0.6)
    CCYAN = 14,      ///< (0, 1, 1)
    CYELLOW = 15,    ///< (1, 1, 0)
    CWHITE = 16      ///< (1, 1, 1)
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
