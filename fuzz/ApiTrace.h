#pragma once

#include <ostream>
#include <vector>

#include "ApiDriver.h"

// Operations as a reader of C++ would write them.

inline void tell(std::ostream& os, const KELMAR_NORVIK2D::Point2& point) {
    os << "{" << point.x() << ", " << point.y() << "}";
}
inline void tell(std::ostream& os, const KELMAR_NORVIK2D::Segment2& segment) {
    os << "{";
    tell(os, segment.getSrc());
    os << ", ";
    tell(os, segment.getTrg());
    os << "}";
}
template <class T>
void tell(std::ostream& os, const std::vector<T>& items) {
    os << "{";
    for (const T& item : items) {
        if (&item != &items.front()) os << ", ";
        tell(os, item);
    }
    os << "}";
}
template <class T>
void tell(std::ostream& os, const T& item) {
    os << item;
}

template <class... T>
void ApiDriver::say(const T&... items) const {
    if (options.pTrace == nullptr) return;
    options.pTrace->precision(17);
    (tell(*options.pTrace, items), ...);
    *options.pTrace << std::endl;
}
