#pragma once

#include "norvikExport.h"

namespace KELMAR_NORVIK2D {

/// Colours that have a name.
enum Colorname {
    COLORNAME_RED = 0,
    COLORNAME_GREEN = 1,
    COLORNAME_BLUE = 2,
    COLORNAME_BLACK = 3,
    COLORNAME_PINK = 4,
    COLORNAME_GRAY = 5,
    COLORNAME_ORANGE = 6,
    COLORNAME_SKYBLUE = 7,
    COLORNAME_TAN = 8,
    COLORNAME_BROWN = 9,
    COLORNAME_PURPLE = 10,
    COLORNAME_OLIVE = 11,
    COLORNAME_LAWNGREEN = 12,
    COLORNAME_PALEGREEN = 13,
    COLORNAME_CYAN = 14,
    COLORNAME_YELLOW = 15,
    COLORNAME_WHITE = 16
};

/// A pen: colour, line width and the choice of filling in one value. The parts of the colour go from 0 to 1;
/// the width is in PostScript points.
class NORVIK2D_EXPORT Color {
public:
    /// Black, width 0.1, no filling.
    Color() noexcept = default;
    /// The parts of the colour, the width, and whether areas are filled.
    Color(double red_, double green_, double blue_, double width_, bool fill_) noexcept;
    /// A value that is no name gives black and a warning.
    Color(Colorname name, float width_, bool fill_);

    /// All five fields count: pens that differ only in the filling are different.
    bool operator==(const Color& other) const noexcept;
    bool operator!=(const Color& other) const noexcept { return !(*this == other); }
    /// By red, green, blue, width; then no filling before filling.
    bool operator<(const Color& other) const noexcept;

    /// The next name of a process-wide cycle, that starts with green and leaves out red, yellow and white.
    static Colorname getNextColorName();

    float red = 0.0F;
    float green = 0.0F;
    float blue = 0.0F;
    float width = 0.1F;
    bool fill = false;
};

}  // namespace KELMAR_NORVIK2D
