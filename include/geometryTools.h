#pragma once

#include <string>
#include <vector>

#include "Bbox2.h"
#include "Point2.h"
#include "Vector2.h"
#include "norvikExport.h"

namespace KELMAR_NORVIK2D {

/// How three points a, b, c turn.
enum Orientation2 { ORIENTATION2_COLLINEAR = 0, ORIENTATION2_CCW = 1, ORIENTATION2_CW = 2 };

/// Where a point lies with regard to the circumcircle of a counterclockwise triangle.
enum CINC2 { CINC2_ZERO = 0, CINC2_INCIRCLE = 1, CINC2_OUTCIRCLE = 2 };

/// How two segments meet.
enum IntersectionType { IST_NOIS = 0, IST_COLLINEAR = 1, IST_REGULAR = 2 };

/// The enumerator's name, "UNKNOWN" for any other value.
NORVIK2D_EXPORT std::string getString(Orientation2 orientation);

/// Exact orientation of three points with finite coordinates. May be called from any thread.
NORVIK2D_EXPORT Orientation2 getOrientation2(const Point2* pA, const Point2* pB, const Point2* pC);

/// The same with predicates of its own for the one call: nothing is kept between calls.
NORVIK2D_EXPORT Orientation2 getOrientation2_mt(const Point2* pA, const Point2* pB, const Point2* pC);

/// The vector scaled to length 1. A null vector prints a remark on standard output and yields (0,0).
NORVIK2D_EXPORT Vector2 normalize(const Vector2& vector);

/// Angle between two unit vectors in degrees, 0 to 180.
NORVIK2D_EXPORT double getAngleDegree(const Vector2& a, const Vector2& b);

/// Arithmetic mean of three points, custom index -1.
NORVIK2D_EXPORT Point2 barycenter(const Point2& p0, const Point2& p1, const Point2& p2);

/// Area of a triangle with these side lengths, or with these corners, by Heron's formula; 0 where they violate the triangle
/// inequality. A product of lengths that is not a number fails an assertion (NorvikException) after a
/// warning.
NORVIK2D_EXPORT double computeArea(double a, double b, double c);
NORVIK2D_EXPORT double getArea2D(const Point2& p0, const Point2& p1, const Point2& p2);

/// Exact equality of both coordinates; a NaN equals nothing.
NORVIK2D_EXPORT bool samePoint(const Point2& a, const Point2& b);

/// For a point near the line through a and b, as intersections are: whether it lies between them, ends included. Distances are
/// compared, in double arithmetic: far from the line that says nothing.
NORVIK2D_EXPORT bool approxHasOn(const Point2& a, const Point2& b, const Point2& q);
/// For a point on the line through a and b: whether it lies strictly between them.
NORVIK2D_EXPORT bool hasOnCollinearPoint(const Point2& a, const Point2& b, const Point2& q);

/// Where the lines through p0, p1 and through q0, q1 cross, as the best doubles at hand; a common end is given exactly. Parallel
/// lines end in an error message and a NorvikException. May be called from several threads.
NORVIK2D_EXPORT void getIntersectionCoordsNoRounding(const Point2& p0, const Point2& p1, const Point2& q0,
                                                     const Point2& q1, double& x, double& y);
/// The same as a point: a copy of the common end if there is one, otherwise without custom index.
NORVIK2D_EXPORT void getIntersectionPointNoRounding(const Point2& p0, const Point2& p1, const Point2& q0,
                                                    const Point2& q1, Point2& out);
/// Where two segments that do meet, p1p2 and p3p4, intersect. If an end lies within 1e-6 (not scaled to the data) of the
/// computed point, that end is the result, with its custom index. True; a result off the segments ends in a NorvikException.
NORVIK2D_EXPORT bool getIntersectionPoint(const Point2& p1, const Point2& p2, const Point2& p3,
                                          const Point2& p4, Point2& isp);

/// The x for which (x, q.y) is as close to the line through p0 and p1 as doubles allow, within `halfRange` of q.x; q.x itself
/// where the range doesn't reach the line. The same for y.
NORVIK2D_EXPORT double getBetterX(const Point2& p0, const Point2& p1, const Point2& q, double halfRange);
NORVIK2D_EXPORT double getBetterY(const Point2& p0, const Point2& p1, const Point2& q, double halfRange);
/// A point that is already close to the line through p0 and p1, moved as close as doubles allow: by a hundredth of the
/// segment's extent at most, and by 0.001 (not scaled to the data) at most.
NORVIK2D_EXPORT Point2 adaptPointToSegment(const Point2& p0, const Point2& p1, const Point2& q);
/// The middle of the segment, adapted to it.
NORVIK2D_EXPORT Point2 centerWithShift(const Point2& p0, const Point2& p1);

/// The foot of the perpendicular from `q` to the line through `p0` and `p1`. Without a line, a warning and (-999,-999).
NORVIK2D_EXPORT Point2 getFootPoint(const Point2& p0, const Point2& p1, const Point2& q);

/// The distance of `q` from the line through `p0` and `p1`. For equal points an error message, and 0.
NORVIK2D_EXPORT double getPointLineDistance2D(const Point2& p0, const Point2& p1, const Point2& q);

/// The tight box of the points; an empty (invalid) box for none.
NORVIK2D_EXPORT Bbox2 getBox(const std::vector<Point2>& points);
NORVIK2D_EXPORT Bbox2 getBox(const std::vector<Point2*>& points);

/// The smallest power of two, at most 1, that changes `value` when it is added. For a NaN a warning, and NaN.
NORVIK2D_EXPORT double getUlp(double value);

}  // namespace KELMAR_NORVIK2D
