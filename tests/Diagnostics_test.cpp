#include "diagnostics.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cmath>
#include <iomanip>

#include "Histogram.h"
#include "NorvikException.h"
#include "captureOutput.h"
#include "norvikVersion.h"
#include "require.h"

using namespace KELMAR_NORVIK2D;

namespace {

template <class Action>
std::string outputOf(const Action& action) {
    CaptureOutput output;
    action();
    return output.out();
}

/// The text with "#" for each number of seconds or of a version.
std::string masked(const std::string& text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        result += std::isdigit(static_cast<unsigned char>(text[i])) ? '#' : text[i];
        if (result.back() == '#') i = std::min(text.find_first_not_of("0123456789.e-", i), text.size()) - 1;
    }
    return result;
}

}  // namespace

TEST(Diagnostics, MessagesHaveTheirFrame) {
    EXPECT_EQ(outputOf([] { warning("Dt2::remove()", "text"); }),
              "\n\033[0;93m      [Norvik2D-Message] Dt2::remove(), WARNING: text\033[m\n\n");
    EXPECT_EQ(outputOf([] { error("Dt2::show()", "text"); }),
              "\n\033[0;31m      [Norvik2D-Message] Dt2::show(), ERROR: text\033[m\n\n");
    EXPECT_EQ(outputOf([] { info("", "text"); }), "\n      [Norvik2D-Message] INFO: text\n\n");
    EXPECT_EQ(outputOf([] { info("Dt2", "text"); }), "\n\033[0;35m      Dt2, INFO: text\033[m\n\n");
}

TEST(Diagnostics, AFailedConditionIsToldWithItsPlaceBeforeTheException) {
    // Whatever the host has set on the stream.
    EXPECT_EQ(
        outputOf([] {
            std::cout << std::setprecision(2) << std::hex << std::showbase;
            EXPECT_THROW(require(false, "pT!=__null", "/home/x/dt2Library/Dt2.cpp", 42), NorvikException);
            std::cout << std::setprecision(6) << std::dec << std::noshowbase;
        }),
        "\n\033[0;31m      [Norvik2D-Message] Norvik, , ERROR: Condition [ pT!=__null failed ]\033[m\n\n"
        "      dt2Library/Dt2.cpp:42\n");
    EXPECT_EQ(outputOf([] { require(true, "never told"); }), "");
    EXPECT_NE(std::string(NorvikException().what()).find("bug"), std::string::npos);
}

TEST(Diagnostics, TimersStartAndStopInTurn) {
    double seconds[5];
    const std::string text = outputOf([&] {
        for (double& value : seconds) value = timer(&value < seconds + 2 ? "[quiet] b" : "a");
    });
    for (const int i : {0, 2, 4}) EXPECT_EQ(seconds[i], -1.0);
    for (const int i : {1, 3}) EXPECT_GE(seconds[i], 0.0);
    EXPECT_EQ(masked(text), "...Timer [a] start\n...Timer [a] stop, elapsed time: # s\n...Timer [a] start\n");
}

TEST(Diagnostics, StopWatchesAddUpAndReport) {
    const std::string text = outputOf([] {
        for (const bool bPrint : {true, true, false, false}) stopWatch(bPrint ? "loud" : "hushed", bPrint);
        stopWatch("STOP AND REPORT");
    });
    EXPECT_EQ(masked(text),
              "\033[#;#m\n~ Benchmark start [ loud ] \033[m\n~ Benchmark stop, Time for [ loud ] is: [# s]\n"
              "\thushed\t# s\n\tloud\t# s\n");
}

TEST(Diagnostics, PrefixesRun) {
    const int number = globalPrefixNumberNoInc();
    const std::string digits = std::to_string(number + 1);
    EXPECT_EQ(globalPrefix(), std::string(5 - digits.size(), '0') + digits + "_");
    EXPECT_EQ(globalPrefixNumber(), number + 2);
}

TEST(Diagnostics, SmallHelpers) {
    for (const char* name : {"x", "w", "x"}) benchCounter(name);
    EXPECT_EQ(outputOf([] { benchCounter("GETCOUNTERS"); }), "Benchmark: w\t1\nBenchmark: x\t2\n");
    EXPECT_EQ(repstr("aXbX", "X", "XX"), "aXXbXX");
    EXPECT_EQ(repstr("abc", "", "x"), "abc");
    std::vector<int> numbers{3, 1, 3, 2, 1};
    oneInstance(numbers);
    EXPECT_EQ(numbers, (std::vector<int>{1, 2, 3}));
    EXPECT_TRUE(tools_isnan(NAN) && !tools_isnan(INFINITY) && tools_isinf(-INFINITY) && !tools_isinf(1e308));
    EXPECT_NE(outputOf([] { fatBar("text"); }).find("**\n               text\n**"), std::string::npos);
    EXPECT_DEATH(goToHell("here"), "");
    EXPECT_EQ(masked(getNorvik2DVersion()), "Norvik #D, RELEASE, v#");
}

TEST(Histogram, ShowsItsClasses) {
    Histogram histogram("ANGLES");
    EXPECT_EQ(outputOf([&] { histogram.show(); }), "Empty histogram [ ANGLES ]\n");
    for (const double bound : {10.0, 0.5}) histogram.addBound(bound);
    for (const double value : {0.5, 10.0, 2.0, 1e300, 11.5}) histogram.addVal(value);
    EXPECT_EQ(outputOf([&] { histogram.show(); }),
              "   ANGLES (avg=2e+299 , min=0.5, max=1e+300):\n"
              "     0 - 0.5: 1\n"
              "   0.5 - 10: 2\n"
              "   10 -   max: 2\n");
}
