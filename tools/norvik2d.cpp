// The command-line program norvik2d.
#include <Norvik_2D.h>

#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>

#include "commands.h"

using namespace KELMAR_NORVIK2D;

namespace {

CLI::App* addTriangulate(CLI::App& app, Options& options) {
    CLI::App* pCommand = app.add_subcommand("triangulate", "Triangulate the points of a file");
    pCommand
        ->add_option(
            "INPUT", options.input,
            "Text with `x y` a line, or a binary point file; of a .seg file (`x1 y1 x2 y2` a line) the ends")
        ->required();
    pCommand->add_option("--points-out", options.pointsFile,
                         "Write the points, each once, as text, or binary if the file is named .bin");
    return pCommand;
}

CLI::App* addConstrain(CLI::App& app, Options& options) {
    CLI::App* pCommand = app.add_subcommand("constrain", "Make edges of the segments of a file");
    pCommand->add_option("INPUT", options.input, "Text with `x1 y1 x2 y2` a line, or a binary segment file")
        ->required();
    pCommand->add_option("--points", options.pointsInput,
                         "A file of further points, as `triangulate` reads it");
    pCommand->add_flag("--conforming", options.bConforming,
                       "Halve the segments until their pieces are Delaunay edges");
    return pCommand;
}

void addCommonOptions(CLI::App& command, Options& options) {
    command.add_option("--ps", options.pictureFile,
                       "Draw the triangulation, constraints in red, to a PostScript file");
    command
        .add_option("--threads", options.numThreads, "Threads; 0 means as many as the hardware runs at once")
        ->check(CLI::Range(0, 1024))
        ->capture_default_str();
    command.add_flag("--check", options.bCheck, "Check the result: constraints, links and empty circles");
    command.add_flag("--progress", options.bProgress, "Show the progress if standard error is a terminal");
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    CLI::App app("Exact two-dimensional Delaunay triangulation");
    app.set_version_flag("--version", getNorvik2DVersion());
    app.require_subcommand(1);
    CLI::App* const pTriangulate = addTriangulate(app, options);
    CLI::App* const pConstrain = addConstrain(app, options);
    addCommonOptions(*pTriangulate, options);
    addCommonOptions(*pConstrain, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& reason) {
        return app.exit(reason) == 0 ? exitSuccess : exitUsage;
    }
    try {
        return pConstrain->parsed() ? constrain(options) : triangulate(options);
    } catch (const std::exception& reason) {
        std::cerr << reason.what() << std::endl;
        return exitFailure;
    }
}
