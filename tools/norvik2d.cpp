// The command-line program norvik2d.
#include <Norvik_2D.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <exception>
#include <iostream>
#include <limits>
#include <utility>
#include <vector>

#include "arguments.h"
#include "commands.h"
#include "exports.h"

using namespace KELMAR_NORVIK2D;

namespace {

constexpr const char* meshFiles = ".obj, .msh (Gmsh, as text), or .ele with its .node beside it";
constexpr const char* segmentFiles =
    "Text with `x1 y1 x2 y2` a line, a binary segment file, .poly, .geojson or .shp";
constexpr const char* anyFiles =
    "Triangles (.obj, .msh, .ele), segments (.seg, .poly, .geojson, .shp) or points (.node and others)";

using Command = std::pair<CLI::App*, int (*)(const Options&)>;

constexpr std::array zoneOperations{ZoneOperation{"union", zoneUnion},
                                    ZoneOperation{"intersection", zoneIntersection},
                                    ZoneOperation{"difference", zoneDifference},
                                    ZoneOperation{"symmetric-difference", zoneSymmetricDifference}};

void addProgressOption(CLI::App& command, Options& options) {
    command.add_flag("--progress", options.bProgress, "Show the progress if standard error is a terminal");
}

void addThreadsOption(CLI::App& command, Options& options) {
    command
        .add_option("--threads", options.numThreads, "Threads; 0 means as many as the hardware runs at once")
        ->check(CLI::Range(0, 1024))
        ->capture_default_str();
}

Command addTriangulate(CLI::App& app, Options& options) {
    CLI::App* pCommand = app.add_subcommand("triangulate", "Triangulate the points of a file");
    pCommand
        ->add_option("INPUT", options.input,
                     "Text with `x y` a line, a binary point file or .node; of other files (.seg with `x1 y1 "
                     "x2 y2` a line, "
                     ".poly, .geojson, .shp, .obj, .msh, .ele) the ends and corners")
        ->required();
    pCommand->add_option("--points-out", options.pointsFile,
                         "Write the points, each once, as text, or binary if the file is named .bin");
    return {pCommand, triangulate};
}

void addSegmentInput(CLI::App& command, Options& options) {
    command.add_option("INPUT", options.input, segmentFiles)->required();
    command.add_option("--points", options.pointsInput,
                       "A file of further points, as `triangulate` reads it");
}

Command addConstrain(CLI::App& app, Options& options) {
    CLI::App* pCommand = app.add_subcommand("constrain", "Make edges of the segments of a file");
    addSegmentInput(*pCommand, options);
    pCommand->add_flag("--conforming", options.bConforming,
                       "Halve the segments until their pieces are Delaunay edges");
    return {pCommand, constrain};
}

Command addCheck(CLI::App& app, Options& options) {
    CLI::App* pCommand =
        app.add_subcommand("check", "Find the segments of a file that cross, touch or overlap");
    pCommand->add_option("INPUT", options.input, segmentFiles)->required();
    pCommand->add_flag("--endpoints", options.bEndpoints,
                       "Segments that have an end in common count as illegal, too");
    pCommand->add_option(
        "--ps", options.pictureFile,
        "Draw the segments to a PostScript file, illegal ones in red, with marks where they meet");
    pCommand->add_option(
        "--list", options.listFile,
        "Write the illegal pairs: `i j point x y`, `i j overlap x1 y1 x2 y2`, `i j end x y`");
    addProgressOption(*pCommand, options);
    return {pCommand, check};
}

Command addZones(CLI::App& app, Options& options) {
    CLI::App* pCommand = app.add_subcommand(
        "zones", "Name regions by the closed rings of a file, combine two, and tell areas and borders");
    addSegmentInput(*pCommand, options);
    const CLI::Option* const pInside =
        pCommand->add_flag("--inside")
            ->description("A zone: inside of the next ring, in the order of the file");
    const CLI::Option* const pOutside =
        pCommand->add_flag("--outside")->description("A zone: outside of the next ring");
    const CLI::Option* const pGrow =
        addWords(*pCommand, "--grow", "X,Y", parseSeed,
                 "A zone: what can be reached from here without crossing a segment");
    CLI::Option_group* const pOperations =
        pCommand->add_option_group("Operation", "on the first two zones, at most one");
    for (const ZoneOperation& operation : zoneOperations)
        pOperations->add_flag_callback("--" + std::string(operation.name),
                                       [&] { options.pOperation = &operation; });
    pOperations->require_option(0, 1);
    pCommand->final_callback([=, &options] {
        // The order of the command line goes across the options, which know their own words only.
        std::size_t numSeeds = 0;
        for (const CLI::Option* pOption : pCommand->parse_order()) {
            if (pOption == pInside) options.vZones.push_back({ZL_INSIDE, {}});
            if (pOption == pOutside) options.vZones.push_back({ZL_OUTSIDE, {}});
            if (pOption == pGrow)
                options.vZones.push_back({ZL_GROW, parseSeed(pGrow->results().at(numSeeds++))});
        }
        if (options.pOperation != nullptr && options.vZones.size() < 2)
            throw CLI::ValidationError("--" + std::string(options.pOperation->name),
                                       "needs two zones (--inside, --outside, --grow)");
    });
    return {pCommand, zones};
}

Command addCut(CLI::App& app, Options& options) {
    CLI::App* pCommand = app.add_subcommand("cut", "Cut knives or a polygon through a triangulation");
    pCommand->add_option("INPUT", options.input, anyFiles)->required();
    const CLI::Option* const pKnife =
        addWords(*pCommand, "--knife", "X1,Y1,X2,Y2", parseKnife, "A segment to cut along");
    const CLI::Option* const pCookieCutter = pCommand->add_option(
        "--cookie-cutter", options.cookieCutterFile, "A file of segments, a simple polygon to cut out");
    pCommand->add_flag("--keep-shape", options.bKeepShape,
                       "Triangles are divided where they are cut, and stay as they are elsewhere");
    pCommand->final_callback([=, &options] {
        if (pKnife->count() == 0 && pCookieCutter->count() == 0)
            throw CLI::RequiredError("--knife or --cookie-cutter");
        for (const std::string& word : pKnife->results()) options.vKnives.push_back(parseKnife(word));
    });
    return {pCommand, cut};
}

void addLimits(CLI::App& command, MeshOptions& limits) {
    command.add_option("--min-angle", limits.minAngle, "The smallest angle, at most 30")
        ->type_name("DEGREES")
        ->check(complaintsOf(parseNumber), "")
        ->check(CLI::Range(0.0, 30.0))
        ->capture_default_str();
    addNumber(command, "--min-edge", limits.minEdge, 0.0, "LENGTH",
              "Segments shorter than twice this stay whole; 1e-5 of the domain's size otherwise");
    addNumber(command, "--max-edge", limits.maxEdge, 0.0, "LENGTH", "The longest edge");
    addNumber(command, "--max-area", limits.maxArea, 0.0, "AREA", "The largest triangle");
    addNumber(command, "--grow", limits.growFactor, 1.0, "FACTOR",
              "How much larger a triangle may be than one next to it");
    command
        .add_option_function<std::string>(
            "--grid",
            [&](const std::string& word) {
                const auto [dx, dy, length] = parseGrid(word);
                limits.gridDirection = Vector2(dx, dy);
                limits.gridLength = length;
            },
            "Begin with a square grid in this direction, of this spacing")
        ->type_name("DX,DY,LENGTH")
        ->check(complaintsOf(parseGrid), "");
    command.add_flag_callback(
        "--no-split", [&] { limits.bSplit = false; }, "All segments stay whole");
}

Command addMesh(CLI::App& app, Options& options) {
    CLI::App* pCommand = app.add_subcommand(
        "mesh", "Fill what the closed rings of a file bound, holes by nesting, with triangles of good shape");
    pCommand
        ->add_option("INPUT", options.input,
                     "Segments (.seg and others, .poly, .geojson, .shp), or triangles (.obj, .msh, .ele)")
        ->required();
    addLimits(*pCommand, options.mesh);
    return {pCommand, makeMesh};
}

void addMeshOptions(CLI::App& command, Options& options) {
    command.add_option("--ps", options.pictureFile,
                       "Draw the triangulation, constraints in red, to a PostScript file");
    command.add_option("--obj", options.objFile, "Write the triangles to a Wavefront OBJ file");
    addThreadsOption(command, options);
    command.add_flag("--check", options.bCheck, "Check the result: constraints, links and empty circles");
    addProgressOption(command, options);
}

Command addImport(CLI::App& app, Options& options) {
    CLI::App* pCommand = app.add_subcommand(
        "import", "Make a mesh of given triangles, as they are, and tell whether they are sound");
    pCommand->add_option("INPUT", options.input, meshFiles)->required();
    pCommand->add_flag("--reorient", options.bReorient, "Take triangles that run clockwise, too");
    pCommand->add_flag("--keep-box", options.bKeepBox,
                       "Keep the box, twice as large, up to which the space around them is filled");
    return {pCommand, importMesh};
}

/// What export and view have in common.
void addSubject(CLI::App& command, Options& options) {
    command.add_option("INPUT", options.input, anyFiles)->required();
    command.add_flag(
        "--inside", options.bInside,
        "Only what an odd number of closed rings contains, also if the file isn't one of polygons");
    addThreadsOption(command, options);
    addProgressOption(command, options);
}

CLI::Option* addExports(CLI::App& command, Options& options) {
    command.add_flag("--msh2", options.bOldMsh, "Write .msh in version 2.2 instead of 4.1");
    return command
        .add_option(
            "--to", options.vOutputs,
            "The format is told by the name: .obj, .msh, .vtu, .node, .ele (and .node), .poly, .geojson, "
            ".svg, or a folder for a browser")
        ->type_name("FILE")
        ->allow_extra_args(false)
        ->check(complaintAboutOutput, "");
}

Command addExport(CLI::App& app, Options& options) {
    CLI::App* pCommand =
        app.add_subcommand("export", "Write given triangles, or a triangulation, to files of other programs");
    addSubject(*pCommand, options);
    addExports(*pCommand, options)->required();
    return {pCommand, exportMesh};
}

Command addView(CLI::App& app, Options& options) {
    CLI::App* pCommand = app.add_subcommand(
        "view", "Make a folder that shows given triangles, or a triangulation, in a browser");
    addSubject(*pCommand, options);
    pCommand->add_option("--out", options.sceneFolder, "The folder")
        ->type_name("FOLDER")
        ->capture_default_str();
    return {pCommand, view};
}

Command addImage(CLI::App& app, Options& options) {
    CLI::App* pCommand = app.add_subcommand(
        "image", "Find lines in a picture, and fill what they enclose with triangles of good shape");
    ImageOptions& image = options.image;
    pCommand->add_option("INPUT", options.input, "A portable greymap, P2 or P5")->required();
    addNumber(*pCommand, "--low", image.low, 0.0, "SHARE",
              "Lines go on where the gradient has this share of the steepest one")
        ->capture_default_str();
    addNumber(*pCommand, "--high", image.high, 0.0, "SHARE", "... and are where it has this share somewhere")
        ->capture_default_str();
    pCommand->add_option("--min-length", image.minLength, "Shorter branches and lines are dropped")
        ->type_name("PIXELS")
        ->check(CLI::Range(1, std::numeric_limits<int>::max()), "")
        ->capture_default_str();
    pCommand->add_option("--tolerance", image.tolerance, "How far lines may be off when they are simplified")
        ->type_name("PIXELS")
        ->check(complaintsOf(parseNumber), "")
        ->check(CLI::NonNegativeNumber, "")
        ->capture_default_str();
    pCommand->add_flag("--inside", options.bInside,
                       "Only what an odd number of closed lines contains, not all that is enclosed");
    pCommand->add_option("--pictures", image.prefix, "Draw each step to a file whose name begins so")
        ->type_name("PREFIX");
    addLimits(*pCommand, options.mesh);
    addExports(*pCommand, options);
    pCommand->final_callback([&image] {
        if (image.low > image.high) throw CLI::ValidationError("--low", "exceeds --high");
        if (image.high > 1.0) throw CLI::ValidationError("--high", "exceeds 1");
    });
    return {pCommand, meshImage};
}

int run(const std::vector<Command>& commands, const Options& options) {
    const auto chosen = std::find_if(commands.begin(), commands.end(),
                                     [](const Command& command) { return command.first->parsed(); });
    return chosen->second(options);
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    CLI::App app("Exact two-dimensional Delaunay triangulation");
    app.set_version_flag("--version", getNorvik2DVersion());
    app.require_subcommand(1);
    app.footer(
        "Exit status: 0 done; 1 the input can't be used, an output can't be made, or --check found faults; "
        "2 wrong usage; 3 `check` found illegal segments.");
    std::vector<Command> commands{addTriangulate(app, options), addConstrain(app, options),
                                  addZones(app, options),       addCut(app, options),
                                  addMesh(app, options),        addImport(app, options),
                                  addImage(app, options)};
    for (const Command& command : commands) addMeshOptions(*command.first, options);
    for (const auto add : {addCheck, addExport, addView}) commands.push_back(add(app, options));
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& reason) {
        return app.exit(reason) == 0 ? exitSuccess : exitUsage;
    }
    try {
        return run(commands, options);
    } catch (const std::exception& reason) {
        std::cerr << reason.what() << std::endl;
        return exitFailure;
    }
}
