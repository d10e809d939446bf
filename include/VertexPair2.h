#pragma once

#include "Point2.h"
#include "export.h"

#include <functional>
#include <utility>

namespace TESK_KIVO2D {

/// An unordered pair of vertices, the key of an undirected edge in sets and maps. It compares identities, not
/// coordinates: the first pointer never has the greater address. The vertices belong to someone else.
class KIVO_API VertexPair2 {
public:
    /// Two null pointers.
    VertexPair2() = default;
    /// The pair, in whichever order it is given.
    VertexPair2(Point2* p, Point2* q) : pFirst(p), pSecond(q) {
        if (std::less<const Point2*>()(q, p)) std::swap(pFirst, pSecond);
    }

    /// The vertex with the lower address.
    Point2* getFirst() const { return pFirst; }
    /// The vertex with the higher address.
    Point2* getSecond() const { return pSecond; }

    /// Squared distance of the vertices; 0 when one of them is null.
    double getSqLen2D() const {
        return pFirst != nullptr && pSecond != nullptr ? sqDistance(*pFirst, *pSecond) : 0.0;
    }

    /// The same two vertices.
    bool operator==(const VertexPair2& other) const {
        return pFirst == other.pFirst && pSecond == other.pSecond;
    }
    /// The opposite of `==`.
    bool operator!=(const VertexPair2& other) const { return !(*this == other); }
    /// Lexicographic by (lower address, higher address).
    bool operator<(const VertexPair2& other) const {
        const std::less<const Point2*> less;
        return pFirst == other.pFirst ? less(pSecond, other.pSecond) : less(pFirst, other.pFirst);
    }

private:
    Point2* pFirst = nullptr;
    Point2* pSecond = nullptr;
};

} // namespace TESK_KIVO2D
