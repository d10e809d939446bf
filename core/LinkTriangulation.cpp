#include "core/LinkTriangulation.h"

#include <algorithm>
#include <utility>

namespace TESK_KIVO2D {
namespace {

constexpr std::uint32_t next3(std::uint32_t i) { return (0x09u >> (2 * i)) & 3; }

// The same order in every run (Fisher and Yates; Marsaglia 2003).
void shuffle(std::vector<std::uint32_t>& vNumbers) {
    std::uint64_t state = 0x9E3779B97F4A7C15u;
    for (std::size_t i = vNumbers.size(); i > 1; --i) {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        std::swap(vNumbers[i - 1], vNumbers[state % i]);
    }
}

} // namespace

void LinkTriangulation::find(const Point2& vertex, Point2* const* aLink, std::size_t numLink, bool bHull) {
    aPoints = aLink;
    numPositions = static_cast<std::uint32_t>(numLink) + (bHull ? 1 : 0);
    infinity = bHull ? numPositions - 1 : none;
    makeRoom();
    std::uint32_t aFirst[3] = {0, numPositions - 2, numPositions - 1};
    if (!bHull) chooseFirstThree(vertex, aFirst);
    takeOut(aFirst);
    vTriangles[0] = {{aFirst[0], aFirst[1], aFirst[2]}, {none, none, none}};
    numMade = 1;
    for (std::uint32_t i = 0; i < 3; ++i)
        vPositions[aFirst[i]].side = next3(next3(i));
    for (std::size_t i = vOrder.size(); i-- > 0;)
        putBack(vOrder[i]);
}

void LinkTriangulation::makeRoom() {
    constexpr std::size_t usual = 64; // memory of larger ones is not kept
    const std::size_t room = std::max<std::size_t>(numPositions, usual);
    if (vPositions.size() < room || (vPositions.size() > usual && room == usual)) {
        vTriangles = std::vector<Triangle>(room);
        vPositions = std::vector<Position>(room);
        vOrder = {};
        vFree = {};
        vEdges = {};
        vOrder.reserve(room);
        vFree.reserve(room);
        vEdges.reserve(room);
    }
    vOrder.clear();
}

// Three whose triangle holds the vertex, maybe on its border: the first position, and the last one that is
// less than a half turn ahead of it, and its successor.
void LinkTriangulation::chooseFirstThree(const Point2& vertex, std::uint32_t (&aFirst)[3]) const {
    std::uint32_t low = 1, high = numPositions - 1;
    while (high - low > 1) {
        const std::uint32_t middle = low + (high - low) / 2;
        const bool bAhead = tests.orientation(vertex, *aPoints[0], *aPoints[middle]) == ORIENTATION2_CCW;
        (bAhead ? low : high) = middle;
    }
    aFirst[0] = 0;
    aFirst[1] = low;
    aFirst[2] = high;
}

void LinkTriangulation::takeOut(const std::uint32_t (&aFirst)[3]) {
    for (std::uint32_t i = 0; i < numPositions; ++i) {
        vPositions[i] = {i - 1, i + 1, none};
        if (i != aFirst[0] && i != aFirst[1] && i != aFirst[2]) vOrder.push_back(i);
    }
    vPositions[0].previous = numPositions - 1;
    vPositions[numPositions - 1].next = 0;
    // A small ring has no order that is bad enough to matter.
    constexpr std::size_t small = 12;
    if (vOrder.size() > small) shuffle(vOrder);
    for (const std::uint32_t i : vOrder) {
        const Position& position = vPositions[i];
        vPositions[position.previous].next = position.next;
        vPositions[position.next].previous = position.previous;
    }
}

// Points on the circle are in no conflict. With the point at infinity the circle is the outer side of an edge
// of the hull, and the inside of that edge.
inline bool LinkTriangulation::isInConflict(const Triangle& t, const Point2& p) const {
    const std::uint32_t a = t.aCorners[0], b = t.aCorners[1], c = t.aCorners[2];
    if (!isInfinite(t)) return tests.inCircle(*aPoints[a], *aPoints[b], *aPoints[c], p) == CINC2_INCIRCLE;
    const bool bA = a == infinity, bB = b == infinity;
    const Point2 &from = *aPoints[bA ? b : bB ? c : a], &to = *aPoints[bA ? c : bB ? a : b];
    const Orientation2 side = tests.orientation(from, to, p);
    return side == ORIENTATION2_CCW || (side == ORIENTATION2_COLLINEAR && (from < p) == (p < to));
}

inline std::uint32_t LinkTriangulation::takeSlot() {
    if (vFree.empty()) return numMade++;
    const std::uint32_t slot = vFree.back();
    vFree.pop_back();
    return slot;
}

//          c
//        /   \         The edge from x to y, with what may be in conflict beyond it. In the end the position
//        p
//       x-----y        has a fan of triangles, counter-clockwise from y to x: each has p at corner 0, behind
//        \   /         its edge 1 the one after it, and behind its edge 2 the one before it.
//          p
void LinkTriangulation::putBack(std::uint32_t p) {
    Position& position = vPositions[p];
    const Point2& point = *aPoints[p];
    Side latest = none; // where the next triangle of the fan joins
    vEdges.push_back({position.previous, position.next, vPositions[position.previous].side});
    while (!vEdges.empty()) {
        const Edge edge = vEdges.back();
        vEdges.pop_back();
        if (edge.beyond != none) {
            const Triangle& t = vTriangles[edge.beyond >> 2];
            ++numAsked;
            if (isInConflict(t, point)) {
                const std::uint32_t i = edge.beyond & 3, j = next3(i), k = next3(j);
                vFree.push_back(edge.beyond >> 2);
                vEdges.push_back({edge.from, t.aCorners[i], t.aNeighbours[k]});
                vEdges.push_back({t.aCorners[i], edge.to, t.aNeighbours[j]});
                continue;
            }
        }
        const std::uint32_t made = takeSlot();
        vTriangles[made] = {{p, edge.to, edge.from}, {edge.beyond, none, latest}};
        if (edge.beyond == none) {
            vPositions[edge.to].side = 4 * made;
        } else {
            vTriangles[edge.beyond >> 2].aNeighbours[edge.beyond & 3] = 4 * made;
        }
        if (latest == none) {
            position.side = 4 * made + 2;
        } else {
            vTriangles[latest >> 2].aNeighbours[1] = 4 * made + 2;
        }
        latest = 4 * made + 1;
    }
    vPositions[position.previous].side = latest;
}

} // namespace TESK_KIVO2D
