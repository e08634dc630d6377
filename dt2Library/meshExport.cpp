#include <cstddef>
#include <fstream>
#include <iomanip>
#include <locale>

#include "Dt2.h"
#include "FlatTable.h"
#include "diagnostics.h"

namespace KELMAR_NORVIK2D {

namespace {

/// A vertex and its place in a file.
struct NumberedVertex {
    const Point2* pVtx = nullptr;
    std::size_t number = 0;
};

struct VertexOf {
    const Point2* operator()(const NumberedVertex& entry) const noexcept { return entry.pVtx; }
};

}  // namespace

void Dt2::writeObj(const std::string& fileName, const Zone2* pZone) const {
    if (!is2D()) {
        error("Dt2::show()", "The triangulation is not full dimensional yet, no visualization");
        return;
    }
    std::vector<Triangle2*> vTriangles;
    if (pZone != nullptr)
        pZone->getTriangles(vTriangles);
    else
        getTrianglePointers(vTriangles);

    constexpr int digits = 20;  // more than any double needs to come back the same
    std::ofstream file(fileName);
    file.imbue(std::locale::classic());
    file << std::setprecision(digits);
    // Vertices are numbered from 1 as the triangles name them.
    FlatTable<NumberedVertex, AddressHash, VertexOf> mNumbers;
    for (const Triangle2* pT : vTriangles) {
        for (int i = 0; i < 3; ++i) {
            const Point2* const pVtx = corner(pT, i);
            const auto [pEntry, bNew] = mNumbers.insert(pVtx);
            if (!bNew) continue;
            *pEntry = {pVtx, mNumbers.size()};
            file << "v " << pVtx->x() << " " << pVtx->y() << " 0 \n";
        }
    }
    const auto numberOf = [&](const Point2* pVtx) { return mNumbers.find(pVtx)->number; };
    for (const Triangle2* pT : vTriangles)
        file << "f " << numberOf(corner(pT, 0)) << " " << numberOf(corner(pT, 1)) << " "
             << numberOf(corner(pT, 2)) << "\n";
}

}  // namespace KELMAR_NORVIK2D
