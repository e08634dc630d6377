// Inputs on which triangulations have failed, with facts known from exact arithmetic. See corpus/README.md.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>

#include "Norvik_2D.h"
#include "canonicalMesh.h"
#include "captureOutput.h"
#include "constraintLaws.h"
#include "meshLaws.h"
#include "zoneLaws.h"

using namespace KELMAR_NORVIK2D;

namespace {

/// A line of facts.txt.
struct Entry {
    std::string name;
    std::size_t numPoints = 0, numHull = 0, numTriangles = 0, numMeetings = 0, numOverlaps = 0;
    bool bExtra = false, bRing = false, bCrossings = false;
};

std::vector<Entry> readEntries() {
    std::vector<Entry> entries;
    std::ifstream file(NORVIK2D_TEST_CORPUS_DIR "/facts.txt");
    for (std::string line, word; std::getline(file, line);) {
        if (line.empty() || line.front() == '#') continue;
        Entry entry;
        std::istringstream words(line);
        words >> entry.name >> entry.numPoints >> entry.numHull >> entry.numTriangles >> word;
        entry.bExtra = word == "extra";
        words >> entry.numMeetings >> entry.numOverlaps;
        while (words >> word) (word == "ring" ? entry.bRing : entry.bCrossings) = true;
        entries.push_back(entry);
    }
    EXPECT_GT(entries.size(), 30U);
    return entries;
}

/// The points of one file of an entry; a line of segments is two points. None if the entry has no such file.
std::vector<Point2> read(const std::string& folder, const std::string& name, const char* extension) {
    std::vector<Point2> points;
    std::ifstream file(folder + "/" + name + extension);
    // strtod takes denormal numbers, which streams refuse.
    std::string x, y;
    while (file >> x >> y)
        points.emplace_back(std::strtod(x.c_str(), nullptr), std::strtod(y.c_str(), nullptr));
    return points;
}

std::vector<Segment2> segmentsOf(const std::vector<Point2>& ends) {
    std::vector<Segment2> segments;
    for (std::size_t i = 0; i + 1 < ends.size(); i += 2) segments.emplace_back(ends[i], ends[i + 1]);
    return segments;
}

/// Calls `check` with each entry, its free points and its segments' ends.
template <class Check>
void forEachEntry(Check check) {
    const char* const extraFolder = std::getenv("NORVIK2D_EXTRA_CORPUS");
    for (const Entry& entry : readEntries()) {
        SCOPED_TRACE(entry.name);
        if (entry.bExtra && extraFolder == nullptr) {
            std::cout << "passed over, as NORVIK2D_EXTRA_CORPUS is unset: " << entry.name << std::endl;
            continue;
        }
        const std::string folder = entry.bExtra ? extraFolder : NORVIK2D_TEST_CORPUS_DIR;
        check(entry, read(folder, entry.name, ".xy"), read(folder, entry.name, ".seg"));
    }
}

void expectFacts(Norvik_2D& mesh, const Entry& entry) {
    std::vector<Point2*> vHull;
    mesh.getConvexHull(true, vHull);
    EXPECT_EQ(mesh.numberOfPoints(), entry.numPoints);
    EXPECT_EQ(vHull.size(), entry.numHull);
    EXPECT_EQ(mesh.numberOfTriangles(), entry.numTriangles);
    EXPECT_EQ(lawsBroken(mesh), "");
    EXPECT_TRUE(mesh.checkValidity(true, entry.name));
}

}  // namespace

TEST(Corpus, FactsOfEachEntryHoldOneAtATimeAndOnAnyNumberOfThreads) {
    forEachEntry([](const Entry& entry, std::vector<Point2> points, const std::vector<Point2>& ends) {
        points.insert(points.end(), ends.begin(), ends.end());
        ASSERT_GE(points.size(), entry.numPoints) << "the file is missing or short";
        Norvik_2D single;
        insertEach(single, points);
        expectFacts(single, entry);
        for (const int numCPU : {1, 2, 8}) {
            Norvik_2D bulk;
            bulk.setNumCPU(numCPU);
            bulk.insert(points);
            expectFacts(bulk, entry);
        }
        // All but a tenth go and come again.
        std::vector<Point2*> vVertices;
        single.getVertexPointers(vVertices);
        for (std::size_t i = 0; i < vVertices.size(); ++i)
            if (i % 10 != 0) single.remove(vVertices[i]);
        EXPECT_EQ(lawsBroken(single), "");
        single.insert(points);
        expectFacts(single, entry);
    });
}

TEST(Corpus, SegmentsMeetAsOftenAsKnown) {
    forEachEntry([](const Entry& entry, const std::vector<Point2>&, const std::vector<Point2>& ends) {
        // Repeated ones count once.
        std::map<std::pair<Point2, Point2>, Segment2> mSegments;
        for (const Segment2& segment : segmentsOf(ends))
            mSegments[std::minmax(segment.getSrc(), segment.getTrg())] = segment;
        std::vector<Segment2*> pointers;
        for (auto& [ends2, segment] : mSegments) pointers.push_back(&segment);
        const SegmentChecker checker(pointers);
        std::size_t numMeetings = 0, numOverlaps = 0;
        for (Segment2* pSegment : pointers) {
            std::vector<std::pair<Segment2*, SegmentIntersectionType>> vPartners;
            checker.getIntersectors(pSegment, false, vPartners);
            for (const auto& [pPartner, type] : vPartners) ++(type == SIT_POINT ? numMeetings : numOverlaps);
        }
        EXPECT_EQ(numMeetings, 2 * entry.numMeetings);
        EXPECT_EQ(numOverlaps, 2 * entry.numOverlaps);
    });
}

TEST(Corpus, ConformingPiecesAndRefinedZonesObeyTheLaws) {
    forEachEntry([](const Entry& entry, const std::vector<Point2>& points, const std::vector<Point2>& ends) {
        CaptureOutput output;
        const std::vector<Segment2> segments = segmentsOf(ends);
        if (!segments.empty() && !entry.bCrossings) {
            Norvik_2D mesh;
            Demands demands(mesh);
            mesh.insert(points);
            demands.create(segments, CIS_CONFORMING_DELAUNAY);
            mesh.applyConstraintsAndZones();
            EXPECT_EQ(demands.check(), "");
        }
        Norvik_2D mesh;
        mesh.insert(points);
        ConstraintGraph2* const pGraph =
            segments.empty() ? nullptr : mesh.createConstraint(segments, CIS_CONSTRAINED_DELAUNAY);
        Zone2* const pZone = pGraph != nullptr && pGraph->isPolygon()
                                 ? mesh.createZone(pGraph, ZL_INSIDE)
                                 : mesh.createZone(zoneLaws::trianglesOf(mesh))->convertToBoundedZone();
        const Bbox2 box = mesh.computeBoundingBox();
        const double size = std::max(box.getMaxX() - box.getMinX(), box.getMaxY() - box.getMinY());
        const double area = zoneLaws::areaOf(pZone);
        mesh.refine(pZone, 20.0, size / 30.0, size / 5.0, true);
        // The outline is divided where there are doubles, next to it.
        const double ulp = std::max(getUlp(box.getMaxX()), getUlp(box.getMaxY()));
        EXPECT_NEAR(zoneLaws::areaOf(pZone), area, 1e-9 * area + 10 * ulp * size);
        EXPECT_EQ(lawsBroken(mesh), "");
        EXPECT_TRUE(mesh.checkValidity(true, entry.name)) << output.out();
    });
}

TEST(Corpus, SegmentsBecomeEdgesAndAddVerticesAtCrossingsOnly) {
    forEachEntry([](const Entry& entry, const std::vector<Point2>& points, const std::vector<Point2>& ends) {
        if (ends.empty()) return;
        std::vector<Segment2> segments = segmentsOf(ends);
        for (const bool bReversed : {false, true}) {
            if (bReversed) std::reverse(segments.begin(), segments.end());
            Norvik_2D mesh;
            Demands demands(mesh);
            mesh.insert(points);
            CaptureOutput output;
            const ConstraintGraph2* const pGraph = demands.create(segments, CIS_CONSTRAINED_DELAUNAY);
            EXPECT_EQ(demands.check(), "");
            EXPECT_EQ(pGraph->isPolygon(), entry.bRing);
            EXPECT_TRUE(mesh.checkValidity(true, entry.name)) << output.out();
            if (!entry.bCrossings) expectFacts(mesh, entry);
        }
    });
}
