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
#include "walk.h"

namespace KELMAR_NORVIK2D {

Chunk::Chunk(Dt2* pDt2_, const Bbox2& box_, int label_, const std::vector<IdxVtxAct*>& vDenseVtx,
             std::size_t first, std::size_t last, const Point2* pNearVtx_, const Bbox2* pPointBox_)
    : pDt2(pDt2_),
      pBox(&box_),
      pPointBox(pPointBox_ != nullptr ? pPointBox_ : &box_),
      label(label_),
      items(ItemSpan(vDenseVtx).subspan(first, last - first)),
      pNearVtx(pNearVtx_ != nullptr ? pNearVtx_ : pDt2_->getVertexVault().getFakeBoxCorner(0)) {
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
bool isTrustworthy(const Triangle2* pT, DoublePair center, double radius) {
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
    const DoublePair toTold = (center - origin) * unit;
    const double dx = (c[1] * lengthB - b[1] * lengthC) / (2.0 * det) - toTold[0];
    const double dy = (b[0] * lengthC - c[0] * lengthB) / (2.0 * det) - toTold[1];
    return std::fabs(dx) < tolerance && std::fabs(dy) < tolerance;
}

/// Whether a circle, a twentieth larger than given, reaches the outline of a box.
bool doesBallIntersect(const Bbox2& box, DoublePair center, double radius) {
    const double r = 1.05 * radius;
    const auto toRange = [](double value, double least, double greatest) {
        return std::max({least - value, 0.0, value - greatest});
    };
    const double x = center[0], y = center[1];
    const double dx = toRange(x, box.getMinX(), box.getMaxX()), dy = toRange(y, box.getMinY(), box.getMaxY());
    if (dx * dx + dy * dy > r * r) return false;
    const bool bWithin =
        x - r > box.getMinX() && x + r < box.getMaxX() && y - r > box.getMinY() && y + r < box.getMaxY();
    return !bWithin;
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

/// The circumcircle of a triangle, and what it is to the chunk that has looked at it last.
struct Chunk::Circle {
    enum Role { UNKNOWN, BEYOND_REACH, COLLECTED, IN_RING };

    const Triangle2* pT = nullptr;
    DoublePair center{};
    double radius = 0.0;
    unsigned visitor = 0;
    Role role = UNKNOWN;
    bool bReliable = false;  ///< by the triangle's own word
    bool bTrusted = false;
};

/// The circumcircles computed so far. A hash table with open addressing.
class Chunk::CircleTable {
public:
    CircleTable() : vCircles(1024) {}

    /// From here on no circle has a role, for the next chunk.
    void beginChunk() {
        constexpr std::size_t greatestSize = std::size_t{1} << 15;
        if (vCircles.size() > greatestSize) *this = CircleTable();
        ++visitor;
    }

    /// Valid until the next call.
    Circle& of(const Triangle2* pT) {
        if (2 * numUsed >= vCircles.size()) enlarge();
        Circle& circle = vCircles[placeOf(pT)];
        if (circle.pT == nullptr) {
            ++numUsed;
            const auto [center, bReliable] = pT->getDual();
            circle.pT = pT;
            circle.center = coordinatesOf(&center);
            circle.radius = distance(center, *corner(pT, 0));
            circle.bReliable = bReliable;
            circle.bTrusted = bReliable && isTrustworthy(pT, circle.center, circle.radius);
        }
        if (circle.visitor != visitor) {
            circle.visitor = visitor;
            circle.role = Circle::UNKNOWN;
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

    void enlarge() {
        std::vector<Circle> vOld(2 * vCircles.size());
        vOld.swap(vCircles);
        for (const Circle& circle : vOld)
            if (circle.pT != nullptr) vCircles[placeOf(circle.pT)] = circle;
    }

    std::vector<Circle> vCircles;
    std::size_t numUsed = 0;
    unsigned visitor = 0;
};

void AreaTask::go() {
    Chunk::CircleTable circles;
    for (Chunk* pChunk : chunks) pChunk->determineExtBox(circles);
}

void Chunk::determineExtBox() {
    CircleTable circles;
    determineExtBox(circles);
}

void Chunk::determineExtBox(CircleTable& circles) {
    takeBoxOfPoints();
    extBox = box;
    circles.beginChunk();
    Triangle2* pT = walkTo(*items[0]->pVtx, pNearVtx->getIncidentTriangle(), "pLastT!=__null");
    takeStartVtx(pT);

    Bbox2 circleBox = box;
    grow(walkTo(Point2(box.getMinX(), box.getMinY()), pT, "pStartT!=__null"), circles, circleBox);
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

/// The chunk's first walk begins at a corner of the triangle that holds the first point. The corners of the fake box aren't
/// for that: their triangles lie anywhere along the hull.
void Chunk::takeStartVtx(const Triangle2* pT) {
    int i = 0;
    while (i < 2 && pDt2->getVertexVault().isFakeBoxCorner(corner(pT, i))) ++i;
    pStartVtx = corner(pT, i);
    bRunsAlone = pDt2->getVertexVault().isFakeBoxCorner(pStartVtx);
}

Triangle2* Chunk::walkTo(const Point2& point, Triangle2* pT, const char* condition) {
    int edge = -1;
    const int code = walkToConflict(predicates, &point, pT, edge);
    // Where rounding leaves no room between the points and the fake box, a corner may lie on its edge.
    const bool bFound = code == LOCATE_INSIDE || code == LOCATE_DUPLICATE ||
                        predicates.getOrientation2(corner(pT, ccw(code)), corner(pT, cw(code)), &point) ==
                            ORIENTATION2_COLLINEAR;
    require(bFound, condition);
    return pT;
}

/// Collects the triangles whose circumcircle reaches the outline of the box, by a search over neighbours from one of them.
/// The outline is a closed line, and the circles that reach a point of it belong to triangles side by side: so all are found.
void Chunk::grow(Triangle2* pStartT, CircleTable& circles, Bbox2& circleBox) {
    vTriangles.push_back(pStartT);
    circles.of(pStartT).role = Circle::COLLECTED;
    for (std::size_t next = 0; next < vTriangles.size() && !bRunsAlone; ++next) {
        const Triangle2* const pT = vTriangles[next];
        addCircle(circles.of(pT), "bad accuracy1, todo", circleBox);
        for (int i = 0; i < 3; ++i) {
            Triangle2* const pNeighbour = neighbour(pT, i);
            if (pNeighbour == nullptr) continue;
            Circle& circle = circles.of(pNeighbour);
            if (circle.role != Circle::UNKNOWN) continue;
            const bool bReaches = !circle.bTrusted || doesBallIntersect(box, circle.center, circle.radius);
            circle.role = bReaches ? Circle::COLLECTED : Circle::BEYOND_REACH;
            if (bReaches) vTriangles.push_back(pNeighbour);
        }
    }
}

/// Adds the triangles at the corners of those collected: flips write links there, read far corners, and leave walks there to
/// start from. All have been collected themselves but for those at the border. Of the triangles at a corner of the fake box,
/// which line its sides all the way, only those collected matter: no walk starts from it, and two chunks that write to it
/// both have it in their areas.
void Chunk::addRing(CircleTable& circles, Bbox2& circleBox) {
    const auto add = [&](const Triangle2* pT) {
        Circle& circle = circles.of(pT);
        if (circle.role == Circle::COLLECTED || circle.role == Circle::IN_RING) return false;
        circle.role = Circle::IN_RING;
        addCircle(circle, "bad accuracy2, todo", circleBox);
        return bRunsAlone;
    };
    for (const Triangle2* pT : vTriangles)
        for (int i = 0; i < 3; ++i) {
            const Triangle2* const pNeighbour = neighbour(pT, i);
            if (pNeighbour != nullptr && circles.of(pNeighbour).role == Circle::COLLECTED) continue;
            // Each corner on the border begins an edge of it.
            const Point2* const pVtx = corner(pT, ccw(i));
            if (!pDt2->getVertexVault().isFakeBoxCorner(pVtx) && visitUmbrella(pVtx, add)) return;
        }
}

/// Where a circle can't be trusted, or the circles take in so much that hardly anything could run beside the chunk, it runs
/// alone, and nothing more needs to be looked at: there may be very many such circles.
void Chunk::addCircle(const Circle& circle, const char* remark, Bbox2& circleBox) {
    if (!circle.bReliable) print(std::string(remark) + "\n");
    bRunsAlone = !circle.bTrusted;
    if (bRunsAlone) return;
    const double x = circle.center[0], y = circle.center[1];
    circleBox.add(Point2(x - circle.radius, y - circle.radius));
    circleBox.add(Point2(x + circle.radius, y + circle.radius));
    constexpr double greatestShare = 0.25;
    bRunsAlone = sharedPart(circleBox, *pPointBox) > greatestShare;
}

// --------------------------------------------------------------------------------------------- insertion

void Chunk::insert() {
    state = CHUNK_STARTED;
    insertMiddleFirst(
        items, 0, items.size(), pStartVtx->getIncidentTriangle(),
        [&](std::size_t i, Triangle2* pStartT) { return localInsertVertex(items[i]->pVtx, pStartT); });
    state = CHUNK_FINISHED;
}

void Chunk::finalize() {
    pDt2->storeRecycledT(vSupply);
    vSupply.clear();
}

Triangle2* Chunk::localInsertVertex(Point2*& pVtx, Triangle2* pStartT) {
    Triangle2* pT = pStartT;
    int edge = -1;
    switch (locateInsideConflictT(pVtx, pT, edge)) {
        case LOCATE_INSIDE:
            localSplitAndFlip(pT, pVtx);
            break;
        case LOCATE_DUPLICATE:
            for (int i = 0; i < 3; ++i)
                if (samePoint(corner(pT, i), pVtx)) pDt2->getVertexVault().registerDup(pVtx, corner(pT, i));
            break;
        default:
            require(false, "false");
    }
    return pT;
}

int Chunk::locateInsideConflictT(const Point2* pVtx, Triangle2*& pT, int& edgeIndex) {
    return walkAlongLine(predicates, pVtx, pT, edgeIndex);
}

NORVIK2D_HOT_LOOP void Chunk::localSplitAndFlip(Triangle2* pT, Point2* pVtx) {
    localInitVCheckT13(pT, pVtx);
    flipper.flipUntilDelaunay(pVtx, [](const Triangle2*) { return true; });
}

/// A point on an edge makes a flat triangle there, which the flips remove: its circle is a half plane that holds whatever
/// lies beyond.
[[gnu::always_inline]] inline void Chunk::localInitVCheckT13(Triangle2* pT, Point2* pVtx) {
    require(flipper.isIdle(), "vLocalCheckT.empty()");
    Triangle2* const pA = localCreateTriangleMT();
    flipper.splitInThree(pT, pVtx, pA, localCreateTriangleMT());
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
