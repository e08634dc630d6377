#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

/// Hilbert curves, for everything that is sorted by place. Nothing here knows of meshes.
namespace KELMAR_TOOLS {

/// Truncates a coordinate in units of grid cells to an integer. NaN and what an integer can't hold, as from a
/// box without extent, give the smallest one: such keys are arbitrary but defined.
inline std::int64_t truncateToCell(double cell) noexcept {
    constexpr double limit = 0x1p63;
    if (!(cell >= -limit && cell < limit)) [[unlikely]]
        return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(cell);
}

/// The curve of a dimension as an automaton that reads one bit of each coordinate a step: indexed by
/// state * 2^Dimension + orthant, the state of the next finer level, and the digit of the key. The first axis has the
/// highest bit of the orthant.
template <unsigned Dimension>
struct CurveTables;

template <>
struct CurveTables<2> {
    static constexpr std::uint32_t numStates = 4;
    static constexpr std::uint32_t nextS[16] = {1, 0, 2, 0, 0, 3, 1, 1, 2, 2, 0, 3, 3, 1, 3, 2};
    static constexpr std::uint32_t addVls[16] = {0, 1, 3, 2, 0, 3, 1, 2, 2, 1, 3, 0, 2, 3, 1, 0};
};

/// Through a cube the curve runs from one corner to the next one along an axis, its octants in the order of the Gray code, and in
/// each octant likewise. So a state is that corner and that axis; of the corners, whose bits are the axes, only those with an even
/// number of ones are met.
template <>
struct CurveTables<3> {
    static constexpr std::uint32_t numStates = 12;

    struct Entries {
        std::uint8_t entry[8 * numStates];
        constexpr std::uint32_t operator[](std::size_t place) const { return entry[place]; }
    };
    static const Entries nextS, addVls;

private:
    /// The state of each octant in turn, of the cube that is entered at corner 0 and left along axis 0.
    static constexpr std::uint32_t corners[8] = {0, 0, 0, 3, 3, 6, 6, 5}, axes[8] = {0, 1, 1, 2, 2, 1, 1, 0};

    static constexpr std::uint32_t rotateLeft(std::uint32_t bits, std::uint32_t by) {
        return ((bits << by) | (bits >> (3 - by))) & 7U;
    }
    static constexpr Entries make(bool bDigits) {
        Entries entries{};
        for (std::uint32_t place = 0; place < 8 * numStates; ++place) {
            const std::uint32_t state = place / 8, turn = (state / 4 + 1) % 3, twoBits = state % 4;
            const std::uint32_t corner = twoBits << 1 | (twoBits >> 1 ^ (twoBits & 1U));
            const std::uint32_t gray = rotateLeft(place % 8 ^ corner, (3 - turn) % 3);
            const std::uint32_t digit = gray ^ gray >> 1 ^ gray >> 2;
            const std::uint32_t nextCorner = corner ^ rotateLeft(corners[digit], turn);
            const std::uint32_t next = (state / 4 + axes[digit] + 1) % 3 * 4 + nextCorner / 2;
            entries.entry[place] = static_cast<std::uint8_t>(bDigits ? digit : next);
        }
        return entries;
    }
};
inline constexpr CurveTables<3>::Entries CurveTables<3>::nextS = make(false),
                                         CurveTables<3>::addVls = make(true);

template <unsigned Dimension>
class HilbertCurve {
public:
    using Cell = std::array<std::uint32_t, Dimension>;
    using Tables = CurveTables<Dimension>;

    /// The key of a cell, by the lowest `level` bits of its coordinates.
    [[gnu::always_inline]] static std::uint32_t keyOf(const Cell& cell, unsigned level) noexcept {
        std::uint32_t key = 0;
        std::uint32_t state = 0;
        for (; level >= levelsPerStep; level -= levelsPerStep) {
            const auto step = steps.step[state][bitsOf(cell, level - levelsPerStep, levelsPerStep)];
            key = key << bitsPerStep | (step & (numEntries - 1));
            state = step >> bitsPerStep;
        }
        for (; level > 0; --level) {
            const std::uint32_t place = state << Dimension | bitsOf(cell, level - 1, 1);
            key = key << Dimension | Tables::addVls[place];
            state = Tables::nextS[place];
        }
        return key;
    }

private:
    static constexpr unsigned bitsPerStep = 6, levelsPerStep = bitsPerStep / Dimension;
    static constexpr std::uint32_t numEntries = 1U << bitsPerStep;

    /// `numBits` bits of each coordinate side by side, the first axis in front.
    static constexpr std::uint32_t bitsOf(const Cell& cell, unsigned lowest, unsigned numBits) noexcept {
        std::uint32_t bits = 0;
        for (unsigned axis = 0; axis < Dimension; ++axis)
            bits = bits << numBits | ((cell[axis] >> lowest) & ((1U << numBits) - 1));
        return bits;
    }

    /// Several levels of the curve in one step: for each state and the bits of these levels, the next state and, in the lowest
    /// bits, the digits of the key.
    struct Steps {
        using Step = std::conditional_t<Tables::numStates <= 4, std::uint8_t, std::uint16_t>;
        Step step[Tables::numStates][numEntries];

        constexpr Steps() : step() {
            for (std::uint32_t state = 0; state < Tables::numStates; ++state)
                for (std::uint32_t bits = 0; bits < numEntries; ++bits) step[state][bits] = walk(state, bits);
        }

        static constexpr Step walk(std::uint32_t state, std::uint32_t bits) {
            std::uint32_t digits = 0;
            for (unsigned level = levelsPerStep; level-- > 0;) {
                std::uint32_t place = state;
                for (unsigned axis = Dimension; axis-- > 0;)
                    place = place << 1 | ((bits >> (axis * levelsPerStep + level)) & 1U);
                digits = digits << Dimension | Tables::addVls[place];
                state = Tables::nextS[place];
            }
            return static_cast<Step>(state << bitsPerStep | digits);
        }
    };
    static const Steps steps;
};

template <unsigned Dimension>
inline constexpr typename HilbertCurve<Dimension>::Steps HilbertCurve<Dimension>::steps{};

/// The cells that keys of a box number. A key decides order and locality only, never correctness: nothing is clamped, and a
/// point outside the box or on its upper side wraps to the key of its low bits.
template <unsigned Dimension>
struct KeyGrid {
    using Coordinates = std::array<double, Dimension>;

    /// Of keys of that many bits, an equal share for each axis; what goes beyond 32 isn't used.
    static unsigned numLevelsOf(unsigned bitLength) noexcept { return std::min(bitLength, 32U) / Dimension; }

    static KeyGrid over(const Coordinates& least, const Coordinates& greatest, unsigned bitLength) noexcept {
        KeyGrid grid{least, {}, numLevelsOf(bitLength)};
        const auto gridSize = static_cast<double>(1U << grid.numLevels);
        for (unsigned axis = 0; axis < Dimension; ++axis)
            grid.scale[axis] = gridSize / (greatest[axis] - least[axis]);
        return grid;
    }

    std::uint32_t keyOf(const Coordinates& point) const noexcept {
        typename HilbertCurve<Dimension>::Cell cell;
        for (unsigned axis = 0; axis < Dimension; ++axis)
            cell[axis] =
                static_cast<std::uint32_t>(truncateToCell((point[axis] - least[axis]) * scale[axis]));
        // The levels of most keys, known to the compiler, take half the instructions.
        constexpr unsigned usualLevels = 30 / Dimension;
        return numLevels == usualLevels ? HilbertCurve<Dimension>::keyOf(cell, usualLevels)
                                        : HilbertCurve<Dimension>::keyOf(cell, numLevels);
    }

    Coordinates least{};
    Coordinates scale{};  ///< cells per unit of length
    unsigned numLevels = 0;
};

}  // namespace KELMAR_TOOLS
