#include "kelmar_locate3/GSS_HC3.h"

#include "bitLength.h"
#include "hilbertCurve.h"
#include "roundingMode.h"

namespace KELMAR_TOOLS {

namespace {

void checkLength3D(unsigned bitLength) { checkBitLength(bitLength, 3, 30, "GSS_HC3, invalid parameters\n"); }

}  // namespace

GSS_HC3::GSS_HC3(double minX_, double minY_, double minZ_, double maxX, double maxY, double maxZ,
                 unsigned bitLength_) {
    checkLength3D(bitLength_);
    setParams(minX_, minY_, minZ_, maxX, maxY, maxZ, bitLength_);
}

void GSS_HC3::setParams(double minX_, double minY_, double minZ_, double maxX, double maxY, double maxZ,
                        unsigned bitLength_) {
    KELMAR_NORVIK2D::RoundToNearest nearest;
    checkLength3D(bitLength);
    const auto grid = KeyGrid<3>::over({minX_, minY_, minZ_}, {maxX, maxY, maxZ}, bitLength_);
    bitLength = bitLength_;
    minX = minX_;
    minY = minY_;
    minZ = minZ_;
    scaleX = nearest.keep(grid.scale[0]);
    scaleY = nearest.keep(grid.scale[1]);
    scaleZ = nearest.keep(grid.scale[2]);
}

unsigned GSS_HC3::getKey(double x, double y, double z) const {
    KELMAR_NORVIK2D::RoundToNearest nearest;
    const KeyGrid<3> grid{{minX, minY, minZ}, {scaleX, scaleY, scaleZ}, KeyGrid<3>::numLevelsOf(bitLength)};
    return nearest.keep(grid.keyOf({x, y, z}));
}

}  // namespace KELMAR_TOOLS
