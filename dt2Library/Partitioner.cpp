#include "Partitioner.h"

#include <utility>

#include "freeFunctions.h"

namespace KELMAR_NORVIK2D {

Partitioner::Partitioner(const std::vector<Triangle2*>& vTriangles_) : vTriangles(vTriangles_) {
    std::vector<std::vector<Triangle2*>> vvParts;
    getConnectedComponents(vTriangles, vvParts);

    // A stack, from which what is left of a component goes to the result before its parts are looked at.
    std::vector<std::unique_ptr<ConnectedComponent>> vStack;
    const auto pushParts = [&] {
        for (auto& vPart : vvParts) vStack.push_back(std::make_unique<ConnectedComponent>(std::move(vPart)));
        vvParts.clear();
    };
    pushParts();
    while (!vStack.empty()) {
        std::unique_ptr<ConnectedComponent> pCC = std::move(vStack.back());
        vStack.pop_back();
        pCC->splitIntoSimple(vvParts);
        pushParts();
        if (!pCC->getTriangles().empty()) vCCs.push_back(std::move(pCC));
    }
}

}  // namespace KELMAR_NORVIK2D
