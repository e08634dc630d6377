#include "RefCand3.h"

#include <algorithm>
#include <cmath>
#include <tuple>

#include "ConstraintSegment2.h"
#include "Dt2.h"
#include "KelmarTest.h"
#include "MeshGenParams.h"
#include "UniformLimits.h"
#include "Visualizer2.h"
#include "angles.h"
#include "diagnostics.h"
#include "distance.h"
#include "heron.h"
#include "require.h"
#include "standardOutput.h"
#include "walk.h"

namespace KELMAR_NORVIK2D {

std::atomic<std::int32_t> RefCand3::debug_runningLabel{0};
std::atomic<std::int32_t> RefCand3::needCtrDbg{0};

RefCand3::RefCand3(Dt2* pDt_, Triangle2* pTriangle_)
    : label(debug_runningLabel.fetch_add(1, std::memory_order_relaxed)),
      corners{corner(pTriangle_, 0), corner(pTriangle_, 1), corner(pTriangle_, 2)},
      pDt(pDt_),
      pTriangle(pTriangle_) {}

double RefCand3::minAngleOf(const Triangle2* pT) {
    const Point2 &p0 = *corner(pT, 0), &p1 = *corner(pT, 1), &p2 = *corner(pT, 2);
    const Vector2 u = unitVector(p0, p1), v = unitVector(p0, p2), w = unitVector(p1, p2);
    const double a = degreesOf(cosineBetween(u, v));
    const double b = degreesOf(cosineBetween(w, -u));
    return std::min({a, b, 180.0 - a - b});
}

namespace {

/// Edge by edge.
std::array<double, 3> sqLengthsOf(const Triangle2* pT) {
    const Point2 &a = *corner(pT, 0), &b = *corner(pT, 1), &c = *corner(pT, 2);
    return {squaredDistance(b, c), squaredDistance(c, a), squaredDistance(a, b)};
}

constexpr double noLimit = std::numeric_limits<double>::max();

/// Lengths and areas of huge triangles are infinite, which is no reason where there is no limit.
bool exceeds(double value, double limit) { return value > limit && limit != noLimit; }

bool isLargerThan(const Triangle2* pT, const std::array<double, 3>& sqLengths, double maxArea) {
    return maxArea != noLimit &&
           heronArea(std::sqrt(sqLengths[0]), std::sqrt(sqLengths[1]), std::sqrt(sqLengths[2]), pT) > maxArea;
}

}  // namespace

bool RefCand3::meetsLimits(const Triangle2* pT, double minAngle, const UniformLimits& limits) {
    if (limits.minAngleDegree > minAngle) return false;
    const std::array<double, 3> sqLengths = sqLengthsOf(pT);
    return !exceeds(std::sqrt(std::max({sqLengths[0], sqLengths[1], sqLengths[2]})), limits.maxEdgeLength) &&
           !isLargerThan(pT, sqLengths, limits.maxTriangleArea);
}

bool RefCand3::isConstraint(int index) const { return pDt->isConstraint(pTriangle, index); }

double RefCand3::getQuality2D() const { return radius / std::sqrt(sqSideLengths[0]); }

ConstraintSegment2* RefCand3::getAliveConstraintSegment(int index) const {
    if (splitIndex < 0) return nullptr;
    return pDt->getConstraintManager()->getAliveConstraintSegment(corner(pContainingT, ccw(index)),
                                                                  corner(pContainingT, cw(index)));
}

// ---------------------------------------------------------------------------------------------- the decision

// A triangle that has no legal place for a vertex is left alone, whatever its size and shape; to find that out takes a walk, so
// it is asked last.
bool RefCand3::needRefinement(MeshGenParams* pParams) {
    if (pParams->debugCommand == 1) bDebug = true;
    computeMinMax();
    const Reason reason = reasonToRefine(pParams);
    if (reason == Reason::NONE) return false;
    if (isOutOfRange()) {
        pDt->reportPrecisionLimit();
        return false;
    }

    // A circumcentre far outside would make the predicates' filter blunt for good.
    KelmarTest& predicates = *pDt->getPredicates();
    const double magnitude = predicates.getBoundMagnitude();
    init();
    const bool bRejected = highPriorityReject(pParams);
    if (predicates.getBoundMagnitude() != magnitude) predicates.setStaticBound(magnitude);
    if (bRejected) return false;
    if (isAtPrecisionLimit()) {
        pDt->reportPrecisionLimit();
        return false;
    }
    if (bDebug) explain(reason, pParams);
    return true;
}

RefCand3::Reason RefCand3::reasonToRefine(MeshGenParams* pParams) {
    const Reason reason = reasonOfSize(pParams);
    if (reason != Reason::NONE) return reason;
    const double minAngle = pParams->minAngleDegree;
    return minAngle > getMinAngle() && !hasNarrowConstraintAngle(minAngle) ? Reason::MIN_ANGLE : Reason::NONE;
}

RefCand3::Reason RefCand3::reasonOfSize(MeshGenParams* pParams) {
    if (exceeds(std::sqrt(getMaxSqSideLength2D()), pParams->getMaxEdgeLength(pTriangle)))
        return Reason::SIDE_LENGTH;
    if (isLargerThan(pTriangle, sqLengthsOf(pTriangle), pParams->getMaxTriangleArea(pTriangle)))
        return Reason::AREA;
    if (pParams->growFactor != noLimit &&
        needRefinementDueToGrowth(pParams->growFactor, pParams->growFactorMinArea))
        return Reason::GROWTH;
    return Reason::NONE;
}

void RefCand3::computeMinMax() {
    sqSideLengths = sqLengthsOf(pTriangle);
    std::sort(sqSideLengths.begin(), sqSideLengths.end());
}

/// Circumcentres and areas are made of fourth powers of lengths, and those vanish below these lengths, and overflow above.
bool RefCand3::isOutOfRange() const {
    constexpr double leastLength = 1e-75, greatestLength = 1e75;
    const double length = std::sqrt(getMaxSqSideLength2D());
    return length < leastLength || length > greatestLength;
}

/// Whether the triangle is so small that doubles hardly tell its corners apart: no limit can be met there, neither of size nor
/// of angles, which rounding changes at will, and to try would never end.
bool RefCand3::isAtPrecisionLimit() const {
    constexpr double numUlps = 8.0;
    double magnitude = 0.0;
    for (const Point2* pCorner : corners)
        magnitude = std::max({magnitude, std::fabs(pCorner->x()), std::fabs(pCorner->y())});
    const double ulp = std::nextafter(magnitude, std::numeric_limits<double>::infinity()) - magnitude;
    return std::sqrt(getMaxSqSideLength2D()) < numUlps * ulp;
}

// A big triangle beside a small one is refined, so that sizes grow slowly away from small features.
bool RefCand3::needRefinementDueToGrowth(double factor, double minArea) const {
    if (0.0 >= factor) return false;
    const double a = std::sqrt(sqSideLengths[0]), b = std::sqrt(sqSideLengths[1]),
                 c = std::sqrt(sqSideLengths[2]);
    const double area = std::sqrt(heronProduct(a, b, c));
    for (int i = 0; i < 3; ++i) {
        const ConstraintSegment2* const pCSeg = pDt->getConstraintManager()->getAliveConstraintSegment(
            corner(pTriangle, ccw(i)), corner(pTriangle, cw(i)));
        double foreignArea = 0.0;
        if (pCSeg != nullptr) {
            foreignArea = pCSeg->getAdjacentArea();
            if (foreignArea == std::numeric_limits<double>::max()) continue;
        } else if (const Triangle2* const pForeignT = neighbour(pTriangle, i)) {
            foreignArea = pForeignT->getArea2D();
        } else {
            warning("RefCand3::needRefinementDueToGrowth()", "pForeignT=NULL");
            continue;
        }
        if (foreignArea == 0.0 || minArea > foreignArea) continue;
        if (area / foreignArea > factor) return true;
    }
    return false;
}

bool RefCand3::hasNarrowConstraintAngle(double minAngle) const {
    // Not the factor of other angles. It makes angles a little greater: one of the input that equals the bound isn't excused.
    constexpr double pi = 3.14159;
    const std::array<bool, 3> areConstraints{isConstraint(0), isConstraint(1), isConstraint(2)};
    for (int i = 0; i < 3; ++i) {
        if (!areConstraints[static_cast<std::size_t>(ccw(i))] ||
            !areConstraints[static_cast<std::size_t>(cw(i))])
            continue;
        const Point2& apex = *corner(pTriangle, i);
        const double cosine = cosineBetween(unitVector(apex, *corner(pTriangle, ccw(i))),
                                            unitVector(apex, *corner(pTriangle, cw(i))));
        if (minAngle > std::acos(cosine) / pi * 180.0) return true;
    }
    return false;
}

// ------------------------------------------------------------------------------- the place of the new vertex

void RefCand3::init() {
    pContainingT = pTriangle;
    computeSteiner();
    if (!isFinite(steiner)) {
        splitIndex = SPLIT_NEVER;
        return;
    }
    pDt->coverByPredicates(steiner);
    radius = distance(*corner(pTriangle, 0), steiner);
    splitIndex = walkUntilConstraint(&steiner, pContainingT);
}

void RefCand3::computeSteiner() { std::tie(steiner, bAccurateDual) = pTriangle->getDual(); }

// A turn looks at one edge, from P to Q, of the triangle reached so far. The point is on all edges' sides when as many edges in
// a row as remain have said so.
int RefCand3::walkUntilConstraint(const Point2* pCircumcenter, Triangle2*& pStartT) {
    constexpr int numOrderlySteps = 1000;
    KelmarTest& predicates = *pDt->getPredicates();
    const Point2* const pApex = corner(pTriangle, pTriangle->getMaxIndex());
    RandomEdges randomEdges;
    int hullIndex = -1;  // of a hull edge that the point is in line with
    int index = 0, numRemaining = 3;
    for (int steps = 1;; ++steps) {
        if (steps > numOrderlySteps) {  // the walk may cycle
            index = randomEdges.next();
            numRemaining = 3;
            steps = 0;
        }
        const Point2* const pP = corner(pStartT, ccw(index));
        const Point2* const pQ = corner(pStartT, cw(index));
        const auto lineSeparatesThem = [&] {
            return predicates.getOrientation2(pApex, pCircumcenter, pP) !=
                   predicates.getOrientation2(pApex, pCircumcenter, pQ);
        };
        const Orientation2 side = predicates.getOrientation2(pP, pQ, pCircumcenter);
        Triangle2* const pNext = neighbour(pStartT, index);
        if (side == ORIENTATION2_CW) {
            if (!lineSeparatesThem()) {
                index = ccw(index);
                continue;
            }
            if (pNext == nullptr || pDt->isConstraint(pStartT, index)) return index;
            index = ccw(indexOf(pNext, pStartT));
            pStartT = pNext;
            numRemaining = 2;
            hullIndex = -1;
            continue;
        }
        if (side == ORIENTATION2_COLLINEAR) {
            for (int i = 0; i < 3; ++i)
                if (samePoint(corner(pStartT, i), pCircumcenter)) return SPLIT_NEVER;
            // On the line of a hull edge: on that edge, unless another edge of the triangle says that it is beyond.
            if (pNext == nullptr) hullIndex = index;
            // A vertex on a constraint would make it vanish.
            else if (pDt->isConstraint(pStartT, index) && isBetween(*pP, *pQ, *pCircumcenter))
                return index;
        }
        index = ccw(index);
        if (--numRemaining == 0) break;
    }
    if (hullIndex >= 0) return hullIndex;
    for (int i = 0; i < 3; ++i) {
        constexpr std::array<const char*, 3> conditions{
            "pKelmarPredicates->getOrientation2(pStartTriangle,0,pCircumcenter)!=ORIENTATION2_CW",
            "pKelmarPredicates->getOrientation2(pStartTriangle,1,pCircumcenter)!=ORIENTATION2_CW",
            "pKelmarPredicates->getOrientation2(pStartTriangle,2,pCircumcenter)!=ORIENTATION2_CW"};
        require(predicates.getOrientation2(corner(pStartT, ccw(i)), corner(pStartT, cw(i)), pCircumcenter) !=
                    ORIENTATION2_CW,
                conditions[static_cast<std::size_t>(i)]);
    }
    require(predicates.circleInc3state(pStartT, pCircumcenter) != CINC2_OUTCIRCLE,
            "pKelmarPredicates->circleInc(pStartTriangle,pCircumcenter)");
    return SPLIT_NONE;
}

bool RefCand3::highPriorityReject(MeshGenParams* pParams) const { return illegalSplit(pParams) || !isSafe(); }

bool RefCand3::illegalSplit(MeshGenParams* pParams) const {
    switch (splitIndex) {
        case SPLIT_NONE:
            return false;
        case 0:
        case 1:
        case 2:
            return !pParams->bAllowConstraintSplitting ||
                   2.0 * pParams->minEdgeLength > distance(*corner(pContainingT, ccw(splitIndex)),
                                                           *corner(pContainingT, cw(splitIndex)));
        case SPLIT_NEVER:
            return true;
        default:
            error("RefCand3::needRefinement", "bug, unexpected case");
            return true;
    }
}

// It is trusted only to say that the triangle wants to split its own longest edge.
bool RefCand3::isSafe() const {
    if (bAccurateDual || splitIndex < 0) return true;
    const int longest = pTriangle->getMaxIndex();
    if (!isConstraint(longest)) return false;
    if (pDt->getPredicates()->getOrientation2(corner(pTriangle, cw(longest)), corner(pTriangle, ccw(longest)),
                                              &steiner) == ORIENTATION2_CW)
        return false;
    if (splitIndex == longest) return true;
    warning("RefCand3::isSafe()", "splitIndex!=maxIdx, numeric");
    return false;
}

// ------------------------------------------------------------------------------------------------- debugging

void RefCand3::explain(Reason reason, MeshGenParams* pParams) const {
    const std::string number = std::to_string(++needCtrDbg);
    switch (reason) {
        case Reason::SIDE_LENGTH:
            print(compose("RefC: sidelength is ", std::sqrt(getMaxSqSideLength2D()), " > ",
                          pParams->getMaxEdgeLength(pTriangle), "\n"));
            showT("need_" + number + "_sidelen.ps");
            break;
        case Reason::AREA:
            print("RefC: area\n");
            showT("need_" + number + "_area.ps");
            break;
        case Reason::GROWTH:
            print("RefC: growth\n");
            showT("need_" + number + "_growth.ps");
            break;
        default:
            print(compose("RefC: minAngle, current=", getMinAngle(), "\n"));
            showT("need_" + number + "_quality25.ps");
    }
}

void RefCand3::showT(const std::string& name) const {
    if (!bDebug) return;
    Visualizer2 visualizer(name);
    pDt->show(&visualizer, true);
    visualizer.addObject(*pTriangle, Color(0.0, 1.0, 0.0, 0.1, true));
    visualizer.addObject(Label(pTriangle->getBarycenter(), "BARYCENTER", true, 8),
                         Color(0.0, 1.0, 0.0, 0.1, true));
    visualizer.writeFile();
}

void RefCand3::debug() const {
    std::string text = compose("RefCand3, label ", label, "\n", isAlive() ? "is alive" : "is not alive",
                               "\npTriangle=", static_cast<const void*>(pTriangle),
                               "\npContainingT=", static_cast<const void*>(pContainingT),
                               "\nsplitIndex=", splitIndex, "\nOriginal points: ");
    for (const Point2* pCorner : corners) text += compose(*pCorner, " ");
    text += "\n";
    for (int i = 0; i < 3; ++i) {
        if (isConstraint(i))
            text += compose("pDt says, it is a constraint\nThe constraint segment pointer is ",
                            static_cast<const void*>(pDt->getConstraintManager()->getAliveConstraintSegment(
                                corner(pTriangle, ccw(i)), corner(pTriangle, cw(i)))),
                            "\n");
        else
            text += "pDt says, it is NOT a constraint\n";
    }
    print(text + compose("minLen=", std::sqrt(getMinSqSideLength2D()),
                         ", maxLen=", std::sqrt(getMaxSqSideLength2D()), "\n"));
}

}  // namespace KELMAR_NORVIK2D
