#include "cli/commands.h"

#include "cli/errors.h"
#include "cli/progress.h"
#include "cli/readers.h"
#include "cli/writers.h"

#include <Kivo_2D.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>

namespace cli {

namespace {

using TESK_KIVO2D::Kivo_2D;
using TESK_KIVO2D::Point2;

class StopWatch {
public:
    double seconds() const {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }

private:
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
};

// Everything that can be refused is refused before the work, which may be long.
void checkOutputNames(const TriangulateOptions& options) {
    for (const std::string& output : options.vOutputs) {
        formatOf(output);
        std::error_code notThere;
        if (std::filesystem::equivalent(options.input, output, notThere)) {
            throw UsageError(output + ": the output would overwrite the input");
        }
    }
}

// Exact; a difference, because that makes no negative zero.
void flipY(std::vector<Point2>& vPoints) {
    for (Point2& point : vPoints) {
        const int index = point.getCustomIndex();
        point = Point2(point.x(), 0.0 - point.y());
        point.setCustomIndex(index);
    }
}

Box boxOf(const std::vector<Point2>& vPoints) {
    const TESK_KIVO2D::Bbox2 box(vPoints.begin(), vPoints.end());
    return {box.get_minX(), box.get_minY(), box.get_maxX(), box.get_maxY()};
}

// Of equal points the first one becomes the vertex; what the others carry is lost, and that is said.
void warnOfLostAttributes(const PointTable& table, const std::vector<Point2*>& vHandles,
                          const std::string& input) {
    std::size_t numLost = 0;
    for (std::size_t i = 0; i < vHandles.size(); ++i) {
        const auto kept = static_cast<std::size_t>(vHandles[i]->getCustomIndex());
        const double* const pOwn = table.getAttributes(i);
        if (!std::equal(pOwn, pOwn + table.numAttributes, table.getAttributes(kept))) ++numLost;
    }
    if (numLost == 0) return;
    std::fprintf(stderr,
                 "kivo2d: %s: %zu points equal an earlier one but for their heights or attributes, %s\n",
                 input.c_str(), numLost, "which were dropped");
}

void insertPoints(Kivo_2D& triangulation, const PointTable& table, const std::string& input) {
    if (table.numAttributes == 0) {
        triangulation.insert(table.vPoints);
        return;
    }
    std::vector<Point2*> vHandles;
    triangulation.insert(table.vPoints, vHandles);
    warnOfLostAttributes(table, vHandles, input);
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

void writeOutputs(const Kivo_2D& triangulation, const PointTable& table,
                  const std::vector<std::string>& vOutputs) {
    const Mesh mesh = meshOf(triangulation, table);
    for (const std::string& output : vOutputs) {
        if (formatOf(output) == FORMAT_PS) {
            writeDrawing(output, triangulation);
        } else {
            writeMesh(output, mesh, table);
        }
    }
}

PointTable readInput(const TriangulateOptions& options, Report& report) {
    const StopWatch watch;
    PointTable table = readPoints(options.input);
    if (options.bFlipY) flipY(table.vPoints);
    report.readTime = watch.seconds();
    report.numPoints = table.vPoints.size();
    if (!table.vPoints.empty()) report.boundingBox = boxOf(table.vPoints);
    for (const std::string& output : options.vOutputs) {
        checkHolds(output, table);
        checkWritable(output);
    }
    return table;
}

} // namespace

Report runTriangulate(const TriangulateOptions& options) {
    checkOutputNames(options);
    Report report;
    report.command = "triangulate";
    report.input = options.input;
    report.vOutputs = options.vOutputs;
    const PointTable table = readInput(options, report);

    Kivo_2D triangulation(static_cast<unsigned int>(table.vPoints.size()));
    report.numThreads = triangulation.setNumCPU(options.numThreads);
    ProgressBar progressBar;
    if (options.bProgress || isErrorStreamTerminal()) {
        triangulation.subscribe(TESK_KIVO2D::MSG_PROGRESS, &progressBar);
    }
    const StopWatch triangulateWatch;
    insertPoints(triangulation, table, options.input);
    report.triangulateTime = triangulateWatch.seconds();
    fillCounts(report, triangulation);
    if (options.bCheck) {
        const StopWatch watch;
        report.bValid = triangulation.checkValidity(true, "kivo2d_");
        report.checkTime = watch.seconds();
    }
    if (!options.vOutputs.empty()) {
        const StopWatch watch;
        writeOutputs(triangulation, table, options.vOutputs);
        report.writeTime = watch.seconds();
    }
    triangulation.unsubscribe(TESK_KIVO2D::MSG_PROGRESS, &progressBar);
    return report;
}

Report runGenerate(const GenerateOptions& options, const std::string& output) {
    const FileFormat format = formatOf(output);
    if (!isReadable(format) || format == FORMAT_XYZ) {
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
    writeMesh(output, meshOfPoints(table), table);
    report.writeTime = watch.seconds();
    return report;
}

} // namespace cli
