// Predicates against exact signs: figures from bytes, asked in all rounding modes.
#include <cstddef>
#include <cstdint>

#include "Decisions.h"
#include "PredicateJudge.h"
#include "fault.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t size) {
    Decisions decisions(pData, size);
    HardPoints points;
    PredicateJudge judge;
    for (int i = 0; i < 3; ++i) points.next(decisions);  // to make others from
    while (!decisions.areOut()) {
        const unsigned choice = decisions.below(8 * PredicateJudge::NUM_FAMILIES);
        Figure figure;
        for (auto* pPoint : {&figure.a, &figure.b, &figure.c, &figure.q}) *pPoint = points.next(decisions);
        judge.judge(static_cast<PredicateJudge::Family>(choice / 8), figure,
                    {choice % 4, choice / 4 % 2 == 1});
        expect(judge.getFault().empty(), judge.getFault());
    }
    return 0;
}
