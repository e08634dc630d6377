#include "kelmar_locate2/GSS_HC2.h"

#include "bitLength.h"
#include "hilbertCurve.h"
#include "roundingMode.h"

namespace KELMAR_TOOLS {

namespace {

void checkLength2D(unsigned bitLength) { checkBitLength(bitLength, 2, 32, "GSS_HC2, invalid parameters\n"); }

}  // namespace

GSS_HC2::GSS_HC2(double minX_, double minY_, double maxX, double maxY, unsigned bitLength_) {
    checkLength2D(bitLength_);
    setParams(minX_, minY_, maxX, maxY, bitLength_);
}

void GSS_HC2::setParams(double minX_, double minY_, double maxX, double maxY, unsigned bitLength_) {
    KELMAR_NORVIK2D::RoundToNearest nearest;
    checkLength2D(bitLength);
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
