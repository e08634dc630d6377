#include "Label.h"

namespace KELMAR_NORVIK2D {

Label::Label(const Point2& position_, const std::string& text_, bool bMark_, int fontSize_)
    : position(position_), text(text_), bMark(bMark_), fontSize(fontSize_) {}

}  // namespace KELMAR_NORVIK2D
