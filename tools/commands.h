#pragma once

#include <Norvik_2D.h>

#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "formats/fileData.h"
#include "formats/textFile.h"

constexpr int exitSuccess = 0;
constexpr int exitFailure = 1;
constexpr int exitUsage = 2;
constexpr int exitIllegal = 3;

/// A zone that is asked for: inside or outside of the next ring, or around a seed.
struct ZoneRequest {
    KELMAR_NORVIK2D::ZoneLocation kind;
    KELMAR_NORVIK2D::Point2 seed;  ///< for ZL_GROW only
};

/// An operation on two zones, as it is called in options and in the summary.
struct ZoneOperation {
    const char* name;
    KELMAR_NORVIK2D::Zone2* (*combine)(KELMAR_NORVIK2D::Zone2*, KELMAR_NORVIK2D::Zone2*);
};

/// The limits of a mesh.
struct MeshOptions {
    double minAngle = 20.0;
    double minEdge = 0.0;  ///< 0: a share of the domain's size
    double maxEdge = std::numeric_limits<double>::max();
    double maxArea = std::numeric_limits<double>::max();
    double growFactor = std::numeric_limits<double>::max();
    KELMAR_NORVIK2D::Vector2 gridDirection;
    double gridLength = 0.0;
    bool bSplit = true;
};

/// How lines are found in a picture.
struct ImageOptions {
    double low = 0.1, high = 0.3;  ///< shares of the steepest gradient
    int minLength = 8;
    double tolerance = 1.0;
    std::string prefix;  ///< of the pictures of all steps; empty: none
};

/// What the command line tells; each command reads what it offers.
struct Options {
    std::string input;
    std::string pointsInput;
    std::string pictureFile;
    std::string pointsFile;
    std::string objFile;
    int numThreads = 1;
    bool bConforming = false;
    bool bCheck = false;
    bool bProgress = false;
    /// In the order of the command line.
    std::vector<ZoneRequest> vZones;
    const ZoneOperation* pOperation = nullptr;
    std::vector<KELMAR_NORVIK2D::Segment2> vKnives;
    std::string cookieCutterFile;
    bool bKeepShape = false;
    MeshOptions mesh;
    ImageOptions image;
    bool bEndpoints = false;
    std::string listFile;
    bool bReorient = false;
    bool bKeepBox = false;
    bool bInside = false;
    std::vector<std::string> vOutputs;
    bool bOldMsh = false;
    std::string sceneFolder = "scene";
};

// The commands print a summary on standard output, write the files that are asked for, and return the exit status. Input
// that can't be used ends in BadInput, before anything is printed.

int triangulate(const Options& options);
int constrain(const Options& options);
int zones(const Options& options);
int cut(const Options& options);
int makeMesh(const Options& options);
int check(const Options& options);
int importMesh(const Options& options);
int exportMesh(const Options& options);
int view(const Options& options);
int meshImage(const Options& options);

// What they have in common

/// What one input holds. Segments of no length are among the points.
struct Input : Drawing {
    std::size_t numDegenerate = 0;
};

/// Adds what a file holds; its degenerate segments, of which the library would warn one by one, as points.
void addDrawing(Drawing drawing, Input& input);

/// Fills the domain of what was read with triangles: all that `mesh` does, and what other commands do in the end. Returns the exit
/// status. The summary begins with `about`, lines about the input.
int meshInput(const Input& input, const Options& options, const std::string& about = {});

/// The library doesn't report files that can't be written; this throws BadOutput.
void ensureWritable(const std::string& path);
/// Ends in BadOutput unless a text file that the library has written, which says nothing of failures, ends as it has to.
void ensureComplete(const std::string& path);

/// Writes the triangles of the zone, or all if it is null, to an OBJ file. BadOutput too if there are none.
void writeObj(KELMAR_NORVIK2D::Norvik_2D& mesh, KELMAR_NORVIK2D::Zone2* pZone, const std::string& path);

/// Does the work, with a bar on standard error if that is wanted and a terminal. Returns the seconds that it took. A Publisher, a
/// Norvik_2D or SegmentChecker, tells the progress.
template <class Publisher>
double doTimed(Publisher& publisher, const Options& options, const std::function<void()>& work);

/// `area ..., triangles ..., border edges ...`
std::string describe(const KELMAR_NORVIK2D::Zone2& zone);

/// Writes the picture and the OBJ file that are asked for: of the zone, or of all triangles if there is none. The picture of a
/// zone has the other triangles' edges as well if `bShowFull`.
void writeOutputs(KELMAR_NORVIK2D::Norvik_2D& mesh, KELMAR_NORVIK2D::Zone2* pZone, const Options& options,
                  bool bShowFull = true);

/// The exit status: failure if a check was asked for and finds faults, which are told. Triangles that keep their shape may have
/// vertices in their circles, so such a mesh needn't be a Delaunay triangulation.
int checkIfAsked(KELMAR_NORVIK2D::Norvik_2D& mesh, const Options& options, bool bDelaunay = true);
