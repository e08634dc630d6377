#pragma once

#ifdef __SSE2__
#include <xmmintrin.h>
#endif

#include <array>
#include <cstddef>
#include <limits>

namespace KELMAR_TOOLS {

/// Four floats in one register.
using FloatQuad [[gnu::vector_size(16)]] = float;
using BitQuad [[gnu::vector_size(16)]] = int;

/// The sign bits of a comparison's result: bits 0 to 3.
inline unsigned bitsOf(BitQuad mask) noexcept {
#ifdef __SSE2__
    return static_cast<unsigned>(_mm_movemask_ps(reinterpret_cast<FloatQuad>(mask)));
#else
    unsigned bits = 0;
    for (int i = 0; i < 4; ++i) bits |= (mask[i] < 0 ? 1U : 0U) << i;
    return bits;
#endif
}

/// The boxes of eight records, rounded to floats, in two cache lines (in the plane): what is asked of all eight is answered at
/// once. Rounding keeps the order of numbers, so that boxes that meet do so rounded, too; the few others that seem to meet
/// have to be sorted out by their true coordinates.
template <unsigned Dimension>
class alignas(64) BoxBlock {
public:
    static constexpr std::size_t size = 8;
    using Coordinates = std::array<double, Dimension>;

    /// A box that is asked about.
    struct Query {
        FloatQuad least[Dimension], greatest[Dimension];

        Query(const Coordinates& least_, const Coordinates& greatest_) noexcept {
            for (unsigned axis = 0; axis < Dimension; ++axis) {
                least[axis] = FloatQuad{} + static_cast<float>(least_[axis]);
                greatest[axis] = FloatQuad{} + static_cast<float>(greatest_[axis]);
            }
        }
    };

    /// Eight boxes that meet nothing.
    BoxBlock() noexcept {
        constexpr float nan = std::numeric_limits<float>::quiet_NaN();
        for (unsigned axis = 0; axis < Dimension; ++axis)
            for (std::size_t half = 0; half < 2; ++half)
                least[axis][half] = greatest[axis][half] = FloatQuad{nan, nan, nan, nan};
    }

    void set(std::size_t i, const Coordinates& least_, const Coordinates& greatest_) noexcept {
        for (unsigned axis = 0; axis < Dimension; ++axis) {
            least[axis][i / 4][i % 4] = static_cast<float>(least_[axis]);
            greatest[axis][i / 4][i % 4] = static_cast<float>(greatest_[axis]);
        }
    }

    /// Which boxes meet the one in question: bits 0 to 7.
    unsigned hits(const Query& query) const noexcept {
        unsigned bits = 255;
        for (unsigned axis = 0; axis < Dimension; ++axis) {
            bits &= bitsOf(least[axis][0] <= query.greatest[axis]) |
                    bitsOf(least[axis][1] <= query.greatest[axis]) << 4;
            bits &= bitsOf(query.least[axis] <= greatest[axis][0]) |
                    bitsOf(query.least[axis] <= greatest[axis][1]) << 4;
        }
        return bits;
    }

private:
    FloatQuad least[Dimension][2], greatest[Dimension][2];
};

}  // namespace KELMAR_TOOLS
