#pragma once

#include "export.h"
#include "fwd.h"

#include <cfloat>
#include <cmath>
#include <iosfwd>

namespace TESK_KIVO2D {

/// A point of the plane; also the vertex record of a triangulation.
///
/// Vertices that a triangulation hands out as `Point2*` belong to it and stay valid until they are removed
/// or the triangulation dies. Comparisons are lexicographic by (x, y) and look at coordinates only; 0.0
/// equals -0.0.
class KIVO_API Point2 {
public:
    /// Both coordinates are the lowest finite double.
    Point2() = default;
    /// A free point with the custom index -1.
    Point2(double x, double y) : dX(x), dY(y) {}

    /// Copies the coordinates and the custom index. The copy is a free point: it is part of no triangulation.
    Point2(const Point2& other) : dX(other.dX), dY(other.dY), customIndex(other.customIndex) {}
    /// Takes over coordinates and custom index; this point is a free one then.
    Point2& operator=(const Point2& other) {
        dX = other.dX;
        dY = other.dY;
        pIncidentT = nullptr;
        customIndex = other.customIndex;
        return *this;
    }

    /// The first coordinate.
    double x() const { return dX; }
    /// The second coordinate.
    double y() const { return dY; }
    /// Both coordinates.
    void xy(double& x, double& y) const {
        x = dX;
        y = dY;
    }

    /// max(|x|, |y|).
    double getMaxAbs() const {
        const double absX = std::fabs(dX);
        const double absY = std::fabs(dY);
        return absX < absY ? absY : absX;
    }

    /// One triangle that has this vertex as a corner; null while the vertex is part of no triangulation.
    Triangle2* getIncidentTriangle() const { return pIncidentT; }

    /// The index is the user's own; the library carries it along and never reads it. -1 by default.
    void setCustomIndex(int index) { customIndex = index; }
    /// The user's index.
    int getCustomIndex() const { return customIndex; }

    /// By x, then by y.
    bool operator<(const Point2& other) const { return dX < other.dX || (dX == other.dX && dY < other.dY); }
    /// By x, then by y.
    bool operator>(const Point2& other) const { return other < *this; }
    /// Same coordinates.
    bool operator==(const Point2& other) const { return dX == other.dX && dY == other.dY; }
    /// The opposite of `==`.
    bool operator!=(const Point2& other) const { return !(*this == other); }

private:
    friend class Triangle2; // the one writer of the incident triangle,
    friend class MeshStore; // apart from the store, which clears it when a vertex leaves

    double dX = -DBL_MAX;
    double dY = -DBL_MAX;
    Triangle2* pIncidentT = nullptr;
    int customIndex = -1;
};

/// (b.y - a.y)^2 + (b.x - a.x)^2.
inline double sqDistance(const Point2& a, const Point2& b) {
    const double dy = b.y() - a.y();
    const double dx = b.x() - a.x();
    return dy * dy + dx * dx;
}

/// Writes "Point2 (address,customIndex): x, y".
KIVO_API std::ostream& operator<<(std::ostream& stream, const Point2& point);

} // namespace TESK_KIVO2D
