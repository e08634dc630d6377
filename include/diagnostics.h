#pragma once

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "norvikExport.h"

/// Messages, timers and counters. Everything is written to standard output; colours are ANSI escape codes.
/// Timers, stopwatches and counters are process-wide and unlocked: use them from one thread at a time.
namespace KELMAR_NORVIK2D {

/// A framed message from `source`: yellow for a warning, red for an error, magenta for an information. An
/// information without a source is uncoloured.
NORVIK2D_EXPORT void warning(const std::string& source, const std::string& text);
NORVIK2D_EXPORT void error(const std::string& source, const std::string& text);
NORVIK2D_EXPORT void info(const std::string& source, const std::string& text);

/// Crashes the process on purpose, for a core dump.
[[noreturn]] NORVIK2D_EXPORT void goToHell(const std::string& text);

/// Prints the text between two lines of stars.
NORVIK2D_EXPORT void fatBar(const std::string& text);
/// The text within the escape codes for magenta.
NORVIK2D_EXPORT std::string magentaString(const std::string& text);

/// The value as a stream prints it by default: six significant digits.
NORVIK2D_EXPORT std::string double2string(const double& value);
/// The text with all occurrences of `from` replaced, from left to right; what was put in isn't searched
/// again. An empty `from` replaces nothing.
NORVIK2D_EXPORT std::string repstr(const std::string& text, const std::string& from, const std::string& to);

/// The running prefix of debug files, five digits and "_": first the number is raised ("00001_" at the first
/// call), with NoInc it is left alone.
NORVIK2D_EXPORT std::string globalPrefix();
NORVIK2D_EXPORT std::string globalPrefixNoInc();
NORVIK2D_EXPORT int globalPrefixNumber();
NORVIK2D_EXPORT int globalPrefixNumberNoInc();

/// The first call with a name starts a timer and returns -1; the second stops it and returns the seconds
/// between. Both print a line, unless the name begins with "[quiet]".
NORVIK2D_EXPORT double timer(const std::string& name);

/// Like timer(), but the times of each name are added up, and the name "STOP AND REPORT" prints the sums.
/// Without `bPrint` starting and stopping is silent.
NORVIK2D_EXPORT void stopWatch(const std::string& name);
NORVIK2D_EXPORT void stopWatch(const std::string& name, bool bPrint);

/// Counts the calls with a name. The name "GETCOUNTERS" prints all counters.
NORVIK2D_EXPORT void benchCounter(const std::string& name);

NORVIK2D_EXPORT bool tools_isnan(double value);
NORVIK2D_EXPORT bool tools_isinf(double value);

/// Sorts, and removes equal neighbours.
template <class T>
void oneInstance(std::vector<T>& items) {
    std::sort(items.begin(), items.end(), std::less<>());
    items.erase(std::unique(items.begin(), items.end()), items.end());
}

}  // namespace KELMAR_NORVIK2D
