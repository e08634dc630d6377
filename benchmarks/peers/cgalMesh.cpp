#include <CGAL/Constrained_Delaunay_triangulation_2.h>
#include <CGAL/Delaunay_mesh_face_base_2.h>
#include <CGAL/Delaunay_mesh_size_criteria_2.h>
#include <CGAL/Delaunay_mesh_vertex_base_2.h>
#include <CGAL/Delaunay_mesher_2.h>
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <vector>

#include "MeshPeer.h"

namespace {

using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
using Point = Kernel::Point_2;
using Records = CGAL::Triangulation_data_structure_2<CGAL::Delaunay_mesh_vertex_base_2<Kernel>,
                                                     CGAL::Delaunay_mesh_face_base_2<Kernel>>;
using Mesh = CGAL::Constrained_Delaunay_triangulation_2<Kernel, Records>;
using Criteria = CGAL::Delaunay_mesh_size_criteria_2<Mesh>;
using Mesher = CGAL::Delaunay_mesher_2<Mesh, Criteria>;

double squaredSine(double degrees) {
    const double sine = std::sin(degrees * std::numbers::pi / 180.0);
    return sine * sine;
}

/// The square of the sine of the smallest angle.
double quality(const Mesh::Face& face) {
    std::array<double, 3> squares{};
    for (int i = 0; i < 3; ++i)
        squares[static_cast<std::size_t>(i)] =
            CGAL::squared_distance(face.vertex(Mesh::ccw(i))->point(), face.vertex(Mesh::cw(i))->point());
    std::sort(squares.begin(), squares.end());
    const double doubleArea =
        2.0 * CGAL::area(face.vertex(0)->point(), face.vertex(1)->point(), face.vertex(2)->point());
    return doubleArea * doubleArea / (squares[1] * squares[2]);
}

class CgalMesh : public MeshPeer {
public:
    void setDomain(const MeshDomain& domain) override {
        std::vector<std::pair<Point, Point>> border;
        for (const auto& [from, to] : domain.border)
            border.emplace_back(Point(from.x, from.y), Point(to.x, to.y));
        vSeeds.clear();
        for (const auto& [x, y] : domain.holes) vSeeds.emplace_back(x, y);
        pMesh = std::make_unique<Mesh>();
        pMesh->insert_constraints(border.begin(), border.end());
    }

    void refine(const MeshLimits& limits) override {
        Mesher mesher(*pMesh, Criteria(squaredSine(limits.minAngleDegree), limits.maxEdgeLength));
        mesher.set_seeds(vSeeds.begin(), vSeeds.end());
        mesher.refine_mesh();
    }

    std::size_t numberOfTriangles() override {
        return countIf([](const Mesh::Face&) { return true; });
    }

    std::size_t numberOfBadTriangles(double minAngleDegree) override {
        const double bound = squaredSine(minAngleDegree) * (1.0 - 1e-9);
        return countIf([=](const Mesh::Face& face) { return quality(face) < bound; });
    }

    void clear() override { pMesh.reset(); }

private:
    template <class Condition>
    std::size_t countIf(Condition holds) const {
        std::size_t count = 0;
        for (const Mesh::Face_handle face : pMesh->finite_face_handles())
            count += face->is_in_domain() && holds(*face);
        return count;
    }

    std::vector<Point> vSeeds;
    std::unique_ptr<Mesh> pMesh;
};

}  // namespace

std::unique_ptr<MeshPeer> makeCgalMesh() { return std::make_unique<CgalMesh>(); }
