#include "core/InserterMT.h"

#include "core/ChunkTree.h"
#include "core/MeshStore.h"

#include <atomic>
#include <deque>
#include <utility>

namespace TESK_KIVO2D {
namespace {

// Adds up what the threads report, for the listeners, who are called in one thread only.
class JointProgress {
public:
    explicit JointProgress(ProgressHub::Operation& operation) : progress(operation) {}

    // In any thread.
    void add(std::size_t num) { numDone.fetch_add(num, std::memory_order_relaxed); }
    // In the caller's thread.
    void tell() {
        const std::size_t num = numDone.load(std::memory_order_relaxed);
        if (num > numTold) progress.advance(num - std::exchange(numTold, num));
    }

private:
    ProgressHub::Operation& progress;
    std::atomic<std::size_t> numDone{0};
    std::size_t numTold = 0;
};

} // namespace

bool InserterMT::triangulate(std::span<Point2* const> vertices, std::span<Triangle2> records,
                             MeshStore& store) {
    if (vertices.empty()) return false;
    JointProgress joint(progress);
    std::deque<ChunkWorker> dChunkWorkers;
    for (int thread = 0; thread < workers.size(); ++thread) {
        dChunkWorkers.emplace_back(maxAbsCoord, [&joint, thread](std::size_t num) {
            joint.add(num);
            if (thread == 0) joint.tell();
        });
    }
    ChunkTree tree(vertices, hc, maxChunk);
    workers.run(
        tree.numberOfChunks(),
        [&](std::size_t chunk, int thread) {
            tree.triangulate(chunk, records, dChunkWorkers[static_cast<std::size_t>(thread)]);
        },
        [&] { joint.tell(); });
    for (ChunkWorker& worker : dChunkWorkers) {
        work += worker.workCounts();
        stages += worker.predicates().stageCounts();
    }
    joint.tell();
    const bool b2D = removeGhosts(tree.whole(), store);
    store.reserveRetired(2);
    store.retireTriangle(&records[records.size() - 2]);
    store.retireTriangle(&records[records.size() - 1]);
    return b2D;
}

} // namespace TESK_KIVO2D
