#include "cli/commands.h"

#include "cli/Run.h"
#include "cli/errors.h"
#include "cli/formats.h"
#include "cli/outputFiles.h"
#include "cli/refinement.h"
#include "cli/writers.h"

namespace cli {

Report runTriangulate(const TriangulateOptions& options) {
    checkUsage(options);
    Run run("triangulate", options);
    run.insert();
    run.checkPictures();
    run.cut();
    run.createZone();
    run.unify();
    run.countTriangulation();
    run.check();
    run.collectMesh();
    run.write();
    return run.report;
}

Report runMesh(const MeshOptions& options) {
    checkLimits(options);
    checkUsage(options.triangulate);
    Run run("mesh", options.triangulate);
    run.insert();
    run.checkPictures();
    run.cut();
    run.createZone();
    run.report.mesh = refine(run, options);
    run.unify();
    run.countTriangulation();
    run.check();
    run.measure();
    run.collectMesh();
    run.write();
    return run.report;
}

Report runImport(const TriangulateOptions& options) {
    checkUsage(options);
    Run run("import", options);
    run.insert();
    run.importMesh();
    run.cut();
    run.unify();
    run.countTriangulation();
    run.check();
    run.collectMesh();
    run.write();
    return run.report;
}

Report runQuality(const TriangulateOptions& options) {
    checkUsage(options);
    Run run("quality", options);
    run.insert();
    run.importMesh();
    if (!run.triangulation.is2D())
        throw FileError(options.input, "has no triangles: all points lie on one line");
    run.createZone();
    run.countTriangulation();
    run.check();
    run.measure();
    run.collectMesh();
    run.write();
    return run.report;
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
