#pragma once

namespace KELMAR_NORVIK2D {

/// Reports a broken invariant (message, source path and line on standard output) and throws NorvikException.
[[noreturn]] void conditionFailed(const char* condition, const char* file, int line);

/// An invariant that is tested in every build. The text of the condition is given as a literal because it is
/// part of the message that users see: it doesn't change when the code does.
inline void require(bool bHolds, const char* condition, const char* file = __builtin_FILE(),
                    int line = __builtin_LINE()) {
    if (!bHolds) [[unlikely]]
        conditionFailed(condition, file, line);
}

}  // namespace KELMAR_NORVIK2D
