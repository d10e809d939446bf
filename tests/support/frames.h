#pragma once

#include "Point2.h"

#include <ostream>

// Where a small grid lies: times the unit, then moved.
struct Frame {
    const char* name;
    double unit, dx, dy;

    TESK_KIVO2D::Point2 place(double x, double y) const { return {x * unit + dx, y * unit + dy}; }
};
inline void PrintTo(const Frame& frame, std::ostream* pStream) { *pStream << frame.name; }

inline constexpr Frame aFrames[] = {{"integers", 1, 0, 0},
                                    {"tenths", 0.1, -0.3, 0},
                                    {"mapCoordinates", 0.37, 448262.08, 5411932.67},
                                    {"tiny", 1e-150, 0, 0},
                                    {"huge", 1e150, 3e150, 0}};
