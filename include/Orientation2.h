#pragma once

#include "export.h"

#include <string>

namespace TESK_KIVO2D {

/// The side on which a point lies, seen along a directed line.
enum Orientation2 {
    ORIENTATION2_COLLINEAR = 0, ///< on the line
    ORIENTATION2_CCW = 1,       ///< left of it: the three points make a counter-clockwise turn
    ORIENTATION2_CW = 2         ///< right of it: a clockwise turn
};

/// The enumerator's name, or an empty string for any other value.
KIVO_API std::string getString(Orientation2 ori);

} // namespace TESK_KIVO2D
