#pragma once

/// \file
/// The free functions: orientation, zones, versions, messages, timing, files, test data.

#include "Orientation2.h"
#include "Point2.h"
#include "Segment2.h"
#include "Vector2.h"
#include "export.h"
#include "fwd.h"

#include <functional>
#include <string>
#include <vector>

namespace TESK_KIVO2D {

/// \name Orientation
/// \{

/// Side of c seen from the directed line a -> b. Exact for all finite coordinates; a coordinate that is
/// infinite or not a number gives `ORIENTATION2_COLLINEAR`. The working storage is kept from call to call,
/// one for each thread, so near-degenerate questions cost no allocation.
KIVO_API Orientation2 getOrientation2(const Point2* a, const Point2* b, const Point2* c);

/// The same answer with storage that lives for this call only.
KIVO_API Orientation2 getOrientation2_mt(const Point2* a, const Point2* b, const Point2* c);

/// \}
/// \name Zones
/// The zones of one operation must belong to one triangulation; errors are reported and return null. Results
/// are zones like others (`Kivo_2D::deleteZone`), and are found anew at each query: their operands must live
/// as long as they are used.
/// \{

/// Triangles of at least one of the two.
KIVO_API Zone2* zoneUnion(Zone2* pZone0, Zone2* pZone1);
/// Triangles of both.
KIVO_API Zone2* zoneIntersection(Zone2* pZone0, Zone2* pZone1);
/// Triangles of the first that are not in the second.
KIVO_API Zone2* zoneDifference(Zone2* pZone0, Zone2* pZone1);
/// Triangles of exactly one of the two.
KIVO_API Zone2* zoneSymmetricDifference(Zone2* pZone0, Zone2* pZone1);
/// Peels triangles off the zone, from its border inwards, as long as the predicate says so, and makes a new
/// zone of the rest (see `Kivo_2D::createZone` from triangles). The zone itself stays as it is. With bVerbose
/// it prints number and area of both. Null when nothing is left or the zone was empty.
KIVO_API Zone2* peelOffIf(Zone2* pZone, UserPredicateT* pPredicate, bool bVerbose);

/// \}
/// \name Versions
/// \{

/// 1 in 1.60.244: changes when clients have to change.
KIVO_API int getMajorVersionNumber();
/// 60 in 1.60.244.
KIVO_API int getMinorVersionNumber();
/// 244 in 1.60.244.
KIVO_API int getRevisionNumber();
/// True when the library was built with assertions of the record classes off.
KIVO_API bool isRelease();
/// For example "Kivo 2D, RELEASE, v1.60.244".
KIVO_API std::string getKivo2DVersion();

/// \}
/// \name Messages and time
/// \{

/// Where the library means a text to go.
enum MessageChannel {
    MSG_CHANNEL_OUTPUT = 0, ///< standard output
    MSG_CHANNEL_ERROR = 1   ///< standard error
};

/// Receives each text that the library would write: one or more whole lines, or a fragment as given.
using MessageSink = std::function<void(MessageChannel channel, const std::string& text)>;

/// Redirects everything that the library writes to the standard streams, for the whole process; a sink that
/// does nothing silences it, an empty one brings the standard streams back. Calls of the sink never overlap,
/// whichever threads they come from. The sink must not call the library.
KIVO_API void setMessageSink(MessageSink sink);

/// A stop watch. Called with a label it prints "Timer: <label> <seconds>s" since the previous call in this
/// thread and restarts; an empty label restarts without a line. Returns the seconds, 0 on the first call.
KIVO_API double timer(const std::string& label);

/// \}
/// \name Files
/// All return true on success; failures are reported by a line with the file name and return false. None
/// throws, and none depends on the locale.
/// \{

/// Writes type 20 (int32), the count (uint64), then x and y of each point, in the machine's byte order.
KIVO_API bool writePointsBIN(const char* filename, const std::vector<Point2>& vPoints);
/// The same of vertices.
KIVO_API bool writePointsBIN(const char* filename, const std::vector<Point2*>& vPoints);
/// Appends the points of a file of type 20 or 30 (z is dropped). On failure the vector stays as it was. A
/// file that ends inside its last records gives zeros for what is missing.
KIVO_API bool readPointsBIN(const char* filename, std::vector<Point2>& vPoints);

/// Writes type 21, the count, then source x, source y, target x, target y of each segment.
KIVO_API bool writeSegmentsBIN(const char* filename, const std::vector<Segment2>& vSegments);
/// Appends the segments of a file of type 21 or 31 (z is dropped), otherwise as `readPointsBIN`.
KIVO_API bool readSegmentsBIN(const char* filename, std::vector<Segment2>& vSegments);

/// One point a line: x, a blank, y, with 18 significant digits.
KIVO_API bool writePointsASCII(const char* filename, const std::vector<Point2>& vPoints);
/// The same of vertices.
KIVO_API bool writePointsASCII(const char* filename, const std::vector<Point2*>& vPoints);
/// Appends pairs of numbers, separated by any white space, until the file ends or something else is met.
KIVO_API bool readXY(const char* filename, std::vector<Point2>& vPoints);

/// Writes the file of that name of the web page that `Kivo_2D::writeWebScene` makes into a directory:
/// "index.html", "jsc3d.js", "jsc3d.ctm.js" or "jsc3d.touch.js". The library carries them in itself.
KIVO_API bool fileReplicate(const std::string& name, const std::string& directory);

/// Creates the directory and any missing parents. True also when it exists already.
KIVO_API bool createDirectory(const std::string& path);

/// \}
/// \name Test data
/// Equal seeds other than 0 give equal data; seed 0 gives different data on every call. The generators seed
/// and use the C library's `rand`, reduced to 15 bits, and so are not for concurrent use.
/// \{

/// n values in [min, max) on a grid of 32768 steps. Requires min < max (`KivoException` otherwise).
KIVO_API void generateRandomNumbers(std::size_t num, double min, double max,
                                    std::vector<double>& vRandomNumbers, unsigned int seed);
/// n points in [min, max) x [min, max). Requires min < max.
KIVO_API void generateRandomPoints(std::size_t num, double min, double max,
                                   std::vector<Point2>& vRandomPoints, unsigned int seed);
/// n segments of length maxLen, 0.8 maxLen or 0.5 maxLen that start in the square. Requires min < max and
/// maxLen > 0. When maxLen vanishes against the coordinates the call warns and returns fewer segments.
KIVO_API void generateRandomSegments(std::size_t num, double min, double max, double maxLen,
                                     std::vector<Segment2>& vRandomSegments, unsigned int seed);
/// A simple polygon through n random points as a closed chain of segments, counter-clockwise; points drawn
/// twice are used once. When all points lie on one line the call warns and returns none. O(n log n).
KIVO_API void generateRandomPolygon(std::size_t num, double min, double max, std::vector<Segment2>& vPolygon,
                                    unsigned int seed);
/// Appends points of an ellipse, counter-clockwise from angle 0. The full turn is taken as 6.28318.
KIVO_API void generateCircle(int numPoints, double centerX, double centerY, double radiusX, double radiusY,
                             std::vector<Point2>& vCirclePoints);
/// Appends numSegments joined segments along numPeriods periods of a sine curve: x runs over [0, xFactor] and
/// y over [-yFactor, yFactor], both shifted by the offsets; swapXY exchanges x and y at the end.
KIVO_API void generateSineSegments(int numSegments, int numPeriods, double xOffset, double yOffset,
                                   double xFactor, double yFactor, bool swapXY,
                                   std::vector<Segment2>& vSineSegments);

/// \}

} // namespace TESK_KIVO2D
