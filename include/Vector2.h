#pragma once

#include "Point2.h"
#include "export.h"

#include <cmath>
#include <iosfwd>

namespace TESK_KIVO2D {

/// A direction in the plane.
class KIVO_API Vector2 {
public:
    /// The zero vector.
    Vector2() = default;
    /// From its components.
    Vector2(double x, double y) : dX(x), dY(y) {}

    /// The first component.
    double x() const { return dX; }
    /// The second component.
    double y() const { return dY; }
    /// Replaces both components.
    void set(double x, double y) {
        dX = x;
        dY = y;
    }

    /// Euclidean length, scaled inside: neither overflow nor underflow of the squares touches it.
    double length() const { return std::hypot(dX, dY); }

    /// A unit vector at a right angle to this one; its component along the smaller one of this vector is
    /// positive (x on ties). The zero vector gives itself. Throws `KivoException` when the result is not
    /// strictly to one side.
    Vector2 orthogonalVector() const;

    /// Dot product.
    double operator*(const Vector2& other) const { return dX * other.dX + dY * other.dY; }
    /// The vector scaled.
    Vector2 operator*(double factor) const { return Vector2(dX * factor, dY * factor); }
    /// The vector scaled by the inverse; division by 0 follows IEEE 754.
    Vector2 operator/(double divisor) const { return Vector2(dX / divisor, dY / divisor); }

private:
    double dX = 0;
    double dY = 0;
};

/// Flips the sign bit of both components.
inline Vector2 operator-(const Vector2& v) { return Vector2(-v.x(), -v.y()); }
/// The vector scaled.
inline Vector2 operator*(double factor, const Vector2& v) { return v * factor; }
/// Sum by components.
inline Vector2 operator+(const Vector2& a, const Vector2& b) { return Vector2(a.x() + b.x(), a.y() + b.y()); }
/// Difference by components.
inline Vector2 operator-(const Vector2& a, const Vector2& b) { return Vector2(a.x() - b.x(), a.y() - b.y()); }
/// The vector from b to a.
inline Vector2 operator-(const Point2& a, const Point2& b) { return Vector2(a.x() - b.x(), a.y() - b.y()); }

/// The vector scaled to length 1, for every finite vector but the zero vector. That one, and a vector with a
/// component that is infinite or not a number, gives (0,0) and a warning line.
KIVO_API Vector2 normalize(const Vector2& other);

/// Writes "Vector2: x, y" with the precision and number format of the stream.
KIVO_API std::ostream& operator<<(std::ostream& stream, const Vector2& vec);

} // namespace TESK_KIVO2D
