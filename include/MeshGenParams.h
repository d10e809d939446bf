#pragma once

#include "Vector2.h"
#include "export.h"
#include "fwd.h"

#include <atomic>
#include <cfloat>
#include <cstdint>

namespace TESK_KIVO2D {

/// What a mesh of a zone has to be like, for `Kivo_2D::refineAdvanced`.
///
/// Derive from it and override `getMaxTriangleArea` and `getMaxEdgeLength` where limits vary over the plane.
/// Lengths, areas and coordinates are in the unit of the points, angles in degrees.
///
/// Limits that are not numbers, zero or negative count as switched off; `refineAdvanced` names them in one
/// warning. So does a `growFactor` of 1 or less, which no mesh can keep, and a `minEdgeLength` that is
/// negative or not a number. Answers of that kind from the two functions switch the limit off for that
/// triangle, silently.
class KIVO_API MeshGenParams {
public:
    /// The defaults for a zone, which must be a `ZL_INSIDE` or `ZL_BOUNDED` zone
    /// (`Zone2::convertToBoundedZone` makes one of any other); anything else is printed and throws
    /// `KivoException`. The zone may be null here, but not in `refineAdvanced`.
    explicit MeshGenParams(Zone2* pZone);
    virtual ~MeshGenParams();
    /// Copies all fields.
    MeshGenParams(const MeshGenParams& other) = default;
    /// Copies all fields.
    MeshGenParams& operator=(const MeshGenParams& other) = default;

    /// The largest area that this triangle may have: `maxTriangleArea`, unless overridden.
    ///
    /// Called for each triangle that comes into being, many times a point that is inserted. It may look at
    /// the triangle and its surroundings, but must not change the triangulation, its constraints or zones.
    /// It may throw: refinement ends, the triangulation stays valid with what was inserted so far, and the
    /// exception reaches the caller of `refineAdvanced`. (Only `std::bad_alloc` is taken for memory that ran
    /// out, whoever throws it.)
    virtual double getMaxTriangleArea(Triangle2* pT) const;
    /// The longest edge that this triangle may have: `maxEdgeLength`, unless overridden. As above.
    virtual double getMaxEdgeLength(Triangle2* pT) const;

    /// The zone to mesh; owned by its triangulation.
    Zone2* pZone;
    /// The smallest interior angle wanted, in degrees; at most 30. Beside constraints that meet at a smaller
    /// angle, smaller ones stay.
    double minAngleDegree = 20.0;
    /// Constraint segments shorter than twice this length are not split. 0: no limit but that of doubles.
    double minEdgeLength = 0.001;
    /// Upper bound on the length of edges.
    double maxEdgeLength = DBL_MAX;
    /// Upper bound on the area of triangles.
    double maxTriangleArea = DBL_MAX;
    /// Whether constraint segments may be split. Conforming ones in the zone and at its
    /// border stay Delaunay as far as they may. If not,
    /// triangles beside the border that are bad may stay.
    bool bAllowConstraintSplitting = true;
    /// The largest ratio between the area of a triangle and that of a neighbour in the zone.
    double growFactor = DBL_MAX;
    /// Neighbours with a smaller area do not count for `growFactor`.
    double growFactorMinArea = 0.001;
    /// A triangle with an angle above 150 degrees also breaks the angle rule, if that is on, when its longest
    /// edge is more than this many times its height. With `minAngleDegree` above 11.5 the default of 10 never
    /// matters.
    double capAspectLimit = 10.0;
    /// Direction of grid meshing; its length does not matter.
    Vector2 gridVector = Vector2(0.0, 0.0);
    /// Spacing of grid meshing, which happens when this is positive and `gridVector` is not (0, 0): before
    /// anything is refined, the zone is filled with the points of a square grid in the direction of
    /// `gridVector`, in its phase through the origin, as far as they keep half this distance from vertices
    /// and constraint segments. Triangles between them are halves of squares, all cut the same way. Points
    /// that lie on a segment are inserted too, and split it, where its pieces may be that short and nothing
    /// else is near: so a rectangle along the grid becomes nothing but halves of squares. Refinement fills
    /// the space up to the border, and breaks grid triangles only where they break a limit. A second run
    /// finds the grid and adds nothing to it.
    ///
    /// Directions that are not along an axis are rounded by at most 1e-9, to steps that make all cells exact
    /// squares, if the length is at least some 5e-7 of the largest coordinate.
    ///
    /// A length or direction that is not finite, and a grid of more than `maxInsertedPoints` points or too
    /// fine for doubles (below 128 units in the last place of the largest coordinate), is a warning, and only
    /// refinement happens.
    double gridLength = 0.0;
    /// Forget the record of vertices that were inserted by earlier refinements before starting.
    bool bClearInnerVertices = true;
    /// 1: print why each triangle is refined, and draw it into a PostScript file "need_..." in the working
    /// directory. Slow.
    std::int32_t debugMode = 0;
    /// Refinement ends with a warning, and a valid mesh, when it has inserted so many points. A point takes
    /// about 130 bytes, one on a constraint segment some 500.
    std::uint64_t maxInsertedPoints = 50000000;
    /// Refinement ends, with a valid mesh, soon after this becomes true. Null, or a flag of the caller's that
    /// another thread, a listener or a signal handler sets.
    const std::atomic<bool>* pStopRequest = nullptr;
};

} // namespace TESK_KIVO2D
