#include "domain.h"

#include <algorithm>
#include <functional>
#include <stdexcept>
#include <unordered_set>

#include "MeshView.h"

using namespace KELMAR_NORVIK2D;

std::vector<Triangle2*> findOddlyEnclosed(Norvik_2D& mesh, const std::vector<ConstraintGraph2*>& vRings) {
    std::unordered_set<Triangle2*> sDomain;
    std::vector<Triangle2*> vInside;
    for (ConstraintGraph2* pRing : vRings) {
        Zone2* const pZone = mesh.createZone(pRing, ZL_INSIDE);
        if (pZone == nullptr) throw std::runtime_error("a ring has no inside");
        vInside.clear();
        pZone->getTriangles(vInside);
        mesh.deleteZone(pZone);
        for (Triangle2* pTriangle : vInside)
            if (!sDomain.insert(pTriangle).second) sDomain.erase(pTriangle);
    }
    // Not in the order of a hash table, which would be another one in each run.
    std::vector<Triangle2*> vDomain(sDomain.begin(), sDomain.end());
    std::sort(vDomain.begin(), vDomain.end(), std::less<>());
    return vDomain;
}

std::vector<Triangle2*> findEnclosed(Norvik_2D& mesh, const std::vector<Point2>& holes) {
    const MeshView view(mesh);
    MeshView::Set taken = view.none();
    const MeshArrays& arrays = view.getArrays();
    for (std::size_t edge = 0; edge < arrays.neighbours.size(); ++edge)
        if (arrays.neighbours[edge] < 0 && arrays.constraintFlags[edge] == 0)
            view.addReachable(edge / 3, taken);
    for (const Point2& hole : holes) view.addReachable(hole, taken);
    std::vector<Triangle2*> vDomain;
    for (std::size_t i = 0; i < view.size(); ++i)
        if (!taken[i]) vDomain.push_back(view.getTriangle(i));
    return vDomain;
}

void checkRings(const std::string& path, const Rings& rings) {
    if (rings.vRings.empty()) failFile(path, "no closed ring, there is no domain");
    for (std::size_t i = 0; i < rings.vRings.size(); ++i)
        if (!isSimplePolygon(rings.vRings[i])) failFile(path, crossesItself(i));
}

Zone2* makeZone(Norvik_2D& mesh, const std::vector<Triangle2*>& vTriangles, const std::string& path) {
    Zone2* const pZone = mesh.createZone(vTriangles);
    if (pZone == nullptr || pZone->getNumberOfTriangles() != vTriangles.size())
        throw std::runtime_error(path + ": the domain is too thin for doubles");
    return pZone;
}

Zone2* makeDomain(Norvik_2D& mesh, const Input& input, Rings& rings, const std::string& path) {
    rings = {};
    if (input.bEnclosed) {
        rings.vLoose = input.segments;
    } else {
        rings = findRings(input.segments);
        checkRings(path, rings);
    }
    const Graphs graphs = insertAll(mesh, input, rings);
    if (!mesh.is2D()) failFile(path, "there are no triangles");
    const std::vector<Triangle2*> vDomain =
        input.bEnclosed ? findEnclosed(mesh, input.holes) : findOddlyEnclosed(mesh, graphs.vRings);
    if (vDomain.empty())
        failFile(path, input.bEnclosed ? "the segments enclose nothing, there is no domain"
                                       : "each ring is taken back by another, there is no domain");
    return makeZone(mesh, vDomain, path);
}
