#include "PredicateJudge.h"

#include <algorithm>
#include <cmath>
#include <sstream>
#include <utility>

#include "Triangle2.h"
#include "clientSettings.h"
#include "exactSegments.h"
#include "geometryTools.h"
#include "roundingMode.h"

using namespace KELMAR_NORVIK2D;

namespace {

Orientation2 orientationOf(int sign) {
    return sign > 0 ? ORIENTATION2_CCW : sign < 0 ? ORIENTATION2_CW : ORIENTATION2_COLLINEAR;
}

CINC2 placeOf(int sign) { return sign > 0 ? CINC2_INCIRCLE : sign < 0 ? CINC2_OUTCIRCLE : CINC2_ZERO; }

/// Whether q completes a, b, c to an axis-parallel rectangle.
bool completesRectangle(const Figure& f) {
    const Point2* const corners[] = {&f.a, &f.b, &f.c, &f.a, &f.b};
    for (int i = 0; i < 3; ++i) {
        const Point2 &opposite = *corners[i], &next = *corners[i + 1], &last = *corners[i + 2];
        if (opposite.x() == f.q.x() || opposite.y() == f.q.y()) continue;
        const auto areBesides = [&](const Point2& r, const Point2& s) {
            return r.x() == f.q.x() && r.y() == opposite.y() && s.x() == opposite.x() && s.y() == f.q.y();
        };
        if (areBesides(next, last) || areBesides(last, next)) return true;
    }
    return false;
}

/// What the entries of the library do before they ask a predicate that isn't public itself.
struct CircleAnswers {
    CINC2 threeValued;
    bool bInside;
    CircleVerdict verdict;
};
[[gnu::noinline]] CircleAnswers askCircle(KelmarTest& engine, const Triangle2& triangle, const Point2& q) {
    RoundToNearest nearest;
    return {nearest.keep(engine.circleInc3state(&triangle, &q)),
            nearest.keep(engine.exact_circleInc(&triangle, &q)),
            nearest.keep(KelmarTest::inCircleFilter(&triangle, &q))};
}
[[gnu::noinline]] IntersectionType askIntersection(KelmarTest& engine, const Figure& f, double magnitude) {
    RoundToNearest nearest;
    engine.setStaticBound(magnitude);
    return nearest.keep(engine.getIntersectionType(f.a, f.b, f.c, f.q));
}

}  // namespace

double Figure::magnitude() const {
    double result = 0.0;
    for (const Point2* p : {&a, &b, &c, &q})
        result = std::max({result, std::fabs(p->x()), std::fabs(p->y())});
    return result;
}

std::ostream& operator<<(std::ostream& os, const Figure& figure) {
    os << std::hexfloat;
    for (const Point2* p : {&figure.a, &figure.b, &figure.c, &figure.q})
        os << "{" << p->x() << ", " << p->y() << "} ";
    return os;
}

void PredicateJudge::count(Counts& tally, bool bRight, const char* name, const Figure& figure) {
    ++tally.calls;
    if (bRight || !fault.empty()) return;
    std::ostringstream text;
    text << name << " of " << figure << "in rounding mode " << client.rounding;
    fault = text.str();
}

bool PredicateJudge::isTurnUndecided(const Point2& a, const Point2& b, const Point2& c, double magnitude) {
    engine.setStaticBound(magnitude);
    const double det =
        crossProduct(coordinatesOf(&a) - coordinatesOf(&c), coordinatesOf(&b) - coordinatesOf(&c));
    return !(std::fabs(det) > engine.getStaticBound());
}

void PredicateJudge::judge(Family family, const Figure& figure, Client client_) {
    client = client_;
    switch (family) {
        case TURN:
            return judgeTurn(figure);
        case CIRCLE:
            return judgeCircle(figure);
        default:
            return judgeSegments(figure);
    }
}

void PredicateJudge::judgeTurn(const Figure& f) {
    Counts& tally = counts[TURN][client.rounding];
    const int sign = exact.orientation(f.a, f.b, f.c);
    ++tally.figures;
    tally.zeros += sign == 0;
    tally.undecided += isTurnUndecided(f.a, f.b, f.c, f.magnitude());

    Orientation2 kept, alone;
    bool bSettingsKept;
    {
        const ClientSettings settings(roundingModes[client.rounding], client.bFlush);
        kept = getOrientation2(&f.a, &f.b, &f.c);
        alone = getOrientation2_mt(&f.a, &f.b, &f.c);
        bSettingsKept = settings.areKept();
    }
    count(tally, kept == orientationOf(sign) && bSettingsKept, "getOrientation2", f);
    count(tally, alone == orientationOf(sign), "getOrientation2_mt", f);
}

void PredicateJudge::judgeCircle(Figure f) {
    const int turn = exact.orientation(f.a, f.b, f.c);
    if (turn == 0) return;
    if (turn < 0) std::swap(f.a, f.b);
    Counts& tally = counts[CIRCLE][client.rounding];
    const int sign = exact.inCircle(f.a, f.b, f.c, f.q);
    Triangle2 triangle;
    setCorners(&triangle, &f.a, &f.b, &f.c);
    const bool bOnEdge =
        exact.orientation(f.b, f.c, f.q) == 0 && !(f.q < std::min(f.b, f.c)) && !(std::max(f.b, f.c) < f.q);
    CircleAnswers answers{};
    bool bToldOnEdge, bSettingsKept;
    {
        const ClientSettings settings(roundingModes[client.rounding], client.bFlush);
        answers = askCircle(engine, triangle, f.q);
        bToldOnEdge = triangle.hasOnEdge(0, f.q);
        bSettingsKept = settings.areKept();
    }
    ++tally.figures;
    tally.zeros += sign == 0;
    const bool bDecided = answers.verdict != CircleVerdict::UNDECIDED;
    tally.undecided += !bDecided;
    const bool bFilterRight = (answers.verdict == CircleVerdict::INSIDE) == (sign > 0) && sign != 0;
    count(tally, answers.threeValued == placeOf(sign), "circleInc3state", f);
    count(tally, answers.bInside == (sign > 0 || (sign == 0 && completesRectangle(f))), "exact_circleInc", f);
    count(tally, !bDecided || bFilterRight, "inCircleFilter", f);
    count(tally, bToldOnEdge == bOnEdge && bSettingsKept, "Triangle2::hasOnEdge", f);
}

void PredicateJudge::judgeSegments(const Figure& f) {
    constexpr unsigned mostUses = 64;  // its filters get coarser by each large coordinate
    if (numUses++ % mostUses == 0) pChecker = std::make_unique<SegmentChecker>();
    Counts& tally = counts[SEGMENTS][client.rounding];
    Segment2 s(f.a, f.b), t(f.c, f.q);
    const SegmentIntersectionType type = exactSegments::typeOf(exact, s, t);
    const double magnitude = f.magnitude();
    ++tally.figures;
    tally.undecided += isTurnUndecided(f.a, f.b, f.c, magnitude) ||
                       isTurnUndecided(f.a, f.b, f.q, magnitude) ||
                       isTurnUndecided(f.c, f.q, f.a, magnitude) || isTurnUndecided(f.c, f.q, f.b, magnitude);
    tally.zeros += type == SIT_SEGMENT || type == SIT_ENDPOINT;

    SegmentIntersectionType told;
    bool bSettingsKept;
    {
        const ClientSettings settings(roundingModes[client.rounding], client.bFlush);
        told = pChecker->getIntersectionType(&s, &t);
        bSettingsKept = settings.areKept();
    }
    count(tally, told == type && bSettingsKept, "SegmentChecker::getIntersectionType", f);

    if (exactSegments::isPoint(s) || exactSegments::isPoint(t)) return;
    const IntersectionType meeting = exactSegments::meeting(exact, s, t);
    IntersectionType toldMeeting;
    {
        const ClientSettings settings(roundingModes[client.rounding], client.bFlush);
        toldMeeting = askIntersection(engine, f, magnitude);
    }
    // Whether collinear segments overlap is told by rounded lengths.
    const bool bCollinear = exact.orientation(f.a, f.b, f.c) == 0 && exact.orientation(f.a, f.b, f.q) == 0;
    count(tally, bCollinear ? toldMeeting != IST_REGULAR : toldMeeting == meeting, "getIntersectionType", f);
}
