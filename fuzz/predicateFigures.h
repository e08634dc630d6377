#pragma once

#include <cmath>

#include "Decisions.h"
#include "PredicateJudge.h"

/// Kinds of figures, half of them so near to a degenerate one that plain floating-point arithmetic can't decide them.
namespace predicateFigures {

using KELMAR_NORVIK2D::Point2;

inline double around0(Decisions& from) { return 2.0 * from.unit() - 1.0; }
inline Point2 anywhere(Decisions& from, double scale) {
    return {scale * around0(from), scale * around0(from)};
}
inline Point2 nudged(const Point2& p, Decisions& from) {
    return {HardPoints::nudged(p.x(), from), HardPoints::nudged(p.y(), from)};
}

/// On the line through a and b, between them or up to their distance beyond, moved by a few last places.
inline Point2 nearLine(const Point2& a, const Point2& b, Decisions& from) {
    const double t = 3.0 * from.unit() - 1.0;
    return nudged({a.x() + t * (b.x() - a.x()), a.y() + t * (b.y() - a.y())}, from);
}

/// Two points, and two more near the line through them.
inline Figure onLine(Decisions& from, double scale) {
    const Point2 a = anywhere(from, scale), b = anywhere(from, scale);
    return {a, b, nearLine(a, b, from), nearLine(a, b, from)};
}

/// A segment, and one with an end near it.
inline Figure touching(Decisions& from, double scale) {
    const Point2 a = anywhere(from, scale), b = anywhere(from, scale);
    return {a, b, nearLine(a, b, from), anywhere(from, scale)};
}

/// Four points of a circle, moved by a few last places.
inline Figure onCircle(Decisions& from, double radius, double offset) {
    const auto on = [&] {
        const double angle = 6.283185307179586 * from.unit();
        return nudged({offset + radius * std::cos(angle), offset + radius * std::sin(angle)}, from);
    };
    return {on(), on(), on(), on()};
}

/// Points of small integers on two circles, scaled by a number of many digits; the last one may be a unit away.
inline Figure onIntegerCircle(Decisions& from, double factor) {
    static constexpr double legs[][2] = {{16, 63}, {25, 60}, {33, 56}, {39, 52},
                                         {63, 16}, {60, 25}, {56, 33}, {52, 39}};
    const auto on = [&] {
        const unsigned which = from.below(32);
        const auto& [x, y] = legs[which % 8];
        return Point2(factor * (which & 8 ? -x : x), factor * (which & 16 ? -y : y));
    };
    Figure figure{on(), on(), on(), on()};
    figure.q = {figure.q.x() + from.around0(1), figure.q.y()};
    return figure;
}

/// Integers on a line, or a unit beside it.
inline Figure onIntegerLine(Decisions& from) {
    constexpr int far = 1 << 30, most = 1000;
    const double x = 1024.0 * from.around0(far), y = 1024.0 * from.around0(far), dx = from.around0(most),
                 dy = from.around0(most);
    const auto on = [&] {
        const double t = from.around0(most);
        return Point2(x + t * dx + (from.oneIn(4) ? 1.0 : 0.0), y + t * dy);
    };
    return {on(), on(), on(), on()};
}

/// Corners of an axis-parallel rectangle; the last one may be a last place away.
inline Figure onRectangle(Decisions& from) {
    const Point2 a = anywhere(from, 1.0), b = anywhere(from, 1.0);
    const Point2 q(b.x(), a.y());
    return {a, {a.x(), b.y()}, b, from.oneIn(2) ? q : nudged(q, from)};
}

inline Figure integers(Decisions& from, int most, double unitLength) {
    const auto any = [&] { return Point2{unitLength * from.around0(most), unitLength * from.around0(most)}; };
    return {any(), any(), any(), any()};
}

inline Figure ofAnyMagnitude(Decisions& from) {
    const auto any = [&] {
        const double value = around0(from);
        return std::ldexp(value, from.around0(1020));
    };
    const auto point = [&] { return Point2{any(), any()}; };
    return {point(), point(), point(), point()};
}

inline Figure hard(Decisions& from) {
    HardPoints points;
    for (int i = 0; i < 3; ++i) points.next(from);
    Figure figure;
    for (Point2* pPoint : {&figure.a, &figure.b, &figure.c, &figure.q}) *pPoint = points.next(from);
    return figure;
}

struct Kind {
    const char* name;
    bool bNear;         ///< nearly degenerate for all its families
    unsigned families;  ///< a bit for each
    double share;       ///< of all calls, in thousandths
    Figure (*make)(Decisions&);
};

constexpr unsigned turns = 1U << PredicateJudge::TURN, circles = 1U << PredicateJudge::CIRCLE,
                   segments = 1U << PredicateJudge::SEGMENTS, all = turns | circles | segments;

/// Those with extreme numbers come last: predicates that are kept from call to call get coarser by them.
// clang-format off
inline constexpr Kind kinds[] = {
    {"line", true, turns | segments, 80, [](Decisions& d) { return onLine(d, 1.0); }},
    {"integer line", true, turns | segments, 60, onIntegerLine},
    {"touching", true, segments, 60, [](Decisions& d) { return touching(d, 1000.0); }},
    {"circle", true, circles, 110, [](Decisions& d) { return onCircle(d, 1.0, 0.0); }},
    {"circle beside 0", true, circles, 50, [](Decisions& d) { return onCircle(d, 1000.0, 300.0); }},
    {"integer circle", true, circles, 40, [](Decisions& d) { return onIntegerCircle(d, 137438953447000.0); }},
    {"rectangle", true, circles, 30, [](Decisions& d) { return onRectangle(d); }},
    {"uniform", false, all, 150, [](Decisions& d) { return Figure{anywhere(d, 1.0), anywhere(d, 1.0), anywhere(d, 1.0), anywhere(d, 1.0)}; }},
    {"integers to 4", false, all, 80, [](Decisions& d) { return integers(d, 4, 1.0); }},
    {"integers to 500", false, all, 70, [](Decisions& d) { return integers(d, 500, 0.1); }},
    {"integers to 2^20", false, all, 50, [](Decisions& d) { return integers(d, 1 << 20, 1.0); }},
    {"tiny line", true, turns | segments, 20, [](Decisions& d) { return onLine(d, 1e-150); }},
    {"underflowing circle", true, circles, 20, [](Decisions& d) { return onCircle(d, 1e-78, 0.0); }},
    {"denormal line", true, turns | segments, 10, [](Decisions& d) { return onLine(d, 1e-312); }},
    {"denormal integers", true, all, 10, [](Decisions& d) { return integers(d, 6, 5e-324); }},
    {"huge line", true, turns | segments, 10, [](Decisions& d) { return onLine(d, 1e150); }},
    {"any magnitude", false, all, 50, ofAnyMagnitude},
    {"hard points", false, all, 100, hard},
};
// clang-format on

}  // namespace predicateFigures
