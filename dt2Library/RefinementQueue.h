#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <vector>

#include "triangleLinks.h"

namespace KELMAR_NORVIK2D {

/// A triangle that waits to be judged. It knows its corners, to see whether the record still is that triangle.
struct WaitingTriangle {
    double minAngle;      ///< in degrees; orders the queue
    std::uint32_t order;  ///< of insertion: among equal angles the first one comes first
    Triangle2* pTriangle;
    std::array<Point2*, 3> corners;

    bool isAlive() const noexcept {
        return corner(pTriangle, 0) == corners[0] && corner(pTriangle, 1) == corners[1] &&
               corner(pTriangle, 2) == corners[2];
    }
    /// Whether it is served after another one.
    bool operator>(const WaitingTriangle& other) const noexcept {
        return minAngle != other.minAngle ? minAngle > other.minAngle : order > other.order;
    }
};

/// The triangles that refinement has to look at, by their smallest angles; those with equal angles in the order of insertion.
///
/// Most of what comes in never needs a place in a common order: it waits in a bucket with others of about the same angle, and
/// most of the triangles of a bucket are gone when its turn comes. Only the buckets at the front are in order.
///
/// Laws:
///  1. The triangles in a bucket have smaller angles than those in later ones.
///  2. What a bucket held when it was opened is sorted, the first one at the end; what came in since is a heap of its own.
///     A bucket that is closed isn't sorted, and has no heap. It is closed when it becomes empty.
///  3. The bits of `used` tell which buckets aren't empty.
class RefinementQueue {
public:
    bool empty() const noexcept { return numWaiting == 0; }
    std::size_t size() const noexcept { return numWaiting; }

    /// An angle that isn't a number stands behind all others.
    void push(double minAngle, Triangle2* pT) {
        if (std::isnan(minAngle)) [[unlikely]]
            minAngle = std::numeric_limits<double>::infinity();
        const std::size_t index = bucketOf(minAngle);
        Bucket& bucket = buckets[index];
        const WaitingTriangle waiting{
            minAngle, nextOrder++, pT, {corner(pT, 0), corner(pT, 1), corner(pT, 2)}};
        if (!bucket.bOpen) {
            bucket.vWaiting.push_back(waiting);
        } else {
            bucket.vLate.push_back(waiting);
            std::push_heap(bucket.vLate.begin(), bucket.vLate.end(), std::greater<>());
        }
        used[index / bitsOfWord] |= std::uint64_t{1} << index % bitsOfWord;
        ++numWaiting;
    }

    /// Takes out the first one; there must be one.
    WaitingTriangle pop();

private:
    // Angles go up to 60 degrees.
    static constexpr std::size_t bucketsOfDegree = 32, numBuckets = 64 * bucketsOfDegree, bitsOfWord = 64;

    struct Bucket {
        std::vector<WaitingTriangle> vWaiting;
        std::vector<WaitingTriangle> vLate;
        bool bOpen = false;
    };

    static std::size_t bucketOf(double minAngle) noexcept {
        const double place = minAngle * bucketsOfDegree;
        if (!(place > 0.0)) return 0;
        return place < numBuckets ? static_cast<std::size_t>(place) : numBuckets - 1;
    }

    std::array<Bucket, numBuckets> buckets;
    std::array<std::uint64_t, numBuckets / bitsOfWord> used{};
    std::size_t numWaiting = 0;
    std::uint32_t nextOrder = 0;
};

}  // namespace KELMAR_NORVIK2D
