#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

/// A text that doesn't tell what numbers it should; what() tells the reason, and nothing of where the text stands.
class BadNumber : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The finite number that the whole word tells.
double parseNumber(std::string_view word);

/// The integer that the whole word tells.
std::int64_t parseInteger(std::string_view word);

/// Takes the next word off the text, as far as one of the separators; several of them in a row count as one. Empty if there is
/// none.
std::string_view takeWord(std::string_view& text, std::string_view separators);

/// Exactly N numbers between separators.
template <std::size_t N>
std::array<double, N> parseNumbers(std::string_view text, std::string_view separators) {
    std::array<double, N> numbers{};
    std::size_t numFound = 0;
    for (std::string_view word = takeWord(text, separators); !word.empty();
         word = takeWord(text, separators)) {
        if (numFound < N) numbers[numFound] = parseNumber(word);
        ++numFound;
    }
    if (numFound != N)
        throw BadNumber(std::to_string(N) + " numbers expected, " + std::to_string(numFound) + " found");
    return numbers;
}
