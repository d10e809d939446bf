#include "cli/input.h"

#include "cli/errors.h"
#include "cli/formats.h"
#include "cli/geojsonReader.h"
#include "cli/knives.h"
#include "cli/meshFile.h"
#include "cli/nodeReader.h"
#include "cli/polyReader.h"
#include "cli/readers.h"
#include "cli/segmentReader.h"

#include <algorithm>
#include <utility>

namespace cli {

namespace {

using TESK_KIVO2D::Point2;
using TESK_KIVO2D::Segment2;

Input readMain(const std::string& filename) {
    const FileFormat format = formatOf(filename);
    if (format == FORMAT_POLY) return readPoly(filename);
    if (format == FORMAT_GEOJSON) return readGeoJson(filename);
    Input input;
    input.table = readPoints(filename);
    input.numPoints = input.table.vPoints.size();
    input.vFilenames = {filename};
    return input;
}

void appendPoints(PointTable& table, const PointTable& others) {
    const std::size_t numBefore = table.vPoints.size(), numAfter = numBefore + others.vPoints.size();
    for (const Point2& point : others.vPoints)
        addPoint(table, point.x(), point.y());
    const std::size_t numAttributes = std::max(table.numAttributes, others.numAttributes);
    std::vector<double> vAttributes(numAfter * numAttributes, 0.0);
    const auto copy = [&](const PointTable& from, std::size_t first, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i)
            std::copy_n(from.getAttributes(i), from.numAttributes, &vAttributes[(first + i) * numAttributes]);
    };
    if (table.numAttributes > 0) copy(table, 0, numBefore);
    if (others.numAttributes > 0) copy(others, numBefore, others.vPoints.size());
    table.numAttributes = numAttributes;
    table.vAttributes = std::move(vAttributes);
    if (!table.bWithMarkers && !others.bWithMarkers) return;
    table.bWithMarkers = true;
    table.vMarkers.resize(numBefore, 0);
    table.vMarkers.insert(table.vMarkers.end(), others.vMarkers.begin(), others.vMarkers.end());
    table.vMarkers.resize(numAfter, 0);
}

// A mesh has no segments, holes and regions of its own. Attributes and markers that one of the files does not
// have are 0.
void addPoints(Input& input, const std::string& filename) {
    Input beside = readMain(filename);
    const std::size_t first = input.table.vPoints.size();
    if (beside.table.vPoints.size() > MAX_POINTS - first)
        throw FileError(filename, "more points than can be numbered");
    appendPoints(input.table, beside.table);
    input.numPoints = first + beside.numPoints;
    input.domain = std::move(beside.domain);
    for (InputSegment& segment : input.domain.vSegments) {
        segment.source += first;
        segment.target += first;
    }
    input.vFilenames.insert(input.vFilenames.end(), beside.vFilenames.begin(), beside.vFilenames.end());
}

std::size_t addEnd(PointTable& table, const Point2& end) {
    addPoint(table, end.x(), end.y());
    table.vAttributes.resize(table.vPoints.size() * table.numAttributes, 0.0);
    if (table.bWithMarkers) table.vMarkers.push_back(0);
    return table.vPoints.size() - 1;
}

void addSegments(Input& input, const std::string& filename) {
    const std::vector<Segment2> vSegments = readSegments(filename);
    if (vSegments.size() > (MAX_POINTS - input.numPoints) / 2) {
        throw FileError(filename, "more ends of segments than can be numbered");
    }
    for (const Segment2& segment : vSegments) {
        InputSegment added;
        added.source = addEnd(input.table, segment.getSrc());
        added.target = addEnd(input.table, segment.getTrg());
        input.domain.vSegments.push_back(added);
    }
    input.vFilenames.push_back(filename);
}

// Exact; a difference, because that makes no negative zero.
void flipY(Point2& point) {
    const int index = point.getCustomIndex();
    point = Point2(point.x(), 0.0 - point.y());
    point.setCustomIndex(index);
}

void flipY(Input& input) {
    for (Point2& point : input.table.vPoints)
        flipY(point);
    for (Point2& hole : input.domain.vHoles)
        flipY(hole);
    for (Region& region : input.domain.vRegions)
        flipY(region.point);
    for (Segment2& knife : input.vKnives) {
        Point2 source = knife.getSrc(), target = knife.getTrg();
        flipY(source);
        flipY(target);
        knife = Segment2(source, target);
    }
}

} // namespace

bool isMeshFile(const TriangulateOptions& options) {
    return (options.bMeasure || options.bImport) && holdsTriangles(formatOf(options.input));
}

Input readInput(const TriangulateOptions& options) {
    Input input = isMeshFile(options) ? readMeshFile(options.input) : readMain(options.input);
    if (!options.points.empty()) addPoints(input, options.points);
    if (!options.segments.empty()) addSegments(input, options.segments);
    readKnives(options.vCuts, input);
    if (options.bFlipY) flipY(input);
    return input;
}

} // namespace cli
