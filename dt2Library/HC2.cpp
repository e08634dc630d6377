#include "HC2.h"

#include "diagnostics.h"
#include "require.h"

namespace KELMAR_NORVIK2D {

HC2::HC2(double minX_, double minY_, double maxX, double maxY, unsigned bitLength_)
    : bitLength(bitLength_), numLevels(static_cast<int>(bitLength_ / 2)), minX(minX_), minY(minY_) {
    const bool bValid = bitLength >= 2 && bitLength <= 32 && bitLength % 2 == 0;
    if (!bValid) error("HC2::HC2(..)", "invalid bitlength");
    require(bValid, "bitLength<=32 && bitLength%2==0");
    const auto gridSize = static_cast<double>(1U << (bitLength / 2));
    scaleX = gridSize / (maxX - minX);
    scaleY = gridSize / (maxY - minY);
}

}  // namespace KELMAR_NORVIK2D
