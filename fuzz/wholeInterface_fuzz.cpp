// The bytes of the input are decisions about what to do with a triangulation.
#include <cstdlib>
#include <iostream>

#include "ApiDriver.h"

namespace {

/// Enough for everything to meet everything, and few enough for a run to stay short.
constexpr int mostSteps = 200;

void drive(Decisions& from) {
    ApiDriver::Options options;
    if (std::getenv("NORVIK2D_TRACE") != nullptr) options.pTrace = &std::cerr;
    ApiDriver driver(from, options);
    for (int i = 0; i < mostSteps && !from.areOut() && !driver.isFull(); ++i) {
        driver.step();
        driver.check();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t size) {
    Decisions from(pData, size);
    try {
        drive(from);
    } catch (const std::exception& exception) {
        std::cerr << exception.what() << "\n" << Hearing::all() << std::endl;
        std::abort();
    }
    return 0;
}
