#include "cli/Trails.h"

namespace cli {

Trails::Trails(std::size_t numVertices, const std::vector<Edge>& vEdges_)
    : vEdges(vEdges_), vFirst(numVertices + 1, 0), vIncident(2 * vEdges_.size()), vUsed(vEdges_.size()) {
    for (const Edge& edge : vEdges) {
        for (const std::uint32_t end : edge)
            ++vFirst[end + 1];
    }
    for (std::size_t v = 0; v < numVertices; ++v)
        vFirst[v + 1] += vFirst[v];
    vCursor.assign(vFirst.begin(), vFirst.end() - 1);
    for (std::size_t e = 0; e < vEdges.size(); ++e) {
        for (const std::uint32_t end : vEdges[e])
            vIncident[vCursor[end]++] = static_cast<std::uint32_t>(e);
    }
    vCursor.assign(vFirst.begin(), vFirst.end() - 1);
}

bool Trails::hasUnused(std::size_t vertex) {
    std::size_t& cursor = vCursor[vertex];
    while (cursor < vFirst[vertex + 1] && vUsed[vIncident[cursor]])
        ++cursor;
    return cursor < vFirst[vertex + 1];
}

std::size_t Trails::nextStart() {
    for (;; ++start) {
        if (start == vCursor.size()) {
            if (!bOddOnes) return start;
            bOddOnes = false;
            start = 0;
        }
        if (start == vCursor.size()) return start;
        const bool bOdd = (vFirst[start + 1] - vFirst[start]) % 2 == 1;
        if ((bOdd || !bOddOnes) && hasUnused(start)) return start;
    }
}

bool Trails::next(std::vector<std::uint32_t>& vTrail) {
    vTrail.clear();
    std::size_t vertex = nextStart();
    if (vertex == vCursor.size()) return false;
    vTrail.push_back(static_cast<std::uint32_t>(vertex));
    while (hasUnused(vertex)) {
        const std::uint32_t e = vIncident[vCursor[vertex]];
        vUsed[e] = true;
        vertex = vEdges[e][0] == vertex ? vEdges[e][1] : vEdges[e][0];
        vTrail.push_back(static_cast<std::uint32_t>(vertex));
    }
    return true;
}

} // namespace cli
