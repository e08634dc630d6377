#include "distance3.h"

#include <gmp.h>

#include <cstddef>

namespace KELMAR_TOOLS {

namespace {

class ExactSquare {
public:
    explicit ExactSquare(const Way3& way) {
        mpq_t difference, other;
        mpq_inits(sum, difference, other, nullptr);
        for (std::size_t axis = 0; axis < way.from.size(); ++axis) {
            mpq_set_d(difference, way.to[axis]);
            mpq_set_d(other, way.from[axis]);
            mpq_sub(difference, difference, other);
            mpq_mul(other, difference, difference);
            mpq_add(sum, sum, other);
        }
        mpq_clears(difference, other, nullptr);
    }
    ~ExactSquare() { mpq_clear(sum); }
    ExactSquare(const ExactSquare&) = delete;
    ExactSquare& operator=(const ExactSquare&) = delete;

    int compare(const ExactSquare& other) const {
        const int order = mpq_cmp(sum, other.sum);
        return static_cast<int>(order > 0) - static_cast<int>(order < 0);
    }

private:
    mpq_t sum;
};

}  // namespace

int compareLengthsExactly(const Way3& a, const Way3& b) {
    // Where equal points lie in masses.
    if (a.from == b.from && a.to == b.to) return 0;
    return ExactSquare(a).compare(ExactSquare(b));
}

}  // namespace KELMAR_TOOLS
