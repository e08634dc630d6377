// Two copper areas on a circuit board: names them as zones, combines them, and mills a groove through all of it. The zones
// stay what they are.
#include <Norvik_2D.h>

#include <iostream>
#include <vector>

using namespace KELMAR_NORVIK2D;

namespace {

std::vector<Segment2> rectangle(double x0, double y0, double x1, double y1) {
    const Point2 a(x0, y0), b(x1, y0), c(x1, y1), d(x0, y1);
    return {{a, b}, {b, c}, {c, d}, {d, a}};
}

void print(const char* name, const Zone2& zone) {
    std::vector<Edge2> border;
    zone.getBoundaryEdges(border);
    std::cout << name << ": area " << zone.getArea2D() << ", " << zone.getNumberOfTriangles()
              << " triangles, " << border.size() << " edges around it\n";
}

/// Filled triangles; without constraints, which the mesh draws.
void draw(Visualizer2& picture, const Zone2& zone, Colorname color) {
    std::vector<Triangle2*> triangles;
    zone.getTriangles(triangles);
    picture.addObject(triangles, Color(color, 0.1F, true));
}

}  // namespace

int main() {
    Norvik_2D board;
    const auto createPolygon = [&](const std::vector<Segment2>& segments) {
        return board.createConstraint(segments, CIS_CONSTRAINED_DELAUNAY);
    };
    board.insert(std::vector<Point2>{{0, 0}, {20, 0}, {20, 20}, {0, 20}});
    ConstraintGraph2* pPad = createPolygon(rectangle(4, 4, 10, 10));
    ConstraintGraph2* pTrack = createPolygon(rectangle(8, 6, 14, 12));

    // The operands must stay as long as the results are asked.
    Zone2* pPadZone = board.createZone(pPad, ZL_INSIDE);
    Zone2* pTrackZone = board.createZone(pTrack, ZL_INSIDE);
    Zone2* pCopper = zoneUnion(pPadZone, pTrackZone);
    Zone2* pShared = zoneIntersection(pPadZone, pTrackZone);
    Zone2* pPadOnly = zoneDifference(pPadZone, pTrackZone);
    Zone2* pBare = zoneDifference(board.createZone(nullptr, ZL_GLOBAL), pCopper);
    print("copper", *pCopper);
    print("shared", *pShared);
    print("pad only", *pPadOnly);
    print("bare board", *pBare);

    // A groove divides edges of all zones.
    board.cutTriangles(Point2(0, 7), Point2(20, 9), false);
    print("copper, cut", *pCopper);
    print("bare board, cut", *pBare);

    // What can be reached from the copper's lower left corner without crossing the pad, the track and the groove.
    ConstraintGraph2* pGroove = createPolygon({{Point2(0, 7), Point2(20, 9)}});
    print("below the groove", *board.createZone({pPad, pTrack, pGroove}, ZL_GROW, Point2(5, 5)));

    Visualizer2 picture("zones.ps");
    board.show(&picture);
    draw(picture, *pPadOnly, COLORNAME_TAN);
    draw(picture, *pShared, COLORNAME_ORANGE);
    draw(picture, *zoneDifference(pTrackZone, pPadZone), COLORNAME_SKYBLUE);
}
