#include "zones/enclosedTriangles.h"

#include "core/EdgeMarks.h"
#include "core/flood.h"

#include <cmath>

namespace TESK_KIVO2D {
namespace {

// What segments do to the edges of the triangulation.
struct EdgeCounts {
    EdgeMarks any; // at least one segment
    EdgeMarks odd; // an odd number of them
};

EdgeCounts countSegments(const RecordNumbers<Triangle2>& numbers,
                         const std::vector<ConstraintGraph2*>& vGraphs) {
    EdgeCounts counts = {EdgeMarks(numbers), EdgeMarks(numbers)};
    for (const ConstraintGraph2* pGraph : vGraphs) {
        for (const GraphEdge& e : edgesOf(*pGraph)) {
            counts.any.set(e.edge);
            counts.odd.flip(e.edge);
        }
    }
    return counts;
}

// Spreads over the triangulation from outside the hull, layer by layer: all that can be reached without
// crossing another closed edge, then what lies behind one, and so on.
class Layers {
public:
    Layers(const MeshStore& store, const EdgeMarks& closedEdges, const RecordNumbers<Triangle2>& numbers)
        : closed(closedEdges), reached(numbers) {
        store.forEachTriangle([this](Triangle2* pT) {
            for (int i = 0; i < 3; ++i) {
                if (pT->getOppositeTriangle(i) != nullptr) continue;
                (closed.contains({pT, i}) ? vNext : vLayer).push_back(pT);
            }
        });
    }

    // Calls onNew with each triangle of the next layer, and onBatch with all, some at a time. False when
    // there is none any more.
    template<class OnNew, class OnBatch>
    bool spread(OnNew onNew, OnBatch onBatch) {
        std::vector<Triangle2*> vStack;
        for (Triangle2* pStart : vLayer) {
            if (!reached.insert(pStart)) continue;
            onNew(pStart);
            vStack.push_back(pStart);
        }
        flood(
            vStack, closed, reached, onNew,
            [this](Triangle2* pT) {
                if (!reached.contains(pT)) vNext.push_back(pT);
            },
            onBatch);
        vLayer.swap(vNext);
        vNext.clear();
        return !vLayer.empty();
    }

private:
    const EdgeMarks& closed;
    TriangleSet reached;
    std::vector<Triangle2*> vLayer, vNext;
};

TriangleSet oddLayers(const MeshStore& store, const EdgeMarks& closed,
                      const RecordNumbers<Triangle2>& numbers, TriangleVisitor* pVisitor) {
    TriangleSet inside(numbers);
    Layers layers(store, closed, numbers);
    for (bool bOdd = false, bMore = true; bMore; bOdd = !bOdd) {
        bMore = layers.spread(
            [&](Triangle2* pT) {
                if (bOdd) inside.insert(pT);
            },
            [&](std::span<const Flooded> batch) {
                if (bOdd && pVisitor != nullptr) pVisitor->visit(batch);
            });
    }
    return inside;
}

TriangleSet allButFirstLayer(const MeshStore& store, const EdgeMarks& closed,
                             const RecordNumbers<Triangle2>& numbers) {
    TriangleSet inside(numbers);
    store.forEachTriangle([&](Triangle2* pT) { inside.insert(pT); });
    Layers(store, closed, numbers)
        .spread([&](Triangle2* pT) { inside.erase(pT); }, [](std::span<const Flooded>) {});
    return inside;
}

void cutOutHoles(ZoneHost& dt, const EdgeMarks& closed, const std::vector<Point2>& vHolePoints,
                 TriangleSet& inside) {
    TriangleSet holes(inside.numbers());
    std::vector<Triangle2*> vStack;
    for (const Point2& p : vHolePoints) {
        Triangle2* const pT =
            std::isfinite(p.x()) && std::isfinite(p.y()) ? dt.locateNear(p, nullptr) : nullptr;
        if (pT == nullptr || !holes.insert(pT)) continue;
        inside.erase(pT);
        vStack.push_back(pT);
        flood(vStack, closed, holes, [&](Triangle2* pHoleT) { inside.erase(pHoleT); });
    }
}

} // namespace

TriangleSet enclosedByParity(const MeshStore& store, const RecordNumbers<Triangle2>& numbers,
                             const std::vector<GraphEdge>& vEdges, TriangleVisitor* pVisitor) {
    EdgeMarks odd(numbers);
    for (const GraphEdge& e : vEdges)
        odd.flip(e.edge);
    return oddLayers(store, odd, numbers, pVisitor);
}

TriangleSet enclosedTriangles(ZoneHost& dt, const RecordNumbers<Triangle2>& numbers,
                              const std::vector<ConstraintGraph2*>& vGraphs, InsideRule rule,
                              const std::vector<Point2>& vHolePoints) {
    const EdgeCounts counts = countSegments(numbers, vGraphs);
    TriangleSet inside = rule == InsideRule::PARITY ? oddLayers(dt.meshStore(), counts.odd, numbers, nullptr)
                                                    : allButFirstLayer(dt.meshStore(), counts.any, numbers);
    cutOutHoles(dt, counts.any, vHolePoints, inside);
    return inside;
}

} // namespace TESK_KIVO2D
