#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace TESK_KIVO2D {

/// The rules of a mesh (see `MeshGenParams`).
enum class MeshRule {
    MIN_ANGLE,   ///< `minAngleDegree`, with `capAspectLimit`
    EDGE_LENGTH, ///< `maxEdgeLength`
    AREA,        ///< `maxTriangleArea`
    GROWTH       ///< `growFactor`
};

/// Why a triangle still breaks a rule.
enum class MeshObstacle {
    SMALL_INPUT_ANGLE, ///< it lies in, or was cut off by, the corner between two constraints at a small angle
    MIN_EDGE_LENGTH,   ///< the constraint segment in the way is shorter than twice `minEdgeLength`
    SPLITTING_FORBIDDEN, ///< the constraint segment in the way must not be split
    ARITHMETIC,          ///< doubles leave no room for another point
    OPEN_BORDER,         ///< the edge in the way is no constraint segment
    NOT_REACHED          ///< the run ended before its turn came: see `RefinementReport::end`
};

/// How a refinement ended.
enum class RefinementEnd {
    COMPLETE,      ///< there was nothing left to do
    PASS_LIMIT,    ///< after 50 passes
    POINT_LIMIT,   ///< after `MeshGenParams::maxInsertedPoints` points
    OUT_OF_MEMORY, ///< memory ran out: only the counts of points hold
    STOPPED,       ///< `MeshGenParams::pStopRequest`
    ABANDONED ///< a function of the caller's threw, or the call was refused: only the counts of points hold
};

/// What a refinement did, and what it could not do (see `Kivo_2D::getRefinementReport`).
struct RefinementReport {
    static constexpr std::size_t numRules = 4;     ///< Number of rules.
    static constexpr std::size_t numObstacles = 6; ///< Number of obstacles.

    /// How it ended. ABANDONED before the first run.
    RefinementEnd end = RefinementEnd::ABANDONED;
    /// Vertices inserted by grid meshing, on constraint segments too.
    std::uint64_t numGridPoints = 0;
    /// Vertices inserted in the interior of the zone, those of the grid left out.
    std::uint64_t numInnerPoints = 0;
    /// Vertices inserted on constraint segments.
    std::uint64_t numSegmentPoints = 0;
    /// Passes that changed the mesh.
    int numPasses = 0;
    /// Triangles of the zone at the end.
    std::uint64_t numTriangles = 0;
    /// Triangles that break at least one rule.
    std::uint64_t numBadTriangles = 0;
    /// By rule and obstacle, the number of triangles that break the rule because of the obstacle. A triangle
    /// that breaks several rules counts for each.
    std::array<std::array<std::uint64_t, numObstacles>, numRules> aBad = {};

    /// The number of triangles that break the rule because of the obstacle.
    std::uint64_t numBad(MeshRule rule, MeshObstacle obstacle) const {
        return aBad[static_cast<std::size_t>(rule)][static_cast<std::size_t>(obstacle)];
    }
    /// The number of triangles that break the rule.
    std::uint64_t numBad(MeshRule rule) const {
        std::uint64_t num = 0;
        for (const std::uint64_t n : aBad[static_cast<std::size_t>(rule)])
            num += n;
        return num;
    }
};

} // namespace TESK_KIVO2D
