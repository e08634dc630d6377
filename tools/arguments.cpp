#include "arguments.h"

#include <sstream>
#include <utility>

using namespace KELMAR_NORVIK2D;

namespace {

/// Coordinates with commas between, in one word of the command line.
template <std::size_t N>
std::array<double, N> parseCoordinates(const std::string& text) {
    // Separators in a row would count as one.
    if (text.starts_with(',') || text.ends_with(',') || text.find(",,") != std::string::npos)
        throw BadNumber("a number is missing in " + text);
    return parseNumbers<N>(text, ",");
}

}  // namespace

Segment2 parseKnife(const std::string& text) {
    const auto [x1, y1, x2, y2] = parseCoordinates<4>(text);
    Segment2 knife(Point2(x1, y1), Point2(x2, y2));
    if (knife.getSrc() == knife.getTrg()) throw BadNumber(text + " has no length");
    return knife;
}

Point2 parseSeed(const std::string& text) {
    const auto [x, y] = parseCoordinates<2>(text);
    return {x, y};
}

std::array<double, 3> parseGrid(const std::string& text) {
    const auto grid = parseCoordinates<3>(text);
    const auto& [dx, dy, length] = grid;
    if (dx == 0.0 && dy == 0.0) throw BadNumber(text + " has no direction");
    if (length <= 0.0) throw BadNumber(text + " has no length");
    return grid;
}

CLI::Option* addNumber(CLI::App& command, const std::string& name, double& value, double least,
                       const std::string& type, const std::string& description) {
    const auto parse = [least](const std::string& word) {
        if (parseNumber(word) > least) return;
        std::ostringstream complaint;
        complaint << word << " isn't above " << least;
        throw BadNumber(std::move(complaint).str());
    };
    return command.add_option(name, value, description)->type_name(type)->check(complaintsOf(parse), "");
}
