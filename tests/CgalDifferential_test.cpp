// The same points given to another library's exact triangulation.
#include <CGAL/Constrained_Delaunay_triangulation_2.h>
#include <CGAL/Delaunay_triangulation_2.h>
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>
#include <gtest/gtest.h>

#include <set>

#include "Norvik_2D.h"
#include "canonicalMesh.h"
#include "constraintLaws.h"
#include "hardPoints.h"
#include "hardSegments.h"
#include "meshLaws.h"

using namespace KELMAR_NORVIK2D;

namespace {

using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
using Peer = CGAL::Delaunay_triangulation_2<Kernel>;
using ConstrainedPeer =
    CGAL::Constrained_Delaunay_triangulation_2<Kernel, CGAL::Default, CGAL::Exact_predicates_tag>;
using PeerPoint = Peer::Point;

Coordinates coordinatesOf(const PeerPoint& point) { return {point.x(), point.y()}; }

template <class AnyPeer>
CanonicalMesh canonicalPeer(const AnyPeer& peer) {
    CanonicalMesh result;
    for (auto face = peer.finite_faces_begin(); face != peer.finite_faces_end(); ++face) {
        std::array<Coordinates, 3> corners;
        for (int i = 0; i < 3; ++i)
            corners[static_cast<std::size_t>(i)] = coordinatesOf(face->vertex(i)->point());
        std::sort(corners.begin(), corners.end());
        result.push_back(corners);
    }
    std::sort(result.begin(), result.end());
    return result;
}

std::set<Coordinates> peerHull(const Peer& peer) {
    std::set<Coordinates> result;
    auto around = peer.incident_vertices(peer.infinite_vertex());
    const auto start = around;
    do result.insert(coordinatesOf(around->point()));
    while (++around != start);
    return result;
}

void expectAlike(Norvik_2D& mesh, const std::vector<Point2>& points) {
    std::vector<PeerPoint> peerPoints;
    for (const Point2& point : points) peerPoints.emplace_back(point.x(), point.y());
    const Peer peer(peerPoints.begin(), peerPoints.end());
    ASSERT_EQ(mesh.is2D(), peer.dimension() == 2);
    EXPECT_EQ(mesh.numberOfPoints(), peer.number_of_vertices());
    if (!mesh.is2D()) return;
    EXPECT_EQ(mesh.numberOfTriangles(), peer.number_of_faces());
    std::vector<Point2*> vHull;
    mesh.getConvexHull(true, vHull);
    std::set<Coordinates> hull;
    for (const Point2* pVtx : vHull) hull.emplace(pVtx->x(), pVtx->y());
    EXPECT_EQ(hull, peerHull(peer));
    if (isUnique(mesh)) {
        EXPECT_TRUE(canonicalMesh(mesh) == canonicalPeer(peer));
    }
}

ConstrainedPeer cutByPeer(const std::vector<Point2>& points, const hardSegments::Segments& segments) {
    ConstrainedPeer peer;
    for (const Point2& point : points) peer.insert(PeerPoint(point.x(), point.y()));
    for (const Segment2& segment : segments)
        peer.insert_constraint(PeerPoint(segment.getSrc().x(), segment.getSrc().y()),
                               PeerPoint(segment.getTrg().x(), segment.getTrg().y()));
    return peer;
}

std::size_t numConstrainedEdges(const ConstrainedPeer& peer) {
    return static_cast<std::size_t>(
        std::distance(peer.constrained_edges_begin(), peer.constrained_edges_end()));
}

}  // namespace

TEST(CgalDifferential, HardPointsOfEveryKind) {
    for (const hardPoints::Kind& kind : hardPoints::kinds)
        for (const int numCPU : {1, 4}) {
            SCOPED_TRACE(kind.name);
            hardPoints::Rng rng(21);
            const std::vector<Point2> points = hardPoints::makePoints(kind, 600, rng);
            Norvik_2D mesh;
            mesh.setNumCPU(numCPU);
            mesh.insert(points);
            expectAlike(mesh, points);
        }
}

TEST(CgalDifferential, SegmentsWithoutCrossings) {
    hardPoints::Rng rng(24);
    const std::vector<Point2> points = hardPoints::uniformPoints(3000, 25);
    // Each in a cell of its own.
    hardSegments::Segments apart;
    for (int i = 0; i < 900; ++i) {
        const auto inCell = [&] {
            return Point2((i % 30 + hardPoints::unit(rng)) / 30.0, (i / 30 + hardPoints::unit(rng)) / 30.0);
        };
        apart.emplace_back(inCell(), inCell());
    }
    for (const hardSegments::Segments& segments :
         {hardSegments::spiral(400), hardSegments::fan(rng, 300, 0.7), apart}) {
        Norvik_2D mesh;
        Demands demands(mesh);
        mesh.insert(points);
        demands.create(segments, CIS_CONSTRAINED_DELAUNAY);
        ASSERT_EQ(demands.check(), "");
        ASSERT_TRUE(isUnique(mesh));
        const ConstrainedPeer peer = cutByPeer(points, segments);
        EXPECT_EQ(demands.getNumPieces(), numConstrainedEdges(peer));
        EXPECT_TRUE(canonicalMesh(mesh) == canonicalPeer(peer));
    }
}

TEST(CgalDifferential, RandomSegmentsHaveTheSameCrossings) {
    for (unsigned seed = 26; seed < 36; ++seed) {
        hardPoints::Rng rng(seed);
        // So large that no crossing is within a millionth of another.
        const auto point = [&] { return Point2(1e6 * hardPoints::unit(rng), 1e6 * hardPoints::unit(rng)); };
        hardSegments::Segments segments;
        for (int i = 0; i < 100; ++i) segments.emplace_back(point(), point());
        Norvik_2D mesh;
        Demands demands(mesh);
        demands.create(segments, CIS_CONSTRAINED_DELAUNAY);
        ASSERT_EQ(demands.check(), "");
        const ConstrainedPeer peer = cutByPeer({}, segments);
        EXPECT_EQ(mesh.numberOfPoints(), peer.number_of_vertices());
        EXPECT_EQ(demands.getNumPieces(), numConstrainedEdges(peer));
    }
}
