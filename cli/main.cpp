#include "cli/StandardOutput.h"
#include "cli/check.h"
#include "cli/commands.h"
#include "cli/errors.h"
#include "cli/messages.h"
#include "cli/zone.h"

#include <CLI/CLI.hpp>
#include <Kivo_2D.h>

#include <cstdint>
#include <cstdio>
#include <limits>
#include <new>

namespace {

using namespace cli;

struct CommandLine {
    TriangulateOptions triangulate;
    MeshOptions mesh;
    TriangulateOptions import;
    TriangulateOptions quality;
    CheckOptions check;
    GenerateOptions generate;
    std::string generateOutput;
    bool bJson = false;
};

const char* const POINT_FILES = "points: .xy .txt .xyz .bin .node; points and segments: .geojson, and .poly, "
                                "whose points may be in the .node file of the same name";

// What every command that triangulates takes.
void addRunOptions(CLI::App& command, TriangulateOptions& options, bool& bJson) {
    command.add_flag("--flip-y", options.bFlipY,
                     "turn y round: the input's y axis points down, as on screens");
    command.add_flag(
        "--check", options.bCheck,
        "check links, empty circles and that all segments are edges; exit code 1 when a check fails");
    command
        .add_option("--threads", options.numThreads,
                    "threads for inputs of 100,000 points or more, 0 for all of the machine")
        ->check(CLI::Range(0, 4096))
        ->capture_default_str();
    command.add_flag("--progress", options.bProgress,
                     "progress on standard error even where that is no terminal");
    command.add_flag("--json", bJson, "report as JSON");
}

// What every command that reads a file of points takes.
void addInputOptions(CLI::App& command, TriangulateOptions& options, const std::string& inputs, bool& bJson) {
    command.add_option("IN", options.input, inputs)->required();
    command.add_option("--segments", options.segments,
                       "segments that become edges: .seg with \"x1 y1 x2 y2\" a line, .bin, or the lines "
                       "and rings of .geojson");
    command.add_flag("--conforming", options.bConforming,
                     "divide segments until every triangle's circle is empty, instead of forcing them in");
    addRunOptions(command, options, bJson);
}

void addOutputOption(CLI::App& command, TriangulateOptions& options, const std::string& outputs) {
    command.add_option("-o,--output", options.vOutputs, outputs)->type_size(1)->allow_extra_args(false);
}

// What every command that writes triangles takes.
void addSharedOptions(CLI::App& command, TriangulateOptions& options) {
    addOutputOption(
        command, options,
        "file to write, may be repeated: .svg .ps .geojson .obj .vtu .msh .node .ele .poly .edge "
        ".seg .xy .txt .xyz .bin, or a folder, with a slash at its end, for a web page that shows "
        "the mesh");
    command
        .add_option("--cut", options.vCuts,
                    "cut the triangles along the segment x0,y0,x1,y1, or along those of a file (.seg .poly "
                    ".geojson .bin); may be repeated. Wherever one crosses an edge a vertex appears, and it "
                    "becomes a chain of edges")
        ->type_size(1)
        ->allow_extra_args(false);
    command.add_option("--unify", options.unifyWidth,
                       "at last, move the vertices to the points of a grid of this width through the origin; "
                       "those that fall together become one, and those stay whose move would change how "
                       "segments lie");
}

CLI::App* addTriangulate(CLI::App& app, CommandLine& commandLine) {
    TriangulateOptions& options = commandLine.triangulate;
    CLI::App* const pCommand = app.add_subcommand(
        "triangulate", "Delaunay triangulation of a file of points, with segments as edges");
    addInputOptions(*pCommand, options, POINT_FILES, commandLine.bJson);
    addSharedOptions(*pCommand, options);
    pCommand
        ->add_option(
            "--zone", options.zone,
            "write the triangles inside the segments only: \"inside\" counts how often a way out crosses "
            "them, so that rings in rings are holes; \"enclosed\" takes all that has no way out")
        ->check(CLI::IsMember(zoneKinds()));
    pCommand->footer(
        "The whole convex hull is triangulated; --zone picks the triangles that are written and drawn, "
        "without the "
        "holes of a .poly file.\n"
        "Points and segments are written whole in any case (.node .poly .seg and files of points).\n"
        "A region point's attribute goes to all triangles (.ele, .geojson, .vtu, .msh) that it reaches "
        "without crossing a segment.\n"
        "New vertices on a segment inherit its marker, and attributes interpolated along it.");
    return pCommand;
}

void addLimits(CLI::App& command, MeshOptions& options) {
    command.add_option("--min-angle", options.minAngle, "smallest angle wanted, in degrees, at most 30")
        ->capture_default_str();
    command.add_option("--max-area", options.maxArea,
                       "largest area of a triangle; in regions with a limit the smaller one holds");
    command.add_option("--max-edge", options.maxEdge, "longest edge of a triangle");
    command.add_option("--min-edge", options.minEdge,
                       "segments shorter than twice this are not split; by default 1e-9 of the size of what "
                       "is meshed");
    command.add_option("--grow", options.growFactor,
                       "how many times as large as a neighbour a triangle may be, above 1");
    command.add_flag("--no-split", options.bNoSplit,
                     "split no segments: the border keeps its vertices, and bad triangles may stay there");
    command.add_option("--max-points", options.maxPoints, "end when so many points were inserted");
    command.add_option(
        "--grid", options.grid,
        "L,dx,dy: first fill the inside with the halves of squares of side L, aligned to the direction "
        "dx,dy; left out, with a warning, when that takes more than --max-points");
}

CLI::App* addMesh(CLI::App& app, CommandLine& commandLine) {
    MeshOptions& options = commandLine.mesh;
    TriangulateOptions& shared = options.triangulate;
    shared.bMesh = true;
    shared.zone = zoneKinds().front();
    CLI::App* const pCommand = app.add_subcommand(
        "mesh", "mesh of good triangles inside segments: no small angles, and no triangle above the limits");
    addInputOptions(*pCommand, shared, POINT_FILES, commandLine.bJson);
    addSharedOptions(*pCommand, shared);
    pCommand
        ->add_option("--zone", shared.zone,
                     "what is inside: \"inside\" counts how often a way out crosses segments, so that rings "
                     "in rings are holes; \"enclosed\" takes all that has no way out")
        ->check(CLI::IsMember(zoneKinds()))
        ->capture_default_str();
    addLimits(*pCommand, options);
    pCommand->footer(
        "Beside segments that meet at less than 60 degrees angles may stay small; the report tells how many "
        "triangles do not meet a limit, and why.\n"
        "Area limits of a .poly file's regions hold. New vertices get attributes interpolated between the "
        "points; on a segment they inherit its marker.\n"
        "--unify moves vertices after the refinement, so that what is written lies on the grid; limits may "
        "be missed by as much as that takes.\n"
        "Ctrl-C ends the refinement; the mesh reached is written, and the exit code is 130. A second one "
        "ends the command.");
    return pCommand;
}

CLI::App* addImport(CLI::App& app, CommandLine& commandLine) {
    TriangulateOptions& options = commandLine.import;
    options.bImport = true;
    CLI::App* const pCommand =
        app.add_subcommand("import", "triangulation in which the triangles of a mesh stay as they are");
    pCommand->add_option("FILE", options.input, "meshes: .obj .vtu .msh, and .ele beside its .node")
        ->required();
    pCommand->add_option("--points", options.points,
                         std::string("what is there beside the mesh; ") + POINT_FILES);
    pCommand->add_option(
        "--segments", options.segments,
        "segments beside the mesh that become edges: .seg with \"x1 y1 x2 y2\" a line, .bin, "
        "or the lines and rings of .geojson");
    addRunOptions(*pCommand, options, commandLine.bJson);
    addSharedOptions(*pCommand, options);
    pCommand->footer(
        "The triangles of the file are written and drawn; they may be given in either direction. Around them "
        "the convex hull is triangulated, with their border and what of their edges is not Delaunay as "
        "constraints.\n"
        "Degenerate and overlapping triangles, edges of three, corners inside edges, and points and segments "
        "in their way are told with their coordinates, and nothing is written but .svg pictures of them. "
        "Triangles are numbered from 0 there.\n"
        "Vertices of the file that no triangle has stay points. Attributes and markers that only one of the "
        "files has are 0 in the other.");
    return pCommand;
}

CLI::App* addQuality(CLI::App& app, CommandLine& commandLine) {
    TriangulateOptions& options = commandLine.quality;
    options.bMeasure = true;
    CLI::App* const pCommand =
        app.add_subcommand("quality", "angles, areas, edges and aspect ratios of the triangles of a mesh");
    addInputOptions(*pCommand, options,
                    std::string("meshes: .obj .vtu .msh, and .ele beside its .node; ") + POINT_FILES +
                        ", which are triangulated first",
                    commandLine.bJson);
    addOutputOption(*pCommand, options,
                    "picture to draw, may be repeated: .svg, triangles coloured by their smallest angles");
    pCommand
        ->add_option("--zone", options.zone,
                     "measure the triangles inside the segments only: \"inside\" by parity, \"enclosed\" "
                     "all that has no way out")
        ->check(CLI::IsMember(zoneKinds()));
    pCommand->footer("The triangles of a mesh file are measured as they are; they must not overlap, and have "
                     "areas.");
    return pCommand;
}

CLI::App* addCheck(CLI::App& app, CommandLine& commandLine) {
    CheckOptions& options = commandLine.check;
    CLI::App* const pCommand = app.add_subcommand(
        "check", "segments that cross, touch or overlap others, before they become constraints");
    pCommand
        ->add_option("FILE", options.input,
                     "segments: .seg with \"x1 y1 x2 y2\" a line, .poly, the lines and rings of .geojson, or "
                     "the library's binary segments (.bin)")
        ->required();
    pCommand->add_flag("--end-points", options.bEndPoints, "ends that are shared are faults too");
    pCommand->add_flag("--list", options.bList, "list the pairs of segments at fault, one a line");
    pCommand->add_option("--max-pairs", options.maxPairs, "count and list no more pairs than these")
        ->check(CLI::NonNegativeNumber)
        ->capture_default_str();
    pCommand->add_option("-o,--output", options.vOutputs, "picture of the faults, may be repeated: .svg .ps")
        ->type_size(1)
        ->allow_extra_args(false);
    pCommand->add_flag("--flip-y", options.bFlipY, "in the pictures y points down, as on screens");
    pCommand->add_flag("--progress", options.bProgress,
                       "progress on standard error even where that is no terminal");
    pCommand->add_flag("--json", commandLine.check.bJson, "report as JSON");
    pCommand->footer(
        "A pair is a crossing when it meets inside both segments, a touch when an end of one lies inside the "
        "other, an overlap when it shares a piece of a line, a duplicate when both ends are the same.\n"
        "The list has the numbers of both segments, the kind, and where: crossing points are rounded, "
        "everything else is exact. Segments are numbered as in the .poly file, in other files from 1 in the "
        "order in which they stand, repeated ones and those of no length included.\n"
        "Segments of no length are no fault by themselves.\n"
        "Exit code 3 when there are faults.");
    return pCommand;
}

CLI::App* addGenerate(CLI::App& app, CommandLine& commandLine) {
    GenerateOptions& options = commandLine.generate;
    CLI::App* const pCommand = app.add_subcommand("generate", "test points: equal options give equal files");
    pCommand->add_option("KIND", options.kind, "kind of point set")
        ->required()
        ->check(CLI::IsMember(generatorKinds()));
    pCommand->add_option("-n,--count", options.count, "number of points")
        ->required()
        ->check(CLI::Range(0, std::numeric_limits<int>::max()));
    pCommand
        ->add_option("-o,--output", commandLine.generateOutput, "file to write: .xy .txt .bin .node .geojson")
        ->required();
    pCommand->add_option("--seed", options.seed, "start of the random numbers")->capture_default_str();
    pCommand->add_option("--size", options.size, "length of the square's side")
        ->check(CLI::Range(1e-300, 1e300))
        ->capture_default_str();
    const CLI::Range anyCoordinate(-1e300, 1e300);
    pCommand->add_option("--offset-x", options.offsetX, "added to every x")
        ->check(anyCoordinate)
        ->capture_default_str();
    pCommand->add_option("--offset-y", options.offsetY, "added to every y")
        ->check(anyCoordinate)
        ->capture_default_str();
    pCommand->add_flag("--json", commandLine.bJson, "report as JSON");
    return pCommand;
}

int print(const Report& report, bool bJson) {
    StandardOutput out;
    out << (bJson ? toJson(report) : toText(report));
    out.flush();
    if (!report.bValid.value_or(true)) return EXIT_CODE_BAD_INPUT;
    if (!report.mesh || report.mesh->refinement.end != TESK_KIVO2D::RefinementEnd::STOPPED)
        return EXIT_CODE_OK;
    std::fputs("kivo2d: interrupted: the mesh is valid, but not finished\n", stderr);
    return EXIT_CODE_INTERRUPTED;
}

int fail(const char* text, ExitCode exitCode) {
    std::fprintf(stderr, "kivo2d: %s\n", text);
    return exitCode;
}

int parseAndRun(int argc, char** argv) {
    CLI::App app("Kivo 2D: exact 2-D Delaunay triangulation", "kivo2d");
    app.set_version_flag("--version",
                         "kivo2d " KIVO2D_COMMAND_VERSION " (" + TESK_KIVO2D::getKivo2DVersion() + ")");
    app.require_subcommand(1);
    app.footer("Exit codes: 0 done, 1 bad input or a file that can't be written, 2 wrong usage, 3 faults "
               "among segments, 130 a mesh "
               "that Ctrl-C left unfinished.");
    CommandLine commandLine;
    const CLI::App* const pTriangulate = addTriangulate(app, commandLine);
    const CLI::App* const pMesh = addMesh(app, commandLine);
    const CLI::App* const pImport = addImport(app, commandLine);
    const CLI::App* const pQuality = addQuality(app, commandLine);
    const CLI::App* const pCheck = addCheck(app, commandLine);
    addGenerate(app, commandLine);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? EXIT_CODE_OK : EXIT_CODE_USAGE;
    }
    if (pCheck->parsed()) return runCheck(commandLine.check);
    const Report report = pTriangulate->parsed() ? runTriangulate(commandLine.triangulate)
                          : pMesh->parsed()      ? runMesh(commandLine.mesh)
                          : pImport->parsed()    ? runImport(commandLine.import)
                          : pQuality->parsed()
                              ? runQuality(commandLine.quality)
                              : runGenerate(commandLine.generate, commandLine.generateOutput);
    return print(report, commandLine.bJson);
}

} // namespace

int main(int argc, char** argv) {
    try {
        sendMessagesToErrorStream();
        return parseAndRun(argc, argv);
    } catch (const UsageError& error) {
        return fail(error.what(), EXIT_CODE_USAGE);
    } catch (const std::bad_alloc&) {
        return fail("out of memory", EXIT_CODE_BAD_INPUT);
    } catch (const std::exception& error) {
        return fail(error.what(), EXIT_CODE_BAD_INPUT);
    }
}
