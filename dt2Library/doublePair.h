#pragma once

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include <limits>

namespace KELMAR_NORVIK2D {

/// Two doubles in one register. Filters and searches compute on pairs, each half with the operations and the
/// order that their formulas tell: the results are those of plain arithmetic, with half the instructions.
using DoublePair [[gnu::vector_size(16)]] = double;
using BitPair [[gnu::vector_size(16)]] = long long;

inline DoublePair swapped(DoublePair pair) noexcept { return __builtin_shufflevector(pair, pair, 1, 0); }
inline DoublePair lowHalves(DoublePair a, DoublePair b) noexcept {
    return __builtin_shufflevector(a, b, 0, 2);
}
inline DoublePair highHalves(DoublePair a, DoublePair b) noexcept {
    return __builtin_shufflevector(a, b, 1, 3);
}

inline DoublePair magnitudes(DoublePair pair) noexcept {
    constexpr long long allButSign = std::numeric_limits<long long>::max();
    return reinterpret_cast<DoublePair>(reinterpret_cast<BitPair>(pair) & BitPair{allButSign, allButSign});
}

/// The sign bits of both halves of a comparison's result, or of a pair: bits 0 and 1.
inline unsigned bitsOf(BitPair mask) noexcept {
#ifdef __SSE2__
    return static_cast<unsigned>(_mm_movemask_pd(reinterpret_cast<DoublePair>(mask)));
#else
    return (mask[0] < 0 ? 1U : 0U) | (mask[1] < 0 ? 2U : 0U);
#endif
}

}  // namespace KELMAR_NORVIK2D
