#pragma once

#include <iosfwd>

#include "Point2.h"
#include "norvikExport.h"

namespace KELMAR_NORVIK2D {

/// Two points by value, source and target. By default both are empty results (see Point2).
class NORVIK2D_EXPORT Segment2 {
public:
    Segment2() noexcept = default;
    Segment2(const Point2& src_, const Point2& trg_) noexcept : src(src_), trg(trg_) {}

    Point2 getSrc() const noexcept { return src; }
    Point2 getTrg() const noexcept { return trg; }

    /// Exchanges the ends, together with their custom indices.
    void swapSrcTrg() noexcept;

    /// The squared length.
    double getSqLen2D() const;

    /// Whether the ends agree by coordinates, in either direction.
    bool operator==(const Segment2& other) const noexcept;
    bool operator!=(const Segment2& other) const noexcept { return !(*this == other); }

private:
    friend NORVIK2D_EXPORT std::ostream& operator<<(std::ostream& os, const Segment2& segment);

    Point2 src;
    Point2 trg;
};

NORVIK2D_EXPORT std::ostream& operator<<(std::ostream& os, const Segment2& segment);

}  // namespace KELMAR_NORVIK2D
