#pragma once

#include "SimplePool.h"

namespace KELMAR_TOOLS {

struct PoolTexts {
    static constexpr const char* outOfMemory = "SimplePool::alloc(..), ERROR: Out of memory, sorry\n";
};

/// The pool of the spatial indices.
template <class T>
using SimplePool = KELMAR_NORVIK2D::SimplePool<T, PoolTexts>;

}  // namespace KELMAR_TOOLS
