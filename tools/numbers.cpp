#include "numbers.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <system_error>

namespace {

/// The word in quotes, cut and without control characters: it may be anything, and goes to a terminal.
std::string quoted(std::string_view word) {
    constexpr std::size_t maxLength = 40;
    std::string text(word.substr(0, maxLength));
    for (char& c : text)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) c = '?';
    return '"' + text + (word.size() > maxLength ? "...\"" : "\"");
}

}  // namespace

double parseNumber(std::string_view word) {
    std::string_view digits = word;
    if (digits.size() > 1 && digits[0] == '+' && digits[1] != '-') digits.remove_prefix(1);
    double value = 0.0;
    const auto [pEnd, failure] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (failure == std::errc::result_out_of_range)
        throw BadNumber(quoted(word) + " is outside of the range of a double");
    if (failure != std::errc() || pEnd != digits.data() + digits.size())
        throw BadNumber(quoted(word) + " is not a number");
    if (!std::isfinite(value)) throw BadNumber(quoted(word) + " is not finite");
    return value;
}

std::int64_t parseInteger(std::string_view word) {
    std::int64_t value = 0;
    const auto [pEnd, failure] = std::from_chars(word.data(), word.data() + word.size(), value);
    if (failure != std::errc() || pEnd != word.data() + word.size())
        throw BadNumber(quoted(word) + " is not an integer");
    return value;
}

std::string_view takeWord(std::string_view& text, std::string_view separators) {
    text.remove_prefix(std::min(text.find_first_not_of(separators), text.size()));
    const std::string_view word = text.substr(0, text.find_first_of(separators));
    text.remove_prefix(word.size());
    return word;
}
