#pragma once

namespace TESK_KIVO2D {

/// How a constraint segment becomes part of the triangulation.
enum ConstraintInsertionStrategy : int {
    /// The segment is divided by new vertices until each piece is a Delaunay edge: the triangulation stays
    /// Delaunay.
    CIS_CONFORMING_DELAUNAY = 0,
    /// The segment is forced in as an edge: the triangulation becomes constrained Delaunay.
    CIS_CONSTRAINED_DELAUNAY = 1
};

} // namespace TESK_KIVO2D
