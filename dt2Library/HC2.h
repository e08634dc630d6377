#pragma once

#include <cstdint>
#include <limits>

#include "Point2.h"

namespace KELMAR_NORVIK2D {

/// Truncates a coordinate in units of grid cells to an integer. NaN and what an integer can't hold, as from a
/// box without extent, give the smallest one: such keys are arbitrary but defined.
inline std::int64_t truncateToCell(double cell) noexcept {
    constexpr double limit = 0x1p63;
    if (!(cell >= -limit && cell < limit)) [[unlikely]]
        return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(cell);
}

/// Hilbert keys of points over a box. A key decides order and locality only, never correctness: nothing is
/// clamped, and a point outside the box or on its upper side wraps to the key of its low bits.
class HC2 {
public:
    HC2() = default;

    /// Keys of `bitLength` bits, half of them for each axis. Anything but an even number from 2 to 32 is
    /// reported and fails an assertion.
    HC2(double minX, double minY, double maxX, double maxY, unsigned bitLength);

    unsigned getBitLength() const noexcept { return bitLength; }

    /// The key of a point. Any number of threads may ask at once.
    std::uint32_t iReset(const Point2& point) const noexcept {
        const auto x = static_cast<std::uint32_t>(truncateToCell((point.x() - minX) * scaleX));
        const auto y = static_cast<std::uint32_t>(truncateToCell((point.y() - minY) * scaleY));
        // The levels of a triangulation's keys, known to the compiler, take half the instructions.
        return numLevels == 15 ? keyOf(x, y, 15) : keyOf(x, y, numLevels);
    }

    /// The curve, indexed by state * 4 + quadrant, a quadrant being 2 * (bit of x) + (bit of y): the state of
    /// the next finer level, and the digit of the key.
    static constexpr std::uint32_t nextS[16] = {1, 0, 2, 0, 0, 3, 1, 1, 2, 2, 0, 3, 3, 1, 3, 2};
    static constexpr std::uint32_t addVls[16] = {0, 1, 3, 2, 0, 3, 1, 2, 2, 1, 3, 0, 2, 3, 1, 0};

private:
    [[gnu::always_inline]] static std::uint32_t keyOf(std::uint32_t x, std::uint32_t y, int level) noexcept {
        std::uint32_t key = 0;
        std::uint32_t state = 0;
        for (; level >= 3; level -= 3) {
            const std::uint32_t bits = ((x >> (level - 3)) & 7U) << 3 | ((y >> (level - 3)) & 7U);
            const std::uint8_t step = threeLevels.step[state][bits];
            key = key << 6 | (step & 63U);
            state = step >> 6;
        }
        for (; level > 0; --level) {
            const std::uint32_t quadrant = ((x >> (level - 1)) & 1U) << 1 | ((y >> (level - 1)) & 1U);
            key = key << 2 | addVls[state * 4 + quadrant];
            state = nextS[state * 4 + quadrant];
        }
        return key;
    }

    /// Three levels of the curve in one step: for each state, three bits of x and three of y, the next state
    /// (upper two bits) and three digits of the key.
    struct ThreeLevels {
        std::uint8_t step[4][64];

        constexpr ThreeLevels() : step() {
            for (std::uint32_t start = 0; start < 4; ++start)
                for (std::uint32_t bits = 0; bits < 64; ++bits) step[start][bits] = threeSteps(start, bits);
        }

        static constexpr std::uint8_t threeSteps(std::uint32_t state, std::uint32_t bits) {
            std::uint32_t digits = 0;
            for (int level = 2; level >= 0; --level) {
                const std::uint32_t quadrant = ((bits >> (3 + level)) & 1U) << 1 | ((bits >> level) & 1U);
                digits = digits << 2 | addVls[state * 4 + quadrant];
                state = nextS[state * 4 + quadrant];
            }
            return static_cast<std::uint8_t>(state << 6 | digits);
        }
    };
    static const ThreeLevels threeLevels;

    unsigned bitLength = 0;
    int numLevels = 0;
    double minX = 0.0;
    double minY = 0.0;
    double scaleX = 0.0;
    double scaleY = 0.0;
};

inline constexpr HC2::ThreeLevels HC2::threeLevels{};

}  // namespace KELMAR_NORVIK2D
