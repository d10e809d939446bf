#pragma once

#include "Kivo_2D.h"

#include <string>
#include <vector>

// The laws of constraints, checked from outside: through the public interface, in exact integers.
namespace oracle {

// A graph, and the segments that were given for it.
struct GivenGraph {
    TESK_KIVO2D::ConstraintGraph2* pGraph;
    std::vector<TESK_KIVO2D::Segment2> vSegments;
};

// The first law that is broken, in words, or an empty text. The graphs must be all that the triangulation
// has. These must hold:
//   - the original segments of a graph are those given, without what is not finite or has no length; a graph
//     with directions keeps them, apart from rings;
//   - children share a vertex in the box of their parent that is none of its ends, have its owners and run
//   its
//     way; numbers of segments are different;
//   - the leaves of an original are a chain from its start to its end, and stray from it by less than one
//   unit
//     in the last place of its largest coordinate for each leaf;
//   - the live leaves, and no other edges, are constraints, whoever is asked;
//   - each of them is an edge, unless the caller says that some may be missing or there is no triangle yet;
//   - the triangulation is sound (see findFault) and Delaunay but for them.
std::string findConstraintFault(const TESK_KIVO2D::Kivo_2D& kivo, const std::vector<GivenGraph>& vGraphs,
                                bool bSomeMayBeMissing = false);
// The same for what the laws say of the graphs alone; there may be others.
std::string findGraphFault(const TESK_KIVO2D::Kivo_2D& kivo, const std::vector<GivenGraph>& vGraphs);

// The different live leaves of the graphs, by their ends, each once in the order of the coordinates.
using Edge = std::pair<std::pair<double, double>, std::pair<double, double>>;
Edge edgeOf(const TESK_KIVO2D::Point2& p, const TESK_KIVO2D::Point2& q);
std::vector<Edge> leafEdges(const std::vector<GivenGraph>& vGraphs);

} // namespace oracle
