#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <ostream>
#include <string>

#include "ExactReference.h"
#include "KelmarTest.h"
#include "Point2.h"
#include "SegmentChecker.h"

/// Four points: of a turn the first three count, of a circle three corners and a point, of segments the ends ab and cq.
struct Figure {
    KELMAR_NORVIK2D::Point2 a, b, c, q;

    double magnitude() const;
};
std::ostream& operator<<(std::ostream& os, const Figure& figure);

/// Asks the library's predicates about figures, as a client in any rounding mode would, with denormal numbers flushed or not, and
/// compares what they say with exact signs.
class PredicateJudge {
public:
    enum Family { TURN, CIRCLE, SEGMENTS, NUM_FAMILIES };
    static constexpr unsigned numRoundings = 4;

    /// What the client has set: one of four rounding modes, and whether denormal numbers are flushed to zero.
    struct Client {
        unsigned rounding = 0;
        bool bFlush = false;
    };

    /// Judges one figure.
    void judge(Family family, const Figure& figure, Client client);

    /// What was wrong, empty as long as nothing was.
    const std::string& getFault() const { return fault; }

    struct Counts {
        std::uint64_t calls = 0;      ///< questions to the library
        std::uint64_t figures = 0;    ///< that these were about
        std::uint64_t undecided = 0;  ///< figures that the first floating-point filter couldn't decide
        std::uint64_t zeros =
            0;  ///< figures whose exact determinant is zero, or segments that touch or overlap
    };
    using CountsOfFamily = std::array<Counts, numRoundings>;  ///< by rounding mode
    const CountsOfFamily& getCounts(Family family) const { return counts[family]; }

private:
    void judgeTurn(const Figure& figure);
    void judgeCircle(Figure figure);
    void judgeSegments(const Figure& figure);

    bool isTurnUndecided(const KELMAR_NORVIK2D::Point2& a, const KELMAR_NORVIK2D::Point2& b,
                         const KELMAR_NORVIK2D::Point2& c, double magnitude);
    /// A call is over: one more in the counts, and a fault if its answer was wrong.
    void count(Counts& tally, bool bRight, const char* name, const Figure& figure);

    ExactReference exact;
    KELMAR_NORVIK2D::KelmarTest engine;
    std::unique_ptr<KELMAR_NORVIK2D::SegmentChecker> pChecker;
    unsigned numUses = 0;  ///< of the checker
    std::array<CountsOfFamily, NUM_FAMILIES> counts{};
    Client client;
    std::string fault;
};
