#include "kelmar_locate2/GSS_HC2.h"

#include <cstdlib>

#include "hilbertCurve.h"
#include "roundingMode.h"
#include "standardOutput.h"

namespace KELMAR_TOOLS {

namespace {

// Whoever makes a calculator of constants has no use for an exception.
void checkBitLength(unsigned bitLength) {
    if (bitLength <= 32 && bitLength % 2 == 0) return;
    KELMAR_NORVIK2D::print("GSS_HC2, invalid parameters\n");
    std::exit(EXIT_FAILURE);
}

}  // namespace

GSS_HC2::GSS_HC2(double minX_, double minY_, double maxX, double maxY, unsigned bitLength_) {
    checkBitLength(bitLength_);
    setParams(minX_, minY_, maxX, maxY, bitLength_);
}

void GSS_HC2::setParams(double minX_, double minY_, double maxX, double maxY, unsigned bitLength_) {
    KELMAR_NORVIK2D::RoundToNearest nearest;
    checkBitLength(bitLength);
    const auto grid = KeyGrid<2>::over({minX_, minY_}, {maxX, maxY}, bitLength_);
    bitLength = bitLength_;
    minX = minX_;
    minY = minY_;
    scaleX = nearest.keep(grid.scale[0]);
    scaleY = nearest.keep(grid.scale[1]);
}

unsigned GSS_HC2::getKey(double x, double y) const {
    KELMAR_NORVIK2D::RoundToNearest nearest;
    const KeyGrid<2> grid{{minX, minY}, {scaleX, scaleY}, KeyGrid<2>::numLevelsOf(bitLength)};
    return nearest.keep(grid.keyOf({x, y}));
}

}  // namespace KELMAR_TOOLS
