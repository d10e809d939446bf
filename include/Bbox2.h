#pragma once

#include "Point2.h"
#include "export.h"
#include "fwd.h"

#include <cfloat>
#include <cstddef>
#include <vector>

namespace TESK_KIVO2D {

/// An axis-parallel bounding box.
///
/// A box may be tied to a predicate object, which belongs to someone else and must outlive the box's use:
/// then `doubleTheBox` and `enlargeRanges` tell it the largest absolute coordinate of the new extent.
///
/// There are two notions of validity, deliberately. `isValid` looks at the bounds only. The valid flag is set
/// by the first point that is added, or by setters once they have given a complete set of bounds.
class KIVO_API Bbox2 {
public:
    /// The empty box: lower bounds at the largest double, upper bounds at its negation.
    explicit Bbox2(TeskTest* pTeskTest_ = nullptr) : pTeskTest(pTeskTest_) {}
    /// The box of a range of `Point2` or `Point2*`.
    template<class Iterator>
    Bbox2(Iterator begin, Iterator end, TeskTest* pTeskTest_ = nullptr) : pTeskTest(pTeskTest_) {
        add(begin, end);
    }

    /// True when the lower x bound is below the largest double.
    bool isValid() const { return minX < DBL_MAX; }

    /// Takes in a point. Returns true when a bound changed or the flag was clear.
    bool add(const Point2& p) {
        if (bValid) return treatPointForValidBox(p.x(), p.y());
        treatPointForInvalidBox(p.x(), p.y());
        return true;
    }
    /// Takes in a range of `Point2` or `Point2*` (null pointers are skipped). Returns whether a bound
    /// changed.
    template<class Iterator>
    bool add(Iterator begin, Iterator end) {
        const Bbox2 before(*this);
        for (; begin != end; ++begin)
            addElement(*begin);
        return !hasBoundsOf(before);
    }
    /// Takes in numPoints points given as x0, y0, x1, y1, ... Returns whether a bound changed; a bound that
    /// is not a number counts as changed.
    bool add(std::size_t numPoints, const double* aCoordinates);

    /// The lower left corner.
    Point2 getMinPoint() const { return Point2(minX, minY); }
    /// The upper right corner.
    Point2 getMaxPoint() const { return Point2(maxX, maxY); }
    /// The smaller one of the lower bounds.
    double getMinCoord() const { return minY < minX ? minY : minX; }
    /// The larger one of the upper bounds.
    double getMaxCoord() const { return maxX < maxY ? maxY : maxX; }
    /// The width; negative for the empty box.
    double getRangeX() const { return maxX - minX; }
    /// The height; negative for the empty box.
    double getRangeY() const { return maxY - minY; }
    /// The larger one of the two ranges.
    double getMaxRange() const {
        const double rangeX = getRangeX();
        const double rangeY = getRangeY();
        return rangeX < rangeY ? rangeY : rangeX;
    }
    /// The left bound.
    double get_minX() const { return minX; }
    /// The lower bound.
    double get_minY() const { return minY; }
    /// The right bound.
    double get_maxX() const { return maxX; }
    /// The upper bound.
    double get_maxY() const { return maxY; }
    /// All four, in this order.
    void getBounds(double& minX_, double& maxX_, double& minY_, double& maxY_) const {
        minX_ = minX;
        maxX_ = maxX;
        minY_ = minY;
        maxY_ = maxY;
    }

    /// \name Setters
    /// Each sets one bound, then the valid flag once the upper bounds are not below the lower ones. The flag
    /// is never cleared.
    /// \{

    /// The left bound.
    void setMinX(double val) { setBound(minX, val); }
    /// The right bound.
    void setMaxX(double val) { setBound(maxX, val); }
    /// The lower bound.
    void setMinY(double val) { setBound(minY, val); }
    /// The upper bound.
    void setMaxY(double val) { setBound(maxY, val); }
    /// \}

    /// Appends the corners counter-clockwise from (minX, minY).
    void getCorners(std::vector<Point2>& vBoxCorners) const;

    /// True for a point inside or on the border; false while the flag is clear.
    bool isInBox(const Point2& p) const {
        return bValid && minX <= p.x() && p.x() <= maxX && minY <= p.y() && p.y() <= maxY;
    }
    /// True when the boxes have a point in common, borders included. A box whose flag is clear gives a
    /// warning and false.
    bool doIntersect(const Bbox2& other) const;
    /// The centre; with a warning while the flag is clear.
    Point2 computeCenter() const;

    /// Widens this box by the other one and returns a copy of it. An invalid box takes over the bounds but
    /// not the flag. An invalid other box gives a warning and changes nothing.
    Bbox2 operator+(const Bbox2& other);

    /// Widens a range that is exactly zero by d, upwards. Nothing happens while the flag is clear.
    void inflateIfDegenerate(double d);
    /// Doubles both ranges about the centre.
    void doubleTheBox();
    /// Multiplies both ranges by the factor about the centre.
    void enlargeRanges(double factor);

private:
    // Deliberate: "else". Once the box holds a point, a coordinate below the minimum is not above the
    // maximum.
    bool treatPointForValidBox(double x, double y) {
        bool bChanged = true;
        if (minX > x)
            minX = x;
        else if (x > maxX)
            maxX = x;
        else
            bChanged = false;
        if (minY > y)
            minY = y;
        else if (y > maxY)
            maxY = y;
        else
            return bChanged;
        return true;
    }
    void treatPointForInvalidBox(double x, double y);
    void addElement(const Point2& p) { add(p); }
    void addElement(const Point2* pPoint) {
        if (pPoint != nullptr) add(*pPoint);
    }
    bool hasBoundsOf(const Bbox2& other) const {
        return minX == other.minX && minY == other.minY && maxX == other.maxX && maxY == other.maxY;
    }
    void setBound(double& bound, double val) {
        bound = val;
        if (maxX >= minX && maxY >= minY) bValid = true;
    }

    double minX = DBL_MAX;
    double minY = DBL_MAX;
    double maxX = -DBL_MAX;
    double maxY = -DBL_MAX;
    bool bValid = false;
    TeskTest* pTeskTest;
};

} // namespace TESK_KIVO2D
