#pragma once

#include <functional>

namespace KELMAR_NORVIK2D {

/// The order of addresses, where it is behaviour that clients see. std::less is total over all pointers,
/// which the built-in operator isn't.
struct ByAddress {
    template <class T>
    bool operator()(const T* pA, const T* pB) const noexcept {
        return std::less<>{}(pA, pB);
    }
};

}  // namespace KELMAR_NORVIK2D
