#include "HC2.h"

#include "diagnostics.h"
#include "require.h"

namespace KELMAR_NORVIK2D {

HC2::HC2(double minX, double minY, double maxX, double maxY, unsigned bitLength) {
    const bool bValid = bitLength >= 2 && bitLength <= 32 && bitLength % 2 == 0;
    if (!bValid) error("HC2::HC2(..)", "invalid bitlength");
    require(bValid, "bitLength<=32 && bitLength%2==0");
    grid = KELMAR_TOOLS::KeyGrid<2>::over({minX, minY}, {maxX, maxY}, bitLength);
}

}  // namespace KELMAR_NORVIK2D
