#pragma once

#include <cstdint>

#include "Point2.h"

namespace KELMAR_NORVIK2D {

/// An item of the vertex vault. A plain pool record: its owner writes all fields.
struct IdxVtxAct {
    std::uint32_t nic;  ///< Hilbert key of the vertex
    bool bAct;          ///< the vertex belongs to the triangulation now
    Point2* pVtx;
};
static_assert(sizeof(IdxVtxAct) == 16);

/// The order of the vault's list: active items first, by ascending key.
struct func_ltDerefPtr {
    bool operator()(const IdxVtxAct* pA, const IdxVtxAct* pB) const noexcept {
        return pA->bAct && (!pB->bAct || pA->nic < pB->nic);
    }
};

}  // namespace KELMAR_NORVIK2D
