#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

/// Ends the program where a law is broken: libFuzzer then keeps the input.
inline void expect(bool bHolds, const std::string& law) {
    if (bHolds) return;
    std::fprintf(stderr, "broken: %s\n", law.c_str());
    std::abort();
}
