#pragma once

#include <locale>
#include <sstream>
#include <string>
#include <string_view>

#include "roundingMode.h"

namespace KELMAR_NORVIK2D {

/// The library's one way to standard output, from any thread. A text goes out in one piece, so that those of two threads
/// don't mix, and is flushed, so that none is lost when the host ends badly.
void print(std::string_view text);

/// The same for the few texts that go to standard error.
void printToStandardError(std::string_view text);

/// The values one after the other, as a stream writes them by default: whatever format, locale or rounding
/// mode the host has set, the texts of messages stay the same.
template <class... Values>
std::string compose(const Values&... values) {
    RoundToNearest nearest;
    std::ostringstream text;
    text.imbue(std::locale::classic());
    (text << ... << values);
    return text.str();
}

}  // namespace KELMAR_NORVIK2D
