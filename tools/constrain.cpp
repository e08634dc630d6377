#include <algorithm>
#include <iostream>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "commands.h"
#include "inputFiles.h"

using namespace KELMAR_NORVIK2D;

namespace {

/// The custom index of all points of the input. Vertices that the library adds have none, and so are known from them.
constexpr int inputPoint = 0;
constexpr int noIndex = -1;

struct Counts {
    std::size_t numPieces = 0;
    std::size_t numSplits = 0;
    std::size_t numCrossings = 0;
    std::size_t numAdded = 0;
    std::size_t numNotEnforced = 0;
};

Point2 marked(const Point2& point) { return {point.x(), point.y(), inputPoint}; }

Input readInput(const Options& options) {
    Input input;
    if (!options.pointsInput.empty()) input.points = readPoints(options.pointsInput);
    addDrawing(readSegments(options.input), input);
    for (Point2& point : input.points) point = marked(point);
    for (Segment2& segment : input.segments)
        segment = Segment2(marked(segment.getSrc()), marked(segment.getTrg()));
    return input;
}

/// Null if there is nothing to constrain.
ConstraintGraph2* insertAndApply(Norvik_2D& mesh, const Input& input, const Options& options) {
    const auto strategy = options.bConforming ? CIS_CONFORMING_DELAUNAY : CIS_CONSTRAINED_DELAUNAY;
    mesh.insert(input.points);
    if (input.segments.empty()) return nullptr;
    ConstraintGraph2* const pGraph = mesh.createConstraint(input.segments, strategy);
    // Of collinear points nothing can be made, and asking for it would be told as a mistake.
    if (mesh.is2D()) mesh.applyConstraintsAndZones();
    return pGraph;
}

/// The inner nodes of the split trees; trees of overlapping segments may share some.
std::size_t countSplits(const ConstraintGraph2& graph) {
    std::vector<ConstraintSegment2*> vOpen;
    graph.getOriginalConstraintSegments(vOpen);
    std::unordered_set<const ConstraintSegment2*> sSplit;
    while (!vOpen.empty()) {
        const ConstraintSegment2* const pSegment = vOpen.back();
        vOpen.pop_back();
        if (pSegment->isAlive() || !sSplit.insert(pSegment).second) continue;
        ConstraintSegment2 *pChild0 = nullptr, *pChild1 = nullptr;
        Point2* pSplit = nullptr;
        pSegment->getChildrenAndSplitPoint(pChild0, pChild1, pSplit);
        vOpen.push_back(pChild0);
        vOpen.push_back(pChild1);
    }
    return sSplit.size();
}

/// No segment ends at an added vertex, so each that runs through it has two pieces there, and more than two pieces mean
/// that different segments meet. (Four, unless nearly parallel ones share their way to the next vertex.) The midpoints
/// of conforming segments have two.
std::size_t countCrossings(const std::vector<ConstraintSegment2*>& vPieces) {
    std::unordered_map<const Point2*, int> mNumPieces;
    for (const ConstraintSegment2* pPiece : vPieces)
        for (const Point2* pEnd : {pPiece->getSrc(), pPiece->getTrg()})
            if (pEnd->getCustomIndex() == noIndex) ++mNumPieces[pEnd];
    const auto isCrossing = [](const auto& entry) { return entry.second > 2; };
    return static_cast<std::size_t>(std::count_if(mNumPieces.begin(), mNumPieces.end(), isCrossing));
}

std::size_t countAdded(Norvik_2D& mesh) {
    std::vector<Point2*> vVertices;
    mesh.getVertexPointers(vVertices);
    const auto isAdded = [](const Point2* pVertex) { return pVertex->getCustomIndex() == noIndex; };
    return static_cast<std::size_t>(std::count_if(vVertices.begin(), vVertices.end(), isAdded));
}

bool isEdge(Norvik_2D& mesh, const ConstraintSegment2& piece) {
    return mesh.getAdjacentTriangle(piece.getSrc(), piece.getTrg()) != nullptr ||
           mesh.getAdjacentTriangle(piece.getTrg(), piece.getSrc()) != nullptr;
}

std::size_t countNotEnforced(Norvik_2D& mesh, const std::vector<ConstraintSegment2*>& vPieces) {
    if (!mesh.is2D()) return vPieces.size();
    const auto isMissing = [&](const ConstraintSegment2* pPiece) { return !isEdge(mesh, *pPiece); };
    return static_cast<std::size_t>(std::count_if(vPieces.begin(), vPieces.end(), isMissing));
}

Counts count(Norvik_2D& mesh, const ConstraintGraph2* pGraph) {
    if (pGraph == nullptr) return {};
    std::vector<ConstraintSegment2*> vPieces;
    pGraph->getChildConstraintSegments(vPieces);
    return {.numPieces = vPieces.size(),
            .numSplits = countSplits(*pGraph),
            .numCrossings = countCrossings(vPieces),
            .numAdded = countAdded(mesh),
            .numNotEnforced = countNotEnforced(mesh, vPieces)};
}

void printSummary(Norvik_2D& mesh, const Input& input, const Counts& counts, double seconds) {
    std::cout << "segments given: " << input.segments.size() + input.numDegenerate
              << "\ndegenerate: " << input.numDegenerate << "\nalive pieces: " << counts.numPieces
              << "\nsplits: " << counts.numSplits << "\ncrossings: " << counts.numCrossings
              << "\nvertices added: " << counts.numAdded << "\nnot enforced: " << counts.numNotEnforced
              << "\npoints: " << mesh.numberOfPoints() << "\ntriangles: " << mesh.numberOfTriangles()
              << "\nseconds: " << seconds << std::endl;
}

}  // namespace

int constrain(const Options& options) {
    const Input input = readInput(options);
    Norvik_2D mesh(static_cast<unsigned int>(input.points.size() + 2 * input.segments.size()));
    mesh.setName(options.input);
    mesh.setNumCPU(options.numThreads);
    const ConstraintGraph2* pGraph = nullptr;
    const double seconds = doTimed(mesh, options, [&] { pGraph = insertAndApply(mesh, input, options); });
    printSummary(mesh, input, count(mesh, pGraph), seconds);
    writeOutputs(mesh, nullptr, options);
    return checkIfAsked(mesh, options);
}
