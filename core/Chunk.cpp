#include "core/Chunk.h"

#include "core/MeshStore.h"
#include "core/RangeInserter.h"
#include "core/firstTriangle.h"
#include "core/hull.h"
#include "kernel/assertion.h"

#include <algorithm>
#include <utility>

namespace TESK_KIVO2D {

ChunkWorker::ChunkWorker(double maxAbsCoord, std::function<void(std::size_t)> reportInserted)
    : report(std::move(reportInserted)) {
    tests.setStaticBound(maxAbsCoord);
    tests.prepareInCircle();
    vLocalCheckT.reserve(256);
}

RingedPart ChunkWorker::triangulate(std::span<Point2* const> vertices, std::span<Triangle2> records) {
    KIVO_ASSERT(vLocalCheckT.empty(), "vLocalCheckT.empty()");
    RingedPart part;
    for (Point2* const pVtx : vertices)
        part.add(pVtx);
    MeshStore store(records);
    Point2* corners[3];
    if (!FirstTriangleSearch().find(vertices, tests, corners)) {
        std::vector<Point2*> vLine(vertices.begin(), vertices.end());
        std::sort(vLine.begin(), vLine.end(), [](const Point2* p, const Point2* q) { return *p < *q; });
        makeLine(vLine.data(), vLine.size(), store);
        for (std::size_t i = 0; i < vertices.size(); ++i)
            advance();
        return part;
    }
    Triangle2* const pFirst = store.createTriangle(corners[0], corners[1], corners[2]);
    HullLinks hullLinks;
    RangeInserter(InsertionSite{store, tests, hullLinks, nullptr, vLocalCheckT}, work, *this)
        .insert(vertices.data(), vertices.data() + vertices.size(), pFirst);
    addGhosts(part, store);
    return part;
}

void ChunkWorker::duplicate(Point2*, Point2*) {
    KIVO_ASSERT(false, "vertexVault.dupIsClean()"); // the vertices are different
}

void ChunkWorker::flush() { report(std::exchange(numSilent, 0)); }

} // namespace TESK_KIVO2D
