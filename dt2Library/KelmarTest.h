#pragma once

#include <gmp.h>

#include <cfloat>
#include <cstring>
#include <string>

#include "doublePair.h"
#include "geometryTools.h"
#include "triangleLinks.h"

#ifdef __FAST_MATH__
#error "The predicates need IEEE 754 arithmetic: compile without -ffast-math."
#endif
static_assert(FLT_EVAL_METHOD == 0,
              "the predicates' error bounds count one rounding an operation, to double");

namespace KELMAR_NORVIK2D {

inline DoublePair coordinatesOf(const Point2* pPoint) noexcept {
    DoublePair xy;
    std::memcpy(&xy, static_cast<const void*>(pPoint), sizeof(xy));  // a point begins with x and y
    return xy;
}

/// The products (a.x * b.y, a.y * b.x), whose difference is the cross product of a and b.
inline DoublePair crossProducts(DoublePair a, DoublePair b) noexcept { return a * swapped(b); }

inline double crossProduct(DoublePair a, DoublePair b) noexcept {
    const DoublePair products = crossProducts(a, b);
    return products[0] - products[1];
}

/// Exact equality of both coordinates.
inline bool samePoint(const Point2* pA, const Point2* pB) noexcept {
    return pA->x() == pB->x() && pA->y() == pB->y();
}

/// Where an error bound is below this, times the squared lengths that multiply the products, products may
/// have underflowed: each such step is off by some 5e-324. This leaves 30 decades of reserve.
constexpr double underflowFloor = 1e-290;

/// What a floating-point filter can say about a point and a circumcircle.
enum class CircleVerdict { OUTSIDE, UNDECIDED, INSIDE };

/// What it says of two: bits 0 and 1. A bit that is set in neither is undecided.
struct CircleVerdicts {
    unsigned inside, outside;

    bool areDecided() const noexcept { return (inside | outside) == 3U; }
};

/// One engine of exact predicates: which way three points turn, whether a point lies in a circumcircle. Each
/// decision is exact for the doubles given. The first stages are plain arithmetic with an error bound and
/// stand inline here, for they are the hottest instructions of the library; what they can't decide goes to
/// the cold stages of KelmarTest.cpp, in the end to rationals.
///
/// Laws:
///  1. The owner keeps the static bound at least as large as every coordinate that it hands over (setStaticBound).
///  2. Arithmetic is rounded to nearest: entries of the library stand under RoundToNearest.
///  3. An engine belongs to one thread at a time: it holds scratch numbers and bounds.
///  4. Coordinates are finite. GMP ends the program otherwise.
///
/// Making an engine costs a few stores; the rationals are set up at the first decision that needs them.
class KelmarTest {
public:
    KelmarTest() = default;
    ~KelmarTest();
    KelmarTest(const KelmarTest&) = delete;
    KelmarTest& operator=(const KelmarTest&) = delete;

    /// Sets the threshold of the orientation's static filter for coordinates of this magnitude at most. A
    /// later call with a smaller magnitude lowers it: see law 1.
    void setStaticBound(double magnitude);
    double getBoundMagnitude() const noexcept { return boundMagnitude; }
    /// The threshold: a determinant beyond it, or beyond its negative, has the right sign.
    double getStaticBound() const noexcept { return upperBound; }

    /// Orientation of a, b, c: static filter, then dynamicFilterOri2. The determinant is
    /// (a.x - c.x)(b.y - c.y) - (a.y - c.y)(b.x - c.x).
    Orientation2 getOrientation2(const Point2* pA, const Point2* pB, const Point2* pC) {
        const DoublePair c = coordinatesOf(pC);
        const double det = crossProduct(coordinatesOf(pA) - c, coordinatesOf(pB) - c);
        if (det > upperBound) return ORIENTATION2_CCW;
        if (lowerBound > det) return ORIENTATION2_CW;
        return dynamicFilterOri2(pA, pB, pC);
    }

    /// Second stage: bounds of the determinant by directed rounding; falls through to exact_getOrientation2.
    Orientation2 dynamicFilterOri2(const Point2* pA, const Point2* pB, const Point2* pC);
    /// Last stage, without any filter.
    Orientation2 exact_getOrientation2(const Point2* pA, const Point2* pB, const Point2* pC);

    /// The in-circle filter for two counterclockwise triangles a, b, c, whose corners are relative to the point in
    /// question, one test in each half of the registers. With A, B, C the squared lengths of a, b, c, the determinant is
    /// (b x c) A + (c x a) B + (a x b) C. The error bound comes from its permanent, the same sum with the magnitudes of
    /// all products, so it adapts to the local magnitude and needs no static bound.
    [[gnu::always_inline]] static CircleVerdicts inCircleFilters(DoublePair a0, DoublePair b0, DoublePair c0,
                                                                 DoublePair a1, DoublePair b1,
                                                                 DoublePair c1) noexcept {
        const DoublePair ax = lowHalves(a0, a1), ay = highHalves(a0, a1);
        const DoublePair bx = lowHalves(b0, b1), by = highHalves(b0, b1);
        const DoublePair cx = lowHalves(c0, c1), cy = highHalves(c0, c1);
        const DoublePair bxcy = bx * cy, bycx = by * cx, cxay = cx * ay, cyax = cy * ax, axby = ax * by,
                         aybx = ay * bx;
        const DoublePair lengthA = ax * ax + ay * ay, lengthB = bx * bx + by * by,
                         lengthC = cx * cx + cy * cy;
        const DoublePair det = ((bxcy - bycx) * lengthA + (cxay - cyax) * lengthB) + (axby - aybx) * lengthC;
        const DoublePair permanent = ((magnitudes(bxcy) + magnitudes(bycx)) * lengthA +
                                      (magnitudes(cxay) + magnitudes(cyax)) * lengthB) +
                                     (magnitudes(axby) + magnitudes(aybx)) * lengthC;
        const DoublePair bound = permanent * inCircleErrorFactor;
        // Products that underflow lose more than the bound knows of; they matter only where the bound itself
        // is tiny beside the squared lengths that multiply them.
        const auto counts = bound >= underflowFloor * ((1.0 + lengthC) + (lengthA + lengthB));
        return {bitsOf(counts & (det > bound)), bitsOf(counts & (-bound > det))};
    }
    static CircleVerdict inCircleFilter(const Point2* pA, const Point2* pB, const Point2* pC,
                                        const Point2* pQ) noexcept {
        const DoublePair q = coordinatesOf(pQ);
        const DoublePair a = coordinatesOf(pA) - q, b = coordinatesOf(pB) - q, c = coordinatesOf(pC) - q;
        const CircleVerdicts verdicts = inCircleFilters(a, b, c, a, b, c);
        if (verdicts.inside != 0) return CircleVerdict::INSIDE;
        return verdicts.outside != 0 ? CircleVerdict::OUTSIDE : CircleVerdict::UNDECIDED;
    }
    static CircleVerdict inCircleFilter(const Triangle2* pT, const Point2* pQ) {
        return inCircleFilter(corner(pT, 0), corner(pT, 1), corner(pT, 2), pQ);
    }

    /// Three-valued in-circle test: filter, then exact_circleInc3state.
    CINC2 circleInc3state(const Triangle2* pT, const Point2* pQ) {
        switch (inCircleFilter(pT, pQ)) {
            case CircleVerdict::INSIDE:
                return CINC2_INCIRCLE;
            case CircleVerdict::OUTSIDE:
                return CINC2_OUTCIRCLE;
            default:
                return exact_circleInc3state(pT, pQ);
        }
    }

    /// Two-valued in-circle test, exact: strictly inside. The fourth corner of an axis-parallel rectangle
    /// counts as inside as well, so that regular grids get one diagonal without rational arithmetic; every
    /// other cocircular point is outside.
    bool exact_circleInc(const Triangle2* pT, const Point2* pQ);
    /// Three-valued in-circle test, exact: all cocircular points give CINC2_ZERO.
    CINC2 exact_circleInc3state(const Triangle2* pT, const Point2* pQ);

    /// How the segments ab and cd meet. Touching in an end counts: as collinear where all four points are, otherwise as
    /// regular.
    IntersectionType getIntersectionType(const Point2& a, const Point2& b, const Point2& c, const Point2& d);
    /// Where the lines ab and cd cross, computed exactly and cut to doubles (toward zero). Parallel lines end in an error
    /// message and a NorvikException.
    void getIntersectionCoords_gmp(const Point2& a, const Point2& b, const Point2& c, const Point2& d,
                                   double& x, double& y);

    /// Prepare the rationals; done by the exact stages themselves at their first use.
    void gmpInit();
    void gmpInitIntersection();

    static std::string getString(CINC2 verdict);
    static std::string getString(IntersectionType type);
    static std::string getUserFriendlyOrientation(Orientation2 orientation);

    /// Prints what each stage says of three points, to standard output.
    void debug(const Point2* pA, const Point2* pB, const Point2* pC);

private:
    friend Orientation2 orientationOnThread(const Point2* pA, const Point2* pB, const Point2* pC);
    friend Orientation2 getOrientation2_mt(const Point2* pA, const Point2* pB, const Point2* pC);

    /// Raises the bound for points that exceed it, by the sum of their magnitudes.
    void growStaticBound(const Point2* pA, const Point2* pB, const Point2* pC);

    int inCircleSign(const Triangle2* pT, const Point2* pQ);
    int rationalInCircleSign(const Triangle2* pT, const Point2* pQ);
    int rationalOrientationSign(const Point2* pA, const Point2* pB, const Point2* pC);

    /// Error of the in-circle determinant relative to its permanent. Ten roundings lie on each path from a
    /// coordinate to the determinant, 10 * 2^-53 = 1.11e-15; three times that leaves room for the permanent's
    /// own roundings.
    static constexpr double inCircleErrorFactor = 3.33e-15;

    double upperBound = 0.0;
    double lowerBound = 0.0;
    double boundMagnitude = 0.0;
    bool exactReady = false;
    bool intersectionReady = false;

    struct InCircleScratch {
        mpq_t coordinates[8];
        mpq_t differences[6];
        mpq_t squares[6];
        mpq_t crossProducts[6];
        mpq_t squaredLengths[3];
        mpq_t minors[3];
        mpq_t terms[3];
        mpq_t result;
    };
    struct OrientationScratch {
        mpq_t coordinates[6];
        mpq_t differences[4];
        mpq_t products[2];
    };
    struct IntersectionScratch {
        mpq_t coordinates[8];
        mpq_t differences[4];
        mpq_t products[4];
        mpq_t crossProducts[2];
        mpq_t terms[6];
        mpq_t numerators[2];
        mpq_t denominator;
        mpq_t quotients[2];
    };
    InCircleScratch inCircle;
    OrientationScratch orientation;
    IntersectionScratch intersection;
};

/// The free getOrientation2 without its guard, by predicates that each thread has for itself.
Orientation2 orientationOnThread(const Point2* pA, const Point2* pB, const Point2* pC);

}  // namespace KELMAR_NORVIK2D
