#pragma once

#include "Point2.h"
#include "Triangle2.h"
#include "core/Chunk.h"
#include "core/GhostRing.h"
#include "core/HC2.h"

#include <atomic>
#include <cstddef>
#include <span>
#include <vector>

namespace TESK_KIVO2D {

// The vertices of a batch, split in two again and again by the bits of their keys: each time by a line
// parallel to an axis, since so are the cells of the curve. Its leaves are the chunks. The tree depends on
// the vertices and on the largest size of a chunk, and on nothing else.
class ChunkTree {
public:
    // The vertices are in the order of their keys. Chunks are larger than the largest size only where keys do
    // not tell vertices apart.
    ChunkTree(std::span<Point2* const> vertices, const HC2& hc, std::size_t maxChunk);

    std::size_t numberOfChunks() const { return vLeaves.size(); }
    // Triangulates this chunk, and merges all that is complete with it. The records are those of the whole
    // tree: two a vertex. In any threads at once, each chunk once; the last one completes the whole.
    void triangulate(std::size_t chunk, std::span<Triangle2> records, ChunkWorker& worker);
    // All vertices, when all chunks are triangulated.
    const RingedPart& whole() const { return vNodes.front().part; }

private:
    struct Node {
        std::size_t first, last; // vertices
        std::size_t parent;
        std::size_t children[2]; // none in a leaf
        RingedPart part;
    };
    static constexpr std::size_t none = ~std::size_t(0);

    std::size_t split(std::size_t first, std::size_t last, int bit, std::size_t parent);

    std::span<Point2* const> vertices;
    const HC2& hc;
    std::size_t maxChunk;
    std::vector<Node> vNodes; // parents before children
    std::vector<std::size_t> vLeaves;
    std::vector<std::atomic<int>> vNumComplete; // of each node, children
};

} // namespace TESK_KIVO2D
