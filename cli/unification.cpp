#include "cli/unification.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace cli {

namespace {

using TESK_KIVO2D::ConstraintGraph2;
using TESK_KIVO2D::Kivo_2D;
using TESK_KIVO2D::Point2;
using TESK_KIVO2D::Triangle2;
using TESK_KIVO2D::Zone2;

constexpr std::size_t NO_POSITION = static_cast<std::size_t>(-1);

std::size_t positionOf(const Point2* pVertex) { return static_cast<std::size_t>(pVertex->getCustomIndex()); }

double sqDistanceOf(const Point2& p, const Point2& q) {
    return (p.x() - q.x()) * (p.x() - q.x()) + (p.y() - q.y()) * (p.y() - q.y());
}

// Where the vertices of the table are after the move.
class Survivors {
public:
    Survivors(const Kivo_2D& triangulation_, double width_, PointTable& table)
        : triangulation(triangulation_), width(width_), vBefore(table.vPoints),
          vByPosition(table.vPoints.size(), nullptr) {
        std::vector<Point2*> vVertices;
        triangulation.getVertexPointers(vVertices);
        for (const Point2* pVertex : vVertices) {
            vByPosition[positionOf(pVertex)] = pVertex;
            table.vPoints[positionOf(pVertex)] = *pVertex;
        }
        triangulation.getConvexHull(true, vHull);
    }

    const Point2& at(std::size_t position) const { return *vByPosition[position]; }

    // The point itself, or the one with which it fell together.
    std::size_t of(std::size_t position) const {
        if (vByPosition[position] != nullptr) return position;
        const Point2 target(onGrid(vBefore[position].x()), onGrid(vBefore[position].y()));
        const Triangle2* const pT = triangulation.locate(target);
        if (pT == nullptr) return nearestOf(vHull, target);
        return nearestOf({pT->getCorner(0), pT->getCorner(1), pT->getCorner(2)}, target);
    }

private:
    // Rounds halves to even, as the library does: else what was half-way would be sought on the other side.
    double onGrid(double coordinate) const {
        const double moved = std::nearbyint(coordinate / width) * width;
        return std::isfinite(moved) ? moved : coordinate;
    }
    static std::size_t nearestOf(const std::vector<Point2*>& vCandidates, const Point2& target) {
        return positionOf(*std::min_element(vCandidates.begin(), vCandidates.end(),
                                            [&target](const Point2* p, const Point2* q) {
                                                return sqDistanceOf(*p, target) < sqDistanceOf(*q, target);
                                            }));
    }

    const Kivo_2D& triangulation;
    double width;
    std::vector<Point2> vBefore;
    std::vector<const Point2*> vByPosition;
    std::vector<Point2*> vHull;
};

// Follows constraint edges over their pieces, which vertices that came to lie on them made.
class PieceWalk {
public:
    PieceWalk(const Kivo_2D& triangulation_, const Survivors& survivors_)
        : triangulation(triangulation_), survivors(survivors_), vPieces(listConstraintEdges(triangulation_)) {
        for (std::size_t i = vPieces.size(); i-- > 0;)
            vPieces.emplace_back(vPieces[i].second, vPieces[i].first);
        std::sort(vPieces.begin(), vPieces.end());
    }

    // Appends the pieces; false when there is no way to the target.
    bool follow(ConstraintEdge edge, std::vector<ConstraintEdge>& vEdges) {
        const std::size_t end = edge.target;
        while (edge.source != end) {
            edge.target = next(edge.source, end);
            if (edge.target == NO_POSITION) return false;
            vEdges.push_back(edge);
            edge.source = edge.target;
        }
        return true;
    }

private:
    std::size_t next(std::size_t from, std::size_t end) const {
        if (std::binary_search(vPieces.begin(), vPieces.end(), PositionPair(from, end))) return end;
        auto it = std::lower_bound(vPieces.begin(), vPieces.end(), PositionPair(from, 0));
        for (; it != vPieces.end() && it->first == from; ++it)
            if (isBetween(survivors.at(from), survivors.at(it->second), survivors.at(end))) return it->second;
        return NO_POSITION;
    }
    bool isBetween(const Point2& from, const Point2& via, const Point2& end) const {
        const auto inOrder = [](double a, double b, double c) {
            return (a <= b && b <= c) || (a >= b && b >= c);
        };
        return triangulation.getOrientation(from, end, via) == TESK_KIVO2D::ORIENTATION2_COLLINEAR &&
               inOrder(from.x(), via.x(), end.x()) && inOrder(from.y(), via.y(), end.y());
    }

    const Kivo_2D& triangulation;
    const Survivors& survivors;
    std::vector<PositionPair> vPieces; // in both directions, ascending
};

void followSegments(const Kivo_2D& triangulation, const Survivors& survivors, Constraints& constraints) {
    PieceWalk walk(triangulation, survivors);
    std::vector<ConstraintEdge> vEdges;
    for (ConstraintEdge edge : constraints.vEdges) {
        edge.source = survivors.of(edge.source);
        edge.target = survivors.of(edge.target);
        if (!walk.follow(edge, vEdges)) ++constraints.numMissing;
    }
    constraints.vEdges = vEdges;
}

} // namespace

UnifyReport unifyGrid(Kivo_2D& triangulation, Zone2* pZone, double width, PointTable& table,
                      Constraints& constraints) {
    UnifyReport report;
    report.width = width;
    const std::size_t numBefore = triangulation.numberOfPoints();
    Zone2* const pMoved = pZone != nullptr ? pZone
                                           : triangulation.createZone(static_cast<ConstraintGraph2*>(nullptr),
                                                                      TESK_KIVO2D::ZL_GLOBAL);
    report.numBeside = pMoved->unifyGrid(width);
    if (pMoved != pZone) triangulation.deleteZone(pMoved);
    report.numMerged = numBefore - triangulation.numberOfPoints();
    const Survivors survivors(triangulation, width, table);
    followSegments(triangulation, survivors, constraints);
    return report;
}

} // namespace cli
