#include "Segment2.h"

#include "Circle2.h"
#include "kernel/valueText.h"

namespace TESK_KIVO2D {

// The points are written where they lie, not as copies, so that their addresses mean something.
std::ostream& operator<<(std::ostream& stream, const Segment2& seg) {
    return writeAsOneItem(stream, [&seg](std::ostream& text) {
        text << "Segment2 (" << static_cast<const void*>(&seg) << "): " << seg.src << "," << seg.trg;
    });
}

std::ostream& operator<<(std::ostream& stream, const Circle2& circ) {
    return writeAsOneItem(stream, [&circ](std::ostream& text) {
        text << "Circle2: " << circ.center << ", r=" << circ.getRadius();
    });
}

} // namespace TESK_KIVO2D
