#pragma once

#include <string>

#include "Point2.h"
#include "norvikExport.h"

namespace KELMAR_NORVIK2D {

/// A text at a place of a picture. Line ends split it into lines, one below the other.
class NORVIK2D_EXPORT Label {
public:
    /// With `bMark_` the position gets a point mark. The font size is in PostScript points.
    Label(const Point2& position_, const std::string& text_, bool bMark_, int fontSize_);

    /// Where the first line begins.
    const Point2& getPosition() const noexcept { return position; }
    const std::string& getText() const noexcept { return text; }
    bool hasMark() const noexcept { return bMark; }
    int getFontSize() const noexcept { return fontSize; }

private:
    Point2 position;
    std::string text;
    bool bMark;
    int fontSize;
};

}  // namespace KELMAR_NORVIK2D
