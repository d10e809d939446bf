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

// A mesh has no segments, holes and regions of its own. Missing attributes and markers are 0.
void addPoints(Input& input, const std::string& filename) {
    Input beside = readMain(filename);
    PointTable& table = input.table;
    const std::size_t first = table.vPoints.size(), num = beside.table.vPoints.size();
    if (num > MAX_POINTS - first) throw FileError(filename, "more points than can be numbered");
    const std::size_t numAttributes = std::max(table.numAttributes, beside.table.numAttributes);
    for (PointTable* pTable : {&table, &beside.table}) {
        widen(*pTable, numAttributes);
        if (pTable->bWithMarkers) continue;
        pTable->vMarkers.assign(pTable->vPoints.size(), 0);
    }
    table.bWithMarkers = table.bWithMarkers || beside.table.bWithMarkers;
    for (const Point2& point : beside.table.vPoints)
        addPoint(table, point.x(), point.y());
    const auto append = [](auto& vTo, const auto& vFrom) { vTo.insert(vTo.end(), vFrom.begin(), vFrom.end()); };
    append(table.vAttributes, beside.table.vAttributes);
    append(table.vMarkers, beside.table.vMarkers);
    input.domain = std::move(beside.domain);
    for (InputSegment& segment : input.domain.vSegments) {
        segment.source += first;
        segment.target += first;
    }
    input.numPoints = table.vPoints.size();
    append(input.vFilenames, beside.vFilenames);
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
