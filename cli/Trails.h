#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace cli {

// Ways through a graph that together run along each edge once: few, so that they are written in few numbers.
// Where an even number of edges meets in every vertex, every way is closed: its last vertex is its first.
class Trails {
public:
    using Edge = std::array<std::uint32_t, 2>;

    Trails(std::size_t numVertices, const std::vector<Edge>& vEdges_);

    // Replaces the content by the vertices of the next way; false when there is none left.
    bool next(std::vector<std::uint32_t>& vTrail);

private:
    bool hasUnused(std::size_t vertex);
    std::size_t nextStart();

    const std::vector<Edge>& vEdges;
    std::vector<std::size_t> vFirst; // by vertex: where its edges begin in the list; one more for the end
    std::vector<std::uint32_t> vIncident;
    std::vector<std::size_t> vCursor; // by vertex: its edges before this one are used
    std::vector<bool> vUsed;          // by edge
    std::size_t start = 0;
    bool bOddOnes = true; // ways begin where they must, before they begin anywhere
};

} // namespace cli
