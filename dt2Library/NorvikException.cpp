#include "NorvikException.h"

namespace KELMAR_NORVIK2D {

const char* NorvikException::what() const noexcept {
    return "NorvikException: a condition of libnorvik2d failed, through a bug in the library or wrong use of "
           "it. The "
           "line \"Condition [ ... ]\" on standard output names it. If your use is right, please report a "
           "bug with it.";
}

}  // namespace KELMAR_NORVIK2D
