#include "Segment2.h"

#include <ostream>
#include <utility>

#include "Vector2.h"

namespace KELMAR_NORVIK2D {

// Points carry their custom indices along when they are swapped.
void Segment2::swapSrcTrg() noexcept { std::swap(src, trg); }

double Segment2::getSqLen2D() const { return Vector2(src, trg).sqLength(); }

bool Segment2::operator==(const Segment2& other) const noexcept {
    return (src == other.src && trg == other.trg) || (src == other.trg && trg == other.src);
}

std::ostream& operator<<(std::ostream& os, const Segment2& segment) {
    return os << "Segment2 (" << static_cast<const void*>(&segment) << "): " << segment.src << ","
              << segment.trg;
}

}  // namespace KELMAR_NORVIK2D
