#include "cli/parts.h"

#include "cli/meshEdges.h"

#include <algorithm>
#include <set>
#include <utility>

namespace cli {

namespace {

using TESK_KIVO2D::MeshArrays;

constexpr std::uint32_t NO_PART = static_cast<std::uint32_t>(-1);

} // namespace

Parts partsOf(const MeshArrays& arrays, const std::function<bool(std::size_t edge)>& isBarrier) {
    const auto numTriangles = static_cast<std::uint32_t>(arrays.vCorners.size() / 3);
    Parts parts;
    parts.vPartOf.assign(numTriangles, NO_PART);
    std::vector<std::uint32_t> vStack;
    for (std::uint32_t start = 0; start < numTriangles; ++start) {
        if (parts.vPartOf[start] != NO_PART) continue;
        const auto part = static_cast<std::uint32_t>(parts.numParts++);
        parts.vPartOf[start] = part;
        vStack.push_back(start);
        while (!vStack.empty()) {
            const std::size_t triangle = vStack.back();
            vStack.pop_back();
            for (std::size_t i = 3 * triangle; i < 3 * triangle + 3; ++i) {
                const std::uint32_t next = arrays.vNeighbours[i];
                if (next == MeshArrays::noTriangle || parts.vPartOf[next] != NO_PART || isBarrier(i))
                    continue;
                parts.vPartOf[next] = part;
                vStack.push_back(next);
            }
        }
    }
    return parts;
}

Parts piecesOf(const Mesh& mesh) {
    const ConstraintLookup constraints(mesh);
    return partsOf(mesh.triangles, [&](std::size_t edge) {
        const std::size_t constraint = constraints.find({edge / 3, edge % 3, false});
        return constraint != NO_CONSTRAINT && mesh.vEdges[constraint].bCut;
    });
}

std::vector<std::size_t> colorsOf(const Parts& parts, const MeshArrays& arrays, std::size_t numColors) {
    std::set<std::pair<std::uint32_t, std::uint32_t>> sBeside; // in both directions
    for (std::size_t i = 0; i < arrays.vNeighbours.size(); ++i) {
        const std::uint32_t neighbour = arrays.vNeighbours[i];
        if (neighbour == MeshArrays::noTriangle) continue;
        const std::uint32_t here = parts.vPartOf[i / 3], there = parts.vPartOf[neighbour];
        if (here != there) sBeside.emplace(here, there);
    }
    std::vector<std::size_t> vColors(parts.numParts, 0);
    auto it = sBeside.begin();
    for (std::uint32_t part = 0; part < parts.numParts; ++part) {
        std::set<std::size_t> sTaken; // by those that have a colour already
        for (; it != sBeside.end() && it->first == part; ++it)
            if (it->second < part) sTaken.insert(vColors[it->second]);
        std::size_t color = part;
        while (sTaken.count(color % numColors) > 0 && color < part + numColors)
            ++color;
        vColors[part] = color % numColors;
    }
    return vColors;
}

} // namespace cli
