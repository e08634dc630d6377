#include "ProgressBar.h"

#include <algorithm>
#include <cstddef>
#include <iostream>

namespace {

constexpr std::size_t barWidth = 40;
constexpr const char* wipeLine = "\r\033[K";

}  // namespace

void ProgressBar::update(KELMAR_NORVIK2D::MsgType, const std::string& name, double value) {
    if (value >= 1.0) {
        std::cerr << wipeLine << std::flush;
        return;
    }
    const double share = std::clamp(value, 0.0, 1.0);
    const auto numFilled = static_cast<std::size_t>(share * static_cast<double>(barWidth));
    const std::string bar = std::string(numFilled, '#') + std::string(barWidth - numFilled, '.');
    std::cerr << wipeLine << '[' << bar << "] " << static_cast<int>(100.0 * share) << "% " << name
              << std::flush;
}
