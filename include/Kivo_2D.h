#pragma once

#include "Bbox2.h"
#include "Circle2.h"
#include "Color.h"
#include "ConstraintGraph2.h"
#include "ConstraintInsertionStrategy.h"
#include "ConstraintSegment2.h"
#include "Edge2.h"
#include "KivoException.h"
#include "Label.h"
#include "MeshArrays.h"
#include "MeshGenParams.h"
#include "MsgBase.h"
#include "Orientation2.h"
#include "Point2.h"
#include "RefinementReport.h"
#include "Segment2.h"
#include "SegmentChecker.h"
#include "Triangle2.h"
#include "TriangleAroundVertexIterator.h"
#include "UserPredicateT.h"
#include "Vector2.h"
#include "VertexPair2.h"
#include "Visualizer2.h"
#include "Zone2.h"
#include "ZoneQuality.h"
#include "export.h"
#include "functions.h"
#include "fwd.h"

#include <memory>
#include <string>
#include <vector>

namespace TESK_KIVO2D {

/// A Delaunay triangulation.
///
/// Points are inserted one by one or in batches; equal points become one vertex, the first of them. While all
/// points lie on one line there are no triangles and `is2D()` is false. Every decision is exact for every
/// finite coordinate; points with a coordinate that is infinite or not a number are ignored with a warning.
///
/// The object owns its vertices and triangles: pointers that it hands out are valid until the object dies (or
/// the vertex is removed). Equal calls give equal results, orders included, in every run of the same build.
/// Different objects may be used in different threads, one object by one thread at a time.
///
/// Wrong or premature calls write a message and return a neutral result. `KivoException` means that an
/// internal condition failed.
class KIVO_API Kivo_2D {
public:
    /// An empty triangulation.
    /// \param numExpectedVertices sizes the first blocks of memory; any number works.
    explicit Kivo_2D(unsigned int numExpectedVertices = 0);
    /// Ends all pointers that it handed out. Memory of up to a sixteenth of the machine's is kept for the
    /// next triangulation of the process, marked as the system's to take whenever it wants it.
    ~Kivo_2D();
    Kivo_2D(const Kivo_2D&) = delete;
    Kivo_2D& operator=(const Kivo_2D&) = delete;

    /// \name Insertion
    /// \{

    /// Inserts a point and returns its vertex: a new one, or the one that lies there already. Null for a
    /// point that is not finite. Expected O(log n).
    Point2* insert(const Point2& point);
    /// Inserts a batch: faster than one by one. O(n log n) for all but contrived inputs.
    ///
    /// A large batch, of 100,000 points or more while there is no constraint yet, is triangulated by parts,
    /// and these are merged (Guibas & Stolfi 1985): in as many threads as `setNumCPU` says. It goes in as a
    /// whole or, when an exception ends it, not at all. That takes triangulating anew what there was before;
    /// so batches that have fewer points than that (with one thread: fewer than eight times as many) are
    /// inserted one by one as small ones are, in one thread.
    void insert(const std::vector<Point2>& vInputPoints);
    /// Inserts a batch; afterwards vHandles holds the vertex of each input point, in input order (null where
    /// the point was not finite).
    void insert(const std::vector<Point2>& vInputPoints, std::vector<Point2*>& vHandles);
    /// Inserts numPoints points given as x0, y0, x1, y1, ... aHandles receives one vertex a point; it may be
    /// null when no handles are wanted.
    void insert(int numPoints, double* aCoordinates, Point2** aHandles);
    /// Inserts the points and returns the seconds it took.
    double measureTrianguluationTime(std::vector<Point2>& vPoints);

    /// \}
    /// \name Removal
    /// \{

    /// Removes a vertex; what it leaves is the Delaunay triangulation of the others, constraints kept. When
    /// these lie on one line, or are fewer than three, no triangle is left: `is2D()` is false again until the
    /// next point beside the line comes, and constraint segments wait for `applyConstraintsAndZones` as they
    /// do before the first triangle.
    ///
    /// A vertex that is or was an end of a constraint segment (`isConstraint`) stays, with a warning and its
    /// coordinates on the error stream. Null, a vertex that was removed before, and whatever is no vertex of
    /// this triangulation are a warning, and so is a call by a listener while an operation runs: nothing
    /// happens.
    ///
    /// The record lives on with its coordinates, part of no triangle, until an insertion gives it to another
    /// vertex; so do those of the triangles around it, without corners. Until then a pointer to a removed
    /// vertex is harmless: `remove` warns; `getIncidentTriangles`, `getAdjacentTriangle` from it and
    /// circulators throw `KivoException`; all else finds nothing. Afterwards it is a pointer to that other
    /// vertex. `remove` reads nothing through a pointer that never came from this triangulation.
    ///
    /// Expected O(k) for a vertex of k triangles plus O(log k), whatever the points; O(1) while not 2-D, but
    /// O(k log k) where the last triangle goes. Method: Chew (1990). When memory runs out nothing has
    /// happened.
    void remove(Point2* pVtx);

    /// \}
    /// \name Queries
    /// \{

    /// A triangle that contains the point, inside or on its border; null outside the convex hull or while not
    /// 2-D. Expected O(log n). It reads only the triangulation but uses its working storage, so it is not for
    /// concurrent calls.
    Triangle2* locate(const Point2& point) const;
    /// Fills the vector with the hull vertices in counter-clockwise order, each once. With bAllVertices false
    /// those between two others on a straight piece are left out. O(number of triangles).
    void getConvexHull(bool bAllVertices, std::vector<Point2*>& vConvexHullPoints) const;
    /// Appends the triangles around a vertex in counter-clockwise order. Throws `KivoException` when the
    /// vertex has none.
    void getIncidentTriangles(Point2* pVtx, std::vector<Triangle2*>& vIncidentT) const;
    /// The triangle to the left of the directed edge p0 -> p1; null when the edge does not exist or its left
    /// side lies outside the hull. O(degree of p0).
    Triangle2* getAdjacentTriangle(Point2* p0, Point2* p1) const;
    /// Fills the vector with all triangles, in the order of their records.
    void getTrianglePointers(std::vector<Triangle2*>& vAllTriangles) const;
    /// Fills the vector with all vertices, in the order of their records.
    void getVertexPointers(std::vector<Point2*>& vAllVertices) const;
    /// The box of all vertices; empty when there are none. O(n).
    Bbox2 computeBoundingBox() const;
    /// Number of vertices. O(1).
    std::size_t numberOfPoints() const;
    /// Number of triangles. O(1).
    std::size_t numberOfTriangles() const;
    /// False while all points lie on one line.
    bool is2D() const;
    /// Checks that every live constraint segment is an edge, links, corners and, when asked, that no
    /// neighbour's far corner lies strictly inside a triangle's circumcircle, across edges that are no
    /// constraints. Prints what it finds; on failure it also draws name + "currentState.ps" and returns
    /// false.
    bool checkValidity(bool bCheckEmptyCircleProperty, const std::string& name) const;
    /// Prints counts and a histogram of the interior angles.
    void statistics(const std::string& name) const;
    /// Orientation of three points, exact; safe in any thread.
    Orientation2 getOrientation(const Point2& p0, const Point2& p1, const Point2& p2) const;

    /// \}
    /// \name Constraints
    /// \{

    /// Makes segments edges of the triangulation, by the strategy given. Their ends become vertices; where
    /// two constraints cross, both are split at a new vertex, which lies within a unit in the last place of
    /// the crossing. Returns the graph of these segments, which tells what became of each.
    ///
    /// Where an end of one lies on the other but for such a unit, the other is split at that end instead.
    /// Conforming segments that doubles are too coarse for, or that would take Steiner points without end,
    /// are forced in with a warning.
    ///
    /// With bOrientedSegments the graph keeps the directions of the segments; a single closed ring is
    /// oriented counter-clockwise in any case. Segments with equal ends, and those with an end that is not
    /// finite, are skipped with a warning; when none is left the graph is empty. Null, with an error message,
    /// only for an empty vector. While not 2-D the segments stay pending, until `applyConstraintsAndZones` or
    /// the next call of this method finds triangles.
    ///
    /// Expected O(n log n + k log k) for n segments and k crossed edges. Method for the constrained strategy:
    /// the crossed triangles are removed and the polygon on each side is triangulated anew (Anglada 1997;
    /// large polygons by way of a Delaunay triangulation of their corners).
    ConstraintGraph2* createConstraint(std::vector<Segment2>& vSegments,
                                       ConstraintInsertionStrategy cis = CIS_CONSTRAINED_DELAUNAY,
                                       bool bOrientedSegments = false);
    /// True for a vertex that is an end of a constraint segment, or was one of a segment that was split
    /// since.
    bool isConstraint(Point2* pVtx) const;
    /// True when a live constraint segment joins the two vertices.
    bool isConstraint(Point2* p0, Point2* p1) const;
    /// True when the edge of the triangle opposite corner ith is a constraint.
    bool isConstraint(Triangle2* pT, int ith) const;
    /// The live constraint segment between the two vertices, or null.
    ConstraintSegment2* getConstraintSegment(Point2* p0, Point2* p1) const;
    /// Inserts the segments that are pending because there were no triangles when they were created. Zones
    /// need nothing else: they find their triangles when they are asked.
    void applyConstraintsAndZones();

    /// \}
    /// \name Import and cutting
    /// \{

    /// Makes a soup of triangles, three corners each, part of the triangulation as they are: each of them is
    /// a triangle of it afterwards. Corners are shared where their coordinates are equal; triangles may be
    /// given clockwise. The soup's free borders become constraint edges, and so do the edges inside that have
    /// a far corner strictly inside the circle on the other side; all others are Delaunay anyway. What there
    /// was before stays, Delaunay up to the soup's borders: corners may be vertices already, lie on
    /// constraint segments, which are split there, and triangles may be there already. Returns the zone of
    /// exactly these triangles (`ZL_BOUNDED`).
    ///
    /// What can't be part of one triangulation is found before anything changes, and reported with its
    /// coordinates: triangles with a corner that is not finite or with all corners on one line, edges of
    /// three or more triangles, triangles that overlap, corners in the inside of an edge, vertices inside a
    /// triangle or an edge, constraint segments that cross an edge. Then, and for a number of corners that is
    /// no multiple of three, the result is null and the triangulation is as it was. At most 100 lines are
    /// printed; one more tells how many faults were found. Constraint segments are only compared with edges
    /// that are not at fault themselves; of more than 10000 faults, and where triangles without any order
    /// make millions of pairs, not all are looked for, and that line says "At least".
    ///
    /// Constraint segments that are pending go on waiting. Listeners hear "import triangles", once when the
    /// corners have been read and once at the end. Expected O(n log n) for n triangles, plus the time to look
    /// at each vertex and each constraint segment that there was.
    /// \param vCorners three points a triangle; custom indices are taken over by new vertices
    /// \param bVerbose whether a line tells what was imported, and one more that nothing was
    Zone2* importTriangles(const std::vector<Point2>& vCorners, bool bVerbose = true);
    /// Cuts the triangles along a segment: wherever it crosses an edge a vertex appears, and the segment
    /// becomes a chain of edges, which are constraints from then on. The chain runs from end to end of the
    /// segment, or as far as the segment lies in the convex hull: beyond it nothing is cut, and the hull
    /// stays, apart from crossings with it, which are rounded outwards. All edges that are crossed,
    /// constraint segments too, are split at the crossing, whose coordinates are rounded once; where it is
    /// rounded onto a vertex, that vertex is taken. All edges that are no constraints are Delaunay
    /// afterwards. Triangles that the segment does not meet, and whose circles hold no new vertex, stay as
    /// they are; so do zones, apart from their borders, which follow what is rounded.
    ///
    /// Returns the graph of the chain, oriented like the segment. Null, after a warning, for a segment of no
    /// length, one that is not finite, one that has no more than a point in common with the hull (or two that
    /// are rounded to one), and while not 2-D. Pending constraint segments are applied first. A zone as
    /// narrow as the rounding may be folded away, and a second cut along the same segment adds vertices where
    /// rounding has put the chain beside it.
    ///
    /// Listeners hear "cut triangles", once when it is known what is cut and once at the end. Expected
    /// O(k log k) for k crossed edges, plus the time to find the triangle of an end.
    ConstraintGraph2* cutTriangles(const Segment2& knife);
    /// The same for several segments, which cut the triangles that there are before the call, and each other:
    /// where two of them cross, touch or overlap they share vertices. All chains are one graph, in the order
    /// of the segments. What can't cut is left out, with a warning; null when nothing is left. Takes time in
    /// proportion to the pairs that cross, besides.
    ConstraintGraph2* cutTriangles(const std::vector<Segment2>& vKnives);

    /// \}
    /// \name Zones
    /// All return null, with a message, when there is nothing to make a zone of; with bVerbose one more line
    /// says so. Graphs and triangles must be of this triangulation.
    /// \{

    /// The zone of all triangles (`ZL_GLOBAL`, without a graph), or what one oriented graph has on its left
    /// (`ZL_INSIDE`, `ZL_BOUNDED`) or on its right (`ZL_OUTSIDE`). For a closed ring, in whichever direction
    /// it was given, that is the area that it encloses, and the rest. O(1).
    Zone2* createZone(ConstraintGraph2* pConstraintGraph, ZoneLocation zoneLoc, bool bVerbose = true);
    /// The same of several oriented graphs together (`ZL_INSIDE` or `ZL_OUTSIDE`). Left and right are those
    /// of each edge: with rings inside each other that run the same way, triangles may be in both zones.
    Zone2* createZone(const std::vector<ConstraintGraph2*>& vConstraintGraphs, ZoneLocation zoneLoc,
                      bool bVerbose = true);
    /// What can be reached from the start point without crossing an edge of the graph (`ZL_GROW` only).
    /// Graphs need not be oriented. From a start point on an edge of the graph, one side of it is grown.
    Zone2* createZone(ConstraintGraph2* pConstraintGraph, ZoneLocation zoneLoc, const Point2& startPoint,
                      bool bVerbose = true);
    /// The same with several graphs.
    Zone2* createZone(const std::vector<ConstraintGraph2*>& vConstraintGraphs, ZoneLocation zoneLoc,
                      const Point2& startPoint, bool bVerbose = true);
    /// A `ZL_GROW` zone of exactly these triangles: their border becomes a constraint graph, and each part
    /// that hangs together by edges gets a start point. Null pointers and repetitions are skipped. O(number
    /// of triangles of the triangulation).
    Zone2* createZone(const std::vector<Triangle2*>& vTriangles, bool bVerbose = true);
    /// What the graphs' segments enclose by parity, whichever way they run and in whatever order they were
    /// given: a `ZL_BOUNDED` zone of the triangles from which the way out crosses an odd number of segments
    /// (of several ways the one with the fewest, which matters where segments form no closed rings). A piece
    /// that several segments share counts as often as they are, so an even number of them is no border.
    /// Segments that bound nothing, such as open ends, are no border. Then the regions of the hole points are
    /// left out: what can be reached from these without crossing any of the segments; hole points outside the
    /// hull do nothing. Applies pending constraints first. O(number of triangles of the triangulation).
    Zone2* createParityZone(const std::vector<ConstraintGraph2*>& vConstraintGraphs,
                            const std::vector<Point2>& vHolePoints = {}, bool bVerbose = true);
    /// The same for maps whose areas share borders that were given once: everything is inside that has no way
    /// out without crossing a segment, but for the regions of the hole points.
    Zone2* createEnclosedZone(const std::vector<ConstraintGraph2*>& vConstraintGraphs,
                              const std::vector<Point2>& vHolePoints = {}, bool bVerbose = true);
    /// Ends the zone. A border that was made a constraint graph for it stays one. A pointer that is no zone
    /// of this triangulation (any more) gets a warning. O(log of the number of zones).
    void deleteZone(Zone2* pZone);

    /// \}
    /// \name Meshing
    /// \{

    /// Refines the triangles of a zone until they meet the limits, by inserting vertices into the zone and
    /// splitting constraint segments. The zone must be a `ZL_INSIDE` or `ZL_BOUNDED` zone
    /// (`Zone2::convertToBoundedZone`). Other zones keep their triangles, apart from those at shared
    /// constraint segments. All limits that are not named here have their defaults (see `MeshGenParams`, also
    /// for limits that are no positive numbers). A null zone, or an angle above 30, is a warning and nothing
    /// happens; another kind of zone is an error (`KivoException`).
    ///
    /// Where no constraints meet at less than 60 degrees and splitting is allowed down to the resolution of
    /// doubles (`minEdgeLength` 0), all angles meet the limit afterwards. Elsewhere `getRefinementReport`
    /// tells what was left and why. Expected O(n log n) for n triangles at the end. Methods: Ruppert 1995;
    /// Shewchuk 2002; off-centres (Uengoer 2004); Miller, Pav, Walkington 2003 for small input angles.
    ///
    /// \param pZone the zone
    /// \param minAngleDegree the smallest interior angle wanted, in degrees, at most 30
    /// \param minEdgeLength constraint segments shorter than twice this length are not split
    /// \param maxEdgeLength upper bound on the length of edges
    /// \param bAllowConstraintSplitting whether constraint segments may be split
    void refine(Zone2* pZone, double minAngleDegree, double minEdgeLength, double maxEdgeLength,
                bool bAllowConstraintSplitting);
    /// The same with all limits, which may vary over the plane. The parameters are used during the call only.
    /// Null parameters are a warning; wrong ones are an error (`KivoException`), and nothing happens.
    /// Listeners hear progress. An exception from a listener or from the parameters' functions reaches the
    /// caller; the triangulation is valid then and keeps what was inserted.
    void refineAdvanced(MeshGenParams* pParameters);
    /// What the latest refinement did, and which triangles still break which rule and why. O(1).
    RefinementReport getRefinementReport() const;
    /// Measures the triangles of a zone: prints the distributions of angles, areas, edge lengths and aspect
    /// ratios, draws the worst triangles into the PostScript file name + "_quality.ps" in the working
    /// directory (or the directory that the name begins with), and returns the figures. An empty name draws
    /// nothing. A null or empty zone, or one of another triangulation, is a warning, and all figures are
    /// zero. O(number of triangles of the triangulation).
    ZoneQuality checkZoneQuality(const Zone2* pZone, const std::string& name) const;

    /// \}
    /// \name Export
    /// \{

    /// Writes the triangles as a Wavefront OBJ mesh in the plane z = 0, with 20 significant digits. Vertices
    /// are numbered in the order in which the triangles name them. While not 2-D, or when the file can't be
    /// written, it says so and returns false. The text is written as it is made.
    bool writeObj(const std::string& filename) const;
    /// The same for the triangles of a zone.
    bool writeObj(const std::string& filename, const Zone2* pZone) const;
    /// Makes the directory a web page that shows the triangles and constraints: open index.html in a browser,
    /// from disk or from a server. It needs no network. Holds the mesh as 3d.obj too. Returns false, after a
    /// message, when it can't be made; what is written then stays there. Browsers show some ten million
    /// triangles.
    bool writeWebScene(const char* path) const;
    /// The same for the triangles of a zone, in the colour of zones.
    bool writeWebScene(const char* path, const Zone2* pZone) const;
    /// Replaces the content by all triangles as arrays of numbers. Empty while not 2-D. Triangles and
    /// vertices are numbered by 32 bits; more of them are refused with an error (empty arrays).
    void getMeshArrays(MeshArrays& arrays) const;
    /// The same for the triangles of a zone, each once.
    void getMeshArrays(MeshArrays& arrays, const Zone2* pZone) const;

    /// \}
    /// \name Drawing
    /// \{

    /// Writes a PostScript drawing of the triangles. While not 2-D it says so and writes no file.
    void show(const std::string& postscriptFilename, bool bWithConstraints = true) const;
    /// Adds the triangles to a drawing of the caller's.
    void show(Visualizer2* pVis, bool bWithConstraints = true) const;

    /// \}
    /// \name Settings and messages
    /// \{

    /// A name of the user's choice.
    void setName(const std::string& name);
    /// The name that was set; empty by default.
    std::string getName() const;
    /// Number of threads for large batches: n >= 1 as given, 0 for the number of hardware threads, 1 for
    /// negative values. Returns the number that is set.
    ///
    /// The number does not change a batch's triangles, nor their order, for a batch of at least eight times
    /// as many points as there were before. Otherwise the same number gives the same triangles in the same
    /// order; another number gives the same set of triangles, unless four of their corners lie on one circle.
    int setNumCPU(int numCPU);
    /// Same as setNumCPU(0).
    void enableMultithreading();
    /// Subscribes a listener; the application keeps owning it.
    void subscribe(MsgType msgType, MsgBase* pMsg);
    /// Removes the subscription of this listener to this kind of message, if there is one.
    void unsubscribe(MsgType msgType, MsgBase* pMsg);

    /// \}

    /// The implementation object, owned by this one.
    Dt2* getImpl() const { return pDt.get(); }

protected:
    /// Creates the implementation object.
    void initKivo(unsigned int numExpectedVertices);

private:
    bool writeWebSceneAt(const char* path, const Zone2* pZone) const;

    std::unique_ptr<Dt2> pDt;
};

} // namespace TESK_KIVO2D
