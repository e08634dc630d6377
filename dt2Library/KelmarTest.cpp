#include "KelmarTest.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include "diagnostics.h"
#include "require.h"
#include "roundingMode.h"
#include "standardOutput.h"

namespace KELMAR_NORVIK2D {

namespace {

template <std::size_t N>
void initAll(mpq_t (&numbers)[N]) {
    for (mpq_t& number : numbers) mpq_init(number);
}

template <std::size_t N>
void clearAll(mpq_t (&numbers)[N]) {
    for (mpq_t& number : numbers) mpq_clear(number);
}

/// An unevaluated sum hi + lo with |lo| at most half a unit in the last place of hi: about 106 bits.
struct DoubleDouble {
    double hi = 0.0;
    double lo = 0.0;
};

/// Exact: hi + lo = a + b, if |a| >= |b|.
DoubleDouble quickTwoSum(double a, double b) {
    const double hi = a + b;
    return {hi, b - (hi - a)};
}

/// Exact: hi + lo = a + b.
DoubleDouble twoSum(double a, double b) {
    const double hi = a + b;
    const double bPart = hi - a;
    return {hi, (a - (hi - bPart)) + (b - bPart)};
}

/// Exact unless the product underflows (below about 1e-291) or splitting overflows (above about 1e300, NaN
/// then).
DoubleDouble twoProduct(double a, double b) {
    constexpr double splitter = 134217729.0;  // 2^27 + 1
    const double aScaled = splitter * a, bScaled = splitter * b;
    const double aHi = aScaled - (aScaled - a), bHi = bScaled - (bScaled - b);
    const double aLo = a - aHi, bLo = b - bHi;
    const double hi = a * b;
    return {hi, ((aHi * bHi - hi) + aHi * bLo + aLo * bHi) + aLo * bLo};
}

DoubleDouble operator-(const DoubleDouble& a) { return {-a.hi, -a.lo}; }

DoubleDouble operator+(const DoubleDouble& a, const DoubleDouble& b) {
    const DoubleDouble high = twoSum(a.hi, b.hi);
    const DoubleDouble low = twoSum(a.lo, b.lo);
    const DoubleDouble sum = quickTwoSum(high.hi, high.lo + low.hi);
    return quickTwoSum(sum.hi, sum.lo + low.lo);
}

DoubleDouble operator-(const DoubleDouble& a, const DoubleDouble& b) { return a + -b; }

DoubleDouble operator*(const DoubleDouble& a, const DoubleDouble& b) {
    const DoubleDouble product = twoProduct(a.hi, b.hi);
    return quickTwoSum(product.hi, product.lo + (a.hi * b.lo + a.lo * b.hi));
}

/// The six coordinate differences of an in-circle test, each exact as hi + lo.
struct CircleDifferences {
    DoubleDouble ax, ay, bx, by, cx, cy;

    CircleDifferences(const Triangle2* pT, const Point2* pQ)
        : ax(twoSum(corner(pT, 0)->x(), -pQ->x())),
          ay(twoSum(corner(pT, 0)->y(), -pQ->y())),
          bx(twoSum(corner(pT, 1)->x(), -pQ->x())),
          by(twoSum(corner(pT, 1)->y(), -pQ->y())),
          cx(twoSum(corner(pT, 2)->x(), -pQ->x())),
          cy(twoSum(corner(pT, 2)->y(), -pQ->y())) {}

    bool areDoubles() const {
        return ax.lo == 0.0 && ay.lo == 0.0 && bx.lo == 0.0 && by.lo == 0.0 && cx.lo == 0.0 && cy.lo == 0.0;
    }

    double greatestMagnitude() const {
        return std::max({std::fabs(ax.hi), std::fabs(ay.hi), std::fabs(bx.hi), std::fabs(by.hi),
                         std::fabs(cx.hi), std::fabs(cy.hi)});
    }
};

constexpr int undecided = 2;

template <class Number>
int signOf(const Number& value) {
    return static_cast<int>(value > 0) - static_cast<int>(value < 0);
}

/// The binary exponent of a positive normal number, and back.
int exponentOf(double value) { return static_cast<int>(std::bit_cast<std::uint64_t>(value) >> 52) - 1023; }
double powerOfTwo(int exponent) {
    return std::bit_cast<double>(static_cast<std::uint64_t>(exponent + 1023) << 52);
}

/// The exact sign where all differences are multiples of one power of two and less than 2^30 times that: the
/// determinant then fits into 128 bits. Points of integer grids and of data with few digits end here.
int gridInCircleSign(const CircleDifferences& d) {
    if (!d.areDoubles()) return undecided;
    const double greatest = d.greatestMagnitude();
    if (!(greatest > 1e-250 && greatest < 1e250)) return undecided;

    const int exponent = exponentOf(greatest);
    const double scale = powerOfTwo(29 - exponent), unit = powerOfTwo(exponent - 29);
    const double difference[6] = {d.ax.hi, d.ay.hi, d.bx.hi, d.by.hi, d.cx.hi, d.cy.hi};
    std::int64_t cell[6];
    for (int i = 0; i < 6; ++i) {
        cell[i] = static_cast<std::int64_t>(difference[i] * scale);
        if (static_cast<double>(cell[i]) * unit != difference[i]) return undecided;
    }
    const auto [ax, ay, bx, by, cx, cy] = cell;

    __extension__ using Wide = __int128;
    const Wide det = static_cast<Wide>(ax * ax + ay * ay) * (bx * cy - by * cx) +
                     static_cast<Wide>(bx * bx + by * by) * (ay * cx - ax * cy) +
                     static_cast<Wide>(cx * cx + cy * cy) * (ax * by - ay * bx);
    return signOf(det);
}

/// The filter of the first stage once more, in 106 bits: leaves next to nothing but true zeros to the
/// rationals.
int doubleDoubleInCircleSign(const CircleDifferences& d) {
    // 40 roundings of at most 5 * 2^-106 lie on a path; the bound takes 2^-97.
    constexpr double errorFactor = 0x1p-97;

    const DoubleDouble a = d.ax * d.ax + d.ay * d.ay;
    const DoubleDouble b = d.bx * d.bx + d.by * d.by;
    const DoubleDouble c = d.cx * d.cx + d.cy * d.cy;
    const DoubleDouble bxcy = d.bx * d.cy, bycx = d.by * d.cx;
    const DoubleDouble aycx = d.ay * d.cx, axcy = d.ax * d.cy;
    const DoubleDouble axby = d.ax * d.by, aybx = d.ay * d.bx;
    const DoubleDouble det = ((bxcy - bycx) * a + (aycx - axcy) * b) + (axby - aybx) * c;
    const double permanent = (std::fabs(bxcy.hi) + std::fabs(bycx.hi)) * a.hi +
                             (std::fabs(aycx.hi) + std::fabs(axcy.hi)) * b.hi +
                             (std::fabs(axby.hi) + std::fabs(aybx.hi)) * c.hi;
    const double bound = permanent * errorFactor;
    if (!(bound >= underflowFloor * (1.0 + a.hi + b.hi + c.hi))) return undecided;
    if (det.hi > bound) return 1;
    if (-bound > det.hi) return -1;
    return undecided;
}

/// Whether the point and the corners are the four corners of an axis-parallel rectangle.
bool isRectangle(const Triangle2* pT, const Point2* pQ) {
    int numSameX = 0, numSameY = 0;
    double otherX[3], otherY[3];
    for (int i = 0; i < 3; ++i) {
        const Point2* pCorner = corner(pT, i);
        if (pCorner->x() == pQ->x())
            ++numSameX;
        else
            otherX[i - numSameX] = pCorner->x();
        if (pCorner->y() == pQ->y())
            ++numSameY;
        else
            otherY[i - numSameY] = pCorner->y();
    }
    return numSameX == 1 && numSameY == 1 && otherX[0] == otherX[1] && otherY[0] == otherY[1];
}

/// The exact sign of the orientation determinant where the differences are doubles and the products don't
/// underflow: two double-doubles compare like their parts.
int differenceOrientationSign(const Point2* pA, const Point2* pB, const Point2* pC) {
    const DoubleDouble ax = twoSum(pA->x(), -pC->x()), ay = twoSum(pA->y(), -pC->y());
    const DoubleDouble bx = twoSum(pB->x(), -pC->x()), by = twoSum(pB->y(), -pC->y());
    if (!(ax.lo == 0.0 && ay.lo == 0.0 && bx.lo == 0.0 && by.lo == 0.0)) return undecided;

    const DoubleDouble p = twoProduct(ax.hi, by.hi);
    const DoubleDouble q = twoProduct(ay.hi, bx.hi);
    const auto isExact = [](const DoubleDouble& product, double f, double g) {
        const double magnitude = std::fabs(product.hi);
        return f == 0.0 || g == 0.0 || (std::isfinite(product.lo) && magnitude > 1e-280 && magnitude < 1e280);
    };
    if (!isExact(p, ax.hi, by.hi) || !isExact(q, ay.hi, bx.hi)) return undecided;
    return p.hi != q.hi ? signOf(p.hi - q.hi) : signOf(p.lo - q.lo);
}

Orientation2 orientationOf(int sign) {
    return sign > 0 ? ORIENTATION2_CCW : sign < 0 ? ORIENTATION2_CW : ORIENTATION2_COLLINEAR;
}

template <std::size_t N>
std::string nameOf(int value, const char* const (&names)[N], const char* unknown) {
    return value >= 0 && value < static_cast<int>(N) ? names[value] : unknown;
}

}  // namespace

KelmarTest::~KelmarTest() {
    if (intersectionReady) {
        clearAll(intersection.coordinates);
        clearAll(intersection.differences);
        clearAll(intersection.products);
        clearAll(intersection.crossProducts);
        clearAll(intersection.terms);
        clearAll(intersection.numerators);
        mpq_clear(intersection.denominator);
        clearAll(intersection.quotients);
    }
    if (!exactReady) return;
    clearAll(inCircle.coordinates);
    clearAll(inCircle.differences);
    clearAll(inCircle.squares);
    clearAll(inCircle.crossProducts);
    clearAll(inCircle.squaredLengths);
    clearAll(inCircle.minors);
    clearAll(inCircle.terms);
    mpq_clear(inCircle.result);
    clearAll(orientation.coordinates);
    clearAll(orientation.differences);
    clearAll(orientation.products);
}

void KelmarTest::gmpInit() {
    if (exactReady) return;
    initAll(inCircle.coordinates);
    initAll(inCircle.differences);
    initAll(inCircle.squares);
    initAll(inCircle.crossProducts);
    initAll(inCircle.squaredLengths);
    initAll(inCircle.minors);
    initAll(inCircle.terms);
    mpq_init(inCircle.result);
    initAll(orientation.coordinates);
    initAll(orientation.differences);
    initAll(orientation.products);
    exactReady = true;
}

void KelmarTest::gmpInitIntersection() {
    if (intersectionReady) return;
    initAll(intersection.coordinates);
    initAll(intersection.differences);
    initAll(intersection.products);
    initAll(intersection.crossProducts);
    initAll(intersection.terms);
    initAll(intersection.numerators);
    mpq_init(intersection.denominator);
    initAll(intersection.quotients);
    intersectionReady = true;
}

void KelmarTest::setStaticBound(double magnitude) {
    // Errors of the determinant for coordinates of magnitude 1: of each of the two products, 2 * 2^-52 from
    // each of its differences and 2^-51 of its own. The last subtraction is exact where the sign is in doubt.
    // In all 2 * (2^-50 + 2^-51) = 3 * 2^-50, times the square of the magnitude.
    constexpr double factor = 3.0 * 0x1p-50;
    upperBound = factor * magnitude * magnitude;
    boundMagnitude = std::fabs(magnitude);
    // Where the bound itself is near underflow, so are the products that it should vouch for.
    if (magnitude != 0.0 && upperBound < underflowFloor) upperBound = std::numeric_limits<double>::infinity();
    lowerBound = -upperBound;
}

void KelmarTest::growStaticBound(const Point2* pA, const Point2* pB, const Point2* pC) {
    const auto excess = [this](const Point2* p) {
        const double absX = std::fabs(p->x()), absY = std::fabs(p->y());
        const double magnitude = absX >= absY ? absX : absY;
        return magnitude > boundMagnitude ? magnitude : 0.0;
    };
    const double sum = (excess(pA) + excess(pB)) + excess(pC);
    if (sum > boundMagnitude) setStaticBound(sum);
}

[[gnu::cold, gnu::noinline]] Orientation2 KelmarTest::dynamicFilterOri2(const Point2* pA, const Point2* pB,
                                                                        const Point2* pC) {
    if (pA->x() == pB->x() && pB->x() == pC->x()) return ORIENTATION2_COLLINEAR;
    if (pA->y() == pB->y() && pB->y() == pC->y()) return ORIENTATION2_COLLINEAR;
    // Differences that are exact, as between neighbours of similar size, need no change of the rounding mode.
    const int sign = differenceOrientationSign(pA, pB, pC);
    if (sign != undecided) return orientationOf(sign);

    if (0.0 > upperOrientationBound(pA, pB, pC)) return ORIENTATION2_CW;
    if (lowerOrientationBound(pA, pB, pC) > 0.0) return ORIENTATION2_CCW;
    return orientationOf(rationalOrientationSign(pA, pB, pC));
}

[[gnu::cold, gnu::noinline]] Orientation2 KelmarTest::exact_getOrientation2(const Point2* pA,
                                                                            const Point2* pB,
                                                                            const Point2* pC) {
    return orientationOf(rationalOrientationSign(pA, pB, pC));
}

int KelmarTest::rationalOrientationSign(const Point2* pA, const Point2* pB, const Point2* pC) {
    gmpInit();
    auto& [xy, difference, product] = orientation;
    const Point2* const points[3] = {pA, pB, pC};
    for (int i = 0; i < 3; ++i) {
        mpq_set_d(xy[2 * i], points[i]->x());
        mpq_set_d(xy[2 * i + 1], points[i]->y());
    }
    mpq_sub(difference[0], xy[0], xy[4]);  // a.x - c.x
    mpq_sub(difference[1], xy[3], xy[5]);  // b.y - c.y
    mpq_sub(difference[2], xy[1], xy[5]);  // a.y - c.y
    mpq_sub(difference[3], xy[2], xy[4]);  // b.x - c.x
    mpq_mul(product[0], difference[0], difference[1]);
    mpq_mul(product[1], difference[2], difference[3]);
    return signOf(mpq_cmp(product[0], product[1]));
}

[[gnu::cold, gnu::noinline]] bool KelmarTest::exact_circleInc(const Triangle2* pT, const Point2* pQ) {
    return isRectangle(pT, pQ) || inCircleSign(pT, pQ) > 0;
}

[[gnu::cold, gnu::noinline]] CINC2 KelmarTest::exact_circleInc3state(const Triangle2* pT, const Point2* pQ) {
    if (isRectangle(pT, pQ)) return CINC2_ZERO;
    const int sign = inCircleSign(pT, pQ);
    return sign > 0 ? CINC2_INCIRCLE : sign < 0 ? CINC2_OUTCIRCLE : CINC2_ZERO;
}

int KelmarTest::inCircleSign(const Triangle2* pT, const Point2* pQ) {
    const CircleDifferences differences(pT, pQ);
    int sign = gridInCircleSign(differences);
    if (sign == undecided) sign = doubleDoubleInCircleSign(differences);
    if (sign == undecided) sign = rationalInCircleSign(pT, pQ);
    return sign;
}

int KelmarTest::rationalInCircleSign(const Triangle2* pT, const Point2* pQ) {
    gmpInit();
    auto& [xy, difference, square, cross, squaredLength, minor, term, result] = inCircle;
    const Point2* const points[4] = {corner(pT, 0), corner(pT, 1), corner(pT, 2), pQ};
    for (int i = 0; i < 4; ++i) {
        mpq_set_d(xy[2 * i], points[i]->x());
        mpq_set_d(xy[2 * i + 1], points[i]->y());
    }
    for (int i = 0; i < 6; ++i) {  // ax ay bx by cx cy
        mpq_sub(difference[i], xy[i], xy[6 + i % 2]);
        mpq_mul(square[i], difference[i], difference[i]);
    }
    for (int i = 0; i < 3; ++i) mpq_add(squaredLength[i], square[2 * i], square[2 * i + 1]);
    for (int i = 0; i < 3; ++i) {  // the minor that goes with vertex i: of the two vertices behind it
        const int u = 2 * ccw(i), v = 2 * cw(i);
        mpq_mul(cross[2 * i], difference[u], difference[v + 1]);
        mpq_mul(cross[2 * i + 1], difference[v], difference[u + 1]);
        mpq_sub(minor[i], cross[2 * i], cross[2 * i + 1]);
        mpq_mul(term[i], squaredLength[i], minor[i]);
    }
    mpq_add(result, term[0], term[1]);
    mpq_add(result, result, term[2]);
    return mpq_sgn(result);
}

IntersectionType KelmarTest::getIntersectionType(const Point2& a, const Point2& b, const Point2& c,
                                                 const Point2& d) {
    const Orientation2 sideOfC = getOrientation2(&a, &b, &c);
    const Orientation2 sideOfD = getOrientation2(&a, &b, &d);
    if (sideOfC == ORIENTATION2_COLLINEAR && sideOfD == ORIENTATION2_COLLINEAR) {
        // One end lies between the ends of the other segment.
        const bool bOverlap =
            approxHasOn(a, b, c) || approxHasOn(a, b, d) || approxHasOn(c, d, a) || approxHasOn(c, d, b);
        return bOverlap ? IST_COLLINEAR : IST_NOIS;
    }
    if (sideOfC != sideOfD && getOrientation2(&c, &d, &a) != getOrientation2(&c, &d, &b)) return IST_REGULAR;
    return IST_NOIS;
}

[[gnu::cold]] void KelmarTest::getIntersectionCoords_gmp(const Point2& a, const Point2& b, const Point2& c,
                                                         const Point2& d, double& x, double& y) {
    gmpInitIntersection();
    auto& [xy, difference, product, cross, term, numerator, denominator, quotient] = intersection;
    const Point2* const points[4] = {&a, &b, &c, &d};
    for (int i = 0; i < 4; ++i) {
        mpq_set_d(xy[2 * i], points[i]->x());
        mpq_set_d(xy[2 * i + 1], points[i]->y());
    }
    mpq_sub(difference[0], xy[0], xy[2]);   // a.x - b.x
    mpq_sub(difference[1], xy[1], xy[3]);   // a.y - b.y
    mpq_sub(difference[2], xy[4], xy[6]);   // c.x - d.x
    mpq_sub(difference[3], xy[5], xy[7]);   // c.y - d.y
    for (int line = 0; line < 2; ++line) {  // a x b, c x d
        mpq_mul(product[2 * line], xy[4 * line], xy[4 * line + 3]);
        mpq_mul(product[2 * line + 1], xy[4 * line + 1], xy[4 * line + 2]);
        mpq_sub(cross[line], product[2 * line], product[2 * line + 1]);
    }
    mpq_mul(term[0], difference[0], difference[3]);
    mpq_mul(term[1], difference[1], difference[2]);
    mpq_sub(denominator, term[0], term[1]);
    if (mpq_sgn(denominator) == 0) {
        error("KelmarTest::getIntersectionCoords()", "denom=0 -> parallel segments");
        require(false, "false");
    }
    for (int axis = 0; axis < 2; ++axis) {
        mpq_mul(term[2 + 2 * axis], cross[0], difference[2 + axis]);
        mpq_mul(term[3 + 2 * axis], difference[axis], cross[1]);
        mpq_sub(numerator[axis], term[2 + 2 * axis], term[3 + 2 * axis]);
        mpq_div(quotient[axis], numerator[axis], denominator);
    }
    x = mpq_get_d(quotient[0]);
    y = mpq_get_d(quotient[1]);
}

std::string KelmarTest::getString(CINC2 verdict) {
    static constexpr const char* names[] = {"CINC2_ZERO", "CINC2_INCIRCLE", "CINC2_OUTCIRCLE"};
    return nameOf(verdict, names, "UNKNOWN");
}

std::string KelmarTest::getString(IntersectionType type) {
    static constexpr const char* names[] = {"IST_NOIS", "IST_COLLINEAR", "IST_REGULAR"};
    return nameOf(type, names, "UNKNOWN");
}

std::string KelmarTest::getUserFriendlyOrientation(Orientation2 orientation) {
    static constexpr const char* names[] = {"COL", "CCW", "CW"};
    return nameOf(orientation, names, "unknown, this is a bug");
}

void KelmarTest::debug(const Point2* pA, const Point2* pB, const Point2* pC) {
    const double det = (pA->x() - pC->x()) * (pB->y() - pC->y()) - (pA->y() - pC->y()) * (pB->x() - pC->x());
    const char* const simpleVerdict = det > upperBound   ? "simple test says positive"
                                      : lowerBound > det ? "simple test says negative"
                                                         : "simple test says 'no idea'";
    static constexpr const char* exactVerdicts[] = {"exact test says ZERO", "exact test says POSITIVE",
                                                    "exact test says NEGATIVE"};
    print(compose("KelmarTest::debug(", *pA, "; ", *pB, "; ", *pC, ")\n", "STATIC BOUND=", upperBound,
                  " resp. ", lowerBound, "\n", "simple result=", det, "\n", simpleVerdict, "\n",
                  "Result of dynamic ub: ", upperOrientationBound(pA, pB, pC), "\n",
                  "Result of dynamic lb: ", lowerOrientationBound(pA, pB, pC), "\n",
                  exactVerdicts[exact_getOrientation2(pA, pB, pC)], "\n"));
}

std::string getString(Orientation2 orientation) {
    static constexpr const char* names[] = {"ORIENTATION2_COLLINEAR", "ORIENTATION2_CCW", "ORIENTATION2_CW"};
    return nameOf(orientation, names, "UNKNOWN");
}

Orientation2 orientationOnThread(const Point2* pA, const Point2* pB, const Point2* pC) {
    static thread_local KelmarTest predicates;
    predicates.growStaticBound(pA, pB, pC);
    return predicates.getOrientation2(pA, pB, pC);
}

Orientation2 getOrientation2(const Point2* pA, const Point2* pB, const Point2* pC) {
    RoundToNearest nearest;
    return nearest.keep(orientationOnThread(pA, pB, pC));
}

Orientation2 getOrientation2_mt(const Point2* pA, const Point2* pB, const Point2* pC) {
    RoundToNearest nearest;
    KelmarTest predicates;
    predicates.growStaticBound(pA, pB, pC);
    return nearest.keep(predicates.getOrientation2(pA, pB, pC));
}

}  // namespace KELMAR_NORVIK2D
