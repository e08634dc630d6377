#pragma once

#include <array>

namespace KELMAR_TOOLS {

using Place3 = std::array<double, 3>;

/// A straight way between two places with finite coordinates, and the square of its length as doubles have it.
struct Way3 {
    Way3(const Place3& from_, const Place3& to_) noexcept : from(from_), to(to_) {
        const double dx = to[0] - from[0], dy = to[1] - from[1], dz = to[2] - from[2];
        square = dx * dx + dy * dy + dz * dz;
    }

    Place3 from, to;
    double square;
};

/// With rational numbers.
int compareLengthsExactly(const Way3& a, const Way3& b);

/// Which way is longer, exactly: -1 if it is `b`, 1 if it is `a`, 0 for equal lengths.
inline int compareLengths(const Way3& a, const Way3& b) {
    // A square has five roundings on the way, of 2^-53 each: two of them differ by less than this for sure.
    constexpr double margin = 1.0 + 0x1p-49;
    // What underflows, too, is less than these five of the greater one.
    constexpr double leastSure = 1e-290;
    if (a.square >= leastSure || b.square >= leastSure) {
        // Squares that overflow are infinite; then a product may be, and nothing is less than the other.
        if (a.square * margin < b.square) return -1;
        if (b.square * margin < a.square) return 1;
    }
    return compareLengthsExactly(a, b);
}

}  // namespace KELMAR_TOOLS
