#include "StarFlipper.h"

namespace KELMAR_NORVIK2D {

bool StarFlipper::isFlipWanted(const Triangle2* pT, const Point2* pVtx) {
    return isFlipWanted(pT, pVtx, corner(pT, 1), corner(pT, 2), farCornerOrNull(neighbour(pT, 0), pT));
}

/// Decides what the filter has left undecided.
[[gnu::cold]] unsigned StarFlipper::decideFlips(const Triangle2* pT, const Triangle2* pNextT,
                                                const Point2* pVtx, CircleVerdicts verdicts) {
    const auto isWanted = [&](const Triangle2* pOneT, unsigned bit) {
        if (((verdicts.inside | verdicts.outside) & bit) != 0) return (verdicts.inside & bit) != 0;
        return predicates.exact_circleInc(neighbour(pOneT, 0), pVtx);
    };
    return (isWanted(pT, 1) ? 1U : 0U) | (isWanted(pNextT, 2) ? 2U : 0U);
}

}  // namespace KELMAR_NORVIK2D
