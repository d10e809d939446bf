#pragma once

#include "Bbox2.h"
#include "Edge2.h"
#include "Point2.h"
#include "Segment2.h"
#include "export.h"
#include "fwd.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace TESK_KIVO2D {

/// How a zone finds its triangles.
enum ZoneLocation : std::uint32_t {
    ZL_GLOBAL = 0,              ///< all triangles
    ZL_INSIDE = 1,              ///< what its constraint graphs enclose: the left side of their directed edges
    ZL_OUTSIDE = 2,             ///< the right side of its constraint graphs
    ZL_GROW = 3,                ///< what can be reached from its start points without crossing its graphs
    ZL_RESULT_UNION = 4,        ///< in at least one of its two input zones
    ZL_RESULT_INTERSECTION = 5, ///< in both
    ZL_RESULT_DIFFERENCE = 6,   ///< in the first one only
    ZL_RESULT_SYM_DIFFERENCE = 7, ///< in exactly one
    ZL_BOUNDED = 8                ///< as ZL_INSIDE, of a graph that was made from a zone's own border
};

/// A set of triangles, given by a rule and not by a list: every query finds the triangles anew, so a zone
/// stays what it is while points are inserted and the triangulation is refined.
///
/// Zones are made by `Kivo_2D::createZone` and its kin, by the set operations (`zoneUnion` etc.), `peelOffIf`
/// and `convertToBoundedZone`. They belong to their triangulation and live until `Kivo_2D::deleteZone` or its
/// end. Zones keep their constraint graphs and input zones by pointer. A result zone one of whose input zones
/// was deleted has no triangles any more; queries say so with a warning.
///
/// Every query costs time proportional to the number of triangles of the triangulation and the number of
/// constraint segments of the zone, and up to two bytes a triangle of memory besides what it lists. Lists are
/// in the order of the triangles' records, unless said otherwise. While not 2-D, queries warn and find
/// nothing. Output sequences are appended to.
class KIVO_API Zone2 {
public:
    Zone2(const Zone2&) = delete;
    Zone2& operator=(const Zone2&) = delete;

    /// \name The rule
    /// \{

    /// How it finds its triangles.
    ZoneLocation getZoneLocation() const { return zoneLoc; }
    /// The triangulation's implementation object, as `Kivo_2D::getImpl` returns it.
    Dt2* getDelaunayTriangulation() const;
    /// Number of the graphs that it was made with.
    std::size_t numberOfConstraintGraphs() const { return vConstraintGraphs.size(); }
    /// Replaces the content by the zone's graphs.
    void getConstraintGraphs(std::vector<ConstraintGraph2*>& vGraphs) const { vGraphs = vConstraintGraphs; }
    /// The graph when there is exactly one. Null when there is none; null, and a warning, when there are
    /// several.
    ConstraintGraph2* getConstraintGraph() const;

    /// \}
    /// \name Queries
    /// \{

    /// Appends the triangles, each once. Only a `ZL_GROW` zone with several start points in one region lists
    /// that region once for each of them. Different start points' regions come
    /// one after the other. A `ZL_INSIDE` or `ZL_BOUNDED` zone whose graphs enclose nothing, for example
    /// because they are not applied yet, is an error (`KivoException`).
    void getTriangles(std::vector<Triangle2*>& vTriangles) const;
    /// Length of the list that `getTriangles` gives.
    std::uint64_t getNumberOfTriangles() const;
    /// Appends the vertices of the triangles, each once, in the order in which the triangles name them.
    void getVertices(std::vector<Point2*>& vVertices) const;
    /// Sum of the areas of the listed triangles, 0 for an empty zone.
    double getArea2D() const;
    /// The box of the triangles' corners; empty for an empty zone.
    Bbox2 getBoundingBox() const;
    /// Appends the border: the edges whose other side is missing or not in the zone, as edges of the zone's
    /// triangles, so the zone lies to their left.
    void getBorderEdges(std::vector<Edge2>& vEdges) const;
    /// Appends the border as closed rings, one after the other, each from head to tail. No ring passes a
    /// vertex twice, and rings that touch do not cross. Outer rings run counter-clockwise, holes clockwise.
    void getBoundaryEdges(std::vector<Edge2>& vEdges) const;
    /// Appends the segments of `getBoundaryEdges`, in the same order.
    void getBoundarySegments(std::vector<Segment2>& vSegments) const;

    /// \}
    /// \name Reports and drawings
    /// \{

    /// Prints the number of triangles and a histogram of the interior angles.
    void statistics(const std::string& name) const;
    /// Adds the zone to a drawing: triangles filled, with the whole triangulation on top when bShowFull is
    /// set. With bWithConstraints also the constraint segments; without bShowFull those of the zone's own
    /// graphs are drawn thick and all others thin, and without both flags its own ones thin and no others.
    void show(Visualizer2* pVisualizer, bool bShowFull, bool bWithConstraints) const;
    /// The same into a PostScript file of its own. An empty zone is a warning, and no file is written.
    void show(const std::string& postscriptFilename, bool bShowFull, bool bWithConstraints) const;
    /// Draws the triangles and the segments of the zone's graphs into the file "zone2_debug_" + name + ".ps".
    void debug(const std::string& name) const;

    /// \}

    /// A zone of the same triangles whose border is a constraint graph, as the mesh generator wants it: the
    /// zone itself if it is a `ZL_INSIDE` zone, else a new `ZL_BOUNDED` zone. First applies what constraints
    /// are pending. Makes the zone's border edges constraints, which
    /// they stay when the zone is deleted. The zone itself stays as it is. Null, with a
    /// warning, when the zone is empty.
    Zone2* convertToBoundedZone();

    /// Moves every vertex of the zone to the nearest point of the grid of that width through the origin: its
    /// coordinates become multiples of the tolerance, rounded to doubles (a coordinate of more than 2^50
    /// tolerances stays). Vertices that fall together become one: one of them goes, and pointers to it with
    /// it. Constraint segments follow their ends; where both ends fall together the segment vanishes from its
    /// graphs. A vertex that comes to lie on a constraint segment splits it.
    ///
    /// A move is left out that would carry a vertex across a constraint segment or a segment across a vertex,
    /// lay two segments on each other, or make the triangulation's last triangle vanish. So what
    /// constraints bound keeps its shape, however wide the grid. (But where a narrow passage between
    /// constraints closes, `createEnclosedZone` zones gain what lies behind it.) One warning tells how many
    /// vertices stay beside the grid.
    ///
    /// Afterwards the triangulation is Delaunay apart from its constraints, those of the conforming strategy
    /// included, and a second call changes nothing. Other zones keep what they hold, but for what their
    /// common vertices do. O(n log n) for n triangles of the triangulation, and each
    /// vertex costs as many steps as its way crosses triangles.
    ///
    /// \returns the number of vertices that stay beside the grid. A tolerance that is not a positive number,
    /// an empty zone, or a call by a listener while another operation runs, is a warning and 0.
    std::size_t unifyGrid(double tolerance);

private:
    friend class ZoneRegistry;
    friend class ZoneEvaluation;
    friend class ResultOrder;
    friend class StartAnchors;

    // An input zone and the number that it had: its address may serve another zone by now.
    struct Operand {
        Zone2* pZone;
        std::uint64_t number;
    };

    Zone2(ZoneHost& triangulation, ZoneLocation location);
    Zone2(ZoneHost& triangulation, ZoneLocation location, ConstraintGraph2* pGraph);
    Zone2(ZoneHost& triangulation, ZoneLocation location, const std::vector<ConstraintGraph2*>& vGraphs);
    Zone2(ZoneHost& triangulation, const std::vector<ConstraintGraph2*>& vGraphs, ZoneLocation location,
          const std::vector<Point2>& vPoints);
    ~Zone2();
    void draw(Visualizer2& visualizer, const std::vector<Triangle2*>& vTriangles, bool bShowFull,
              bool bWithConstraints) const;

    ZoneHost& dt;
    ZoneLocation zoneLoc;
    std::vector<ConstraintGraph2*> vConstraintGraphs;
    std::vector<Point2> vStartPoints;
    std::vector<Operand> vInputZones;
    bool bOwnBorder = false;  // its graph was made from the border of its triangles
    std::uint64_t number = 0; // of all zones of the triangulation, in the order in which they were made
};

} // namespace TESK_KIVO2D
