#include "MeshView.h"

using namespace KELMAR_NORVIK2D;

MeshView::MeshView(Norvik_2D& mesh_) : mesh(mesh_) {
    mesh.exportMesh(arrays);
    mesh.getTrianglePointers(vTriangles);
    for (std::size_t i = 0; i < vTriangles.size(); ++i) mNumbers.emplace(vTriangles[i], i);
}

MeshView::Set MeshView::trianglesOf(const Zone2* pZone) const {
    if (pZone == nullptr) return Set(size(), true);
    Set triangles = none();
    std::vector<Triangle2*> vOfZone;
    pZone->getTriangles(vOfZone);
    for (const Triangle2* pTriangle : vOfZone) triangles[mNumbers.at(pTriangle)] = true;
    return triangles;
}

void MeshView::addReachable(std::size_t first, Set& reached) const {
    if (reached[first]) return;
    std::vector<std::size_t> vOpen{first};
    reached[first] = true;
    while (!vOpen.empty()) {
        const std::size_t triangle = vOpen.back();
        vOpen.pop_back();
        for (std::size_t edge = 3 * triangle; edge < 3 * triangle + 3; ++edge) {
            const auto next = static_cast<std::size_t>(arrays.neighbours[edge]);
            if (arrays.neighbours[edge] < 0 || arrays.constraintFlags[edge] != 0 || reached[next]) continue;
            reached[next] = true;
            vOpen.push_back(next);
        }
    }
}

void MeshView::addReachable(const Point2& seed, Set& reached) const {
    if (const Triangle2* const pTriangle = mesh.locate(seed)) addReachable(mNumbers.at(pTriangle), reached);
}
