// Insertions of random points of random kinds on random numbers of threads, each checked by all laws of a mesh.
// Arguments: a seed, to repeat what went wrong, and the number of insertions. Insertion k of seed s is the first one
// of seed s + k.
#include <iostream>
#include <random>

#include "bulkInsertion.h"
#include "captureOutput.h"
#include "manyPoints.h"
#include "meshLaws.h"

using namespace KELMAR_NORVIK2D;
using hardPoints::below, hardPoints::Rng;

namespace {

/// Of one kind, or partly of another one.
std::vector<Point2> randomPoints(Rng& rng) {
    constexpr int numKinds = static_cast<int>(std::size(manyPoints::kinds));
    const auto& first = manyPoints::kinds[below(rng, numKinds)];
    const auto& second = manyPoints::kinds[below(rng, numKinds)];
    const bool bMixed = below(rng, 2) == 0 && !first.bSlow && !second.bSlow;
    const int numOther = bMixed ? below(rng, manyPoints::enoughForThreads) : 0;
    std::cout << " " << first << (bMixed ? std::string(" and ") + second.name : "") << std::flush;
    std::vector<Point2> points = manyPoints::makePoints(first, manyPoints::enoughForThreads - numOther, rng);
    const std::vector<Point2> others = manyPoints::makePoints(second, numOther, rng);
    points.insert(points.end(), others.begin(), others.end());
    return points;
}

/// Whether one insertion, and sometimes a second one into the same mesh, keeps all laws.
bool isSound(unsigned seed) {
    Rng rng(seed);
    Norvik_2D mesh;
    std::vector<Point2> points;
    std::vector<Point2*> handles;
    std::string faults;
    std::cout << "seed " << seed << ":";
    for (int rounds = below(rng, 4) == 0 ? 2 : 1; rounds > 0; --rounds) {
        const std::vector<Point2> added = randomPoints(rng);
        const int numCPU = mesh.setNumCPU(2 + below(rng, 7));
        std::cout << " on " << numCPU << std::flush;  // before an assertion in a thread ends the program
        const auto insert = below(rng, 2) == 0 ? insertBulk : insertArray;
        std::vector<Point2*> addedHandles;
        {
            CaptureOutput remarks;
            addedHandles = insert(mesh, added);
        }
        points.insert(points.end(), added.begin(), added.end());
        handles.insert(handles.end(), addedHandles.begin(), addedHandles.end());
        faults += handlesBroken(mesh, points, handles) + lawsBroken(mesh);
    }
    std::cout << (faults.empty() ? "" : " FAILED: ") << faults << std::endl;
    return faults.empty();
}

}  // namespace

int main(int argc, char** argv) {
    const unsigned seed = argc > 1 ? static_cast<unsigned>(std::stoul(argv[1])) : std::random_device()();
    const unsigned numInsertions = argc > 2 ? static_cast<unsigned>(std::stoul(argv[2])) : 200;
    unsigned numFailed = 0;
    for (unsigned k = 0; k < numInsertions; ++k)
        if (!isSound(seed + k)) ++numFailed;
    std::cout << numInsertions << " insertions from seed " << seed << " on, " << numFailed << " failed\n";
    return numFailed == 0 ? 0 : 1;
}
