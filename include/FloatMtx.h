#pragma once

#include <cstddef>
#include <vector>

#include "norvikExport.h"

namespace KELMAR_NORVIK2D {

/// A picture in grey: width x height pixels, by value. Pixel (x,y) covers the square from (x,y) to (x+1,y+1); row 0 is at the
/// bottom, as in plots. Pixels outside are neither read nor written: that fails the assertion "isInside(x,y)" (NorvikException).
class NORVIK2D_EXPORT FloatMtx {
public:
    /// No pixels.
    FloatMtx() noexcept = default;
    /// All pixels have this value. Either size may be 0. A negative one, or more pixels than a vector can hold, fails an
    /// assertion; if there just isn't the memory, that is std::bad_alloc.
    FloatMtx(int width_, int height_, float value = 0.0F);

    FloatMtx(const FloatMtx& other) = default;
    FloatMtx& operator=(const FloatMtx& other) = default;
    /// What is moved from has no pixels then.
    FloatMtx(FloatMtx&& other) noexcept;
    FloatMtx& operator=(FloatMtx&& other) noexcept;
    ~FloatMtx() = default;

    int getWidth() const noexcept { return width; }
    int getHeight() const noexcept { return height; }
    bool isInside(int x, int y) const noexcept { return 0 <= x && x < width && 0 <= y && y < height; }

    /// The value of a pixel.
    float get(int x, int y) const;
    /// Changes it.
    void set(int x, int y, float value);

    /// The least and the greatest value. Pixels that are no number (NaN) don't count; 0 and 0 if none is left.
    void getMinMax(float& least, float& greatest) const;

    /// Whether sizes and all values are equal; a NaN equals nothing.
    bool operator==(const FloatMtx& other) const;
    bool operator!=(const FloatMtx& other) const { return !(*this == other); }

private:
    std::size_t indexOf(int x, int y) const;

    std::vector<float> vPixels;  ///< row by row
    int width = 0;
    int height = 0;
};

}  // namespace KELMAR_NORVIK2D
