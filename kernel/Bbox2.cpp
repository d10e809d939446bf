#include "Bbox2.h"

#include "kernel/TeskTest.h"
#include "kernel/messages.h"

#include <algorithm>
#include <cmath>

namespace TESK_KIVO2D {

bool Bbox2::add(std::size_t numPoints, const double* aCoordinates) {
    if (numPoints == 0 || aCoordinates == nullptr) return false;
    const Bbox2 before(*this);
    // The first point meets all four bounds, because a box that was empty has them the wrong way round.
    const double x = aCoordinates[0];
    const double y = aCoordinates[1];
    if (x < minX) minX = x;
    if (x > maxX) maxX = x;
    if (y < minY) minY = y;
    if (y > maxY) maxY = y;
    for (std::size_t i = 1; i < numPoints; ++i)
        treatPointForValidBox(aCoordinates[2 * i], aCoordinates[2 * i + 1]);
    bValid = true;
    return !hasBoundsOf(before);
}

// A bound that a setter gave before is kept, even when the point lies beyond it.
void Bbox2::treatPointForInvalidBox(double x, double y) {
    if (minX == DBL_MAX) minX = x;
    if (maxX == -DBL_MAX) maxX = x;
    if (minY == DBL_MAX) minY = y;
    if (maxY == -DBL_MAX) maxY = y;
    bValid = true;
}

void Bbox2::getCorners(std::vector<Point2>& vBoxCorners) const {
    vBoxCorners.emplace_back(minX, minY);
    vBoxCorners.emplace_back(maxX, minY);
    vBoxCorners.emplace_back(maxX, maxY);
    vBoxCorners.emplace_back(minX, maxY);
}

bool Bbox2::doIntersect(const Bbox2& other) const {
    if (!bValid || !other.bValid) {
        reportWarning("Bbox2::doIntersect()", "bbox invalid");
        return false;
    }
    const bool bSeparatedX = maxX < other.minX || other.maxX < minX;
    const bool bSeparatedY = maxY < other.minY || other.maxY < minY;
    return !bSeparatedX && !bSeparatedY;
}

Point2 Bbox2::computeCenter() const {
    if (!bValid) reportWarning("Bbox2::computeCenter()", "Bbox2 is invalid");
    return Point2((maxX + minX) * 0.5, (maxY + minY) * 0.5);
}

Bbox2 Bbox2::operator+(const Bbox2& other) {
    if (!other.isValid()) {
        reportWarning("Box2::operator+()", "trying to add an invalid Bbox2"); // location kept as it is
        return *this;
    }
    if (isValid()) {
        minX = std::min(minX, other.minX);
        minY = std::min(minY, other.minY);
        maxX = std::max(maxX, other.maxX);
        maxY = std::max(maxY, other.maxY);
    } else {
        // Deliberate: the valid flag stays as it was.
        minX = other.minX;
        minY = other.minY;
        maxX = other.maxX;
        maxY = other.maxY;
    }
    return *this;
}

void Bbox2::inflateIfDegenerate(double d) {
    if (!bValid) return;
    if (minX == maxX) maxX += d;
    if (minY == maxY) maxY += d;
}

void Bbox2::doubleTheBox() {
    const double halfX = (maxX - minX) * 0.5;
    const double halfY = (maxY - minY) * 0.5;
    minX -= halfX;
    maxX += halfX;
    minY -= halfY;
    maxY += halfY;
    // Deliberate: no absolute value of the upper bounds. Where they are negative the lower ones are larger.
    if (pTeskTest != nullptr)
        pTeskTest->setStaticBound(std::max({maxY, std::fabs(minY), maxX, std::fabs(minX)}));
}

void Bbox2::enlargeRanges(double factor) {
    const double extraX = (getRangeX() * factor - getRangeX()) * 0.5;
    const double extraY = (getRangeY() * factor - getRangeY()) * 0.5;
    minX -= extraX;
    maxX += extraX;
    minY -= extraY;
    maxY += extraY;
    if (pTeskTest != nullptr)
        pTeskTest->setStaticBound(
            std::max({std::fabs(minX), std::fabs(maxX), std::fabs(minY), std::fabs(maxY)}));
}

} // namespace TESK_KIVO2D
