#pragma once

#include <iosfwd>
#include <limits>

#include "norvikExport.h"

namespace KELMAR_NORVIK2D {

class Triangle2;

/// A vertex of a triangulation and a plain coordinate pair in one type.
///
/// Points that the library hands out by pointer live in a pool of their triangulation: they never move and
/// stay readable until the Norvik_2D is destroyed. A copy is a coordinate pair only: it carries the
/// coordinates and the custom index, but never the incident triangle, which belongs to the one instance that
/// lives in the pool.
class NORVIK2D_EXPORT Point2 {
public:
    /// The empty result: both coordinates minus the largest finite double, no custom index.
    Point2() noexcept = default;
    Point2(double x, double y) noexcept : xCoord(x), yCoord(y) {}
    Point2(double x, double y, int customIndex_) noexcept : xCoord(x), yCoord(y), customIndex(customIndex_) {}
    Point2(const Point2& other) noexcept
        : xCoord(other.xCoord), yCoord(other.yCoord), customIndex(other.customIndex) {}

    /// Takes coordinates and custom index; the incident triangle of this point becomes null.
    Point2& operator=(const Point2& other) noexcept {
        xCoord = other.xCoord;
        yCoord = other.yCoord;
        pIncidentTriangle = nullptr;
        customIndex = other.customIndex;
        return *this;
    }

    double x() const noexcept { return xCoord; }
    double y() const noexcept { return yCoord; }

    /// One triangle that has this vertex as a corner; null while the point is no vertex of a mesh.
    Triangle2* getIncidentTriangle() const noexcept { return pIncidentTriangle; }

    int getCustomIndex() const noexcept { return customIndex; }
    void setCustomIndex(int index) noexcept { customIndex = index; }

    /// Exact equality of both coordinates, without tolerance; the custom index plays no part.
    bool operator==(const Point2& other) const noexcept;
    bool operator!=(const Point2& other) const noexcept { return !(*this == other); }
    /// By x, then by y.
    bool operator<(const Point2& other) const noexcept;

private:
    friend struct MeshAccess;

    double xCoord = -std::numeric_limits<double>::max();
    double yCoord = -std::numeric_limits<double>::max();
    Triangle2* pIncidentTriangle = nullptr;

public:
    /// The client's number for the point; -1 when none was given.
    int customIndex = -1;
};

static_assert(sizeof(Point2) == 32, "two points share a cache line");

NORVIK2D_EXPORT std::ostream& operator<<(std::ostream& os, const Point2& point);

}  // namespace KELMAR_NORVIK2D
