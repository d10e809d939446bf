#include "zones/ZoneEvaluation.h"

#include "core/flood.h"
#include "kernel/assertion.h"
#include "kernel/messages.h"
#include "zones/ResultOrder.h"
#include "zones/SeedFinder.h"
#include "zones/enclosedTriangles.h"
#include "zones/graphEdges.h"

#include <algorithm>
#include <array>
#include <bit>
#include <functional>
#include <optional>
#include <span>

namespace TESK_KIVO2D {
namespace {

constexpr const char* location = "Zone2::getTriangles()";

void show(TriangleVisitor* pVisitor, std::span<const Flooded> batch) {
    if (pVisitor != nullptr) pVisitor->visit(batch);
}

// Shows a set in batches. An edge is closed if what lies behind it is not in the set.
void showSet(const TriangleSet& triangles, TriangleVisitor& visitor) {
    std::array<Flooded, 64> aBatch;
    std::size_t num = 0;
    triangles.forEach([&](Triangle2* pT) {
        unsigned closed = 0;
        for (int i = 0; i < 3; ++i)
            closed |= static_cast<unsigned>(!triangles.contains(pT->getOppositeTriangle(i))) << i;
        aBatch[num++] = {pT, triangles.numbers().numberOf(pT), closed};
        if (num < aBatch.size()) return;
        visitor.visit({aBatch.data(), num});
        num = 0;
    });
    visitor.visit({aBatch.data(), num});
}

} // namespace

ZoneEvaluation::ZoneEvaluation(ZoneHost& triangulation, EmptyInside emptyInside)
    : dt(triangulation), empty(emptyInside), numbers(triangulation.meshStore().triangleNumbers()) {}

void ZoneEvaluation::list(const Zone2& zone, std::vector<Triangle2*>& vTriangles) const {
    if (zone.zoneLoc == ZL_GROW && zone.vStartPoints.size() > 1 && dt.is2D()) { // region by region
        TriangleSet reached = emptySet();
        grow(zone, reached, nullptr, &vTriangles);
    } else {
        setOf(zone).appendTo(vTriangles);
    }
}

void ZoneEvaluation::listVertices(const Zone2& zone, std::vector<Point2*>& vVertices) const {
    const RecordNumbers<Point2> vertexNumbers = dt.meshStore().vertexNumbers();
    std::vector<bool> vbListed(vertexNumbers.size());
    setOf(zone).forEach([&](Triangle2* pT) {
        for (int i = 0; i < 3; ++i) {
            const auto listed =
                vbListed.begin() + static_cast<std::ptrdiff_t>(vertexNumbers.numberOf(pT->getCorner(i)));
            if (!*listed) vVertices.push_back(pT->getCorner(i));
            *listed = true;
        }
    });
}

TriangleSet ZoneEvaluation::setOf(const Zone2& zone) const {
    if (!dt.is2D()) {
        reportWarning(location, "is2D() is false, nothing to return");
        return emptySet();
    }
    return isResult(zone.zoneLoc) ? resultSet(zone) : basicSet(zone, nullptr);
}

TriangleSet ZoneEvaluation::visit(const Zone2& zone, TriangleVisitor& visitor) const {
    if (dt.is2D() && !isResult(zone.zoneLoc)) return basicSet(zone, &visitor);
    TriangleSet set = setOf(zone);
    showSet(set, visitor);
    return set;
}

TriangleSet ZoneEvaluation::basicSet(const Zone2& zone, TriangleVisitor* pVisitor) const {
    switch (zone.zoneLoc) {
    case ZL_GLOBAL:
        return all(pVisitor);
    case ZL_INSIDE:
    case ZL_BOUNDED:
    case ZL_OUTSIDE:
        return enclosed(zone, pVisitor);
    case ZL_GROW: {
        TriangleSet reached = emptySet();
        grow(zone, reached, pVisitor, nullptr);
        return reached;
    }
    default:
        reportError(location, "unknown zoneLoc value");
        KIVO_ASSERT(false, "false");
        return emptySet();
    }
}

TriangleSet ZoneEvaluation::all(TriangleVisitor* pVisitor) const {
    TriangleSet set = emptySet();
    dt.meshStore().forEachTriangle([&](Triangle2* pT) { set.insert(pT); });
    if (pVisitor != nullptr) showSet(set, *pVisitor);
    return set;
}

void ZoneEvaluation::requireInside(bool bSome) const {
    if (bSome || empty == EmptyInside::IS_FINE) return;
    reportError(location, "An inside zone is empty - have you called Kivo_2D::applyConstraintsAndZones()?");
    KIVO_ASSERT(bSome, "!vWorkspace.empty()");
}

TriangleSet ZoneEvaluation::enclosed(const Zone2& zone, TriangleVisitor* pVisitor) const {
    KIVO_ASSERT(!zone.vConstraintGraphs.empty(), "!vConstraintGraphs.empty()");
    if (zone.bOwnBorder && !zone.vConstraintGraphs.front()->isPolygon()) return bounded(zone, pVisitor);
    EdgeMarks closed(numbers);
    SeedFinder seedFinder(dt.meshStore(), numbers);
    std::vector<Triangle2*> vSeeds;
    for (const ConstraintGraph2* pGraph : zone.vConstraintGraphs) {
        const std::vector<GraphEdge> vEdges = edgesOf(*pGraph);
        for (const GraphEdge& e : vEdges)
            closed.set(e.edge);
        seedFinder.append(*pGraph, vEdges, zone.zoneLoc != ZL_OUTSIDE, vSeeds);
    }
    requireInside(!vSeeds.empty() || zone.zoneLoc == ZL_OUTSIDE);
    TriangleSet reached = emptySet();
    std::vector<Triangle2*> vFront;
    const auto nothing = [](const Triangle2*) {};
    for (Triangle2* pSeed : vSeeds) {
        if (!reached.insert(pSeed)) continue;
        vFront.push_back(pSeed);
        flood(vFront, closed, reached, nothing, nothing,
              [pVisitor](std::span<const Flooded> batch) { show(pVisitor, batch); });
    }
    return reached;
}

// Rings that are a border together. Their directions tell the inside too, but not for ever: see SeedFinder.
TriangleSet ZoneEvaluation::bounded(const Zone2& zone, TriangleVisitor* pVisitor) const {
    TriangleSet inside =
        enclosedByParity(dt.meshStore(), numbers, edgesOf(*zone.vConstraintGraphs.front()), pVisitor);
    requireInside(!inside.empty());
    return inside;
}

// Regions of different start points are equal or have nothing in common.
void ZoneEvaluation::grow(const Zone2& zone, TriangleSet& reached, TriangleVisitor* pVisitor,
                          std::vector<Triangle2*>* pList) const {
    EdgeMarks closed(numbers);
    for (const ConstraintGraph2* pGraph : zone.vConstraintGraphs) {
        for (const GraphEdge& e : edgesOf(*pGraph))
            closed.set(e.edge);
    }
    std::vector<Triangle2*> vStack, vRegion;
    Triangle2* pPrevious = nullptr; // start points of many parts come in an order by place
    for (const Point2& start : zone.vStartPoints) {
        Triangle2* const pStart = dt.locateNear(start, pPrevious);
        if (pStart == nullptr) {
            reportWarning("growZoneArea()",
                          "pVtx is outside the convex hull of the triangulation, no triangles returned");
            continue;
        }
        pPrevious = pStart;
        vRegion.clear();
        if (reached.insert(pStart)) {
            vRegion.push_back(pStart);
            vStack.push_back(pStart);
            flood(
                vStack, closed, reached,
                [&](Triangle2* pT) {
                    if (pList != nullptr) vRegion.push_back(pT);
                },
                [](const Triangle2*) {}, [&](std::span<const Flooded> batch) { show(pVisitor, batch); });
        } else if (pList != nullptr) {
            growAgain(pStart, closed, reached, vRegion);
        }
        if (pList != nullptr) appendInOrder(vRegion, *pList);
    }
}

// Lists a region that was reached before.
void ZoneEvaluation::growAgain(Triangle2* pStart, const EdgeMarks& closed, TriangleSet& reached,
                               std::vector<Triangle2*>& vRegion) const {
    reached.erase(pStart);
    vRegion.push_back(pStart);
    for (std::size_t next = 0; next < vRegion.size(); ++next) {
        const Triangle2* const pT = vRegion[next];
        for (int i = 0; i < 3; ++i) {
            Triangle2* const pN = pT->getOppositeTriangle(i);
            if (pN == nullptr || (closed.bitsOf(pT) >> i & 1) != 0 || !reached.contains(pN)) continue;
            reached.erase(pN);
            vRegion.push_back(pN);
        }
    }
    for (const Triangle2* pT : vRegion)
        reached.insert(pT);
}

// Sorts a small region; walks through a set for a large one.
void ZoneEvaluation::appendInOrder(const std::vector<Triangle2*>& vRegion,
                                   std::vector<Triangle2*>& vTriangles) const {
    const std::size_t num = vRegion.size();
    if (num * std::bit_width(num) < numbers.size() / 64) {
        const auto begin = vTriangles.insert(vTriangles.end(), vRegion.begin(), vRegion.end());
        std::sort(begin, vTriangles.end(), [this](const Triangle2* pA, const Triangle2* pB) {
            return numbers.numberOf(pA) < numbers.numberOf(pB);
        });
        return;
    }
    TriangleSet region = emptySet();
    for (const Triangle2* pT : vRegion)
        region.insert(pT);
    region.appendTo(vTriangles);
}

TriangleSet ZoneEvaluation::resultSet(const Zone2& zone) const {
    ResultOrder order(dt.zoneRegistry(), zone);
    if (order.meetsDeletedZone()) {
        reportWarning(location, "An input zone has been deleted, nothing to return");
        return emptySet();
    }
    std::vector<std::optional<TriangleSet>> vSets(order.steps().size());
    for (std::size_t i = 0; i < vSets.size(); ++i) {
        const ResultOrder::Step& step = order.steps()[i];
        if (!isResult(step.pZone->zoneLoc)) {
            vSets[i] = basicSet(*step.pZone, nullptr);
            continue;
        }
        const auto [first, second] = step.aOperands;
        TriangleSet set = step.bFirstEnds ? std::move(*vSets[first]) : *vSets[first];
        const TriangleSet& other = first == second ? set : *vSets[second];
        switch (step.pZone->zoneLoc) {
        case ZL_RESULT_UNION:
            set.combine(other, std::bit_or<>{});
            break;
        case ZL_RESULT_INTERSECTION:
            set.combine(other, std::bit_and<>{});
            break;
        case ZL_RESULT_DIFFERENCE:
            set.combine(other, [](std::uint64_t a, std::uint64_t b) { return a & ~b; });
            break;
        default:
            set.combine(other, std::bit_xor<>{});
        }
        vSets[i] = std::move(set);
        if (step.bFirstEnds) vSets[first].reset();
        if (step.bSecondEnds) vSets[second].reset();
    }
    return std::move(*vSets.back());
}

} // namespace TESK_KIVO2D
