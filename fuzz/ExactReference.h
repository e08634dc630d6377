#pragma once

#include <gmpxx.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "Point2.h"

/// Signs of determinants in integers, for comparison with the library's: finite doubles are multiples of one power of two. It
/// takes doubles apart by their bits and computes with integers only, so rounding modes don't matter. Numbers and their
/// memory are kept, because this is asked hundreds of millions of times: an object belongs to one thread.
class ExactReference {
public:
    using Point2 = KELMAR_NORVIK2D::Point2;

    /// Positive if a, b, c run counterclockwise.
    int orientation(const Point2& a, const Point2& b, const Point2& c) {
        const Scaled<6> p({a.x(), a.y(), b.x(), b.y(), c.x(), c.y()});
        constexpr int mostBits = 61;  // differences then have 62, their products' difference 125
        if (p.numBits <= mostBits) {
            const std::int64_t x = p.cell(4), y = p.cell(5);
            const Wide left = static_cast<Wide>(p.cell(0) - x) * (p.cell(3) - y);
            const Wide right = static_cast<Wide>(p.cell(1) - y) * (p.cell(2) - x);
            return (left > right) - (left < right);
        }
        subtractLast(p);
        term[0] = difference[0] * difference[3];
        term[1] = difference[1] * difference[2];
        return signOf(cmp(term[0], term[1]));
    }

    /// Positive if q lies in the circumcircle of the counterclockwise triangle a, b, c.
    int inCircle(const Point2& a, const Point2& b, const Point2& c, const Point2& q) {
        const Scaled<8> p({a.x(), a.y(), b.x(), b.y(), c.x(), c.y(), q.x(), q.y()});
        constexpr int mostBits = 29;  // terms then have 122
        if (p.numBits <= mostBits) return narrowInCircle(p);
        subtractLast(p);
        for (std::size_t i = 0; i < 3; ++i) {
            const std::size_t j = (i + 1) % 3, k = (i + 2) % 3;
            square[0] = difference[2 * i] * difference[2 * i];
            square[1] = difference[2 * i + 1] * difference[2 * i + 1];
            square[0] += square[1];
            term[i] = difference[2 * j] * difference[2 * k + 1];
            term[i] -= difference[2 * k] * difference[2 * j + 1];
            term[i] *= square[0];
        }
        term[0] += term[1];
        term[0] += term[2];
        return sgn(term[0]);
    }

private:
    __extension__ using Wide = __int128;

    static int signOf(int value) { return (value > 0) - (value < 0); }

    /// N doubles as multiples of the greatest power of two that divides them all.
    template <std::size_t N>
    struct Scaled {
        std::int64_t mantissa[N];  ///< odd, or 0
        int exponent[N];
        int lowest = 9999;
        int numBits = 0;  ///< of the greatest multiple

        explicit Scaled(const double (&values)[N]) {
            constexpr std::uint64_t hidden = std::uint64_t{1} << 52;
            int end = -9999;
            for (std::size_t i = 0; i < N; ++i) {
                const auto bits = std::bit_cast<std::uint64_t>(values[i]);
                const int field = static_cast<int>(bits >> 52 & 0x7ff);
                std::uint64_t digits = bits & (hidden - 1);
                if (field != 0) digits |= hidden;
                const int numZeros = digits == 0 ? 0 : std::countr_zero(digits);
                digits >>= numZeros;
                exponent[i] = (field == 0 ? 1 : field) + numZeros;
                mantissa[i] =
                    bits >> 63 ? -static_cast<std::int64_t>(digits) : static_cast<std::int64_t>(digits);
                if (digits == 0) continue;
                lowest = std::min(lowest, exponent[i]);
                end = std::max(end, exponent[i] + static_cast<int>(std::bit_width(digits)));
            }
            numBits = std::max(0, end - lowest);
        }

        std::int64_t cell(std::size_t i) const {
            return mantissa[i] == 0 ? 0 : mantissa[i] * (std::int64_t{1} << (exponent[i] - lowest));
        }
        void setCell(mpz_class& cell, std::size_t i) const {
            cell = static_cast<long>(mantissa[i]);
            if (mantissa[i] != 0) cell <<= static_cast<mp_bitcnt_t>(exponent[i] - lowest);
        }
    };

    /// Coordinates of all points but the last, relative to that.
    template <std::size_t N>
    void subtractLast(const Scaled<N>& p) {
        p.setCell(last[0], N - 2);
        p.setCell(last[1], N - 1);
        for (std::size_t i = 0; i + 2 < N; ++i) {
            p.setCell(difference[i], i);
            difference[i] -= last[i % 2];
        }
    }

    static int narrowInCircle(const Scaled<8>& p) {
        std::int64_t d[6];
        for (std::size_t i = 0; i < 6; ++i) d[i] = p.cell(i) - p.cell(6 + i % 2);
        Wide det = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            const std::size_t j = (i + 1) % 3, k = (i + 2) % 3;
            det += static_cast<Wide>(d[2 * i] * d[2 * i] + d[2 * i + 1] * d[2 * i + 1]) *
                   (d[2 * j] * d[2 * k + 1] - d[2 * k] * d[2 * j + 1]);
        }
        return (det > 0) - (det < 0);
    }

    mpz_class difference[6], last[2], square[2], term[3];
};
