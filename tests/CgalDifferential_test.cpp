// The same points given to another library's exact triangulation.
#include <CGAL/Delaunay_triangulation_2.h>
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>
#include <gtest/gtest.h>

#include <set>

#include "Norvik_2D.h"
#include "canonicalMesh.h"
#include "hardPoints.h"
#include "meshLaws.h"

using namespace KELMAR_NORVIK2D;

namespace {

using Peer = CGAL::Delaunay_triangulation_2<CGAL::Exact_predicates_inexact_constructions_kernel>;
using PeerPoint = Peer::Point;

Coordinates coordinatesOf(const PeerPoint& point) { return {point.x(), point.y()}; }

CanonicalMesh canonicalPeer(const Peer& peer) {
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

TEST(CgalDifferential, ManyPointsAndWhatIsLeftAfterRemovals) {
    std::vector<Point2> points = hardPoints::uniformPoints(20000, 22);
    hardPoints::Rng rng(23);
    for (int i = 0; i < 20000; ++i)
        points.emplace_back(hardPoints::below(rng, 10) + 1e-5 * hardPoints::unit(rng),
                            1e-3 * hardPoints::around0(rng));
    Norvik_2D mesh;
    std::vector<Point2*> handles;
    mesh.insert(points, handles);
    expectAlike(mesh, points);
    std::vector<Point2> vLeft;
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (i % 4 == 0)
            mesh.remove(handles[i]);
        else
            vLeft.push_back(points[i]);
    }
    expectAlike(mesh, vLeft);
}
