#include "cli/commands.h"

#include "cli/constraints.h"
#include "cli/errors.h"
#include "cli/formats.h"
#include "cli/input.h"
#include "cli/insertion.h"
#include "cli/libraryWriters.h"
#include "cli/outputFiles.h"
#include "cli/progress.h"
#include "cli/regions.h"
#include "cli/writers.h"
#include "cli/zone.h"

#include <Kivo_2D.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <utility>

namespace cli {

namespace {

using TESK_KIVO2D::Kivo_2D;
using TESK_KIVO2D::Point2;
using TESK_KIVO2D::Triangle2;
using TESK_KIVO2D::Zone2;

class StopWatch {
public:
    double seconds() const {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }

private:
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
};

bool bringsSegments(const TriangulateOptions& options) {
    return !options.segments.empty() || canHoldSegments(formatOf(options.input));
}

// Everything that can be refused is refused before the work, which may be long.
void checkUsage(const TriangulateOptions& options) {
    for (const std::string& output : options.vOutputs)
        formatOf(output);
    const char* const need = bringsSegments(options) ? nullptr
                             : options.bConforming   ? "--conforming"
                             : !options.zone.empty() ? "--zone"
                                                     : nullptr;
    if (need == nullptr) return;
    throw UsageError(std::string(need) + " is about segments: give --segments, or a .poly or .geojson file");
}

void checkOutputs(const std::vector<std::string>& vOutputs, const Input& input) {
    for (const std::string& output : vOutputs) {
        for (const std::string& filename : input.vFilenames) {
            std::error_code notThere;
            if (!std::filesystem::equivalent(filename, output, notThere)) continue;
            throw UsageError(output + ": the output would overwrite the input");
        }
        checkHolds(output, input.table);
    }
    for (const std::string& output : vOutputs)
        checkWritable(output);
}

void checkPictures(const std::vector<std::string>& vOutputs, const Kivo_2D& triangulation) {
    if (triangulation.is2D()) return;
    for (const std::string& output : vOutputs) {
        if (isPicture(formatOf(output)))
            throw FileError(output, "is not written: all points lie on one line");
    }
}

Box boxOf(const std::vector<Point2>& vPoints) {
    const TESK_KIVO2D::Bbox2 box(vPoints.begin(), vPoints.end());
    return {box.get_minX(), box.get_minY(), box.get_maxX(), box.get_maxY()};
}

Input readAll(const TriangulateOptions& options, Report& report) {
    const StopWatch watch;
    Input input = readInput(options.input, options.segments, options.bFlipY);
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

void fillCounts(Report& report, const Kivo_2D& triangulation) {
    report.bTriangulated = true;
    report.bIs2D = triangulation.is2D();
    report.numVertices = triangulation.numberOfPoints();
    report.numTriangles = triangulation.numberOfTriangles();
    if (!report.bIs2D) return;
    std::vector<Point2*> vHull;
    triangulation.getConvexHull(true, vHull);
    report.numHullVertices = vHull.size();
}

Constraints insertAll(Kivo_2D& triangulation, const TriangulateOptions& options, Input& input,
                      Report& report) {
    const StopWatch pointsWatch;
    const Insertion insertion = insertPoints(triangulation, input, options.input);
    report.numDuplicates = insertion.numDuplicates;
    report.triangulateTime = pointsWatch.seconds();
    if (!report.segments) return {};
    const StopWatch watch;
    Constraints constraints = insertSegments(triangulation, input, insertion.vHandles,
                                             options.bConforming ? TESK_KIVO2D::CIS_CONFORMING_DELAUNAY
                                                                 : TESK_KIVO2D::CIS_CONSTRAINED_DELAUNAY);
    report.segmentsTime = watch.seconds();
    SegmentReport& segments = *report.segments;
    segments.numSkipped = constraints.numSkipped;
    segments.numEdges = triangulation.is2D() ? constraints.vEdges.size() : 0;
    segments.numMissing = constraints.numMissing;
    segments.numNewEnds = insertion.numNewEnds;
    segments.numSteinerPoints = constraints.numSteinerPoints;
    segments.numCrossings = constraints.numCrossings;
    return constraints;
}

void check(const Kivo_2D& triangulation, Report& report) {
    const StopWatch watch;
    report.bValid = triangulation.checkValidity(true, "kivo2d_");
    if (report.segments && report.segments->numMissing > 0) report.bValid = false;
    report.checkTime = watch.seconds();
}

Zone2* zoneOf(Kivo_2D& triangulation, const TriangulateOptions& options, const Constraints& constraints,
              const Input& input) {
    if (options.zone.empty()) return nullptr;
    Zone2* const pZone = createZone(triangulation, options.zone, constraints.pGraph, input.domain.vHoles);
    if (pZone == nullptr) throw FileError(options.input, "the segments enclose nothing");
    return pZone;
}

std::vector<double> attributesOf(const Kivo_2D& triangulation, const Zone2* pZone,
                                 const std::vector<Region>& vRegions, const std::string& name) {
    if (vRegions.empty()) return {};
    std::vector<Triangle2*> vTriangles;
    if (pZone == nullptr) {
        triangulation.getTrianglePointers(vTriangles);
    } else {
        pZone->getTriangles(vTriangles);
    }
    return attributesOfTriangles(triangulation, vTriangles, vRegions, name);
}

Mesh collectMesh(const Kivo_2D& triangulation, const Zone2* pZone, const TriangulateOptions& options,
                 const Input& input) {
    Mesh mesh;
    if (!options.vOutputs.empty()) mesh = meshOf(triangulation, input);
    const bool bTriangles =
        std::any_of(options.vOutputs.begin(), options.vOutputs.end(),
                    [](const std::string& output) { return needsTriangles(formatOf(output)); });
    if (pZone != nullptr) {
        mesh.bOfZone = true;
        triangulation.getMeshArrays(mesh.triangles, pZone);
    } else if (bTriangles && triangulation.is2D()) {
        triangulation.getMeshArrays(mesh.triangles);
    }
    mesh.vTriangleAttributes = attributesOf(triangulation, pZone, input.domain.vRegions, options.input);
    return mesh;
}

} // namespace

Report runTriangulate(const TriangulateOptions& options) {
    checkUsage(options);
    Report report;
    report.command = "triangulate";
    report.input = options.input;
    report.vOutputs = options.vOutputs;
    Input input = readAll(options, report);

    Kivo_2D triangulation(static_cast<unsigned int>(input.table.vPoints.size()));
    // The heading of a web scene.
    triangulation.setName(std::filesystem::path(options.input).filename().string());
    report.numThreads = triangulation.setNumCPU(options.numThreads);
    ProgressBar progressBar;
    if (options.bProgress || isErrorStreamTerminal()) {
        triangulation.subscribe(TESK_KIVO2D::MSG_PROGRESS, &progressBar);
    }
    Constraints constraints = insertAll(triangulation, options, input, report);
    fillCounts(report, triangulation);
    checkPictures(options.vOutputs, triangulation);
    const StopWatch zoneWatch;
    const Zone2* const pZone = zoneOf(triangulation, options, constraints, input);
    if (pZone != nullptr) report.zoneTime = zoneWatch.seconds();
    if (options.bCheck) check(triangulation, report);
    const StopWatch watch;
    Mesh mesh = collectMesh(triangulation, pZone, options, input);
    mesh.vEdges = std::move(constraints.vEdges);
    if (pZone != nullptr) report.zone = measureZone(options.zone, *pZone, mesh.triangles);
    for (const std::string& output : options.vOutputs) {
        if (!writeByLibrary(output, triangulation, pZone)) writeMesh(output, mesh);
    }
    if (!options.vOutputs.empty()) report.writeTime = watch.seconds();
    triangulation.unsubscribe(TESK_KIVO2D::MSG_PROGRESS, &progressBar);
    return report;
}

Report runGenerate(const GenerateOptions& options, const std::string& output) {
    if (!holdsBarePoints(formatOf(output))) {
        throw UsageError(output + ": generated points have neither heights nor triangles to write");
    }
    checkWritable(output);
    const PointTable table = generatePoints(options);
    Report report;
    report.command = "generate";
    report.kind = options.kind;
    report.numPoints = table.vPoints.size();
    if (!table.vPoints.empty()) report.boundingBox = boxOf(table.vPoints);
    report.vOutputs = {output};
    const StopWatch watch;
    writeMesh(output, meshOfPoints(table));
    report.writeTime = watch.seconds();
    return report;
}

} // namespace cli
