#include "Chunk.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "Color.h"
#include "Dt2.h"
#include "Label.h"
#include "Visualizer2.h"
#include "diagnostics.h"
#include "distance.h"
#include "hotLoop.h"
#include "insertMiddleFirst.h"
#include "require.h"
#include "standardOutput.h"
#include "tools.h"
#include "walk.h"

namespace KELMAR_NORVIK2D {

Chunk::Chunk(Dt2* pDt2_, const Bbox2& box_, const Bbox2& pointBox_, int label_,
             const std::vector<IdxVtxAct*>& vDenseVtx, std::size_t first, std::size_t last,
             const Point2* pNearVtx_)
    : pDt2(pDt2_),
      pBox(&box_),
      pPointBox(&pointBox_),
      label(label_),
      items(ItemSpan(vDenseVtx).subspan(first, last - first)),
      pNearVtx(pNearVtx_) {
    setBounds();
}

/// The magnitude of all coordinates that a chunk meets, those of the fake box included, which is a hundredth wider.
void Chunk::setBounds() {
    const double greatest = std::max({std::fabs(pBox->getMinX()), std::fabs(pBox->getMaxX()),
                                      std::fabs(pBox->getMinY()), std::fabs(pBox->getMaxY())});
    predicates.setStaticBound(greatest * 1.01);
}

// ------------------------------------------------------------------------------------- area of influence

namespace {

/// Whether a computed circumcircle is right to a thousandth of its radius, which the margins of an area bear easily. It is
/// computed anew, from the corner opposite the longest edge, where all errors but that of the determinant are a few last
/// places.
bool isTrustworthy(const Triangle2* pT, const Point2& center, double radius) {
    constexpr double tolerance = 1e-3;
    // Squares of what is smaller or greater are no normal numbers.
    if (!(radius > 1e-140 && radius < 1e140)) return false;
    const int apex = pT->getMaxIndex();
    const DoublePair origin = coordinatesOf(corner(pT, apex));
    // In units of the radius.
    const double unit = 1.0 / radius;
    const DoublePair b = (coordinatesOf(corner(pT, ccw(apex))) - origin) * unit;
    const DoublePair c = (coordinatesOf(corner(pT, cw(apex))) - origin) * unit;
    const DoublePair products = crossProducts(b, c);
    const double det = products[0] - products[1];
    const double errorOfDet = 0x1p-50 * (std::fabs(products[0]) + std::fabs(products[1]));
    if (!(std::fabs(det) * tolerance > errorOfDet)) return false;
    const double lengthB = b[0] * b[0] + b[1] * b[1], lengthC = c[0] * c[0] + c[1] * c[1];
    const DoublePair toTold = (coordinatesOf(&center) - origin) * unit;
    const double dx = (c[1] * lengthB - b[1] * lengthC) / (2.0 * det) - toTold[0];
    const double dy = (b[0] * lengthC - c[0] * lengthB) / (2.0 * det) - toTold[1];
    return std::fabs(dx) < tolerance && std::fabs(dy) < tolerance;
}

/// Whether a circle, a twentieth larger than given, reaches an axis-parallel segment. Where the foot of the perpendicular
/// lies is judged by the centre alone.
bool doesBallIntersect(const Point2& a, const Point2& b, const Point2& center, double radius) {
    const double r = 1.05 * radius;
    const bool bUpright = a.x() == b.x();
    if (std::fabs(bUpright ? center.x() - a.x() : center.y() - a.y()) > r) return false;
    if (distance(a, center) <= r || distance(b, center) <= r) return true;
    const auto isBetween = [](double value, double end0, double end1) {
        return std::min(end0, end1) <= value && value <= std::max(end0, end1);
    };
    return bUpright ? isBetween(center.y(), a.y(), b.y()) : isBetween(center.x(), a.x(), b.x());
}

/// The share of the second box that lies in the first one.
double sharedPart(const Bbox2& box, const Bbox2& whole) {
    const auto part = [](double least, double greatest, double wholeLeast, double wholeGreatest) {
        const double common = std::min(greatest, wholeGreatest) - std::max(least, wholeLeast);
        return common >= wholeGreatest - wholeLeast ? 1.0
                                                    : std::max(common, 0.0) / (wholeGreatest - wholeLeast);
    };
    return part(box.getMinX(), box.getMaxX(), whole.getMinX(), whole.getMaxX()) *
           part(box.getMinY(), box.getMaxY(), whole.getMinY(), whole.getMaxY());
}

/// A range without extent gets one, but stays where the fake box still encloses it.
void widen(double& least, double& greatest, double limit) {
    constexpr double margin = 0.001;
    if (greatest > least) return;
    greatest = std::min(greatest + margin, limit);
    if (!(greatest > least)) {
        greatest = least;
        least = std::nextafter(least, -std::numeric_limits<double>::infinity());
    }
}

}  // namespace

/// The circumcircle of a triangle.
struct Chunk::Circle {
    const Triangle2* pT = nullptr;
    Point2 center;
    double radius = 0.0;
    bool bReliable = false;  ///< by the triangle's own word
    bool bTrusted = false;
    bool bInBox = false;  ///< has been added to the circles' box
    int lastSide = -1;    ///< the last side of the chunk's box whose search has come here
};

/// The circumcircles that a chunk has computed: many of them are asked for each side of its box. A hash table with open
/// addressing.
struct Chunk::CircleTable {
    CircleTable() : vCircles(256) {}

    /// Valid until the next call.
    Circle& of(const Triangle2* pT) {
        if (2 * numUsed >= vCircles.size()) grow();
        Circle& circle = vCircles[placeOf(pT)];
        if (circle.pT == nullptr) {
            ++numUsed;
            const auto [center, bReliable] = pT->getDual();
            const double radius = distance(center, *corner(pT, 0));
            const bool bTrusted = bReliable && isTrustworthy(pT, center, radius);
            circle = {pT, center, radius, bReliable, bTrusted, false, -1};
        }
        return circle;
    }

private:
    std::size_t placeOf(const Triangle2* pT) const {
        const std::size_t mask = vCircles.size() - 1;
        const std::size_t number = reinterpret_cast<std::uintptr_t>(pT) / sizeof(Triangle2);
        std::size_t place = (number * 0x9E3779B97F4A7C15U >> 32) & mask;
        while (vCircles[place].pT != nullptr && vCircles[place].pT != pT) place = (place + 1) & mask;
        return place;
    }

    void grow() {
        std::vector<Circle> vOld(2 * vCircles.size());
        vOld.swap(vCircles);
        for (const Circle& circle : vOld)
            if (circle.pT != nullptr) vCircles[placeOf(circle.pT)] = circle;
    }

    std::vector<Circle> vCircles;
    std::size_t numUsed = 0;
};

void Chunk::takeBoxOfPoints() {
    double minX = items[0]->pVtx->x(), maxX = minX, minY = items[0]->pVtx->y(), maxY = minY;
    for (const IdxVtxAct* pItem : items) {
        minX = std::min(minX, pItem->pVtx->x());
        maxX = std::max(maxX, pItem->pVtx->x());
        minY = std::min(minY, pItem->pVtx->y());
        maxY = std::max(maxY, pItem->pVtx->y());
    }
    widen(minX, maxX, pBox->getMaxX());
    widen(minY, maxY, pBox->getMaxY());
    box.add(Point2(minX, minY));
    box.add(Point2(maxX, maxY));
}

void Chunk::determineExtBox() {
    extBox = box;
    Triangle2* pT = walkTo(*items[0]->pVtx, pNearVtx->getIncidentTriangle());
    pStartVtx = corner(pT, 0);

    CircleTable circles;
    Bbox2 circleBox = box;
    std::vector<Point2> corners;
    box.getCorners(corners);
    for (std::size_t side = 0; side < 4 && !bRunsAlone; ++side) {
        pT = walkTo(corners[side], pT);
        grow(corners[side], corners[(side + 1) % 4], pT, static_cast<int>(side), circles, circleBox);
    }
    if (!bRunsAlone) addRing(circles, circleBox);
    std::vector<Triangle2*>().swap(vTriangles);
    if (bRunsAlone) {
        extBox.add(Point2(pBox->getMinX(), pBox->getMinY()));
        extBox.add(Point2(pBox->getMaxX(), pBox->getMaxY()));
        return;
    }
    const double dx = 0.01 * (circleBox.getMaxX() - circleBox.getMinX());
    const double dy = 0.01 * (circleBox.getMaxY() - circleBox.getMinY());
    extBox.add(Point2(circleBox.getMinX() - dx, circleBox.getMinY() - dy));
    extBox.add(Point2(circleBox.getMaxX() + dy, circleBox.getMaxY() + dy));
}

Triangle2* Chunk::walkTo(const Point2& point, Triangle2* pT) {
    int edge = -1;
    const int code = walkToConflict(predicates, &point, pT, edge);
    // Where rounding leaves no room between the points and the fake box, a corner may lie on its edge.
    const bool bFound = code == LOCATE_INSIDE || code == LOCATE_DUPLICATE ||
                        predicates.getOrientation2(corner(pT, ccw(code)), corner(pT, cw(code)), &point) ==
                            ORIENTATION2_COLLINEAR;
    require(bFound, "pStartT!=__null");
    return pT;
}

/// Appends the triangles whose circumcircle reaches the side ab of the box, by a search over neighbours from the one that
/// holds a.
void Chunk::grow(const Point2& a, const Point2& b, Triangle2* pStartT, int side, CircleTable& circles,
                 Bbox2& circleBox) {
    std::size_t next = vTriangles.size();
    vTriangles.push_back(pStartT);
    circles.of(pStartT).lastSide = side;
    while (next < vTriangles.size() && !bRunsAlone) {
        const Triangle2* const pT = vTriangles[next++];
        addCircle(circles.of(pT), "bad accuracy1, todo", circleBox);
        for (int i = 0; i < 3; ++i) {
            Triangle2* const pNeighbour = neighbour(pT, i);
            if (pNeighbour == nullptr) continue;
            Circle& circle = circles.of(pNeighbour);
            if (circle.lastSide == side) continue;
            circle.lastSide = side;
            if (!circle.bTrusted || doesBallIntersect(a, b, circle.center, circle.radius))
                vTriangles.push_back(pNeighbour);
        }
    }
}

/// Adds the triangles around those collected: flips write links there, and read the far corners.
void Chunk::addRing(CircleTable& circles, Bbox2& circleBox) {
    oneInstance(vTriangles);
    std::vector<VertexPair2> vBorders;
    getBorders_tools(vTriangles, vBorders);
    std::vector<Point2*> vBorderVtx;
    for (const VertexPair2& border : vBorders) {
        vBorderVtx.push_back(border.getVtx0());
        vBorderVtx.push_back(border.getVtx1());
    }
    oneInstance(vBorderVtx);
    for (const Point2* pVtx : vBorderVtx) {
        const bool bStop = visitUmbrella(pVtx, [&](const Triangle2* pT) {
            addCircle(circles.of(pT), "bad accuracy2, todo", circleBox);
            return bRunsAlone;
        });
        if (bStop) return;
    }
}

/// Adds a circle once. Where it can't be trusted, or the circles take in so much that hardly anything could run beside the
/// chunk, it runs alone, and nothing more needs to be looked at: there may be very many such circles.
void Chunk::addCircle(Circle& circle, const char* remark, Bbox2& circleBox) {
    if (circle.bInBox) return;
    circle.bInBox = true;
    if (!circle.bReliable) print(std::string(remark) + "\n");
    bRunsAlone = !circle.bTrusted;
    if (bRunsAlone) return;
    const Point2& center = circle.center;
    circleBox.add(Point2(center.x() - circle.radius, center.y() - circle.radius));
    circleBox.add(Point2(center.x() + circle.radius, center.y() + circle.radius));
    constexpr double greatestShare = 0.25;
    bRunsAlone = sharedPart(circleBox, *pPointBox) > greatestShare;
}

// --------------------------------------------------------------------------------------------- insertion

void Chunk::insert() {
    insertMiddleFirst(
        items, 0, items.size(), pStartVtx->getIncidentTriangle(),
        [&](std::size_t i, Triangle2* pStartT) { return localInsertVertex(items[i]->pVtx, pStartT); });
}

void Chunk::finalize() {
    pDt2->storeRecycledT(vSupply);
    vSupply.clear();
}

Triangle2* Chunk::localInsertVertex(Point2*& pVtx, Triangle2* pStartT) {
    Triangle2* pT = pStartT;
    int edge = -1;
    const int code = locateInsideConflictT(pVtx, pT, edge);
    if (code == LOCATE_INSIDE) {
        localSplitAndFlip(pT, pVtx);
        return pT;
    }
    require(code == LOCATE_DUPLICATE, "false");
    for (int i = 0; i < 3; ++i)
        if (samePoint(corner(pT, i), pVtx)) pDt2->getVertexVault().registerDup(pVtx, corner(pT, i));
    return pT;
}

/// A point on an edge makes a flat triangle there, which the flips remove: its circle is a half plane that holds whatever
/// lies beyond.
NORVIK2D_HOT_LOOP void Chunk::localSplitAndFlip(Triangle2* pT, Point2* pVtx) {
    Triangle2* const pA = localCreateTriangleMT();
    flipper.splitInThree(pT, pVtx, pA, localCreateTriangleMT());
    flipper.flipUntilDelaunay(pVtx, [](const Triangle2*) { return true; });
}

int Chunk::locateInsideConflictT(const Point2* pVtx, Triangle2*& pT, int& edgeIndex) {
    const int code = walkAlongLine(predicates, pVtx, pT, edgeIndex);
    require(code == LOCATE_INSIDE || code == LOCATE_DUPLICATE, "tmpTriangle!=__null");
    return code;
}

/// A fresh triangle from the chunk's supply: two for each point are taken at first, so the common store is seldom asked.
inline Triangle2* Chunk::localCreateTriangleMT() {
    if (vSupply.empty()) [[unlikely]] {
        constexpr std::size_t furtherSupply = 20;
        pDt2->getFreshTriangles(bFirstSupply ? 2 * items.size() : furtherSupply, vSupply);
        bFirstSupply = false;
    }
    Triangle2* pT = vSupply.back();
    vSupply.pop_back();
    return pT;
}

// ------------------------------------------------------------------------------------------- diagnostics

bool Chunk::isInBox(const Triangle2* pT) const {
    return extBox.isInBox(*corner(pT, 0)) && extBox.isInBox(*corner(pT, 1)) && extBox.isInBox(*corner(pT, 2));
}

void Chunk::show(Visualizer2* pVisualizer) const {
    for (const Bbox2* pOneBox : {&box, &extBox}) {
        if (!pOneBox->isValid()) continue;
        std::vector<Point2> corners;
        pOneBox->getCorners(corners);
        const Color color =
            pOneBox == &box ? Color(COLORNAME_BLUE, 0.5F, false) : Color(COLORNAME_RED, 0.5F, false);
        for (std::size_t i = 0; i < corners.size(); ++i)
            pVisualizer->addObject(Segment2(corners[i], corners[(i + 1) % corners.size()]), color);
    }
    for (const IdxVtxAct* pItem : items)
        pVisualizer->addObject(*pItem->pVtx, Color(COLORNAME_BLACK, 0.1F, false));
    pVisualizer->addObject(Label(*items[0]->pVtx, "Chunk " + std::to_string(label), false, 8),
                           Color(COLORNAME_BLACK, 0.1F, false));
}

void Chunk::show(const std::string& fileName) const {
    Visualizer2 visualizer(fileName);
    show(&visualizer);
    visualizer.writeFile();
}

}  // namespace KELMAR_NORVIK2D
