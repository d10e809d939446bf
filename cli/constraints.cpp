#include "cli/constraints.h"

#include "cli/interpolation.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <unordered_set>
#include <utility>

namespace cli {

namespace {

using TESK_KIVO2D::ConstraintGraph2;
using TESK_KIVO2D::ConstraintSegment2;
using TESK_KIVO2D::Kivo_2D;
using TESK_KIVO2D::Point2;
using TESK_KIVO2D::Segment2;
using TESK_KIVO2D::Triangle2;

std::size_t positionOf(const Point2* pVertex) { return static_cast<std::size_t>(pVertex->getCustomIndex()); }

// A segment whose ends are different vertices.
struct Span {
    const Point2* pSource;
    const Point2* pTarget;
    int marker;
};

std::vector<Span> spansOf(const std::vector<InputSegment>& vSegments, const std::vector<Point2*>& vHandles) {
    std::vector<Span> vSpans;
    for (std::size_t i = 0; i < vSegments.size(); ++i) {
        const Point2* const pSource = vHandles[vSegments[i].source];
        const Point2* const pTarget = vHandles[vSegments[i].target];
        if (pSource != pTarget) vSpans.push_back({pSource, pTarget, vSegments[i].marker});
    }
    return vSpans;
}

// Walks along the segments, one after the other, down to the pieces that they were split into. What was met
// already is passed over, so that all walks together visit each piece once.
class SegmentWalk {
public:
    SegmentWalk(PointTable& table_, std::size_t firstSteiner_)
        : table(table_), firstSteiner(firstSteiner_), vSteinerDone(table_.vPoints.size() - firstSteiner_) {}

    // Appends the pieces from the segment's source to its target.
    void follow(const Span& span, const ConstraintSegment2* pWhole, std::vector<ConstraintEdge>& vEdges) {
        std::vector<Piece> vStack{{pWhole, span.pSource}};
        while (!vStack.empty()) {
            const auto [pPiece, pFrom] = vStack.back();
            vStack.pop_back();
            if (!sVisited.insert(pPiece).second) continue;
            const bool bForwards = pPiece->getSrc() == pFrom;
            const Point2* const pTo = bForwards ? pPiece->getTrg() : pPiece->getSrc();
            if (pPiece->isAlive()) {
                vEdges.push_back({positionOf(pFrom), positionOf(pTo), span.marker});
                continue;
            }
            ConstraintSegment2* pNear = nullptr;
            ConstraintSegment2* pFar = nullptr;
            Point2* pSplit = nullptr;
            pPiece->getChildrenAndSplitPoint(pNear, pFar, pSplit);
            if (!bForwards) std::swap(pNear, pFar);
            inherit(span, positionOf(pSplit));
            vStack.push_back({pFar, pSplit});
            vStack.push_back({pNear, pFrom});
        }
    }

private:
    struct Piece {
        const ConstraintSegment2* pSegment;
        const Point2* pFrom;
    };

    void inherit(const Span& span, std::size_t position) {
        if (position < firstSteiner || vSteinerDone[position - firstSteiner]) return;
        vSteinerDone[position - firstSteiner] = true;
        interpolateAlong(table, position, positionOf(span.pSource), positionOf(span.pTarget));
        if (table.bWithMarkers) table.vMarkers[position] = span.marker;
    }

    PointTable& table;
    std::size_t firstSteiner;
    std::vector<bool> vSteinerDone;
    std::unordered_set<const ConstraintSegment2*> sVisited; // only asked, never listed
};

// Positions, those of spans with a marker other than 0 first.
std::vector<std::size_t> orderOfOwnership(const std::vector<Span>& vSpans) {
    std::vector<std::size_t> vOrder(vSpans.size());
    std::iota(vOrder.begin(), vOrder.end(), std::size_t{0});
    std::stable_partition(vOrder.begin(), vOrder.end(),
                          [&vSpans](std::size_t i) { return vSpans[i].marker != 0; });
    return vOrder;
}

std::map<PositionPair, const ConstraintSegment2*> originalsByEnds(const ConstraintGraph2& graph) {
    std::vector<ConstraintSegment2*> vOriginals;
    graph.getOriginalConstraintSegments(vOriginals);
    std::map<PositionPair, const ConstraintSegment2*> mOriginals;
    for (const ConstraintSegment2* pOriginal : vOriginals)
        mOriginals.emplace(pairOf(pOriginal->getSrc(), pOriginal->getTrg()), pOriginal);
    return mOriginals;
}

std::vector<ConstraintEdge> collectEdges(const ConstraintGraph2& graph, const std::vector<Span>& vSpans,
                                         PointTable& table, std::size_t firstSteiner) {
    const auto mOriginals = originalsByEnds(graph);
    SegmentWalk walk(table, firstSteiner);
    std::vector<std::vector<ConstraintEdge>> vEdgesOf(vSpans.size());
    for (const std::size_t i : orderOfOwnership(vSpans)) {
        const auto it = mOriginals.find(pairOf(vSpans[i].pSource, vSpans[i].pTarget));
        if (it != mOriginals.end()) walk.follow(vSpans[i], it->second, vEdgesOf[i]);
    }
    std::vector<ConstraintEdge> vEdges;
    for (const std::vector<ConstraintEdge>& vOfOne : vEdgesOf)
        vEdges.insert(vEdges.end(), vOfOne.begin(), vOfOne.end());
    return vEdges;
}

// Along each of the knives. Pieces of segments are marked, and not appended.
void appendCuts(const ConstraintGraph2& cuts, std::vector<ConstraintEdge>& vEdges) {
    std::map<PositionPair, std::size_t> mPlaces;
    for (std::size_t i = 0; i < vEdges.size(); ++i)
        mPlaces.emplace(pairOf(vEdges[i]), i);
    std::vector<Point2*> vEnds;
    cuts.getPolygonVertices(vEnds);
    for (std::size_t i = 0; i < vEnds.size(); i += 2) {
        const auto [it, bNew] = mPlaces.emplace(pairOf(vEnds[i], vEnds[i + 1]), vEdges.size());
        if (bNew) vEdges.push_back({positionOf(vEnds[i]), positionOf(vEnds[i + 1]), 0, false});
        vEdges[it->second].bCut = true;
    }
}

// Those that are there and not in the list yet.
void appendOthers(const std::vector<PositionPair>& vPresent, std::vector<ConstraintEdge>& vEdges) {
    std::vector<PositionPair> vListed;
    vListed.reserve(vEdges.size());
    for (const ConstraintEdge& edge : vEdges)
        vListed.push_back(pairOf(edge));
    std::sort(vListed.begin(), vListed.end());
    for (const PositionPair& pair : vPresent) {
        if (!std::binary_search(vListed.begin(), vListed.end(), pair))
            vEdges.push_back({pair.first, pair.second, 0, false});
    }
}

// Removes the pieces that are not there and returns their number.
std::size_t removeMissing(const std::vector<PositionPair>& vPresent, std::vector<ConstraintEdge>& vEdges) {
    const auto isMissing = [&vPresent](const ConstraintEdge& edge) {
        return !std::binary_search(vPresent.begin(), vPresent.end(), pairOf(edge));
    };
    const auto firstRemoved = std::remove_if(vEdges.begin(), vEdges.end(), isMissing);
    const auto numMissing = static_cast<std::size_t>(vEdges.end() - firstRemoved);
    vEdges.erase(firstRemoved, vEdges.end());
    return numMissing;
}

std::size_t countCrossings(const std::vector<ConstraintEdge>& vEdges, std::size_t firstSteiner,
                           std::size_t numPoints) {
    std::vector<std::size_t> vDegree(numPoints - firstSteiner, 0);
    for (const ConstraintEdge& edge : vEdges) {
        for (const std::size_t end : {edge.source, edge.target}) {
            if (end >= firstSteiner) ++vDegree[end - firstSteiner];
        }
    }
    const auto isCrossing = [](std::size_t degree) { return degree > 2; };
    return static_cast<std::size_t>(std::count_if(vDegree.begin(), vDegree.end(), isCrossing));
}

} // namespace

PositionPair pairOf(const Point2* p, const Point2* q) { return std::minmax(positionOf(p), positionOf(q)); }

PositionPair pairOf(const ConstraintEdge& edge) { return std::minmax(edge.source, edge.target); }

Constraints insertSegments(Kivo_2D& triangulation, Input& input, const std::vector<Point2*>& vHandles,
                           TESK_KIVO2D::ConstraintInsertionStrategy strategy) {
    const std::vector<Span> vSpans = spansOf(input.domain.vSegments, vHandles);
    Constraints constraints;
    constraints.numSkipped = input.domain.vSegments.size() - vSpans.size();
    constraints.firstSteiner = input.table.vPoints.size();
    if (vSpans.empty()) return constraints;
    std::vector<Segment2> vSegments;
    for (const Span& span : vSpans)
        vSegments.emplace_back(*span.pSource, *span.pTarget);
    constraints.pGraph = triangulation.createConstraint(vSegments, strategy);
    collectSegments(triangulation, input, vHandles, constraints);
    constraints.numSteinerPoints = input.table.vPoints.size() - constraints.firstSteiner;
    constraints.numCrossings =
        countCrossings(constraints.vEdges, constraints.firstSteiner, input.table.vPoints.size());
    return constraints;
}

std::size_t addNewVertices(const Kivo_2D& triangulation, PointTable& table) {
    const std::size_t firstNew = table.vPoints.size();
    std::vector<Point2*> vVertices;
    triangulation.getVertexPointers(vVertices);
    for (Point2* pVertex : vVertices) {
        if (pVertex->getCustomIndex() >= 0) continue;
        pVertex->setCustomIndex(static_cast<int>(table.vPoints.size()));
        table.vPoints.push_back(*pVertex);
    }
    table.vAttributes.resize(table.vPoints.size() * table.numAttributes, 0.0);
    if (table.bWithMarkers) table.vMarkers.resize(table.vPoints.size(), 0);
    return firstNew;
}

std::vector<PositionPair> listConstraintEdges(const Kivo_2D& triangulation) {
    std::vector<PositionPair> vEdges;
    if (!triangulation.is2D()) return vEdges;
    std::vector<Triangle2*> vTriangles;
    triangulation.getTrianglePointers(vTriangles);
    for (Triangle2* pT : vTriangles) {
        for (int i = 0; i < 3; ++i) {
            if (!triangulation.isConstraint(pT, i)) continue;
            vEdges.push_back(
                pairOf(pT->getCorner(Triangle2::incIndexBy1(i)), pT->getCorner(Triangle2::incIndexBy2(i))));
        }
    }
    std::sort(vEdges.begin(), vEdges.end());
    vEdges.erase(std::unique(vEdges.begin(), vEdges.end()), vEdges.end());
    return vEdges;
}

void collectSegments(const Kivo_2D& triangulation, Input& input, const std::vector<Point2*>& vHandles,
                     Constraints& constraints) {
    PointTable& table = input.table;
    addNewVertices(triangulation, table);
    // Steiner points have the markers of their segments also where the points had none.
    if (input.domain.bWithMarkers && table.vPoints.size() > constraints.firstSteiner && !table.bWithMarkers) {
        table.bWithMarkers = true;
        table.vMarkers.assign(table.vPoints.size(), 0);
    }
    const std::vector<Span> vSpans = spansOf(input.domain.vSegments, vHandles);
    constraints.vEdges.clear();
    if (constraints.pGraph != nullptr)
        constraints.vEdges = collectEdges(*constraints.pGraph, vSpans, table, constraints.firstSteiner);
    if (constraints.pCuts != nullptr) appendCuts(*constraints.pCuts, constraints.vEdges);
    if (!triangulation.is2D()) return;
    const std::vector<PositionPair> vPresent = listConstraintEdges(triangulation);
    constraints.numMissing = removeMissing(vPresent, constraints.vEdges);
    appendOthers(vPresent, constraints.vEdges);
}

} // namespace cli
