#include "Bbox2.h"

#include <algorithm>
#include <cmath>

#include "KelmarTest.h"
#include "diagnostics.h"
#include "roundingMode.h"

namespace KELMAR_NORVIK2D {

namespace {

/// The bounds of an empty box: any coordinate grows it.
constexpr double emptyMin = std::numeric_limits<double>::max();
constexpr double emptyMax = -std::numeric_limits<double>::max();

}  // namespace

bool Bbox2::add(const Point2& point) {
    RoundToNearest nearest;
    return nearest.keep(grow(point.x(), point.y()));
}

bool Bbox2::add(const Point2* pFirst, const Point2* pLast) {
    RoundToNearest nearest;
    bool bChanged = false;
    for (; pFirst != pLast; ++pFirst)
        if (grow(pFirst->x(), pFirst->y())) bChanged = true;
    return bChanged;
}

/// Grows the box by a position; the caller stands under the guard.
bool Bbox2::grow(double x, double y) noexcept {
    bool bChanged = false;
    if (!bValid) {
        if (minX == emptyMin) minX = x;
        if (minY == emptyMin) minY = y;
        if (maxX == emptyMax) maxX = x;
        if (maxY == emptyMax) maxY = y;
        bValid = true;
        bChanged = true;
    }
    // A bound that has its first value already isn't passed by the same point again.
    if (x < minX) minX = x, bChanged = true;
    if (y < minY) minY = y, bChanged = true;
    if (x > maxX) maxX = x, bChanged = true;
    if (y > maxY) maxY = y, bChanged = true;
    return bChanged;
}

void Bbox2::getBounds(double& xLeast, double& xGreatest, double& yLeast, double& yGreatest) const noexcept {
    xLeast = minX;
    xGreatest = maxX;
    yLeast = minY;
    yGreatest = maxY;
}

// Each side moves outward by half the extent, and both extents double.
void Bbox2::doubleTheBox() {
    RoundToNearest nearest;
    widen((maxX - minX) * 0.5, (maxY - minY) * 0.5);
}

void Bbox2::enlargeRanges(double factor) {
    RoundToNearest nearest;
    const double marginFactor = (factor - 1.0) * 0.5;
    widen((maxX - minX) * marginFactor, (maxY - minY) * marginFactor);
}

/// Moves all four sides outward. The static filters of the predicates are only valid for coordinates within
/// the magnitude they were told, so they hear of the new bounds before any point can use them.
void Bbox2::widen(double xMargin, double yMargin) {
    if (!bValid) return;
    minX -= xMargin;
    maxX += xMargin;
    minY -= yMargin;
    maxY += yMargin;
    if (pPredicates != nullptr)
        pPredicates->setStaticBound(
            std::max({std::fabs(minX), std::fabs(minY), std::fabs(maxX), std::fabs(maxY)}));
}

Point2 Bbox2::computeCenter() const {
    RoundToNearest nearest;
    if (!bValid) warning("Bbox2::computeCenter()", "Bbox2 is invalid");
    return {nearest.keep((minX + maxX) * 0.5), nearest.keep((minY + maxY) * 0.5)};
}

bool Bbox2::doIntersect(const Bbox2& other) const {
    RoundToNearest nearest;
    if (!bValid || !other.bValid) {
        warning("Bbox2::doIntersect()", "bbox invalid");
        return false;
    }
    return nearest.keep(minX <= other.maxX && other.minX <= maxX && minY <= other.maxY && other.minY <= maxY);
}

bool Bbox2::isInBox(const Point2& point) const {
    RoundToNearest nearest;
    return nearest.keep(bValid && minX <= point.x() && point.x() <= maxX && minY <= point.y() &&
                        point.y() <= maxY);
}

// Emptiness is told by minX and not by the flag, on both sides.
Bbox2 Bbox2::operator+(const Bbox2& other) {
    RoundToNearest nearest;
    if (other.minX == emptyMin) {
        warning("Box2::operator+()", "trying to add an invalid Bbox2");
        return *this;
    }
    if (minX == emptyMin) {
        minX = other.minX;
        minY = other.minY;
        maxX = other.maxX;
        maxY = other.maxY;
        bValid = true;
        return *this;
    }
    // Two opposite corners stand for the whole box.
    grow(other.minX, other.minY);
    grow(other.maxX, other.maxY);
    return *this;
}

void Bbox2::getCorners(std::vector<Point2>& corners) const { getOffsetCorners(0.0, corners); }

void Bbox2::getOffsetCorners(double distance, std::vector<Point2>& corners) const {
    RoundToNearest nearest;
    corners.emplace_back(minX - distance, minY - distance);
    corners.emplace_back(maxX + distance, minY - distance);
    corners.emplace_back(maxX + distance, maxY + distance);
    corners.emplace_back(minX - distance, maxY + distance);
}

}  // namespace KELMAR_NORVIK2D
