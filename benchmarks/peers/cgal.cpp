#include <CGAL/Delaunay_triangulation_2.h>
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>
#include <CGAL/Triangulation_hierarchy_2.h>

#include <algorithm>
#include <memory>

#include "Peer.h"

namespace {

using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
using Point = Kernel::Point_2;
using Plain = CGAL::Delaunay_triangulation_2<Kernel>;

using LayeredVertex = CGAL::Triangulation_hierarchy_vertex_base_2<CGAL::Triangulation_vertex_base_2<Kernel>>;
using LayeredRecords =
    CGAL::Triangulation_data_structure_2<LayeredVertex, CGAL::Triangulation_face_base_2<Kernel>>;
using Hierarchy = CGAL::Triangulation_hierarchy_2<CGAL::Delaunay_triangulation_2<Kernel, LayeredRecords>>;

std::vector<Point> convert(const PointSet& points) {
    std::vector<Point> converted;
    converted.reserve(points.size());
    for (const auto& [x, y] : points) converted.emplace_back(x, y);
    return converted;
}

/// `bHinted` means that each walk starts where the last one ended; otherwise the triangulation finds a start.
template <class Triangulation, bool bHinted>
class CgalPeer : public Peer {
public:
    void setInput(const PointSet& points) override { vInput = convert(points); }
    void setQueries(const PointSet& queries) override { vQueries = convert(queries); }

    void chooseVertices(const std::vector<std::size_t>& ranks) override {
        std::vector<Vertex> vSorted;
        for (Vertex vertex : pMesh->finite_vertex_handles()) vSorted.push_back(vertex);
        std::sort(vSorted.begin(), vSorted.end(),
                  [](const Vertex& a, const Vertex& b) { return a->point() < b->point(); });
        vChosen.clear();
        for (const std::size_t rank : ranks) vChosen.push_back(vSorted.at(rank));
    }

    void insert() override {
        pMesh = std::make_unique<Triangulation>();
        pMesh->insert(vInput.begin(), vInput.end());
    }

    std::size_t locateQueries() override {
        std::size_t numInside = 0;
        Face face;
        for (const Point& query : vQueries) {
            face = pMesh->locate(query, bHinted ? face : Face());
            numInside += !pMesh->is_infinite(face);
        }
        return numInside;
    }

    void removeChosen() override {
        for (const Vertex& vertex : vChosen) pMesh->remove(vertex);
    }

    std::size_t numberOfTriangles() const override { return pMesh->number_of_faces(); }
    void clear() override { pMesh.reset(); }

private:
    using Vertex = typename Triangulation::Vertex_handle;
    using Face = typename Triangulation::Face_handle;

    std::vector<Point> vInput, vQueries;
    std::vector<Vertex> vChosen;
    std::unique_ptr<Triangulation> pMesh;
};

}  // namespace

std::unique_ptr<Peer> makeCgal() { return std::make_unique<CgalPeer<Plain, true>>(); }
std::unique_ptr<Peer> makeCgalHierarchy() { return std::make_unique<CgalPeer<Hierarchy, false>>(); }
