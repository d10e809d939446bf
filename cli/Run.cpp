#include "cli/Run.h"

#include "cli/cutting.h"
#include "cli/errors.h"
#include "cli/formats.h"
#include "cli/input.h"
#include "cli/libraryWriters.h"
#include "cli/meshFile.h"
#include "cli/meshImport.h"
#include "cli/numbers.h"
#include "cli/outputFiles.h"
#include "cli/parts.h"
#include "cli/qualityPicture.h"
#include "cli/regions.h"
#include "cli/soupPicture.h"
#include "cli/unification.h"
#include "cli/writers.h"
#include "cli/zone.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

namespace cli {

namespace {

using TESK_KIVO2D::Point2;
using TESK_KIVO2D::Triangle2;

bool bringsSegments(const TriangulateOptions& options) {
    return !options.segments.empty() || canHoldSegments(formatOf(options.input)) ||
           (!options.points.empty() && canHoldSegments(formatOf(options.points)));
}

std::size_t countEdges(const std::vector<ConstraintEdge>& vEdges, bool ConstraintEdge::*bCounted) {
    return static_cast<std::size_t>(std::count_if(
        vEdges.begin(), vEdges.end(), [bCounted](const ConstraintEdge& edge) { return edge.*bCounted; }));
}

void checkOutputs(const std::vector<std::string>& vOutputs, const Input& input) {
    for (const std::string& output : vOutputs) {
        checkNotInput(output, input.vFilenames);
        checkHolds(output, input.table);
    }
    for (const std::string& output : vOutputs)
        checkWritable(output);
}

Report reportOf(const std::string& command, const TriangulateOptions& options) {
    Report report;
    report.command = command;
    report.input = options.input;
    report.vOutputs = options.vOutputs;
    return report;
}

Input readAll(const TriangulateOptions& options, Report& report) {
    const StopWatch watch;
    Input input = readInput(options);
    report.readTime = watch.seconds();
    report.numPoints = input.numPoints;
    if (!input.table.vPoints.empty()) report.boundingBox = boxOf(input.table.vPoints);
    if (bringsSegments(options)) {
        report.segments.emplace();
        report.segments->numRead = input.domain.vSegments.size();
        report.segments->numHoles = input.domain.vHoles.size();
        report.segments->numRegions = input.domain.vRegions.size();
    }
    checkOutputs(options.vOutputs, input);
    return input;
}

} // namespace

Box boxOf(const std::vector<Point2>& vPoints) {
    const TESK_KIVO2D::Bbox2 box(vPoints.begin(), vPoints.end());
    return {box.get_minX(), box.get_minY(), box.get_maxX(), box.get_maxY()};
}

void checkUsage(const TriangulateOptions& options) {
    for (const std::string& output : options.vOutputs) {
        if (formatOf(output) != FORMAT_SVG && options.bMeasure)
            throw UsageError(output + ": pictures of quality are .svg files");
    }
    if (options.unifyWidth && !(std::isfinite(*options.unifyWidth) && *options.unifyWidth > 0.0))
        throw UsageError("--unify takes a positive width, not " + shortest(*options.unifyWidth));
    if (options.bImport && !isMeshFile(options))
        throw UsageError(options.input + ": meshes to import are .obj, .vtu, .msh and .ele files");
    if (options.bMeasure && isMeshFile(options) &&
        (!options.segments.empty() || !options.zone.empty() || options.bConforming))
        throw UsageError(options.input +
                         ": a mesh is measured as it is, without --segments, --zone and --conforming");
    if (bringsSegments(options)) return;
    const char* const need = options.bMesh           ? "mesh"
                             : options.bConforming   ? "--conforming"
                             : !options.zone.empty() ? "--zone"
                                                     : nullptr;
    if (need == nullptr) return;
    throw UsageError(std::string(need) + " is about segments: give --segments, or a .poly or .geojson file");
}

Run::Run(const std::string& command, const TriangulateOptions& options_)
    : options(options_), report(reportOf(command, options_)), input(readAll(options_, report)),
      triangulation(static_cast<unsigned int>(input.table.vPoints.size())) {
    // The heading of a web scene.
    triangulation.setName(std::filesystem::path(options.input).filename().string());
    report.numThreads = triangulation.setNumCPU(options.numThreads);
    if (options.bProgress || isErrorStreamTerminal()) {
        triangulation.subscribe(TESK_KIVO2D::MSG_PROGRESS, &progressBar);
    }
}

Run::~Run() { triangulation.unsubscribe(TESK_KIVO2D::MSG_PROGRESS, &progressBar); }

void Run::insert() {
    const StopWatch pointsWatch;
    insertion = insertPoints(triangulation, input, options.input);
    report.numDuplicates = insertion.numDuplicates;
    report.triangulateTime = pointsWatch.seconds();
    constraints.firstSteiner = input.table.vPoints.size();
    if (!report.segments) return;
    const StopWatch watch;
    constraints = insertSegments(triangulation, input, insertion.vHandles,
                                 options.bConforming ? TESK_KIVO2D::CIS_CONFORMING_DELAUNAY
                                                     : TESK_KIVO2D::CIS_CONSTRAINED_DELAUNAY);
    report.segmentsTime = watch.seconds();
    SegmentReport& segments = *report.segments;
    segments.numSkipped = constraints.numSkipped;
    countSegmentEdges();
    segments.numNewEnds = insertion.numNewEnds;
    segments.numSteinerPoints = constraints.numSteinerPoints;
    segments.numCrossings = constraints.numCrossings;
}

void Run::importMesh() {
    if (!isZoneGiven()) return;
    const StopWatch watch;
    const SoupFaults faults;
    pZone = cli::importMesh(triangulation, input, insertion, options.input);
    if (pZone == nullptr) refuseMesh(faults);
    report.numDuplicates = insertion.numDuplicates;
    report.importTime = watch.seconds();
    if (options.bMeasure) return;
    report.import = measureImport(triangulation, input, *pZone);
    collectNewVertices();
}

void Run::refuseMesh(const SoupFaults& faults) {
    std::string text =
        "the triangles can't be kept as they are; the lines above tell why, and count them from 0";
    const bool bHasExtent = report.boundingBox->minX < report.boundingBox->maxX ||
                            report.boundingBox->minY < report.boundingBox->maxY;
    for (const std::string& output : options.vOutputs) {
        if (options.bMeasure || !bHasExtent || formatOf(output) != FORMAT_SVG) continue;
        drawFaults(output, input, faults);
        text += "; " + output + " shows where";
    }
    throw FileError(options.input, text);
}

void Run::checkPictures() const {
    if (triangulation.is2D()) return;
    for (const std::string& output : options.vOutputs) {
        if (isPicture(formatOf(output)))
            throw FileError(output, "is not written: all points lie on one line");
    }
}

void Run::cut() {
    if (input.vKnives.empty()) return;
    const StopWatch watch;
    report.cut = cli::cut(*this);
    report.cutTime = watch.seconds();
}

void Run::createZone() {
    if (options.zone.empty()) return;
    const StopWatch watch;
    pZone = cli::createZone(triangulation, options.zone, constraints.pGraph, input.domain.vHoles);
    if (pZone == nullptr) throw FileError(options.input, "the segments enclose nothing");
    report.zoneTime = watch.seconds();
}

void Run::unify() {
    if (!options.unifyWidth) return;
    if (!triangulation.is2D())
        throw FileError(options.input, "has no triangles to unify: all points lie on one line");
    const StopWatch watch;
    report.unify = unifyGrid(triangulation, pZone, *options.unifyWidth, input.table, constraints);
    if (report.mesh) report.mesh->bMovedAfterwards = true;
    countSegmentEdges();
    report.unifyTime = watch.seconds();
}

void Run::countSegmentEdges() {
    if (!report.segments) return;
    report.segments->numMissing = constraints.numMissing;
    if (!triangulation.is2D()) return;
    report.segments->numEdges = countEdges(constraints.vEdges, &ConstraintEdge::bOfSegment);
}

void Run::collectNewVertices() {
    const StopWatch watch;
    collectSegments(triangulation, input, insertion.vHandles, constraints);
    countSegmentEdges();
    collectTime += watch.seconds();
}

void Run::countTriangulation() {
    if (isZoneGiven() && options.bMeasure) return; // what fills the hull of the mesh is no part of it
    report.bTriangulated = true;
    report.bIs2D = triangulation.is2D();
    report.numVertices = triangulation.numberOfPoints();
    report.numTriangles = triangulation.numberOfTriangles();
    if (!report.bIs2D) return;
    std::vector<Point2*> vHull;
    triangulation.getConvexHull(true, vHull);
    report.numHullVertices = vHull.size();
}

void Run::check() {
    if (!options.bCheck) return;
    const StopWatch watch;
    report.bValid = triangulation.checkValidity(true, "kivo2d_");
    if (constraints.numMissing > 0) report.bValid = false;
    report.checkTime = watch.seconds();
}

void Run::measure() {
    const StopWatch watch;
    report.quality = cli::measure(triangulation, pZone);
    report.qualityTime = watch.seconds();
}

std::vector<double> Run::attributesOfMesh() const {
    if (input.domain.vRegions.empty()) return {};
    std::vector<Triangle2*> vTriangles;
    if (pZone == nullptr) {
        triangulation.getTrianglePointers(vTriangles);
    } else {
        pZone->getTriangles(vTriangles);
    }
    const RegionMap regionMap(triangulation, constraints.vEdges, input.domain.vRegions);
    return attributesOfTriangles(regionMap, vTriangles, options.input);
}

void Run::collectMesh() {
    const StopWatch watch;
    if (!options.vOutputs.empty() || report.cut) mesh = meshOf(triangulation, input);
    const bool bTriangles =
        report.cut || std::any_of(options.vOutputs.begin(), options.vOutputs.end(),
                                  [](const std::string& output) { return needsTriangles(formatOf(output)); });
    if (pZone != nullptr) {
        mesh.bOfZone = true;
        triangulation.getMeshArrays(mesh.triangles, pZone);
    } else if (bTriangles && triangulation.is2D()) {
        triangulation.getMeshArrays(mesh.triangles);
    }
    mesh.vTriangleAttributes = attributesOfMesh();
    mesh.vEdges = constraints.vEdges;
    if (report.cut) {
        mesh.pieces = piecesOf(mesh);
        report.cut->numPieces = mesh.pieces.numParts;
        report.cut->numEdges = countEdges(constraints.vEdges, &ConstraintEdge::bCut);
    }
    if (pZone != nullptr)
        report.zone = measureZone(isZoneGiven() ? "mesh" : options.zone, *pZone, mesh.triangles);
    collectTime += watch.seconds();
}

void Run::write() {
    if (options.vOutputs.empty()) return;
    const StopWatch watch;
    for (const std::string& output : options.vOutputs) {
        if (options.bMeasure)
            drawQuality(output, mesh, *report.quality, options.input);
        else if (!writeByLibrary(output, triangulation, pZone, constraints.pCuts))
            writeMesh(output, mesh);
    }
    report.writeTime = watch.seconds() + collectTime;
}

} // namespace cli
