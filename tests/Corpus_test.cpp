// Inputs on which triangulations have failed, with facts known from exact arithmetic. See corpus/README.md.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iostream>

#include "Norvik_2D.h"
#include "canonicalMesh.h"
#include "captureOutput.h"
#include "constraintLaws.h"
#include "meshLaws.h"
#include "zoneLaws.h"

using namespace KELMAR_NORVIK2D;

namespace {

enum Home { OURS, EXTRA };

/// What is special about an entry's segments: they form one ring; some of them cross.
enum Special { NOTHING = 0, RING = 1, CROSSINGS = 2 };

struct Entry {
    const char* name;
    std::size_t numPoints, numHull, numTriangles;
    Home home;
    int special = NOTHING;
    /// Pairs of segments with a common point that isn't an end of both, or with a common stretch.
    std::size_t numMeetings = 0, numOverlaps = 0;
};

constexpr Entry entries[] = {
    {"p01_delaunator_robustness1", 79, 15, 141, OURS},
    {"p04_delaunator_robustness4", 36, 7, 63, OURS},
    {"p05_delaunator_issue13", 17, 17, 15, OURS},
    {"p08_delaunator_ukraine", 867, 21, 1711, OURS},
    {"p11_shapely1873_narrow", 8, 6, 8, EXTRA},
    {"p12_jts298_subset", 5, 4, 4, EXTRA},
    {"p14_jts1171_cocircular", 4, 4, 2, OURS},
    {"p15_cdt100_concyclic", 4, 4, 2, OURS},
    {"s01_constrainautor15_tiny_edge", 6, 5, 5, OURS},
    {"s03_constrainautor2", 236, 21, 449, OURS, RING},
    {"s04_cdt_problematic1", 8, 6, 8, OURS},
    {"s07_cdt_triple_hanging", 8, 5, 9, OURS},
    {"s08_cdt42_overlaps", 16, 10, 20, OURS, NOTHING, 12, 6},
    {"s11_cdt_issue2", 78, 10, 144, OURS, RING},
    {"s13_cdt_overlap", 8, 8, 6, OURS, RING, 2, 1},
    {"s16_cdt148", 6, 4, 6, OURS, CROSSINGS, 1},
    {"s17_cdt_letters", 101, 21, 179, OURS},
    {"s18_cdt_sweden", 2619, 32, 5204, OURS},
    {"s19_cdt154_2_loop", 8, 5, 9, OURS},
    {"s21_cgal4405", 5, 4, 4, EXTRA, CROSSINGS, 2},
    {"s23_cgal5080", 7, 5, 7, EXTRA, CROSSINGS, 4},
    {"s26_cgal781_tiny_edge", 10, 10, 8, EXTRA, RING},
    {"s27_cgal_single_triangle_refine", 3, 3, 1, EXTRA, RING},
    {"s29_spade_precision2", 6, 4, 6, OURS, CROSSINGS, 3},
    {"s32_spade107", 7, 3, 9, OURS},
    {"s33_p2t_monkey", 1204, 60, 2346, OURS, RING},
    {"s35_p2t34_square_1e14", 12, 4, 18, OURS},
    {"s38_p2t_greenm18_touch", 8, 4, 10, OURS, RING | CROSSINGS, 2},
    {"s39_earcut_selftangent4", 2582, 55, 5107, OURS},
    {"s42_earcut_1e28", 4, 3, 3, OURS},
    {"s43_geos1046_lines", 219, 10, 426, EXTRA, CROSSINGS, 45},
    {"s46_geos488", 111, 16, 204, EXTRA, CROSSINGS, 27},
    {"s47_trianglenet1", 5, 4, 4, OURS, CROSSINGS, 1},
    {"s49_triangle_dupvertex", 4, 4, 2, OURS, RING},
    {"g02_underflow_mixed", 101, 24, 176, OURS},
    {"g03_micro_lattice_1e-7", 24, 24, 22, OURS, CROSSINGS, 36},
    {"g05_spiral_ring", 1800, 51, 3547, OURS, RING},
    {"g07_fan720", 721, 103, 1337, OURS},
};

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
    for (const Entry& entry : entries) {
        SCOPED_TRACE(entry.name);
        if (entry.home == EXTRA && extraFolder == nullptr) {
            std::cout << "passed over, as NORVIK2D_EXTRA_CORPUS is unset: " << entry.name << std::endl;
            continue;
        }
        const std::string folder = entry.home == OURS ? NORVIK2D_TEST_CORPUS_DIR : extraFolder;
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
        if (!segments.empty() && (entry.special & CROSSINGS) == 0) {
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
            EXPECT_EQ(pGraph->isPolygon(), (entry.special & RING) != 0);
            EXPECT_TRUE(mesh.checkValidity(true, entry.name)) << output.out();
            if ((entry.special & CROSSINGS) == 0) expectFacts(mesh, entry);
        }
    });
}
