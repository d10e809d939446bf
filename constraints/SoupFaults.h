#pragma once

#include "Point2.h"
#include "constraints/DistinctList.h"
#include "constraints/TriangleSoup.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <tuple>

namespace TESK_KIVO2D {

// One reason why a soup can't be part of a triangulation.
struct SoupFault {
    // In the order in which they are reported.
    enum Kind {
        NOT_FINITE,         // the triangle has a corner with such a coordinate
        DEGENERATE,         // the triangle's corners lie on one line
        SHARED_EDGE,        // three or more triangles have the edge pq; this is the first of them
        CORNER_IN_EDGE,     // the point, a corner of the soup, lies inside the triangle's edge pq
        VERTEX_IN_EDGE,     // the same of a vertex of the triangulation
        VERTEX_IN_TRIANGLE, // the point, a vertex of the triangulation, lies strictly inside the triangle
        OVERLAP,            // the triangle has more than border in common with the other one
        CROSSED_EDGE        // the constraint segment from..to crosses the triangle's edge pq
    };
    Kind kind;
    TriangleSoup::Index triangle; // by its place among those given
    TriangleSoup::Index other = TriangleSoup::none;
    Point2 point = {0, 0};
    Point2 p = {0, 0}, q = {0, 0};
    Point2 from = {0, 0}, to = {0, 0};

    auto key() const { return std::tie(kind, triangle, other, p, q, point, from, to); }
    // The order of the report.
    bool operator<(const SoupFault& fault) const { return key() < fault.key(); }
    bool operator==(const SoupFault& fault) const { return key() == fault.key(); }
};

// The faults of a soup, in an order that does not depend on how they were found.
class SoupFaults {
public:
    // So many are kept before it is full.
    static constexpr std::size_t maxFaults = 10000;

    bool empty() const { return faults.empty(); }
    bool isFull() const { return faults.numKnown() >= maxFaults; }
    void add(const SoupFault& fault) { faults.add(fault); }
    void addOverlap(TriangleSoup::Index a, TriangleSoup::Index b) {
        faults.add({SoupFault::OVERLAP, std::min(a, b), std::max(a, b)});
    }
    // Not all of them were looked for.
    void setIncomplete() { bComplete = false; }

    // Writes at most a hundred of them, each once, and how many there are.
    void report(const TriangleSoup& soup, const std::string& location);

private:
    DistinctList<SoupFault> faults{maxFaults};
    bool bComplete = true;
};

} // namespace TESK_KIVO2D
