#include <CGAL/Constrained_Delaunay_triangulation_2.h>
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

#include "ConstraintPeer.h"

namespace {

using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
using Point = Kernel::Point_2;
using Mesh = CGAL::Constrained_Delaunay_triangulation_2<Kernel, CGAL::Default, CGAL::Exact_predicates_tag>;
using Vertex = Mesh::Vertex_handle;

using Segments = std::vector<std::pair<Point, Point>>;

std::vector<Point> endsOf(const Segments& segments) {
    std::vector<Point> ends;
    ends.reserve(2 * segments.size());
    for (const auto& [from, to] : segments) {
        ends.push_back(from);
        ends.push_back(to);
    }
    return ends;
}

/// Inserts both ends of each segment; the triangulation finds out which are the same.
void constrainSegments(Mesh& mesh, const Segments& segments) {
    mesh.insert_constraints(segments.begin(), segments.end());
}

/// Inserts each end once, found out by sorting. That is faster where most ends occur twice.
void constrainPairsOfPoints(Mesh& mesh, const Segments& segments) {
    std::vector<Point> ends = endsOf(segments);
    std::sort(ends.begin(), ends.end());
    ends.erase(std::unique(ends.begin(), ends.end()), ends.end());
    const auto indexOf = [&](const Point& end) {
        return static_cast<std::size_t>(std::lower_bound(ends.begin(), ends.end(), end) - ends.begin());
    };
    std::vector<std::pair<std::size_t, std::size_t>> pairs;
    pairs.reserve(segments.size());
    for (const auto& [from, to] : segments) pairs.emplace_back(indexOf(from), indexOf(to));
    mesh.insert_constraints(ends.begin(), ends.end(), pairs.begin(), pairs.end());
}

template <void (*insertConstraints)(Mesh&, const Segments&)>
class CgalConstrained : public ConstraintPeer {
public:
    void setInput(const SegmentSet& segments) override {
        for (const auto& [from, to] : segments) vInput.emplace_back(Point(from.x, from.y), Point(to.x, to.y));
    }

    void insertEnds() override {
        const std::vector<Point> ends = endsOf(vInput);
        pMesh = std::make_unique<Mesh>();
        pMesh->insert(ends.begin(), ends.end());
        std::map<Point, Vertex> mVertices;
        for (Vertex vertex : pMesh->finite_vertex_handles()) mVertices[vertex->point()] = vertex;
        vPairs.clear();
        for (const auto& [from, to] : vInput) vPairs.emplace_back(mVertices.at(from), mVertices.at(to));
    }

    void enforce() override {
        for (const auto& [from, to] : vPairs) pMesh->insert_constraint(from, to);
    }

    void constrain() override {
        pMesh = std::make_unique<Mesh>();
        insertConstraints(*pMesh, vInput);
    }

    std::size_t numberOfVertices() override { return pMesh->number_of_vertices(); }

    std::size_t numberOfConstrainedEdges() override {
        std::size_t numEdges = 0;
        for (const Mesh::Edge& edge : pMesh->finite_edges()) numEdges += pMesh->is_constrained(edge);
        return numEdges;
    }

    void clear() override { pMesh.reset(); }

private:
    Segments vInput;
    std::vector<std::pair<Vertex, Vertex>> vPairs;
    std::unique_ptr<Mesh> pMesh;
};

}  // namespace

std::unique_ptr<ConstraintPeer> makeCgalOfSegments() {
    return std::make_unique<CgalConstrained<constrainSegments>>();
}
std::unique_ptr<ConstraintPeer> makeCgalOfPoints() {
    return std::make_unique<CgalConstrained<constrainPairsOfPoints>>();
}
