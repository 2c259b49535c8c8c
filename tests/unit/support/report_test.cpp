#include "support/report.h"

#include "sim/sim.h"
#include "support/log.h"

#include <algorithm>
#include <movo_net_core.h>
#include <unistd.h>

namespace {
constexpr movonet::LogModule kLog{"some_module", &movoglue_net_debug};

int reportSomething()
{
    NET_REPORT("a < b");
    return __LINE__ - 1;
}

/** Called from as deep as that. */
__attribute__((noinline)) void reportFrom(int depth)
{
    if (depth == 0) {
        (void)reportSomething();
    } else {
        reportFrom(depth - 1);
    }
    asm volatile(""); // keeps the call above from becoming a jump, which leaves no frame
}

void requireSomething(bool holds)
{
    NET_REQUIRE(holds, "pThing");
}

void logFor(movonet::CallSite at)
{
    NET_LOG_AT(at, KEST_LEVEL_INFO, "for the caller\n");
}

void logForItself()
{
    logFor(NET_HERE);
}

movonet::CallSite callerOf(movonet::CallSite at = movonet::CallSite::current())
{
    return at;
}

TEST(Report, IsToldOnStandardOutput)
{
    std::string text;
    int line = 0;
    {
        const sim::CapturedOutput output;
        line = reportSomething();
        text = output.text();
    }
    const std::string expected = "\n\x1b[0;34;41m ASSERT, Pid:" + std::to_string(getpid()) +
                                 " File:some_module Line:" + std::to_string(line) +
                                 " Routine:reportSomething, a < b failed \x1b[0m \n";
    ASSERT_GE(text.size(), expected.size());
    EXPECT_EQ(text.substr(text.size() - expected.size()), expected);
}

TEST(Report, ShowsTenFramesOfTheWayThere)
{
    const sim::CapturedOutput output;
    testing::internal::CaptureStderr();
    reportFrom(20);
    const std::string frames = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::ranges::count(frames, '\n'), 10) << frames;
}

TEST(Report, IsNoLogMessage)
{
    const sim::Set set;
    {
        const sim::CapturedOutput output;
        (void)reportSomething();
    }
    EXPECT_TRUE(set.log().empty());
}

TEST(RequirementDeathTest, EndsTheProcessWithExpressionModuleLineAndFunction)
{
#ifndef __arm__ // where QEMU runs the test and cannot start the program again
    GTEST_FLAG_SET(death_test_style, "threadsafe");
#endif
    EXPECT_EXIT(requireSomething(false), testing::KilledBySignal(SIGABRT),
                "some_module:[0-9]+: requireSomething: Assertion `pThing' failed\\.");
}

TEST(Requirement, ThatHoldsIsSilent)
{
    const sim::Set set;
    requireSomething(true);
    EXPECT_TRUE(set.log().empty());
}

TEST(CallSite, IsTheCallers)
{
    EXPECT_STREQ(callerOf().function, "TestBody");
    EXPECT_EQ(callerOf().line, __LINE__);
}

TEST(Log, SpeaksForTheCaller)
{
    const sim::Set set;
    logForItself();
    EXPECT_LOGGED(set, KEST_LEVEL_INFO, "some_module", "logForItself", "for the caller\n");
}

TEST(Log, StopsAtTheThreshold)
{
    const sim::Set set;
    __atomic_store_n(&__kest_debug_min, static_cast<int>(KEST_LEVEL_WARNING), __ATOMIC_RELAXED);
    logForItself();
    EXPECT_TRUE(set.log().empty());
    __atomic_store_n(&__kest_debug_min, static_cast<int>(KEST_LEVEL_INFO), __ATOMIC_RELAXED);
    logForItself();
    EXPECT_EQ(set.log().size(), 1U);
}

TEST(Log, DoesNotWorkOutWhatItDoesNotSay)
{
    const sim::Set set;
    int worked = 0;
    __atomic_store_n(&__kest_debug_min, static_cast<int>(KEST_LEVEL_NONE), __ATOMIC_RELAXED);
    NET_ERROR("%d\n", ++worked);
    EXPECT_EQ(worked, 0);
}
} // namespace
