#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "ConnectedComponent.h"
#include "Triangle2.h"

namespace KELMAR_NORVIK2D {

/// Divides any set of triangles into components whose border is one ring that doesn't touch itself. Around holes, and where the
/// border does touch itself, that leaves many small components.
class Partitioner {
public:
    explicit Partitioner(const std::vector<Triangle2*>& vTriangles_);

    std::size_t numberOfCCs() const noexcept { return vCCs.size(); }
    /// Owned here.
    ConnectedComponent* getCC(std::size_t i) const { return vCCs[i].get(); }

private:
    std::vector<Triangle2*> vTriangles;
    std::vector<std::unique_ptr<ConnectedComponent>> vCCs;
};

}  // namespace KELMAR_NORVIK2D
