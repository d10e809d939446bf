#include "Point2.h"

#include "kernel/valueText.h"

namespace TESK_KIVO2D {

std::ostream& operator<<(std::ostream& stream, const Point2& point) {
    return writeAsOneItem(stream, [&point](std::ostream& text) {
        text << "Point2 (" << static_cast<const void*>(&point) << "," << point.getCustomIndex()
             << "): " << point.x() << ", " << point.y();
    });
}

} // namespace TESK_KIVO2D
