#include "zoneOperations.h"

#include "Dt2.h"
#include "TriangleMarks.h"
#include "Zone2.h"
#include "diagnostics.h"
#include "roundingMode.h"
#include "standardOutput.h"

namespace KELMAR_NORVIK2D {

namespace {

Zone2* combine(Zone2* pZone0, Zone2* pZone1, ZoneLocation zoneLoc, const char* source) {
    if (pZone0 == nullptr || pZone1 == nullptr) {
        warning(source, "called with a NULL zone! Returning NULL");
        return nullptr;
    }
    Dt2* const pDt = pZone0->getDelaunayTriangulation();
    if (pZone1->getDelaunayTriangulation() != pDt) {
        error(source, "The zones must belong to the same triangulation! Returning NULL");
        return nullptr;
    }
    return pDt->createZone(zoneLoc, pZone0, pZone1);
}

void printSize(const char* title, const std::vector<Triangle2*>& vTriangles) {
    double area = 0.0;
    for (const Triangle2* pT : vTriangles) area += pT->getArea2D();
    print(compose(title, "\n numT=", vTriangles.size(), "\n area2D=", area, "\n"));
}

}  // namespace

Zone2* zoneUnion(Zone2* pZone0, Zone2* pZone1) {
    return combine(pZone0, pZone1, ZL_RESULT_UNION, "Zone2::zoneUnion(...)");
}

// These three name themselves as the first one does; who reads the messages knows them so.
Zone2* zoneIntersection(Zone2* pZone0, Zone2* pZone1) {
    return combine(pZone0, pZone1, ZL_RESULT_INTERSECTION, "zoneUnion(...)");
}
Zone2* zoneDifference(Zone2* pZone0, Zone2* pZone1) {
    return combine(pZone0, pZone1, ZL_RESULT_DIFFERENCE, "zoneUnion(...)");
}
Zone2* zoneSymmetricDifference(Zone2* pZone0, Zone2* pZone1) {
    return combine(pZone0, pZone1, ZL_RESULT_SYM_DIFFERENCE, "zoneUnion(...)");
}

Zone2* peelOffIf(Zone2* pZone, UserPredicateT* pPredicate, bool bVerbose) {
    RoundToNearest nearest;
    if (pZone == nullptr) {
        warning("peelOffIf()", "Input zone is NULL, returning NULL");
        return nullptr;
    }
    if (pPredicate == nullptr) {
        warning("peelOffIf()", "The predicate is NULL, returning NULL");
        return nullptr;
    }
    Dt2* const pDt = pZone->getDelaunayTriangulation();
    std::vector<Triangle2*> vTriangles;
    pZone->getTriangles(vTriangles);
    if (bVerbose) printSize("\nZone2::peelOffIf(), original Zone:", vTriangles);
    if (vTriangles.empty()) {
        warning("peelOffIf()", "Input zone is empty, returning NULL");
        return nullptr;
    }
    TriangleMarks marks(pDt->getTrianglePool());
    for (const Triangle2* pT : vTriangles) marks.insert(pT);
    std::vector<Triangle2*> vStack, vLeft;
    marks.appendTo(vStack);
    const auto isLeft = [&](const Triangle2* pT) { return pT != nullptr && marks.contains(pT); };
    while (!vStack.empty()) {
        Triangle2* const pT = vStack.back();
        vStack.pop_back();
        // Those inside come back when a neighbour goes.
        if (isLeft(neighbour(pT, 0)) && isLeft(neighbour(pT, 1)) && isLeft(neighbour(pT, 2))) continue;
        if (!(*pPredicate)(pT) || !marks.contains(pT)) continue;
        marks.erase(pT);
        for (int i = 0; i < 3; ++i)
            if (isLeft(neighbour(pT, i))) vStack.push_back(neighbour(pT, i));
    }
    if (marks.size() == 0) return nullptr;
    marks.appendTo(vLeft);
    Zone2* const pResult = pDt->createZone(vLeft);
    if (bVerbose && pResult != nullptr) {
        vLeft.clear();
        pResult->getTriangles(vLeft);
        printSize("Output Zone:", vLeft);
    }
    return pResult;
}

}  // namespace KELMAR_NORVIK2D
