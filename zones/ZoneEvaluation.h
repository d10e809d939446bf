#pragma once

#include "Zone2.h"
#include "core/EdgeMarks.h"
#include "core/TriangleSet.h"
#include "zones/TriangleVisitor.h"
#include "zones/ZoneHost.h"

#include <vector>

namespace TESK_KIVO2D {

// Finds the triangles of zones, for one query: nothing may change the triangulation while it lives. The sets
// that it returns end with it.
class ZoneEvaluation {
public:
    // What an inside zone without any triangle is.
    enum class EmptyInside { IS_ERROR, IS_FINE };

    explicit ZoneEvaluation(ZoneHost& triangulation, EmptyInside emptyInside = EmptyInside::IS_ERROR);

    // Appends what Zone2::getTriangles promises.
    void list(const Zone2& zone, std::vector<Triangle2*>& vTriangles) const;
    // As a set.
    TriangleSet setOf(const Zone2& zone) const;
    // Appends what Zone2::getVertices promises.
    void listVertices(const Zone2& zone, std::vector<Point2*>& vVertices) const;
    // The same as a set, after the visitor has seen it.
    TriangleSet visit(const Zone2& zone, TriangleVisitor& visitor) const;
    // No triangle.
    TriangleSet emptySet() const { return TriangleSet(numbers); }

private:
    void requireInside(bool bSome) const;
    // The visitor, if there is one, sees the triangles.
    TriangleSet basicSet(const Zone2& zone, TriangleVisitor* pVisitor) const;
    TriangleSet all(TriangleVisitor* pVisitor) const;
    TriangleSet enclosed(const Zone2& zone, TriangleVisitor* pVisitor) const;
    TriangleSet bounded(const Zone2& zone, TriangleVisitor* pVisitor) const;
    void grow(const Zone2& zone, TriangleSet& reached, TriangleVisitor* pVisitor,
              std::vector<Triangle2*>* pList) const;
    void growAgain(Triangle2* pStart, const EdgeMarks& closed, TriangleSet& reached,
                   std::vector<Triangle2*>& vRegion) const;
    void appendInOrder(const std::vector<Triangle2*>& vRegion, std::vector<Triangle2*>& vTriangles) const;
    TriangleSet resultSet(const Zone2& zone) const;

    ZoneHost& dt;
    const EmptyInside empty;
    const RecordNumbers<Triangle2> numbers;
};

} // namespace TESK_KIVO2D
