#include "Color.h"

#include <cstddef>
#include <iterator>
#include <tuple>

#include "diagnostics.h"

namespace KELMAR_NORVIK2D {

namespace {

struct Rgb {
    float red, green, blue;
};

/// In the order of Colorname.
constexpr Rgb rgbOfName[] = {
    {1.0F, 0.0F, 0.0F},        // red
    {0.0F, 1.0F, 0.0F},        // green
    {0.0F, 0.0F, 1.0F},        // blue
    {0.0F, 0.0F, 0.0F},        // black
    {1.0F, 0.4F, 0.7F},        // pink
    {0.3F, 0.3F, 0.3F},        // gray
    {1.0F, 0.627F, 0.0F},      // orange
    {0.0F, 0.749F, 1.0F},      // skyblue
    {0.823F, 0.705F, 0.549F},  // tan
    {0.545F, 0.271F, 0.074F},  // brown
    {0.627F, 0.125F, 0.941F},  // purple
    {0.5F, 0.5F, 0.0F},        // olive
    {0.49F, 0.99F, 0.0F},      // lawngreen
    {0.6F, 0.98F, 0.6F},       // palegreen
    {0.0F, 1.0F, 1.0F},        // cyan
    {1.0F, 1.0F, 0.0F},        // yellow
    {1.0F, 1.0F, 1.0F},        // white
};

/// All fields in the order of comparison.
auto fieldsOf(const Color& color) {
    return std::tie(color.red, color.green, color.blue, color.width, color.fill);
}

}  // namespace

Color::Color(double red_, double green_, double blue_, double width_, bool fill_) noexcept
    : red(static_cast<float>(red_)),
      green(static_cast<float>(green_)),
      blue(static_cast<float>(blue_)),
      width(static_cast<float>(width_)),
      fill(fill_) {}

Color::Color(Colorname name, float width_, bool fill_) : width(width_), fill(fill_) {
    const auto index = static_cast<std::size_t>(name);
    if (index >= std::size(rgbOfName)) {
        warning("Color::Color", "Colorname unknown, returning black");
        return;
    }
    red = rgbOfName[index].red;
    green = rgbOfName[index].green;
    blue = rgbOfName[index].blue;
}

bool Color::operator==(const Color& other) const noexcept { return fieldsOf(*this) == fieldsOf(other); }

bool Color::operator<(const Color& other) const noexcept { return fieldsOf(*this) < fieldsOf(other); }

Colorname Color::getNextColorName() {
    static int currentColorName = 0;
    // 1 to 14 and round again.
    currentColorName = currentColorName % COLORNAME_CYAN + 1;
    return static_cast<Colorname>(currentColorName);
}

}  // namespace KELMAR_NORVIK2D
