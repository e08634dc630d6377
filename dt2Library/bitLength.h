#pragma once

#include <cstdlib>

#include "standardOutput.h"

namespace KELMAR_TOOLS {

/// The number of bits of keys with an equal share for each axis. Whoever makes a calculator of constants has no use for an exception:
/// a wrong number ends the process.
inline void checkBitLength(unsigned bitLength, unsigned numAxes, unsigned most, const char* message) {
    if (bitLength <= most && bitLength % numAxes == 0) return;
    KELMAR_NORVIK2D::print(message);
    std::exit(EXIT_FAILURE);
}

}  // namespace KELMAR_TOOLS
