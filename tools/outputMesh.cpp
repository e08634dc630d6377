#include "outputMesh.h"

#include "MeshView.h"

using namespace KELMAR_NORVIK2D;

namespace {

class MeshTaker {
public:
    MeshTaker(Norvik_2D& mesh, const Subject& subject_)
        : subject(subject_), view(mesh), arrays(view.getArrays()), kept(view.trianglesOf(subject.pZone)) {}

    IndexedMesh take() {
        takeTriangles();
        for (std::size_t i = 0; i < view.size(); ++i)
            if (kept[i]) takeNeighbours(i);
        if (!subject.regions.empty()) takeRegions();
        takeHoles();
        return std::move(out);
    }

private:
    std::size_t cornerOf(std::size_t triangle, std::size_t corner) const {
        return static_cast<std::size_t>(arrays.corners[3 * triangle + corner]);
    }

    Point2 pointOf(std::size_t index) const {
        return {arrays.coordinates[2 * index], arrays.coordinates[2 * index + 1],
                arrays.customIndices[index]};
    }

    /// The kept triangles in their order, and the points as these name them.
    void takeTriangles() {
        std::vector<std::int64_t> vNewPoints(arrays.coordinates.size() / 2, -1);
        vNewTriangles.assign(view.size(), -1);
        for (std::size_t i = 0; i < view.size(); ++i) {
            if (!kept[i]) continue;
            IndexedMesh::Triangle triangle{};
            for (std::size_t k = 0; k < 3; ++k) {
                std::int64_t& number = vNewPoints[cornerOf(i, k)];
                if (number < 0) {
                    number = static_cast<std::int64_t>(out.points.size());
                    out.points.push_back(pointOf(cornerOf(i, k)));
                }
                triangle.at(k) = static_cast<std::size_t>(number);
            }
            vNewTriangles[i] = static_cast<std::int64_t>(out.triangles.size());
            out.triangles.push_back(triangle);
        }
    }

    void takeNeighbours(std::size_t old) {
        const auto triangle = out.triangles[out.neighbours.size()];
        std::array<std::int64_t, 3> neighbours{};
        for (std::size_t k = 0; k < 3; ++k) {
            const std::int64_t neighbour = arrays.neighbours[3 * old + k];
            neighbours.at(k) = neighbour < 0 ? -1 : vNewTriangles[static_cast<std::size_t>(neighbour)];
            // An inner edge is taken once, with the triangle of the lower number.
            const bool bInner = !subject.bGiven && arrays.constraintFlags[3 * old + k] != 0 &&
                                vNewTriangles[old] < neighbours.at(k);
            if (bInner || neighbours.at(k) < 0)
                out.constraints.push_back({triangle.at((k + 1) % 3), triangle.at((k + 2) % 3)});
        }
        out.neighbours.push_back(neighbours);
    }

    void takeRegions() {
        out.regions.assign(out.triangles.size(), 0.0);
        for (const Region& region : subject.regions) {
            MeshView::Set reached = view.none();
            view.addReachable(region.seed, reached);
            for (std::size_t i = 0; i < view.size(); ++i)
                if (kept[i] && reached[i])
                    out.regions[static_cast<std::size_t>(vNewTriangles[i])] = region.attribute;
        }
    }

    /// A point in each part that was left out and doesn't reach the hull: in its first triangle.
    void takeHoles() {
        MeshView::Set seen = kept;
        for (std::size_t i = 0; i < view.size(); ++i)
            if (!seen[i] && !fillPart(i, seen)) out.holes.push_back(view.getTriangle(i)->getBarycenter());
    }

    /// Whether the part reaches the hull.
    bool fillPart(std::size_t first, MeshView::Set& seen) const {
        bool bReachesHull = false;
        std::vector<std::size_t> vOpen{first};
        seen[first] = true;
        while (!vOpen.empty()) {
            const std::size_t triangle = vOpen.back();
            vOpen.pop_back();
            for (std::size_t k = 0; k < 3; ++k) {
                const std::int64_t neighbour = arrays.neighbours[3 * triangle + k];
                bReachesHull |= neighbour < 0;
                const auto next = static_cast<std::size_t>(neighbour);
                if (neighbour < 0 || seen[next]) continue;
                seen[next] = true;
                vOpen.push_back(next);
            }
        }
        return bReachesHull;
    }

    const Subject& subject;
    MeshView view;
    const MeshArrays& arrays;
    MeshView::Set kept;
    std::vector<std::int64_t> vNewTriangles;  ///< by the number in the mesh, -1 for those left out
    IndexedMesh out;
};

}  // namespace

IndexedMesh takeMesh(Norvik_2D& mesh, const Subject& subject) { return MeshTaker(mesh, subject).take(); }
