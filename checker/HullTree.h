#pragma once

#include "checker/SegmentArray.h"
#include "kernel/TeskTest.h"

#include <array>
#include <cstdint>
#include <vector>

namespace TESK_KIVO2D {

// A tree over segments whose boxes overlap though they do not meet, as those of parallel diagonals and of the
// spokes of a star. A node knows the box of its segments and two lines, the edges of their convex hull across
// its middle, that all of them lie between, and the ends of those make a quadrangle about them. So parallel
// segments are told apart by lines parallel to them, and spokes by spokes. Halves are made by position, by
// offset or by angle, whichever keeps segments apart best.
//
// Lines go through ends of segments, and sides are exact: what touches a node's border in an end that the
// two share is told from what meets it. For segments of which none intersect, a query takes O(log n) where
// halves do not overlap; nothing is promised, and nothing goes wrong, where they do. 50 bytes a segment.
class HullTree {
public:
    // The segments must outlive the tree, and lie within the static bound.
    HullTree(const SegmentArray& segments, TeskTest& predicates);

    // Calls visit(i) for the segments that may meet this one, which lies within the static bound, until one
    // call returns false. Where alsoEndPoints is false those are left out of which it is clear that they
    // share an end at most.
    template<class Visit>
    bool visitCandidates(const Ends& ends, bool alsoEndPoints, const Visit& visit) const;

private:
    static constexpr std::size_t maxLeaf = 16;

    struct Spot {
        double x, y;
        operator Point2() const { return Point2(x, y); } // NOLINT: a point with less to carry
    };
    // The node's segments lie to the left of a -> b or on the line, there between a and b.
    struct Border {
        Spot a, b;
    };
    struct Box {
        double minX, minY, maxX, maxY;
    };
    struct Node {
        Box box;
        std::array<Border, 2> aBorders;
        std::array<Spot, 4> aCorners; // of a quadrangle that all of it lies in
        std::uint32_t first, last;    // of a leaf: its range in vOrder
        std::uint32_t right = 0;      // the second child, where the first one follows at once; 0 for a leaf
    };
    class Builder;

    bool isOff(const Node& node, const Ends& ends, bool alsoEndPoints) const;
    bool isBeyond(const Border& border, const Point2& src, const Point2& trg, bool alsoEndPoints) const;
    bool isOffLine(const std::array<Spot, 4>& aCorners, const Point2& src, const Point2& trg) const;

    const SegmentArray& segments;
    TeskTest& tests;
    std::vector<Node> vNodes;          // in preorder
    std::vector<std::uint32_t> vOrder; // segments, leaf by leaf
};

template<class Visit>
bool HullTree::visitCandidates(const Ends& ends, bool alsoEndPoints, const Visit& visit) const {
    constexpr std::size_t maxDepth = 64; // halves are equal
    std::array<std::uint32_t, maxDepth> aPending;
    std::size_t numPending = 0;
    if (!vNodes.empty()) aPending[numPending++] = 0;
    while (numPending > 0) {
        const std::uint32_t number = aPending[--numPending];
        const Node& node = vNodes[number];
        if (isOff(node, ends, alsoEndPoints)) continue;
        if (node.right != 0) {
            aPending[numPending++] = node.right;
            aPending[numPending++] = number + 1;
            continue;
        }
        for (std::uint32_t k = node.first; k < node.last; ++k)
            if (!visit(vOrder[k])) return false;
    }
    return true;
}

} // namespace TESK_KIVO2D
