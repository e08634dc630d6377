#pragma once

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace KELMAR_TOOLS {

/// Four integers in one register.
using IntegerQuad [[gnu::vector_size(16)]] = std::int32_t;

/// The sign bits: bits 0 to 3.
inline unsigned bitsOf(IntegerQuad quad) noexcept {
#ifdef __SSE2__
    return static_cast<unsigned>(_mm_movemask_ps(reinterpret_cast<__m128>(quad)));
#else
    unsigned bits = 0;
    for (int i = 0; i < 4; ++i) bits |= (quad[i] < 0 ? 1U : 0U) << i;
    return bits;
#endif
}

/// Integers for coordinates: a grid of 2^32 cells for each axis over a box. What lies outside of it has the outermost ones. A
/// number that isn't less than another has no lower cell, whatever was rounded on the way: boxes that meet have cells that
/// meet.
template <unsigned Dimension>
class CellGrid {
public:
    using Coordinates = std::array<double, Dimension>;
    using Cells = std::array<std::int32_t, Dimension>;

    CellGrid() = default;
    CellGrid(const Coordinates& least_, const Coordinates& greatest) noexcept : least(least_) {
        // Neither 0 nor infinite, so that their product isn't NaN: every box has cells, if not always useful ones.
        for (unsigned axis = 0; axis < Dimension; ++axis)
            scale[axis] = std::clamp(0x1p32 / (greatest[axis] - least[axis]),
                                     std::numeric_limits<double>::min(), std::numeric_limits<double>::max());
    }

    Cells cellsOf(const Coordinates& place) const noexcept {
        Cells cells;
        for (unsigned axis = 0; axis < Dimension; ++axis) {
            const double cell = (place[axis] - least[axis]) * scale[axis] - 0x1p31;
            // The argument's order makes the lowest cell of NaN.
            cells[axis] =
                static_cast<std::int32_t>(std::min(std::max<double>(lowest, cell), double{highest}));
        }
        return cells;
    }

    /// Their neighbours outward are the cells of nothing.
    static constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min() + 1,
                                  highest = std::numeric_limits<std::int32_t>::max() - 1;

private:
    Coordinates least{};
    Coordinates scale{};
};

/// The boxes of eight records, in cells, in two cache lines (in the plane): what is asked of all eight is answered at once. The
/// few that seem to meet because cells are coarse have to be sorted out by their true coordinates.
template <unsigned Dimension>
class alignas(64) BoxBlock {
public:
    static constexpr std::size_t size = 8;
    using Grid = CellGrid<Dimension>;
    using Cells = typename Grid::Cells;

    /// A box that is asked about.
    struct Query {
        IntegerQuad least[Dimension], greatest[Dimension];

        Query(const Cells& least_, const Cells& greatest_) noexcept {
            for (unsigned axis = 0; axis < Dimension; ++axis) {
                least[axis] = IntegerQuad{} + least_[axis];
                greatest[axis] = IntegerQuad{} + greatest_[axis];
            }
        }
    };

    /// Eight boxes that meet nothing.
    BoxBlock() noexcept {
        for (unsigned axis = 0; axis < Dimension; ++axis)
            for (std::size_t half = 0; half < 2; ++half) {
                least[axis][half] = IntegerQuad{} + (Grid::highest + 1);
                greatest[axis][half] = IntegerQuad{} + (Grid::lowest - 1);
            }
    }

    void set(std::size_t i, const Cells& least_, const Cells& greatest_) noexcept {
        for (unsigned axis = 0; axis < Dimension; ++axis) {
            least[axis][i / 4][i % 4] = least_[axis];
            greatest[axis][i / 4][i % 4] = greatest_[axis];
        }
    }

    /// Which boxes meet the one in question: bits 0 to 7.
    unsigned hits(const Query& query) const noexcept { return hits(query, 0) | hits(query, 1) << 4; }

private:
    unsigned hits(const Query& query, std::size_t half) const noexcept {
        unsigned misses = 0;
        for (unsigned axis = 0; axis < Dimension; ++axis)
            misses |= bitsOf(least[axis][half] > query.greatest[axis]) |
                      bitsOf(query.least[axis] > greatest[axis][half]);
        return misses ^ 15U;
    }

    IntegerQuad least[Dimension][2], greatest[Dimension][2];
};

}  // namespace KELMAR_TOOLS
