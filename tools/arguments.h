#pragma once

#include <Norvik_2D.h>

#include <CLI/CLI.hpp>
#include <array>
#include <string>

#include "numbers.h"

// Words of the command line, and options for them. What a word should be and isn't throws BadNumber, or ends in a usage error.

/// Two ends with a length between.
KELMAR_NORVIK2D::Segment2 parseKnife(const std::string& text);

KELMAR_NORVIK2D::Point2 parseSeed(const std::string& text);

/// A direction and a length.
std::array<double, 3> parseGrid(const std::string& text);

/// For CLI::Option::check: the complaint of `parse` about a word, which ends in a usage error.
template <class Parse>
auto complaintsOf(Parse parse) {
    return [parse](const std::string& word) -> std::string {
        try {
            parse(word);
            return {};
        } catch (const BadNumber& reason) {
            return reason.what();
        }
    };
}

/// An option that may be repeated; each word behind it goes through `parse`.
template <class Parse>
CLI::Option* addWords(CLI::App& command, const std::string& name, const std::string& type, Parse parse,
                      const std::string& description) {
    return command.add_option(name, description)
        ->type_name(type)
        ->take_all()
        ->expected(1, CLI::detail::expected_max_vector_size)
        ->allow_extra_args(false)
        ->check(complaintsOf(parse), "");
}

/// An option for a number above `least`.
CLI::Option* addNumber(CLI::App& command, const std::string& name, double& value, double least,
                       const std::string& type, const std::string& description);
