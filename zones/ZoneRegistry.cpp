#include "zones/ZoneRegistry.h"

#include "ConstraintGraph2.h"
#include "core/HalfEdge.h"
#include "core/TriangleSet.h"
#include "kernel/assertion.h"
#include "kernel/messages.h"
#include "zones/ResultOrder.h"
#include "zones/zoneStarts.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace TESK_KIVO2D {
namespace {

constexpr const char* location = "Dt2::createZone()";

std::vector<PointerPair> borderOf(const TriangleSet& triangles) {
    std::vector<PointerPair> vEdges;
    forEachBorderEdge(triangles, [&](Triangle2* pT, int i) {
        vEdges.emplace_back(HalfEdge{pT, i}.source(), HalfEdge{pT, i}.target());
    });
    return vEdges;
}

} // namespace

ZoneRegistry::ZoneRegistry(ZoneHost& triangulation) : dt(triangulation) {}

ZoneRegistry::~ZoneRegistry() = default;

Zone2* ZoneRegistry::createZone(ConstraintGraph2* pGraph, ZoneLocation zoneLoc) {
    if (!hasTriangles()) return nullptr;
    if (zoneLoc == ZL_GLOBAL || isResult(zoneLoc)) {
        KIVO_ASSERT(pGraph == nullptr, "pConstraintGraph==NULL");
        return add(OwnedZone(new Zone2(dt, zoneLoc)));
    }
    if (pGraph == nullptr) {
        reportError("Dt::createZone()", // text kept as it is
                    "pConstraintGraph==NULL, but zoneLoc!=ZL_GLOBAL or ZL_RESULT. Returning NULL");
        return nullptr;
    }
    if (!areOwn({pGraph}) || !areOriented({pGraph})) return nullptr;
    return add(OwnedZone(new Zone2(dt, zoneLoc, pGraph)));
}

Zone2* ZoneRegistry::createZone(const std::vector<ConstraintGraph2*>& vGraphs, ZoneLocation zoneLoc) {
    if (!hasTriangles()) return nullptr;
    if (zoneLoc != ZL_INSIDE && zoneLoc != ZL_OUTSIDE) {
        reportError(location, "A zone of several constraint graphs must be ZL_INSIDE or ZL_OUTSIDE unless it "
                              "has a start point. Returning NULL");
        return nullptr;
    }
    if (vGraphs.empty()) {
        reportError(location, "No constraint graphs given. Returning NULL");
        return nullptr;
    }
    if (!areOwn(vGraphs) || !areOriented(vGraphs)) return nullptr;
    return add(OwnedZone(new Zone2(dt, zoneLoc, vGraphs)));
}

Zone2* ZoneRegistry::createZone(const std::vector<ConstraintGraph2*>& vGraphs, ZoneLocation zoneLoc,
                                const Point2& startPoint) {
    if (zoneLoc != ZL_GROW) {
        reportError(
            location,
            "This overloaded version of createZone accepts only ZL_GROW as zoneLocation. Returning NULL");
        return nullptr;
    }
    if (!areOwn(vGraphs)) return nullptr;
    if (!std::isfinite(startPoint.x()) || !std::isfinite(startPoint.y())) {
        reportWarning(location, "The start point has a coordinate that is not finite, returning NULL");
        return nullptr;
    }
    return add(OwnedZone(new Zone2(dt, vGraphs, zoneLoc, {startPoint})));
}

Zone2* ZoneRegistry::createZone(const std::vector<Triangle2*>& vTriangles) {
    const RecordNumbers<Triangle2> numbers = dt.meshStore().triangleNumbers();
    TriangleSet triangles(numbers);
    std::size_t numForeign = 0;
    for (const Triangle2* pT : vTriangles) {
        if (pT == nullptr) continue;
        const std::size_t number = numbers.find(pT);
        if (number == RecordNumbers<Triangle2>::none || pT->getCorner(0) == nullptr) {
            ++numForeign;
        } else {
            triangles.insertNumber(number);
        }
    }
    if (numForeign > 0)
        reportWarning(location, std::to_string(numForeign) +
                                    (numForeign == 1 ? " triangle is" : " triangles are") +
                                    " not of this triangulation and ignored");
    if (triangles.empty()) reportWarning(location, "No triangles given, returning NULL");
    return createGrownZone(triangles);
}

Zone2* ZoneRegistry::createEnclosedZone(const std::vector<ConstraintGraph2*>& vGraphs, InsideRule rule,
                                        const std::vector<Point2>& vHolePoints) {
    if (!hasTriangles() || !areOwn(vGraphs)) return nullptr;
    if (dt.constraints().hasPending()) dt.applyConstraintsAndZones();
    const RecordNumbers<Triangle2> numbers = dt.meshStore().triangleNumbers();
    const TriangleSet triangles = enclosedTriangles(dt, numbers, vGraphs, rule, vHolePoints);
    if (triangles.empty()) reportWarning(location, "The segments enclose no triangle, returning NULL");
    return createBoundedZone(triangles);
}

Zone2* ZoneRegistry::createResultZone(ZoneLocation zoneLoc, Zone2* pZone0, Zone2* pZone1) {
    if (!hasTriangles()) return nullptr;
    auto pZone = OwnedZone(new Zone2(dt, zoneLoc));
    for (Zone2* pOperand : {pZone0, pZone1})
        pZone->vInputZones.push_back({pOperand, pOperand->number});
    return add(std::move(pZone));
}

Zone2* ZoneRegistry::createGrownZone(const TriangleSet& triangles) {
    if (triangles.empty()) return nullptr;
    // Before the border becomes a graph: without a start point there must be none.
    const std::vector<Point2> vStarts = startPointsOf(triangles, dt.predicates());
    if (vStarts.empty()) return nullptr;
    ConstraintGraph2* const pBorder = dt.fixEdges(borderOf(triangles));
    return add(OwnedZone(new Zone2(dt, {pBorder}, ZL_GROW, vStarts)));
}

Zone2* ZoneRegistry::createBoundedZone(const TriangleSet& triangles) {
    if (triangles.empty()) return nullptr;
    ConstraintGraph2* const pBorder = dt.fixEdges(borderOf(triangles));
    OwnedZone pZone(new Zone2(dt, ZL_BOUNDED, pBorder));
    pZone->bOwnBorder = true;
    return add(std::move(pZone));
}

void ZoneRegistry::deleteZone(Zone2* pZone) {
    if (mZones.erase(pZone) == 0)
        reportWarning("Dt2::deleteZone(..)", "trying to delete a non-existing zone");
}

bool ZoneRegistry::areOwn(const std::vector<ConstraintGraph2*>& vGraphs) const {
    for (const ConstraintGraph2* pGraph : vGraphs) {
        if (pGraph == nullptr) {
            reportError(location, "A constraint graph is NULL. Returning NULL");
            return false;
        }
        if (!dt.constraints().isOwn(pGraph)) {
            reportError(location, "A constraint graph belongs to another triangulation. Returning NULL");
            return false;
        }
    }
    return true;
}

bool ZoneRegistry::areOriented(const std::vector<ConstraintGraph2*>& vGraphs) const {
    const bool bAll = std::all_of(vGraphs.begin(), vGraphs.end(),
                                  [](const ConstraintGraph2* pGraph) { return pGraph->isOriented(); });
    if (!bAll) reportWarning(location, "The constraint graph is not oriented, returning NULL");
    return bAll;
}

std::vector<Zone2*> ZoneRegistry::growingZones() const {
    std::vector<Zone2*> vZones;
    for (const auto& [pKey, pZone] : mZones) {
        if (!pZone->vStartPoints.empty()) vZones.push_back(pZone.get());
    }
    std::sort(vZones.begin(), vZones.end(),
              [](const Zone2* pA, const Zone2* pB) { return pA->number < pB->number; });
    return vZones;
}

Zone2* ZoneRegistry::add(OwnedZone pZone) {
    Zone2* const pAdded = pZone.get();
    pAdded->number = nextNumber++;
    mZones.emplace(pAdded, std::move(pZone));
    return pAdded;
}

bool ZoneRegistry::hasTriangles() const {
    if (dt.is2D()) return true;
    reportError("Dt2::createZone", "called on a triangulation which has no triangles yet. Returning NULL");
    return false;
}

} // namespace TESK_KIVO2D
