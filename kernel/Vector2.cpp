#include "Vector2.h"

#include "functions.h"
#include "kernel/assertion.h"
#include "kernel/finite.h"
#include "kernel/messages.h"
#include "kernel/valueText.h"

#include <algorithm>
#include <cmath>

namespace TESK_KIVO2D {
namespace {

// For lengths that are infinite, subnormal or near to it: first by a power of two to a size near 1, which is
// exact for every component that counts in the result.
Vector2 normalizeScaled(const Vector2& v) {
    const int exponent = std::ilogb(std::max(std::fabs(v.x()), std::fabs(v.y())));
    const Vector2 scaled(std::scalbn(v.x(), -exponent), std::scalbn(v.y(), -exponent));
    return scaled / scaled.length();
}

} // namespace

Vector2 normalize(const Vector2& other) {
    const double length = other.length();
    if (length > 0x1p-1000 && length < 0x1p1000) return other / length;
    if (length > 0 && isFinite(other)) return normalizeScaled(other);
    printText("warning: normalize(const Vector2& other), Null length vector!\n");
    return Vector2(0, 0);
}

Vector2 Vector2::orthogonalVector() const {
    if (!isFinite(*this)) return normalize(*this);
    const bool bXIsLarger = std::fabs(dX) > std::fabs(dY);
    if (!bXIsLarger && dY == 0) return Vector2(0, 0);
    const Vector2 result = normalize(bXIsLarger ? Vector2(-dY / dX, 1) : Vector2(1, -dX / dY));

    const Point2 origin(0, 0);
    const Point2 alongThis(dX, dY);
    const Point2 alongResult(result.x(), result.y());
    const Orientation2 ori = getOrientation2_mt(&origin, &alongThis, &alongResult);
    // The place that is reported is part of the text and independent of this source's layout.
    if (ori == ORIENTATION2_COLLINEAR) failAssertion("false", "Vector2", 94);
    return result;
}

std::ostream& operator<<(std::ostream& stream, const Vector2& vec) {
    return writeAsOneItem(stream,
                          [&vec](std::ostream& text) { text << "Vector2: " << vec.x() << ", " << vec.y(); });
}

} // namespace TESK_KIVO2D
