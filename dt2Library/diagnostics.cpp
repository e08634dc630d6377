#include "diagnostics.h"

#include <atomic>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <iomanip>
#include <iostream>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <sstream>
#include <string_view>
#include <utility>

#include "NorvikException.h"
#include "require.h"
#include "standardOutput.h"

namespace KELMAR_NORVIK2D {

namespace {

/// Steady, because the wall clock may be set back while a timer runs.
using Clock = std::chrono::steady_clock;

constexpr const char* yellow = "\033[0;93m";
constexpr const char* red = "\033[0;31m";
constexpr const char* magenta = "\033[0;35m";
constexpr const char* uncoloured = "\033[m";
constexpr const char* libraryMark = "      [Norvik2D-Message] ";

/// The number of the last debug file.
std::atomic<int> globalPrefixCtr{0};

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// The sum of the stretches so far, and the start of the present one if it runs.
struct StopWatch {
    std::optional<Clock::time_point> start;
    double sum = 0.0;
};

// The maps are made at first use: messages may be wanted before the globals of this source exist.

std::map<std::string, Clock::time_point>& timers() {
    static std::map<std::string, Clock::time_point> instance;
    return instance;
}

std::map<std::string, StopWatch>& stopWatches() {
    static std::map<std::string, StopWatch> instance;
    return instance;
}

std::map<std::string, int>& counters() {
    static std::map<std::string, int> instance;
    return instance;
}

void reportStopWatches() {
    for (const auto& [name, watch] : stopWatches()) print(compose("\t", name, "\t", watch.sum, " s\n"));
}

void reportCounters() {
    for (const auto& [name, value] : counters()) print(compose("Benchmark: ", name, "\t", value, "\n"));
}

std::string prefixOf(int number) {
    std::ostringstream prefix;
    prefix.imbue(std::locale::classic());
    prefix << std::setw(5) << std::setfill('0') << number << "_";
    return prefix.str();
}

/// Source paths are told from the library's folder on, wherever it was built.
std::string_view pathInRepository(std::string_view path) {
    const std::size_t start = path.rfind("dt2Library/");
    return start == std::string_view::npos ? path : path.substr(start);
}

/// Where messages go. Recursive, because a handler may cause further ones.
struct MessageOutput {
    std::recursive_mutex mutex;
    std::shared_ptr<const MessageHandler> pHandler;

    /// Never destroyed: the last messages come from destructors of the client's own globals. In a place of its own, as the first
    /// one may say that there is no memory.
    static MessageOutput& get() {
        alignas(MessageOutput) static std::byte place[sizeof(MessageOutput)];
        static MessageOutput* const pInstance = new (place) MessageOutput;
        return *pInstance;
    }
};

/// A text in one piece: to the handler, or to the stream as it looks there.
void send(MessageKind kind, const std::string& source, std::string_view text, std::ostream& os,
          std::string_view textForStream) {
    MessageOutput& output = MessageOutput::get();
    const std::lock_guard lock(output.mutex);
    // Kept alive, should it install another one.
    if (const auto pHandler = output.pHandler)
        (*pHandler)(kind, source, std::string(text));
    else
        os << textForStream << std::flush;
}

void sendFramed(MessageKind kind, const std::string& source, const std::string& text,
                const std::string& textForStream) {
    send(kind, source, text, std::cout, textForStream);
}

}  // namespace

MessageHandler setMessageHandler(MessageHandler handler) {
    MessageOutput& output = MessageOutput::get();
    const std::lock_guard lock(output.mutex);
    const auto pBefore = std::exchange(
        output.pHandler, handler ? std::make_shared<const MessageHandler>(std::move(handler)) : nullptr);
    return pBefore == nullptr ? MessageHandler() : *pBefore;
}

MessageHandler silentMessageHandler() {
    return [](MessageKind, const std::string&, const std::string&) {};
}

void print(std::string_view text) { send(MK_PLAIN, "", text, std::cout, text); }
void printToStandardError(std::string_view text) { send(MK_PLAIN, "", text, std::cerr, text); }

// The message, then the place on a line of its own, then the exception: users and their scripts rely on this
// order.
void conditionFailed(const char* condition, const char* file, int line) {
    error("Norvik, ", compose("Condition [ ", condition, " failed ]"));
    print(compose("      ", pathInRepository(file), ":", line, "\n"));
    throw NorvikException();
}

void warning(const std::string& source, const std::string& text) {
    sendFramed(MK_WARNING, source, text,
               compose("\n", yellow, libraryMark, source, ", WARNING: ", text, uncoloured, "\n\n"));
}

void error(const std::string& source, const std::string& text) {
    sendFramed(MK_ERROR, source, text,
               compose("\n", red, libraryMark, source, ", ERROR: ", text, uncoloured, "\n\n"));
}

void info(const std::string& source, const std::string& text) {
    sendFramed(MK_INFO, source, text,
               source.empty()
                   ? compose("\n", libraryMark, "INFO: ", text, "\n\n")
                   : compose("\n", magenta, "      ", source, ", INFO: ", text, uncoloured, "\n\n"));
}

void goToHell(const std::string& text) {
    print(compose("goToHell(): ", text, "\n"));
    // Volatile, so that the compiler must believe in the store.
    int* volatile pNowhere = nullptr;
    *pNowhere = 0;  // NOLINT(clang-analyzer-core.NullDereference): to end here is what is asked for
    std::abort();
}

void fatBar(const std::string& text) {
    const std::string bar(80, '*');
    print(compose(bar, "\n", std::string(15, ' '), text, "\n", bar, "\n"));
}

std::string magentaString(const std::string& text) { return magenta + text + uncoloured; }

std::string double2string(const double& value) { return compose(value); }

std::string repstr(const std::string& text, const std::string& from, const std::string& to) {
    if (from.empty()) return text;
    std::string result;
    std::size_t done = 0;
    // The search goes on behind each replaced piece of the original, never inside a replacement.
    for (std::size_t hit; (hit = text.find(from, done)) != std::string::npos; done = hit + from.size())
        result.append(text, done, hit - done).append(to);
    return result.append(text, done);
}

std::string globalPrefix() { return prefixOf(globalPrefixNumber()); }
std::string globalPrefixNoInc() { return prefixOf(globalPrefixNumberNoInc()); }
int globalPrefixNumber() { return ++globalPrefixCtr; }
int globalPrefixNumberNoInc() { return globalPrefixCtr; }

double timer(const std::string& name) {
    const bool bPrint = name.rfind("[quiet]", 0) != 0;
    // A name that isn't running starts; one that runs stops and is forgotten, so that a third call starts
    // anew.
    const auto [running, bStarted] = timers().try_emplace(name, Clock::now());
    if (bStarted) {
        if (bPrint) print(compose("...Timer [", name, "] start\n"));
        return -1.0;
    }
    const double seconds = secondsSince(running->second);
    if (bPrint) print(compose("...Timer [", name, "] stop, elapsed time: ", seconds, " s\n"));
    timers().erase(running);
    return seconds;
}

void stopWatch(const std::string& name) { stopWatch(name, true); }

void stopWatch(const std::string& name, bool bPrint) {
    if (name == "STOP AND REPORT") {
        reportStopWatches();
        return;
    }
    StopWatch& watch = stopWatches()[name];
    if (!watch.start) {
        if (bPrint) print(magentaString("\n~ Benchmark start [ " + name + " ] ") + "\n");
        watch.start = Clock::now();
        return;
    }
    const double seconds = secondsSince(*watch.start);
    if (bPrint) print(compose("~ Benchmark stop, Time for [ ", name, " ] is: [", seconds, " s]\n"));
    watch.sum += seconds;
    watch.start.reset();
}

void benchCounter(const std::string& name) {
    if (name == "GETCOUNTERS")
        reportCounters();
    else
        ++counters()[name];
}

bool tools_isnan(double value) { return std::isnan(value); }
bool tools_isinf(double value) { return std::isinf(value); }

}  // namespace KELMAR_NORVIK2D
