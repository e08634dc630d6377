#pragma once

#include <exception>

#include "norvikExport.h"

namespace KELMAR_NORVIK2D {

/// A broken invariant: a bug, or wrong use of the library. The condition and its place in the source have
/// been written to standard output before. There is no recovery: the object that threw it may only be
/// destroyed.
class NORVIK2D_EXPORT NorvikException : public std::exception {
public:
    const char* what() const noexcept override;
};

}  // namespace KELMAR_NORVIK2D
