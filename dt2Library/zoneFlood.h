#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "FlatTable.h"
#include "Triangle2.h"
#include "TriangleMarks.h"
#include "byAddress.h"

namespace KELMAR_NORVIK2D {

class ConstraintGraph2;
class Point2;

/// The edges that a flood doesn't pass: the alive pieces of constraint graphs.
class Walls {
public:
    /// Null graphs stand for no wall.
    explicit Walls(const std::vector<ConstraintGraph2*>& vGraphs);

    bool stop(const Point2* p, const Point2* q) const noexcept { return sPieces.contains(Ends(p, q)); }

private:
    /// An edge, the lower address first.
    struct Ends {
        Ends() = default;
        Ends(const Point2* p, const Point2* q) noexcept : pLower(p), pHigher(q) {
            if (ByAddress{}(q, p)) std::swap(pLower, pHigher);
        }
        bool operator==(const Ends&) const = default;

        const Point2* pLower = nullptr;
        const Point2* pHigher = nullptr;
    };
    struct EndsHash {
        std::size_t operator()(const Ends& ends) const noexcept {
            return AddressHash{}(ends.pLower, ends.pHigher);
        }
    };

    FlatTable<Ends, EndsHash> sPieces;
};

/// Marks the triangles of the list, which is used up, and all that can be reached from them without crossing a wall.
void flood(std::vector<Triangle2*>& vStart, const Walls& walls, TriangleMarks& marks);

}  // namespace KELMAR_NORVIK2D
