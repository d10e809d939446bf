#pragma once

#include "cli/Mesh.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace cli {

// The vertices of the triangles alone, numbered from 0 in the order of the table. Formats that show every
// point would show the others as dust.
class UsedVertices {
public:
    explicit UsedVertices(const Mesh& mesh) : arrays(mesh.triangles), vNumberOf(arrays.vVertices.size()) {
        for (std::size_t i = 0; i < vNumberOf.size(); ++i)
            vOrder.push_back(i);
        std::sort(vOrder.begin(), vOrder.end(), [this](std::size_t a, std::size_t b) {
            return arrays.vVertices[a]->getCustomIndex() < arrays.vVertices[b]->getCustomIndex();
        });
        for (std::size_t number = 0; number < vOrder.size(); ++number)
            vNumberOf[vOrder[number]] = number;
    }

    std::size_t size() const { return vOrder.size(); }
    const TESK_KIVO2D::Point2& operator[](std::size_t number) const {
        return *arrays.vVertices[vOrder[number]];
    }
    // In the table.
    std::size_t positionOf(std::size_t number) const {
        return static_cast<std::size_t>((*this)[number].getCustomIndex());
    }
    // Of a vertex of the arrays.
    std::size_t numberOf(std::size_t vertex) const { return vNumberOf[vertex]; }

private:
    const TESK_KIVO2D::MeshArrays& arrays;
    std::vector<std::size_t> vOrder; // positions in the arrays
    std::vector<std::size_t> vNumberOf;
};

} // namespace cli
