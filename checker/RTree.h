#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace TESK_KIVO2D {

// Of cells of a grid, borders included.
struct CellBox {
    std::int32_t minX = std::numeric_limits<std::int32_t>::max();
    std::int32_t minY = std::numeric_limits<std::int32_t>::max();
    std::int32_t maxX = std::numeric_limits<std::int32_t>::min();
    std::int32_t maxY = std::numeric_limits<std::int32_t>::min();

    void add(const CellBox& other) {
        minX = other.minX < minX ? other.minX : minX;
        minY = other.minY < minY ? other.minY : minY;
        maxX = other.maxX > maxX ? other.maxX : maxX;
        maxY = other.maxY > maxY ? other.maxY : maxY;
    }
    // In cells.
    double width() const { return static_cast<double>(maxX) - minX + 1; }
    double height() const { return static_cast<double>(maxY) - minY + 1; }
};

// An R-tree over boxes that are given in an order in which neighbours lie near each other, packed as in Kamel
// & Faloutsos 1993: sixteen boxes after the other make a node, sixteen nodes make one of the next level. It
// knows the boxes by their numbers. 16 bytes a box, and a fifteenth of that.
class RTree {
public:
    static constexpr unsigned fanOut = 16;

    // Sixteen boxes by bounds, so that one instruction compares several. Missing ones are empty: they meet
    // nothing.
    struct alignas(64) Node {
        std::array<std::int32_t, fanOut> aMinX, aMinY, aMaxX, aMaxY;

        CellBox box(unsigned i) const { return {aMinX[i], aMinY[i], aMaxX[i], aMaxY[i]}; }
        void set(unsigned i, const CellBox& box) {
            aMinX[i] = box.minX;
            aMinY[i] = box.minY;
            aMaxX[i] = box.maxX;
            aMaxY[i] = box.maxY;
        }
        // A bit for each box that has a cell in common with this one.
        unsigned meeting(const CellBox& box) const;
    };

    // boxOf(i) for i in [0, num), at most 2^32 - 1 boxes, into an empty tree.
    template<class BoxOf>
    void build(std::size_t num, const BoxOf& boxOf);

    // Calls visit(i) for each box that meets this one, in the order of their numbers, until one call returns
    // false. Below the top, narrow(node, mask) may take boxes out of the mask beneath which nothing is
    // wanted.
    template<class Narrow, class Visit>
    bool visitMeeting(const CellBox& box, const Narrow& narrow, Visit&& visit) const;

    // The same for the boxes of the one node that holds the i-th, with its own box.
    template<class Visit>
    bool visitBeside(std::size_t i, Visit&& visit) const;

    CellBox box(std::size_t i) const { return vNodes[i / fanOut].box(static_cast<unsigned>(i % fanOut)); }
    // Mean area, in cells, of the nodes that hold the boxes.
    double meanLeafArea() const { return leafArea; }

private:
    static constexpr int maxLevels = 8; // 16^8 boxes

    template<class BoxOf>
    std::size_t addLevel(std::size_t num, const BoxOf& boxOf);
    const Node& node(int level, std::size_t i) const {
        return vNodes[aFirst[static_cast<unsigned>(level)] + i];
    }

    std::vector<Node> vNodes; // level by level, the boxes themselves first
    std::array<std::size_t, maxLevels> aFirst{};
    int numLevels = 0;
    double leafArea = 0;
};

inline unsigned RTree::Node::meeting(const CellBox& box) const {
    unsigned mask = 0;
#ifdef __SSE2__
    const __m128i minX = _mm_set1_epi32(box.minX), minY = _mm_set1_epi32(box.minY);
    const __m128i maxX = _mm_set1_epi32(box.maxX), maxY = _mm_set1_epi32(box.maxY);
    const auto load = [](const std::int32_t* p) {
        return _mm_load_si128(reinterpret_cast<const __m128i*>(p));
    };
    for (unsigned i = 0; i < fanOut; i += 4) {
        const __m128i apartX =
            _mm_or_si128(_mm_cmpgt_epi32(load(&aMinX[i]), maxX), _mm_cmpgt_epi32(minX, load(&aMaxX[i])));
        const __m128i apartY =
            _mm_or_si128(_mm_cmpgt_epi32(load(&aMinY[i]), maxY), _mm_cmpgt_epi32(minY, load(&aMaxY[i])));
        const int apart = _mm_movemask_ps(_mm_castsi128_ps(_mm_or_si128(apartX, apartY)));
        mask |= (static_cast<unsigned>(apart) ^ 15U) << i;
    }
#else
    for (unsigned i = 0; i < fanOut; ++i) {
        const bool bMeets =
            (aMinX[i] <= box.maxX) & (box.minX <= aMaxX[i]) & (aMinY[i] <= box.maxY) & (box.minY <= aMaxY[i]);
        mask |= static_cast<unsigned>(bMeets) << i;
    }
#endif
    return mask;
}

template<class BoxOf>
std::size_t RTree::addLevel(std::size_t num, const BoxOf& boxOf) {
    const std::size_t numNodes = (num + fanOut - 1) / fanOut;
    aFirst[static_cast<unsigned>(numLevels++)] = vNodes.size();
    for (std::size_t i = 0; i < numNodes * fanOut; ++i) {
        if (i % fanOut == 0) vNodes.emplace_back();
        vNodes.back().set(static_cast<unsigned>(i % fanOut), i < num ? boxOf(i) : CellBox());
    }
    return numNodes;
}

template<class BoxOf>
void RTree::build(std::size_t num, const BoxOf& boxOf) {
    vNodes.reserve(num / (fanOut - 1) + maxLevels);
    std::size_t numNodes = addLevel(num, boxOf);
    while (numNodes > 1) {
        const int below = numLevels - 1;
        numNodes = addLevel(numNodes, [&](std::size_t i) {
            const Node& child = node(below, i);
            CellBox all;
            for (unsigned j = 0; j < fanOut; ++j)
                all.add(child.box(j));
            if (below == 0) leafArea += all.width() * all.height();
            return all;
        });
    }
    const std::size_t numLeaves = (num + fanOut - 1) / fanOut;
    if (numLeaves > 0) leafArea /= static_cast<double>(numLeaves);
}

template<class Narrow, class Visit>
bool RTree::visitMeeting(const CellBox& box, const Narrow& narrow, Visit&& visit) const {
    if (vNodes.empty()) return true;
    struct Place {
        std::size_t node;
        unsigned mask; // of the boxes in it that are still to be looked at
    };
    std::array<Place, maxLevels> aPlaces;
    const auto enter = [&](int level, std::size_t i) {
        const Node& entered = node(level, i);
        const unsigned mask = entered.meeting(box);
        aPlaces[static_cast<unsigned>(level)] = {i, level > 0 ? narrow(entered, mask) : mask};
    };
    int level = numLevels - 1;
    enter(level, 0);
    while (level < numLevels) {
        Place& place = aPlaces[static_cast<unsigned>(level)];
        if (place.mask == 0) {
            ++level;
            continue;
        }
        const std::size_t child = place.node * fanOut + static_cast<unsigned>(std::countr_zero(place.mask));
        place.mask &= place.mask - 1;
        if (level > 0)
            enter(--level, child);
        else if (!visit(child))
            return false;
    }
    return true;
}

template<class Visit>
bool RTree::visitBeside(std::size_t i, Visit&& visit) const {
    const Node& own = vNodes[i / fanOut];
    for (unsigned mask = own.meeting(box(i)); mask != 0; mask &= mask - 1)
        if (!visit(i / fanOut * fanOut + static_cast<unsigned>(std::countr_zero(mask)))) return false;
    return true;
}

} // namespace TESK_KIVO2D
