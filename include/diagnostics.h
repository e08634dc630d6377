#pragma once

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "norvikExport.h"

/// Messages, timers and counters. Everything is written to standard output; colours are ANSI escape codes.
/// Timers, stopwatches and counters are process-wide and unlocked: use them from one thread at a time.
namespace KELMAR_NORVIK2D {

/// What a message is: a framed one of warning(), error() or info(), or any other text.
enum MessageKind { MK_PLAIN = 0, MK_INFO = 1, MK_WARNING = 2, MK_ERROR = 3 };

/// Takes a message instead of the standard streams. `source` and `text` of a framed message come bare, without colours and line
/// ends; a plain one has no source, and its text comes as it would be written.
using MessageHandler =
    std::function<void(MessageKind kind, const std::string& source, const std::string& text)>;

/// While a handler is installed the library writes nothing to standard output or standard error: all goes to the handler. An empty
/// one brings the streams back. Returns the handler that was installed before. It is one for the whole process; it is called by
/// any thread, but never by two at once, and may itself cause messages or install another handler. It mustn't
/// throw: messages come from worker threads and destructors too.
NORVIK2D_EXPORT MessageHandler setMessageHandler(MessageHandler handler);
/// One that drops all messages.
NORVIK2D_EXPORT MessageHandler silentMessageHandler();

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

/// Questions to a double that `-ffast-math` in the client can't take away.
NORVIK2D_EXPORT bool tools_isnan(double value);
NORVIK2D_EXPORT bool tools_isinf(double value);

/// Sorts, and removes equal neighbours.
template <class T>
void oneInstance(std::vector<T>& items) {
    std::sort(items.begin(), items.end(), std::less<>());
    items.erase(std::unique(items.begin(), items.end()), items.end());
}

}  // namespace KELMAR_NORVIK2D
