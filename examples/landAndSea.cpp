// Makes polygons of the world's coasts and fills the land, which is what an odd number of them has inside:
//   landAndSea data/coast_50m.seg land.ps
#include <Norvik_2D.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iostream>
#include <string>
#include <unordered_set>
#include <vector>

using namespace KELMAR_NORVIK2D;

namespace {

using Chain = std::vector<Segment2>;

constexpr double rim = 180.0;
constexpr double southPole = -90.0;

Point2 beginOf(const Chain& chain) { return chain.front().getSrc(); }
Point2 endOf(const Chain& chain) { return chain.back().getTrg(); }

/// Runs of segments in the order of the file, each segment beginning where the one before ends.
std::vector<Chain> readChains(const std::string& path) {
    std::vector<Chain> chains;
    std::ifstream in(path);
    for (double x1, y1, x2, y2; in >> x1 >> y1 >> x2 >> y2;) {
        const Point2 from(x1, y1), to(x2, y2);
        const bool bGoesOn =
            !chains.empty() && endOf(chains.back()) == from && beginOf(chains.back()) != from;
        if (!bGoesOn) chains.emplace_back();
        chains.back().emplace_back(from, to);
    }
    return chains;
}

/// Segments that are no coast, but lie where the map ends: on the 180th meridian or next to the South Pole.
bool isRim(const Segment2& segment) {
    const Point2 a = segment.getSrc(), b = segment.getTrg();
    return (std::fabs(a.x()) == rim && a.x() == b.x()) || std::max(a.y(), b.y()) < southPole + 0.1;
}

/// The file leaves coasts that reach the 180th meridian open, up to two degrees away from it. Such a one is led on to the rim
/// of the map and along that: the short way, or around by the pole for Antarctica, whose ends are on different sides.
void closeAlongRim(Chain& chain) {
    const Point2 from = endOf(chain), to = beginOf(chain);
    const double xFrom = std::copysign(rim, from.x()), xTo = std::copysign(rim, to.x());
    std::vector<Point2> way{from, {xFrom, from.y()}};
    if (xFrom != xTo) {
        way.emplace_back(xFrom, southPole);
        way.emplace_back(xTo, southPole);
    }
    way.emplace_back(xTo, to.y());
    way.push_back(to);
    for (std::size_t i = 0; i + 1 < way.size(); ++i)
        if (way[i] != way[i + 1]) chain.emplace_back(way[i], way[i + 1]);
}

/// One ring of the file has nothing inside: its corners are on one line.
bool isFlat(Norvik_2D& mesh, const Chain& ring) {
    return std::all_of(ring.begin(), ring.end(), [&](const Segment2& segment) {
        return mesh.getOrientation(beginOf(ring), ring[0].getTrg(), segment.getTrg()) ==
               ORIENTATION2_COLLINEAR;
    });
}

std::vector<Chain> makeRings(Norvik_2D& mesh, const std::vector<Chain>& chains) {
    std::vector<Chain> rings;
    for (Chain ring : chains) {
        if (std::all_of(ring.begin(), ring.end(), isRim)) continue;
        if (endOf(ring) != beginOf(ring)) closeAlongRim(ring);
        if (!isFlat(mesh, ring)) rings.push_back(ring);
    }
    return rings;
}

/// An island in a lake, or a lake such as the Caspian Sea, needs no special care: each ring turns what is inside of it.
std::vector<Triangle2*> findLand(Norvik_2D& mesh, const std::vector<ConstraintGraph2*>& coasts) {
    std::unordered_set<Triangle2*> land;
    std::vector<Triangle2*> inside;
    for (ConstraintGraph2* pCoast : coasts) {
        inside.clear();
        mesh.createZone(pCoast, ZL_INSIDE)->getTriangles(inside);
        for (Triangle2* pTriangle : inside)
            if (!land.insert(pTriangle).second) land.erase(pTriangle);
    }
    return {land.begin(), land.end()};
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "landAndSea SEGMENTS.seg PICTURE.ps\n";
        return 2;
    }
    Norvik_2D mesh;
    const std::vector<Chain> chains = readChains(argv[1]);
    const std::vector<Chain> rings = makeRings(mesh, chains);

    // All points at once are faster than coast by coast.
    std::vector<Point2> points;
    for (const Chain& ring : rings)
        for (const Segment2& segment : ring) points.push_back(segment.getSrc());
    mesh.insert(points);
    std::vector<ConstraintGraph2*> coasts;
    for (const Chain& ring : rings) coasts.push_back(mesh.createConstraint(ring, CIS_CONSTRAINED_DELAUNAY));
    if (!mesh.is2D()) {
        std::cerr << argv[1] << ": no triangles\n";
        return 1;
    }

    const Zone2* pLand = mesh.createZone(findLand(mesh, coasts));
    const std::string summary = std::to_string(rings.size()) + " coasts, " +
                                std::to_string(pLand->getNumberOfTriangles()) + " triangles of land, " +
                                std::to_string(mesh.numberOfTriangles()) + " in all";
    std::cout << summary << '\n';

    Visualizer2 picture(argv[2]);
    pLand->show(&picture, false, false);
    for (const Chain& chain : chains)
        for (const Segment2& segment : chain)
            if (!isRim(segment)) picture.addObject(segment, Color(COLORNAME_BLUE, 0.1F, false));
    picture.addHeaderLine(summary);
    picture.writeFile();
}
