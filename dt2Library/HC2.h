#pragma once

#include <cstdint>

#include "Point2.h"
#include "hilbertCurve.h"

namespace KELMAR_NORVIK2D {

/// Hilbert keys of points over a box; see KeyGrid.
class HC2 {
public:
    HC2() = default;

    /// Keys of `bitLength` bits, half of them for each axis. Anything but an even number from 2 to 32 is
    /// reported and fails an assertion.
    HC2(double minX, double minY, double maxX, double maxY, unsigned bitLength);

    unsigned getBitLength() const noexcept { return 2 * grid.numLevels; }

    /// The key of a point. Any number of threads may ask at once.
    std::uint32_t iReset(const Point2& point) const noexcept { return grid.keyOf({point.x(), point.y()}); }

private:
    KELMAR_TOOLS::KeyGrid<2> grid;
};

}  // namespace KELMAR_NORVIK2D
