#pragma once

#include "Point2.h"

#include <string>
#include <utility>

namespace TESK_KIVO2D {

/// A text at a place of a drawing.
class Label {
public:
    /// \param position_  where the first line of the text starts
    /// \param text_      one or more lines, separated by newlines
    /// \param bWithMark_ draws a small cross at the position, too
    /// \param fontSize_  in page units (1/72 inch), also the distance of the lines; 0 is drawn as 1
    Label(const Point2& position_, std::string text_, bool bWithMark_, int fontSize_)
        : position(position_), text(std::move(text_)), bWithMark(bWithMark_), fontSize(fontSize_) {}

    /// Where the first line starts.
    Point2 position;
    /// The lines, separated by newlines.
    std::string text;
    /// Draws a small cross at the position.
    bool bWithMark;
    /// Height of a line in page units.
    int fontSize;
};

} // namespace TESK_KIVO2D
