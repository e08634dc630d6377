#include "tools.h"

#include <algorithm>

#include "byAddress.h"
#include "triangleLinks.h"

namespace KELMAR_NORVIK2D {

void getBorders_tools(const std::vector<Triangle2*>& vTriangles, std::vector<VertexPair2>& vBorders) {
    std::vector<Triangle2*> vSorted = vTriangles;
    std::sort(vSorted.begin(), vSorted.end(), ByAddress{});
    for (const Triangle2* pT : vTriangles)
        for (int edge = 0; edge < 3; ++edge) {
            const Triangle2* pNeighbour = neighbour(pT, edge);
            if (pNeighbour == nullptr ||
                !std::binary_search(vSorted.begin(), vSorted.end(), pNeighbour, ByAddress{}))
                vBorders.emplace_back(corner(pT, ccw(edge)), corner(pT, cw(edge)));
        }
}

}  // namespace KELMAR_NORVIK2D
