#include "core/ChunkTree.h"

#include <algorithm>

namespace TESK_KIVO2D {

ChunkTree::ChunkTree(std::span<Point2* const> allVertices, const HC2& curve, std::size_t maxChunkSize)
    : vertices(allVertices), hc(curve), maxChunk(maxChunkSize) {
    split(0, vertices.size(), HC2::numKeyBits - 1, none);
    vNumComplete = std::vector<std::atomic<int>>(vNodes.size());
}

// Makes the node of these vertices, whose keys agree above this bit, and all below it.
std::size_t ChunkTree::split(std::size_t first, std::size_t last, int bit, std::size_t parent) {
    std::size_t middle = last;
    if (last - first > maxChunk) {
        for (; bit >= 0 && (middle == first || middle == last); --bit) {
            const auto isInLower = [&](const Point2* p) { return (hc.key(*p) >> bit & 1u) == 0; };
            middle = static_cast<std::size_t>(
                std::partition_point(vertices.begin() + static_cast<std::ptrdiff_t>(first),
                                     vertices.begin() + static_cast<std::ptrdiff_t>(last), isInLower) -
                vertices.begin());
        }
    }
    const std::size_t number = vNodes.size();
    vNodes.push_back({first, last, parent, {none, none}, RingedPart()});
    if (middle == first || middle == last) {
        vLeaves.push_back(number);
        return number;
    }
    const std::size_t lower = split(first, middle, bit, number);
    const std::size_t upper = split(middle, last, bit, number);
    vNodes[number].children[0] = lower;
    vNodes[number].children[1] = upper;
    return number;
}

void ChunkTree::triangulate(std::size_t chunk, std::span<Triangle2> records, ChunkWorker& worker) {
    std::size_t number = vLeaves[chunk];
    const Node& leaf = vNodes[number];
    vNodes[number].part = worker.triangulate(vertices.subspan(leaf.first, leaf.last - leaf.first),
                                             records.subspan(2 * leaf.first, 2 * (leaf.last - leaf.first)));
    worker.flush();
    // Whoever completes the second child merges the two.
    while (vNodes[number].parent != none) {
        number = vNodes[number].parent;
        if (vNumComplete[number].fetch_add(1, std::memory_order_acq_rel) == 0) return;
        Node& node = vNodes[number];
        const Node &lower = vNodes[node.children[0]], &upper = vNodes[node.children[1]];
        // The two records that the lower part left free; those of the upper part are left now.
        node.part = mergeRinged(lower.part, upper.part, &records[2 * lower.last - 2], worker.predicates());
    }
}

} // namespace TESK_KIVO2D
